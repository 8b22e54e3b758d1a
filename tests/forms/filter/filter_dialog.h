#pragma once
// The filter dialog over a bare main window, driven by real events.

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTest>
#include <memory>

#include "app/shared/ftpglob.h"
#include "forms/filter/filter_form.h"
#include "tests/support/box_answerer.h"

namespace forms {

class FilterDialog : public ::testing::Test {
 protected:
    void SetUp() override {
        app::Globals() = {};
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    }

    void Open() {
        dialog_ = std::make_unique<Form3>(
            FilterHost{window_, [this](const QString& caption) { captions_.append(caption); }});
        dialog_->Form_Load();
        WaitForDialog();
    }

    // A window counts as active with its owner already; the keyboard comes later.
    void WaitForDialog() {
        ASSERT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() == dialog_.get(); }));
    }

    template <class Widget = QWidget>
    Widget& Get(const char* name) {
        Widget* found = dialog_->findChild<Widget*>(QString::fromUtf8(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }

    QComboBox& List(const char* name) { return Get<QComboBox>(name); }
    QString Text(const char* list) { return List(list).currentText(); }
    QLineEdit& BytesField() { return *List("bytes").lineEdit(); }
    bool IsTicked(const char* box) { return Get<QCheckBox>(box).isChecked(); }

    void ClickOn(const char* button) { QTest::mouseClick(&Get<QPushButton>(button), Qt::LeftButton); }

    void ClickBox(const char* name) {
        auto& box = Get<QCheckBox>(name);
        QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(8, box.height() / 2));
    }

    QStringList Entries(const char* name) {
        QStringList texts;
        for (int i = 0; i < List(name).count(); ++i) texts.append(List(name).itemText(i));
        return texts;
    }

    /// Opens the list and clicks on one of its entries.
    void Choose(const char* name, const QString& text) {
        QComboBox& list = List(name);
        list.setFocus();
        QTest::keyClick(&list, Qt::Key_F4);
        QAbstractItemView& popup = *list.view();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(popup.window())) << name;
        const QModelIndex entry = list.model()->index(list.findText(text), 0);
        ASSERT_TRUE(entry.isValid()) << name << ' ' << qUtf8Printable(text);
        popup.scrollTo(entry);
        const QRect seen = popup.visualRect(entry) & popup.viewport()->rect();
        QTest::mouseClick(popup.viewport(), Qt::LeftButton, {}, seen.center());
        ASSERT_TRUE(QTest::qWaitFor([&] { return !popup.isVisible(); })) << name;
        EXPECT_EQ(list.currentText(), text);
    }

    void TypeNumber(const QString& text) {
        BytesField().setFocus();
        QTest::keyClick(&BytesField(), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&BytesField(), Qt::Key_Delete);
        QTest::keyClicks(&BytesField(), text);
        EXPECT_EQ(Text("bytes"), text);
    }

    void ChooseDay(const char* year, const char* month, const char* day) {
        Choose("år", QString::fromLatin1(year));
        Choose("månad", QString::fromLatin1(month));
        Choose("dag", QString::fromLatin1(day));
    }

    /// The fields as they stand, for example "x Större än 5 KB" and "- Senare än 1999-01-01 12:30".
    std::string SizeRow() {
        return (Mark("Check2") + Text("storlek") + u' ' + Text("bytes") + u' ' + Text("typ")).toStdString();
    }
    std::string TimeRow() {
        return (Mark("Check1") + Text("när") + u' ' + Text("år") + u'-' + Text("månad") + u'-' + Text("dag") +
                u' ' + Text("timme") + u':' + Text("minut"))
            .toStdString();
    }

    QWidget window_;
    QStringList captions_;  // what the main window has been asked to show
    std::unique_ptr<Form3> dialog_;

 private:
    QString Mark(const char* box) { return IsTicked(box) ? QStringLiteral("x ") : QStringLiteral("- "); }
};

inline constexpr auto kDefaultSizeRow = "- Större än 1 Bytes";
inline constexpr auto kDefaultTimeRow = "- Senare än 1999-01-01 12:30";

}  // namespace forms
