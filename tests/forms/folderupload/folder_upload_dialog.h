#pragma once
// The folder upload over a bare window and a component of its own, with real folders, driven by real events.

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QTest>
#include <QTimer>
#include <filesystem>
#include <fstream>
#include <memory>

#include "app/shared/ftpglob.h"
#include "forms/folderupload/folder_upload_form.h"
#include "platform/drive_path.h"
#include "tests/platform/scratch_folder.h"
#include "tests/support/box_answerer.h"

namespace forms {

class FolderUploadDialog : public ::testing::Test {
 protected:
    void SetUp() override {
        app::Globals() = {};
        Ftp1_.ResolveLocalPath = &platform::Resolve;
        p1_.resize(200, 10);
        p2_.SetRole(toolkit::PictureBox::Role::Filled);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    }

    void TearDown() override {
        app::LongWork::longest_step = 20;
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    }

    void Open() {
        dialog_ = std::make_unique<fmRekurs>(
            FolderUploadHost{.window = window_,
                             .Ftp1 = Ftp1_,
                             .Command1 = buttons_[0],
                             .Command2 = buttons_[1],
                             .Command10 = buttons_[2],
                             .Command11 = buttons_[3],
                             .Command12 = buttons_[4],
                             .Command13 = buttons_[5],
                             .label7 = label7_,
                             .antal = antal_,
                             .p2 = p2_,
                             .favourites_picture = qApp->style()->standardIcon(QStyle::SP_DirHomeIcon),
                             .ClearServerLists = [this] { steps_.append("clear"); },
                             .BuildServerList = [this] { steps_.append("build"); },
                             .Trace = [this](const QString& line) { trace_.append(line); },
                             .UserWantsToAbort =
                                 [this](QWidget&) {
                                     steps_.append("question");
                                     return wants_to_abort_;
                                 },
                             .OpenFavourites =
                                 [this](QWidget& window, toolkit::DriveListBox&, toolkit::DirListBox&) {
                                     steps_.append("favourites over " + window.objectName());
                                 }});
        dialog_->Form_Load();
        // A window counts as active with its owner already; the keyboard comes later.
        ASSERT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() == dialog_.get(); }));
    }

    /// Paths are written with "/", relative to the scratch folder.
    std::filesystem::path Native(const std::string& path) const {
        return std::filesystem::path(files_.Native().toStdString()) / path;
    }
    void MakeFolder(const std::string& path) { std::filesystem::create_directories(Native(path)); }
    void MakeFile(const std::string& path, const std::string& bytes = "") {
        std::filesystem::create_directories(Native(path).parent_path());
        std::ofstream(Native(path)) << bytes;
    }
    /// `depth` folders of that name, one in the other, with a file at the bottom; deeper than a path can
    /// lead.
    void MakeChain(const std::string& path, const std::string& name, int depth) {
        const std::filesystem::path start = std::filesystem::current_path();
        MakeFolder(path);
        std::filesystem::current_path(Native(path));
        for (; depth > 0; --depth) {
            std::filesystem::create_directory(name);
            std::filesystem::current_path(name);
        }
        std::ofstream("f") << "f";
        std::filesystem::current_path(start);
    }
    void MakeLink(const std::string& path, const std::string& target) {
        std::filesystem::create_symlink(target, Native(path));
    }
    /// As the program writes it.
    QString Path(const std::string& path) const {
        return platform::FromNative(QByteArray::fromStdString(Native(path).native()));
    }

    template <class Widget = QWidget>
    Widget& Get(const char* name) {
        Widget* found = dialog_->findChild<Widget*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }
    QPushButton& Button(const char* name) { return Get<QPushButton>(name); }
    toolkit::DirListBox& Dir2() { return Get<toolkit::DirListBox>("Dir2"); }
    void ClickOn(const char* name) {
        auto& button = Get<QAbstractButton>(name);
        const bool box = qobject_cast<QCheckBox*>(&button);
        QTest::mouseClick(&button, Qt::LeftButton, {}, box ? QPoint(8, button.height() / 2) : QPoint());
    }
    QString Text(const char* label) { return Get<QLabel>(label).text(); }
    /// What the dialog tells of the tree: "2 st|3 st|  10 KB|00 tim. 01 min.".
    QString Statistics() { return QStringList{Text("l1"), Text("l2"), Text("l3"), Text("l4")}.join('|'); }
    inline static const QString kNothing = QStringLiteral("0 st|0 st|0 KB|00 tim. 00 min.");

    /// Opens the dialog, and in it a folder, as the favourites do.
    void Choose(const std::string& folder, bool with_subfolders = true, bool with_statistics = true) {
        if (!dialog_) Open();
        Get<QCheckBox>("Check1").setChecked(with_subfolders);
        Get<QCheckBox>("c2").setChecked(with_statistics);
        ASSERT_TRUE(Dir2().SetPath(Path(folder)));
    }
    void Scan() { Button("kor").click(); }

    /// The job list; paths without the scratch folder.
    QStringList Lines() {
        QStringList lines;
        const auto& list = Get<toolkit::ListBox>("List1");
        for (int row = 0; row < list.ListCount(); ++row) lines.append(Short(list.List(row)));
        return lines;
    }
    QStringList Trace() {
        QStringList lines;
        for (const QString& line : trace_) lines.append(Short(line));
        return lines;
    }
    QString Short(QString line) const { return line.replace(Path("") + u'\\', QString()); }

    /// Acts once, as soon as the condition holds, in whatever event loop then runs.
    void When(std::function<bool()> condition, std::function<void()> act) {
        auto* poll = new QTimer(&window_);
        QObject::connect(poll, &QTimer::timeout, poll, [poll, condition, act] {
            if (!condition()) return;
            poll->stop();
            poll->deleteLater();
            act();
        });
        poll->start(0);
    }

    ScratchFolder files_;
    QWidget window_;
    ftp::Component Ftp1_;
    QPushButton buttons_[6];
    QLabel label7_, antal_;
    toolkit::PictureBox p1_, p2_{&p1_};
    bool wants_to_abort_ = false;
    QStringList steps_;  // what the dialog has asked the window to do
    QStringList trace_;
    std::unique_ptr<fmRekurs> dialog_;
};

}  // namespace forms
