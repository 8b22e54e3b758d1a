#include "tests/forms/folderupload/folder_upload_dialog.h"
#include "tests/support/scripted_server.h"
#include "toolkit/message_box.h"

using ftp_test::Say;
using ftp_test::Stall;
using ftp_test::TakeData;
using toolkit_test::ExpectBox;

namespace forms {
namespace {

const QString kDone = QStringLiteral("Överföringen av mapparna är nu klar!");

/// Over a session with a scripted server that lets nobody in a second time, so that all goes over one line.
class FolderRun : public FolderUploadDialog {
 protected:
    void SetUp() override {
        FolderUploadDialog::SetUp();
        for (int session = 2; session < 10; ++session)
            server_.At(ftp_test::kConnect, session, {Say("421 Only one."), ftp_test::Close()});
        Ftp1_.HostName = QString::fromStdString(server_.HostField());
        Ftp1_.UserName = Ftp1_.Password = "demo";
        Ftp1_.ModeFlagA = Ftp1_.ModeFlagB = true;
        Ftp1_.Connect();
        ASSERT_TRUE(Ftp1_.Connected());
        QObject::connect(&Ftp1_, &ftp::Component::Error, &window_,
                         [this](std::int32_t number, const QString&) { errors_.append(number); });
    }

    static ExpectBox Confirmation(const QString& name, const char* press) {
        return ExpectBox("Bekräfta!",
                         "Är du säker på att du vill skicka upp katalogen [" + name + "] samt dess innehåll?",
                         press);
    }
    static ExpectBox Done() { return ExpectBox(toolkit::kDefaultTitle, kDone, "cmdOk"); }

    /// Says yes, and waits for the end.
    void Send(const QString& name) {
        const ExpectBox question = Confirmation(name, "cmdYes"), done = Done();
        ClickOn("Command3");
    }

    /// What has changed the server, moved on it or read it, in order.
    std::string Steps() {
        std::string steps;
        for (const std::string& command : server_.Commands())
            for (const char* verb : {"MKD ", "CWD ", "STOR ", "LIST"})
                if (command.starts_with(verb)) steps += (steps.empty() ? "" : ", ") + command;
        return steps;
    }
    std::string Stored(const std::string& name) { return server_.File(name).value_or("(missing)"); }

