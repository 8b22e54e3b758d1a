#include <QLabel>
#include <algorithm>

#include "app/shared/long_work.h"
#include "settings/favourites.h"
#include "tests/forms/session/folder_upload.h"

using ftp_test::Say;
using ftp_test::Stall;
using ftp_test::TakeData;
using toolkit_test::ExpectBox;

namespace forms {
namespace {

/// Over a scripted server.
class FolderUploadWindows : public FolderUpload {
 protected:
    void SetUp() override {
        FolderUpload::SetUp();
        MakeFile("Webb/a.txt", std::string(2000, 'a'));
        MakeFile("Webb/b.txt", std::string(2000, 'b'));
        Open();
        Connect(server_.HostField());
    }

    void ExpectAllClosed() {
        EXPECT_FALSE(window_->isVisible());
        for (const char* name : {"fmRekurs", "favviskat", "MsgBox"}) EXPECT_FALSE(Window(name)) << name;
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
        EXPECT_FALSE(app::Globals().FolderUploadRunning);
        EXPECT_FALSE(app::Globals().ServerListBusy);
    }

    ftp_test::ScriptedServer server_;
};

TEST_F(FolderUploadWindows, TheDialogHoldsTheMainWindow) {
    Button("Command23").setFocus();
    ClickOn("Command23");
    ASSERT_TRUE(Window("fmRekurs"));
    EXPECT_FALSE(window_->isEnabled());
    EXPECT_EQ(InDialog<QPushButton>("Command29").icon().cacheKey(), Button("Command29").icon().cacheKey());
    QTest::mouseClick(&InDialog("Command2"), Qt::LeftButton);
    EXPECT_FALSE(Window("fmRekurs"));
    EXPECT_TRUE(window_->isEnabled());
    EXPECT_TRUE(Button("Command23").hasFocus());
}

TEST_F(FolderUploadWindows, AFavouriteIsChosenInTheDialog) {
    settings::SaveFavourites(store_, {"Webb"}, {Folder() + "\\Webb"});
    ClickOn("Command23");
    InDialog<QCheckBox>("c2").setChecked(true);
    const QString local_folder = Get<toolkit::DirListBox>("Dir1").Path();
    QTest::mouseClick(&InDialog("Command29"), Qt::LeftButton);
    QWidget* favourites = Window("favviskat");
    ASSERT_TRUE(favourites);
    EXPECT_EQ(favourites->property("tag").toString(), "");
    EXPECT_FALSE(Dialog().isEnabled());
    EXPECT_FALSE(window_->isEnabled());
    EXPECT_EQ(favourites->windowHandle()->transientParent(), Dialog().windowHandle());
    QTest::mouseClick(favourites->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    EXPECT_FALSE(Window("favviskat"));
    EXPECT_TRUE(Dialog().isEnabled());
    EXPECT_FALSE(window_->isEnabled());
    EXPECT_EQ(Dir2().Path(), Folder() + "\\Webb");
    EXPECT_TRUE(InDialog<QLabel>("Label6").text().startsWith("Mappen [webb] "));
    EXPECT_EQ(InDialog<QLabel>("l2").text(), "2 st");
    EXPECT_EQ(Get<toolkit::DirListBox>("Dir1").Path(), local_folder);
    QTest::mouseClick(&InDialog("Command2"), Qt::LeftButton);
    EXPECT_TRUE(window_->isEnabled());
}

TEST_F(FolderUploadWindows, TheMainWindowsOwnFavouritesAreAsBefore) {
    settings::SaveFavourites(store_, {"Webb"}, {Folder() + "\\Webb"});
    ClickOn("Command29");
    EXPECT_EQ(Window("favviskat")->property("tag"), "frmmdi");
    QTest::mouseClick(Window("favviskat")->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    EXPECT_EQ(Get<toolkit::DirListBox>("Dir1").Path(), Folder() + "\\Webb");
}

// The bytes of all files together, against the total of the scan.
TEST_F(FolderUploadWindows, TheStripShowsTheWholeRun) {
    bool seen = false;
    Choose("Webb");
    server_.At("STOR b.txt", {Say("150 Send it."), TakeData(2000), ftp_test::Hold(), ftp_test::CloseData(),
                              Say("226 Done.")});
    When([this] { return Strip("label7") == "4096"; },
         [&] {
             seen = true;
             EXPECT_EQ(app::Globals().FolderUploadTotal, 4 * 1024);
             EXPECT_EQ(Strip("antal"), "100 %");
             EXPECT_FALSE(window_->isEnabled());
             server_.Release();
         });
    Send("webb");
    EXPECT_TRUE(seen);
    EXPECT_EQ(Strip("antal"), "0 %");
    EXPECT_EQ(Get<QLabel>("label7").property("tag"), "4000");
    Choose("Webb");
    server_.At("STOR b.txt", {ftp_test::Proper()});
    Send("webb");
    EXPECT_EQ(Get<QLabel>("label7").property("tag"), "8000");  // it is never taken back
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowEndsTheSending) {
    server_.At("STOR a.txt", {Say("150 Send it."), TakeData(10), Stall()});
    server_.At("STOR b.txt", {Say("150 Send it."), TakeData(10), Stall()});
    Choose("Webb");
    When(
        [this] {
            const auto commands = server_.Commands();
            return std::ranges::any_of(commands, [](const std::string& c) { return c.starts_with("STOR"); });
        },
        [this] { window_->close(); });
    Begin("webb");
    ExpectAllClosed();
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowEndsTheScan) {
    app::LongWork::longest_step = 0;
    for (int i = 0; i < 10; ++i) MakeFile("Webb/m" + std::to_string(i) + "/f", "");
    ClickOn("Command23");
    InDialog<QCheckBox>("Check1").setChecked(true);
    InDialog<QCheckBox>("c2").setChecked(true);
    When([this] { return InDialog<QLabel>("l2").text() != "0 st"; }, [this] { window_->close(); });
    Dir2().SetPath(Folder() + "\\Webb");
    ExpectAllClosed();
    EXPECT_LT(Jobs().size(), 30);
    app::LongWork::longest_step = 20;
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowEndsTheScanBeforeTheSending) {
    for (int i = 0; i < 500; ++i) MakeFile("Webb/m" + std::to_string(i) + "/f", "");
    Choose("Webb");
    When([] { return app::Globals().FolderUploadRunning; }, [this] { window_->close(); });
    Begin("webb");
    ExpectAllClosed();
    const auto commands = server_.Commands();
    EXPECT_TRUE(std::ranges::none_of(commands, [](const std::string& c) { return c.starts_with("MKD"); }));
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowAnswersTheQuestion) {
    Choose("Webb");
    ExpectBox question("Bekräfta!", Question("webb"), ExpectBox::kNothing);
    question.Meanwhile([this](QDialog&) { window_->close(); });
    QTest::mouseClick(&InDialog("Command3"), Qt::LeftButton);
    ExpectAllClosed();
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowAtTheEndIsFine) {
    Choose("Webb");
    const ExpectBox question("Bekräfta!", Question("webb"), "cmdYes");
    ExpectBox done(toolkit::kDefaultTitle, kDone, ExpectBox::kNothing);
    done.Meanwhile([this](QDialog&) { window_->close(); });
    QTest::mouseClick(&InDialog("Command3"), Qt::LeftButton);
    ExpectAllClosed();
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowClosesTheFavouritesToo) {
    ClickOn("Command23");
    QTest::mouseClick(&InDialog("Command29"), Qt::LeftButton);
    ASSERT_TRUE(Window("favviskat"));
    window_->close();
    ExpectAllClosed();
}

}  // namespace
}  // namespace forms
