#pragma once
// The folder upload in the main window, driven by real events.

#include <QCheckBox>
#include <filesystem>
#include <fstream>

#include "tests/forms/session/session.h"
#include "toolkit/message_box.h"

namespace forms {

inline const QString kDone = QStringLiteral("Överföringen av mapparna är nu klar!");

class FolderUpload : public Session {
 protected:
    void MakeFile(const std::string& path, const std::string& bytes) {
        const std::filesystem::path file = std::filesystem::path(files_.path().toStdString()) / path;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
    }

    template <class Widget = QWidget>
    Widget& InDialog(const char* name) {
        Widget* found = Dialog().findChild<Widget*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }
    /// The last one that was opened, also after it has been closed.
    static QWidget& Dialog() {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->objectName() == "fmRekurs") return *window;
        throw std::runtime_error("fmRekurs");
    }
    toolkit::DirListBox& Dir2() { return InDialog<toolkit::DirListBox>("Dir2"); }

    void Choose(const QString& folder, bool with_statistics = true) {
        ClickOn("Command23");
        ASSERT_TRUE(QTest::qWaitFor([] { return QApplication::activeWindow() == &Dialog(); }));
        InDialog<QCheckBox>("Check1").setChecked(true);
        InDialog<QCheckBox>("c2").setChecked(with_statistics);
        ASSERT_TRUE(Dir2().SetPath(Folder() + u'\\' + folder));
    }

    static QString Question(const QString& name) {
        return "Är du säker på att du vill skicka upp katalogen [" + name + "] samt dess innehåll?";
    }
    /// Sends what is chosen, but not to the end.
    void Begin(const QString& name) {
        const toolkit_test::ExpectBox question("Bekräfta!", Question(name), "cmdYes");
        QTest::mouseClick(&InDialog("Command3"), Qt::LeftButton);
    }
    /// Sends what is chosen, to the end; the job list that was carried out.
    QStringList Send(const QString& name) {
        QStringList jobs;
        const toolkit_test::ExpectBox question("Bekräfta!", Question(name), "cmdYes");
        toolkit_test::ExpectBox done(toolkit::kDefaultTitle, kDone, "cmdOk");
        done.Meanwhile([&](QDialog&) { jobs = Jobs(); });
        QTest::mouseClick(&InDialog("Command3"), Qt::LeftButton);
        return jobs;
    }
    QStringList Jobs() {
        QStringList jobs;
        const auto& list = InDialog<toolkit::ListBox>("List1");
        for (int row = 0; row < list.ListCount(); ++row) jobs.append(list.List(row));
        return jobs;
    }

    void ExpectIdle() {
        EXPECT_FALSE(Window("fmRekurs"));
        EXPECT_TRUE(window_->isEnabled());
        EXPECT_EQ(Enabled(kRowButtons + QStringList("Command1")), QStringList());
        EXPECT_TRUE(Button("Command23").isEnabled());
        EXPECT_EQ(Strip("antal"), "0 %");
        EXPECT_EQ(BarWidth(), 15);
        EXPECT_FALSE(app::Globals().FolderUploadRunning);
        EXPECT_FALSE(app::Globals().ServerListBusy);
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    }
};

}  // namespace forms
