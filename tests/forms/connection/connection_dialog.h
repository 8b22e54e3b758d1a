#pragma once
// The connection dialog over a bare main window and settings of its own, driven by real events.

#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

#include "app/shared/ftpglob.h"
#include "forms/connection/connection_form.h"
#include "settings/profiles.h"
#include "tests/support/box_answerer.h"

namespace settings {

inline void PrintTo(const Profile& profile, std::ostream* out) {
    for (const QString& field : {profile.host, profile.user, profile.password, profile.account})
        *out << '[' << qUtf8Printable(field) << ']';
}

}  // namespace settings

namespace forms {

class ConnectionDialog : public ::testing::Test {
 protected:
    void SetUp() override {
        app::Globals() = {};
        for (QPushButton* button : {&command9_, &command14_, &command16_, &command21_, &command23_})
            button->setEnabled(false);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    }

    void SaveProfile(const QString& name, const settings::Profile& profile) {
        settings::SaveNewProfile(store_, name, profile);
    }

    void Open() {
        dialog_.Form_Load();
        // A window counts as active with its owner already; the keyboard comes later.
        ASSERT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() == &dialog_; }));
    }

    template <class Widget = QWidget>
    Widget& Get(const char* name) {
        Widget* found = dialog_.findChild<Widget*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }

    QPushButton& Button(const char* name) { return Get<QPushButton>(name); }
    void ClickOn(const char* button) { QTest::mouseClick(&Button(button), Qt::LeftButton); }

    void Type(const char* field, const QString& text) {
        auto* combo = dialog_.findChild<QComboBox*>(QString::fromLatin1(field));
        QLineEdit* edit = combo ? combo->lineEdit() : &Get<QLineEdit>(field);
        QTest::mouseClick(edit, Qt::LeftButton);
        QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, text);
    }

    settings::Profile Fields() {
        return {Get<QLineEdit>("txtHost").text(), Get<QComboBox>("txtusername").currentText(),
                Get<QLineEdit>("txtPassword").text(), Get<QLineEdit>("txtAccount").text()};
    }

    QStringList ProfileNames() {
        QStringList names;
        const auto& combo = Get<QComboBox>("Combo1");
        for (int i = 0; i < combo.count(); ++i) names.append(combo.itemText(i));
        return names;
    }

    QString Setting(const char* section, const char* key) const {
        return store_.GetSetting(settings::kFtpApplication, QString::fromLatin1(section),
                                 QString::fromLatin1(key));
    }

    /// Whether one of the main window's buttons claims a session.
    bool ClaimsSession() const {
        for (const QPushButton* button : {&command9_, &command14_, &command16_, &command21_, &command23_})
            if (button->isEnabledTo(&window_)) return true;
        return !cmd_connection_.isEnabledTo(&window_);
    }

    QTemporaryDir settings_;
    settings::Store store_{settings_.path()};
    ftp::Component ftp1_{nullptr, {.reply = std::chrono::seconds(10)}};
    QWidget window_;
    QPushButton cmd_connection_{&window_}, command9_{&window_}, command14_{&window_}, command16_{&window_},
        command21_{&window_}, command23_{&window_};
    QStringList steps_;  // what the dialog has asked of the server lists, and what the server has listed
    frmConnection dialog_{{window_, ftp1_, store_, cmd_connection_, command9_, command14_, command16_,
                           command21_, command23_, [this] { steps_.append(QStringLiteral("clear")); },
                           [this] { steps_.append(QStringLiteral("build")); }}};
};

}  // namespace forms