    ftp_test::ScriptedServer server_;
    QList<int> errors_;
};

TEST_F(FolderRun, OfADrivesRootIsRefused) {
    Open();
    const ExpectBox box(
        "FEL!", "Du kan ej skicka upp en hel katalogstruktur\r\nDubbelklicka på en av mapparna i [C:\\]",
        "cmdOk");
    ClickOn("Command3");
    EXPECT_EQ(Lines(), QStringList());
    EXPECT_TRUE(dialog_->isVisible());
    EXPECT_TRUE(dialog_->isEnabled());
}

TEST_F(FolderRun, NoLeavesEverythingAsItWas) {
    MakeFile("Webb/a");
    Choose("Webb", true, false);
    {
        const ExpectBox question = Confirmation("webb", "cmdNo");
        ClickOn("Command3");
    }
    EXPECT_EQ(Lines(), QStringList());
    EXPECT_EQ(Steps(), "");
    EXPECT_TRUE(dialog_->isVisible());
    EXPECT_TRUE(dialog_->isEnabled());
    EXPECT_FALSE(app::Globals().FolderUploadRunning);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

// Two folders, one in the other: two steps up at the end.
TEST_F(FolderRun, CarriesTheListOutLineByLine) {
    MakeFile("A/EN.TXT", "ett");
    MakeFile("A/B/Två.txt", "tvåhundra");
    Choose("A");
    Send("a");
    EXPECT_EQ(Lines(), QStringList({"Skapa a", "Fil A\\en.txt", "Skapa b", "Fil A\\B\\två.txt"}));
    EXPECT_EQ(Steps(), "MKD a, CWD a, STOR en.txt, MKD b, CWD b, STOR två.txt, CWD .., CWD .., LIST");
    EXPECT_EQ(Stored("en.txt"), "ett");
    EXPECT_EQ(Stored("två.txt"), "tvåhundra");
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_EQ(errors_, QList<int>());
}

TEST_F(FolderRun, ClimbsWhereTheListDoes) {
    MakeFile("A/b/c/f", "1");
    MakeFile("A/d/g", "2");
    Choose("A");
    Send("a");
    EXPECT_EQ(Steps(),
              "MKD a, CWD a, MKD b, CWD b, MKD c, CWD c, STOR f, CWD .., CWD .., MKD d, CWD d, STOR g, CWD "
              ".., CWD .., LIST");
}

TEST_F(FolderRun, ScansAnew) {
    MakeFile("A/f", "1");
    Choose("A");
    MakeFile("A/new/g", "2");
    Send("a");
    EXPECT_EQ(Stored("g"), "2");
    EXPECT_EQ(Text("l2"), "2 st");
}

TEST_F(FolderRun, TellsTheStripTheTotalOfTheScanBefore) {
    MakeFile("A/f", std::string(1500, 'f'));
    MakeFile("A/g", std::string(2500, 'g'));
    Choose("A");
    label7_.setProperty("tag", "100");
    std::int64_t total = -1;
    bool running = false, enabled = true, hourglass = false;
    When([this] { return app::Globals().FolderUploadRunning && server_.File("f"); },
         [&] {
             running = app::Globals().FolderUploadRunning;
             total = app::Globals().FolderUploadTotal;
             enabled = dialog_->isEnabled();
             hourglass = QGuiApplication::overrideCursor() != nullptr;
             server_.Release();
         });
    server_.At("STOR g", {ftp_test::Hold(), ftp_test::Proper()});
    Send("a");
    EXPECT_TRUE(running);
    EXPECT_EQ(total, 3 * 1024);  // 1.46 and then 1 + 2.44, to whole kilobytes each
    EXPECT_FALSE(enabled);
    EXPECT_TRUE(hourglass);
    EXPECT_FALSE(app::Globals().FolderUploadRunning);
    EXPECT_EQ(label7_.property("tag"), "4100");
}

TEST_F(FolderRun, WithoutStatisticsTheTotalIsNothing) {
    MakeFile("A/f", std::string(5000, 'f'));
    Choose("A", true, false);
    app::Globals().FolderUploadTotal = 17;
    Send("a");
    EXPECT_EQ(app::Globals().FolderUploadTotal, 0);
    EXPECT_EQ(Stored("f").size(), 5000u);
    EXPECT_EQ(label7_.property("tag"), "5000");
}

// As the panel's own refresh, but that it enables nothing.
TEST_F(FolderRun, RefreshesThePanelAtTheEnd) {
    MakeFolder("A");
    Choose("A");
    antal_.setText("57 %");
    p2_.SetWidth(100);
    bool busy = false;
    When([this] { return steps_ == QStringList("clear"); },
         [&] {
             busy = app::Globals().ServerListBusy;
             server_.Release();
         });
    server_.At("LIST", {ftp_test::Hold(), ftp_test::Proper()});
    {
        const ExpectBox question = Confirmation("a", "cmdYes");
        ExpectBox done(toolkit::kDefaultTitle, kDone, "cmdOk");
        done.Meanwhile([this](QDialog&) {
            EXPECT_EQ(steps_, QStringList({"clear", "build"}));
            EXPECT_EQ(antal_.text(), "57 %");
            EXPECT_FALSE(app::Globals().ServerListBusy);
            EXPECT_TRUE(dialog_->isVisible());
        });
        ClickOn("Command3");
    }
    EXPECT_TRUE(busy);
    EXPECT_EQ(antal_.text(), "0 %");
    EXPECT_EQ(p2_.Width(), 15);
    for (const QPushButton& button : buttons_) EXPECT_FALSE(button.isEnabled());
    EXPECT_TRUE(Ftp1_.ModeFlagA);
    EXPECT_TRUE(Ftp1_.ModeFlagB);
}

// Each goes up from the very file that its line was made from.
TEST_F(FolderRun, SendsBothOfTwoFilesThatDifferByCase) {
    MakeFile("A/LOGO.GIF", "upper");
    MakeFile("A/logo.gif", "lower");
    MakeFile("A/back\\Slash", "odd");
    Choose("A");
    Send("a");
    EXPECT_EQ(Steps(), "MKD a, CWD a, STOR back\uF05Cslash, STOR logo.gif, STOR logo.gif, CWD .., LIST");
    EXPECT_EQ(Stored("logo.gif"), "lower");
    EXPECT_EQ(Stored("back\uF05Cslash"), "odd");
    EXPECT_EQ(label7_.property("tag"), "13");
    EXPECT_EQ(errors_, QList<int>());
}

TEST_F(FolderRun, NoErrorStopsIt) {
    MakeFile("A/f", "1");
    MakeFile("A/b/g", "2");
    MakeFile("A/c/h", "3");
    server_.At("MKD a", {Say("550 Exists.")});
    server_.At("MKD b", {Say("550 No.")});
    server_.At("CWD b", {Say("550 No.")});
    server_.At("STOR f", {Say("553 No.")});
    Choose("A");
    Send("a");
    EXPECT_EQ(
        Steps(),
        "MKD a, CWD a, STOR f, MKD b, CWD b, STOR g, CWD .., MKD c, CWD c, STOR h, CWD .., CWD .., LIST");
    EXPECT_EQ(errors_, QList<int>({550, 553, 550, 550}));
    EXPECT_EQ(Stored("h"), "3");
}

// Between the scan and its turn.
TEST_F(FolderRun, AFileThatHasGoneIsSkipped) {
    MakeFile("A/f", "1");
    MakeFile("A/g", "22");
    Choose("A");
    When([this] { return app::Globals().FolderUploadRunning && Lines().size() == 3; },
         [this] {
             EXPECT_EQ(Steps(), "");
             std::filesystem::remove(Native("A/f"));
         });
    Send("a");
    EXPECT_EQ(Stored("f"), "(missing)");
    EXPECT_EQ(Stored("g"), "22");
    EXPECT_EQ(errors_, QList<int>({53}));
    EXPECT_EQ(label7_.property("tag"), "2");
}

TEST_F(FolderRun, ALostConnectionEndsIt) {
    for (int i = 0; i < 5; ++i) MakeFile("A/f" + std::to_string(i), "1");
    server_.At("STOR f1", {ftp_test::Reset()});
    Choose("A");
    Send("a");
    EXPECT_GE(errors_.size(), 5);
    EXPECT_FALSE(Ftp1_.Connected());
    EXPECT_EQ(steps_, QStringList({"clear", "build"}));
}

// The transfer is aborted; the server comes back to where it was.
TEST_F(FolderRun, ClosingTheDialogEndsItInGoodOrder) {
    MakeFile("A/b/f", "1");
    MakeFile("A/b/g", "2");
    server_.At("STOR f", {Say("150 Send it."), TakeData(1), Stall()});
    Choose("A");
    When([this] { return server_.Commands().back() == "STOR f"; }, [this] { dialog_->close(); });
    {
        const ExpectBox question = Confirmation("a", "cmdYes");
        ClickOn("Command3");
    }
    EXPECT_EQ(Steps(), "MKD a, CWD a, MKD b, CWD b, STOR f, CWD .., CWD .., LIST");
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_EQ(antal_.text(), "0 %");
    EXPECT_EQ(steps_, QStringList({"clear", "build"}));
}

TEST_F(FolderRun, TheCloseBoxAsksBeforeItEndsIt) {
    MakeFile("A/f", "1");
    MakeFile("A/g", "2");
    server_.At("STOR f", {Say("150 Send it."), TakeData(1), ftp_test::Hold(), Say("226 Done.")});
    Choose("A");
    When([this] { return server_.Commands().back() == "STOR f"; },
         [this] {
             QCloseEvent close;
             QApplication::sendEvent(dialog_->windowHandle(), &close);
             server_.Release();
         });
    Send("a");
    EXPECT_EQ(Steps(), "MKD a, CWD a, STOR f, STOR g, CWD .., LIST");
    EXPECT_EQ(steps_, QStringList({"question", "clear", "build"}));
}

TEST_F(FolderRun, ClosingTheDialogInItsScanSendsNothing) {
    app::LongWork::longest_step = 0;
    for (int i = 0; i < 10; ++i) MakeFolder("A/m" + std::to_string(i));
    Choose("A", true, false);
    Get<QCheckBox>("c2").blockSignals(true);
    Get<QCheckBox>("c2").setChecked(true);
    When([this] { return Text("l1") != "0 st"; }, [this] { dialog_->close(); });
    {
        const ExpectBox question = Confirmation("a", "cmdYes");
        ClickOn("Command3");
    }
    EXPECT_EQ(Steps(), "");
    EXPECT_EQ(steps_, QStringList());
    EXPECT_FALSE(app::Globals().FolderUploadRunning);
}

// The main window has been closed: nothing of it is touched, and nobody is told anything.
TEST_F(FolderRun, TheEndOfTheProgramEndsIt) {
    MakeFile("A/f", "1");
    MakeFile("A/g", "2");
    server_.At("STOR f", {Say("150 Send it."), TakeData(1), Stall()});
    Choose("A");
    antal_.setText("57 %");
    When([this] { return server_.Commands().back() == "STOR f"; },
         [this] {
             Ftp1_.Shutdown();
             dialog_->close();
             window_.close();
         });
    {
        const ExpectBox question = Confirmation("a", "cmdYes");
        ClickOn("Command3");
    }
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_EQ(steps_, QStringList());
    EXPECT_EQ(antal_.text(), "57 %");
    EXPECT_FALSE(app::Globals().FolderUploadRunning);
    EXPECT_FALSE(app::Globals().ServerListBusy);
}

TEST_F(FolderRun, TheHiddenButtonCarriesOutTheListAsItIs) {
    MakeFile("A/f", "1");
    Choose("A", false);
    std::filesystem::remove(Native("A/f"));
    MakeFile("A/g", "2");
    {
        const ExpectBox done = Done();
        Button("Command1").click();
    }
    EXPECT_EQ(Steps(), "MKD a, CWD a, CWD .., LIST");
    EXPECT_EQ(errors_.size(), 1);
}

}  // namespace
}  // namespace forms
