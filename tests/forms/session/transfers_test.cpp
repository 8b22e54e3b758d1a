#include <QCloseEvent>

#include "tests/forms/session/session.h"

using ftp_test::OpenData;
using ftp_test::Say;
using ftp_test::SendData;
using ftp_test::Stall;
using ftp_test::TakeData;
using toolkit_test::ExpectBox;

namespace forms {
namespace {

const QStringList kIdlePanel{"Command9", "Command14", "Command21", "Command23"};

class Transfers : public Session {
 protected:
    void SetUp() override {
        Session::SetUp();
        for (const char* name : {"a.txt", "b.txt", "c.txt"}) WriteLocalFile(name, QByteArray(2000, name[0]));
        for (const char* name : {"x.txt", "y.txt", "z.txt"})
            server_.AddFile(name, std::string(3000, name[0]));
        Open();
        Connect(server_.HostField());
    }

    void SelectLocal(const QStringList& names) {
        for (const QString& name : names)
            ClickLocal(name, name == names.first() ? Qt::NoModifier : Qt::ControlModifier);
    }
    void SelectServer(const QStringList& names) {
        for (const QString& name : names)
            ClickServer(name, name == names.first() ? Qt::NoModifier : Qt::ControlModifier);
    }

    static QByteArray Content(char letter) { return QByteArray(3000, letter); }
    static std::string Sent(char letter) { return std::string(2000, letter); }

    /// The server stops after some bytes, and goes on when the transfer is aborted.
    void StallDownload(const std::string& name) {
        server_.At("RETR " + name, 1, {Say("150 Here it comes."), SendData("0123456789"), Stall()});
    }
    void StallUpload(const std::string& name) {
        server_.At("STOR " + name, 1, {Say("150 Send it."), TakeData(10), Stall()});
    }

    /// When the download has come to a stop.
    void WhenStalled(std::function<void()> act) {
        When([this] { return Strip("label7") == "10"; }, std::move(act));
    }

    QPushButton& AbortBatch() { return *Window("Form1")->findChild<QPushButton*>("Command1"); }

    ftp_test::ScriptedServer server_;
};

TEST_F(Transfers, OneFileGoesUp) {
    ClickLocal("b.txt");
    ClickOn("Command1");
    EXPECT_EQ(server_.File("b.txt"), Sent('b'));
    EXPECT_GE(ServerRowOf("b.txt"), 0);
    EXPECT_EQ(Enabled(kPanelButtons), kIdlePanel);
    EXPECT_TRUE(Get("listdir2").isEnabled());
    EXPECT_FALSE(Button("avb").isEnabled());
    EXPECT_EQ(app::Globals().UploadRunning, 0);
    EXPECT_EQ(Strip("antal"), "100 %");
    EXPECT_EQ(Strip("label7"), "2000");
}

TEST_F(Transfers, AFolderIsRememberedOnceByItsUploads) {
    auto& folders = Get<QComboBox>("lk");
    for (const char* name : {"a.txt", "b.txt"}) {
        ClickLocal(name);
        ClickOn("Command1");
    }
    EXPECT_EQ(folders.count(), 1);
    EXPECT_EQ(folders.itemText(0), Folder());
}

TEST_F(Transfers, OneFileComesDownUnderTheNameThatIsGiven) {
    ClickServer("x.txt");
    {
        ExpectBox name("Ladda hem fil från Server", "Spara x.txt(?)som", "cmdOk", "a.txt");
        ClickOn("Command2");
    }
    EXPECT_EQ(LocalFile("a.txt"), Content('x'));  // the file of that name is replaced
    EXPECT_EQ(LocalNames(), QStringList({"a.txt", "b.txt", "c.txt"}));
    EXPECT_EQ(Enabled(kPanelButtons), kIdlePanel);
    EXPECT_TRUE(Get("listdir2").isEnabled());
    EXPECT_FALSE(Button("avb").isEnabled());
    EXPECT_EQ(app::Globals().DownloadRunning, 0);
    EXPECT_EQ(ServerLines().ListCount(), 3);
    ClickServer("y.txt");
    EXPECT_EQ(Enabled(kRowButtons), kRowButtons);
}

TEST_F(Transfers, ADownloadWithoutANameChangesNothing) {
    ClickServer("x.txt");
    const QStringList enabled = Enabled(kPanelButtons);
    const auto before = server_.Commands();
    {
        ExpectBox empty("Ladda hem fil från Server", "Spara x.txt(?)som", "cmdOk", "");
        ClickOn("Command2");
    }
    {
        ExpectBox cancelled("Ladda hem fil från Server", "Spara x.txt(?)som", "cmdCancel");
        ClickOn("Command2");
    }
    EXPECT_EQ(Enabled(kPanelButtons), enabled);
    EXPECT_EQ(server_.Commands(), before);
}

TEST_F(Transfers, WhileOneRunsOnlyItsAbortIsEnabled) {
    StallDownload("x.txt");
    ClickServer("x.txt");
    bool seen = false;
    WhenStalled([&] {
        seen = true;
        EXPECT_EQ(Enabled(kPanelButtons), QStringList());
        EXPECT_FALSE(Get("listdir2").isEnabled());
        EXPECT_TRUE(Button("avb").isEnabled());
        EXPECT_EQ(app::Globals().DownloadRunning, 1);
        ExpectBox question(kAbortTitle, kAbortQuestion, "cmdYes");
        ClickOn("avb");
        EXPECT_EQ(Strip("antal"), "0 %");
        EXPECT_EQ(BarWidth(), 15);
    });
    ExpectBox name("Ladda hem fil från Server", "Spara x.txt(?)som", "cmdOk", "ny.txt");
    ClickOn("Command2");
    EXPECT_TRUE(seen);
    EXPECT_EQ(LocalNames(), QStringList({"a.txt", "b.txt", "c.txt"}));
    EXPECT_EQ(Enabled(kPanelButtons), kIdlePanel);
}

TEST_F(Transfers, AfterAnAbortTheNextOneWorks) {
    StallDownload("x.txt");
    ClickServer("x.txt");
    {
        WhenStalled([&] {
            ExpectBox question(kAbortTitle, kAbortQuestion, "cmdYes");
            ClickOn("avb");
        });
        ExpectBox name("Ladda hem fil från Server", "Spara x.txt(?)som", "cmdOk");
        ClickOn("Command2");
    }
    ClickServer("x.txt");
    {
        ExpectBox name("Ladda hem fil från Server", "Spara x.txt(?)som", "cmdOk");
        ClickOn("Command2");
    }
    EXPECT_EQ(LocalFile("x.txt"), Content('x'));
    ClickLocal("a.txt");
    ClickOn("Command1");
    EXPECT_EQ(server_.File("a.txt"), Sent('a'));
}

TEST_F(Transfers, NoLetsItGoOn) {
    server_.At("RETR x.txt", {Say("150 Here it comes."), SendData("0123456789"), ftp_test::Hold(),
                              SendData("abc"), ftp_test::CloseData(), Say("226 Done.")});
    server_.At("SIZE", {Say("500 What?")});
    ClickServer("x.txt");
    WhenStalled([&] {
        {
            ExpectBox question(kAbortTitle, kAbortQuestion, "cmdNo");
            ClickOn("avb");
        }
        EXPECT_NE(Strip("antal"), "100 %");
        server_.Release();
    });
    ExpectBox name("Ladda hem fil från Server", "Spara x.txt(?)som", "cmdOk");
    ClickOn("Command2");
    EXPECT_EQ(LocalFile("x.txt"), "0123456789abc");
}

TEST_F(Transfers, ALateYesFindsNothingToAbort) {
    server_.At("RETR x.txt", {Say("150 Here it comes."), SendData("0123456789"), ftp_test::Hold(),
                              ftp_test::CloseData(), Say("226 Done.")});
    server_.At("SIZE", {Say("500 What?")});
    ClickServer("x.txt");
    WhenStalled([&] {
        ExpectBox question(kAbortTitle, kAbortQuestion, "cmdYes");
        question.Meanwhile([&](QDialog&) {
            server_.Release();
            ASSERT_TRUE(QTest::qWaitFor([&] { return LocalFile("x.txt") == "0123456789"; }));
        });
        ClickOn("avb");
    });
    {
        ExpectBox name("Ladda hem fil från Server", "Spara x.txt(?)som", "cmdOk");
        ClickOn("Command2");
    }
    EXPECT_EQ(LocalFile("x.txt"), "0123456789");
    ClickOn("Command9");
    EXPECT_EQ(ServerLines().ListCount(), 3);
}

TEST_F(Transfers, SeveralFilesGoUpOneByOne) {
    SelectLocal({"a.txt", "c.txt"});
    ClickOn("Command1");
    EXPECT_EQ(server_.File("a.txt"), Sent('a'));
    EXPECT_EQ(server_.File("b.txt"), std::nullopt);
    EXPECT_EQ(server_.File("c.txt"), Sent('c'));
    EXPECT_FALSE(Window("Form1"));
    EXPECT_TRUE(Get("listdir2").isEnabled());
    EXPECT_EQ(ServerLines().ListCount(), 5);
    EXPECT_EQ(app::Globals().UploadRunning, 0);
    EXPECT_EQ(Enabled(kPanelButtons), kIdlePanel);
}

TEST_F(Transfers, SeveralFilesComeDownOneByOne) {
    SelectServer({"x.txt", "y.txt", "z.txt"});
    ClickOn("Command2");
    for (const char* name : {"x.txt", "y.txt", "z.txt"}) EXPECT_EQ(LocalFile(name), Content(name[0]));
    EXPECT_EQ(Names().size(), 6);
    EXPECT_EQ(app::Globals().DownloadRunning, 0);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(Enabled(kPanelButtons), kIdlePanel);
    ClickServer("x.txt");
    EXPECT_EQ(Enabled(kRowButtons), kRowButtons);
}

TEST_F(Transfers, AFailedFileDoesNotStopTheBatch) {
    server_.At("RETR y.txt", {Say("550 No.")});
    SelectServer({"x.txt", "y.txt", "z.txt"});
    ClickOn("Command2");
    EXPECT_EQ(LocalNames(), QStringList({"a.txt", "b.txt", "c.txt", "x.txt", "z.txt"}));
}

TEST_F(Transfers, ANameThatIsNoPlainOneIsRefusedAndTheBatchGoesOn) {
    server_.SetListing({"-rw-r--r-- 1 u g 3000 Jan 1 10:00 ../y.txt",
                        "-rw-r--r-- 1 u g 3000 Jan 1 10:00 ..\\y.txt",
                        "-rw-r--r-- 1 u g 3000 Jan 1 10:00 x.txt"});
    ClickOn("Command9");
    SelectServer({"../y.txt", "..\\y.txt", "x.txt"});
    ClickOn("Command2");
    EXPECT_EQ(LocalNames(), QStringList({"a.txt", "b.txt", "c.txt", "x.txt"}));
    EXPECT_EQ(TraceLines().filter("Fel nummer:75 ").size(), 2) << qPrintable(TraceLines().join('\n'));
}

TEST_F(Transfers, TheWindowShowsTheFileThatIsOnItsWay) {
    server_.SetListing({"-rw-r--r--   1 ftp      ftp            40 Jan 01 10:00 x.txt",
                        "-rw-r--r--   1 ftp      ftp            20 Jan 01 10:00 y.txt"});
    server_.At("SIZE", {Say("500 What?")});
    ClickOn("Command9");
    StallDownload("y.txt");
    SelectServer({"x.txt", "y.txt"});
    When([&] { return Window("Form1") && Window("Form1")->windowTitle() == "Överfört: 10 av 20  50 %"; },
         [&] {
             auto* queue = Window("Form1")->findChild<toolkit::ListBox*>("l1");
             EXPECT_EQ(queue->ListCount(), 2);
             EXPECT_EQ(queue->ListIndex(), 1);
             EXPECT_TRUE(queue->Selected(1));
             EXPECT_EQ(app::Globals().FileSizeText, "20 ");
             ExpectBox question(kAbortTitle, kAbortQuestion, "cmdYes");
             QTest::mouseClick(&AbortBatch(), Qt::LeftButton);
         });
    ClickOn("Command2");
    EXPECT_FALSE(Window("Form1"));
}

TEST_F(Transfers, AbortingTheBatchEndsItWithTheRunningFile) {
    StallDownload("x.txt");
    SelectServer({"x.txt", "y.txt", "z.txt"});
    bool seen = false;
    WhenStalled([&] {
        {
            ExpectBox no(kAbortTitle, kAbortQuestion, "cmdNo");
            QTest::mouseClick(&AbortBatch(), Qt::LeftButton);
        }
        EXPECT_EQ(Window("Form1")->findChild<toolkit::ListBox*>("l1")->ListCount(), 3);
        {
            ExpectBox yes(kAbortTitle, kAbortQuestion, "cmdYes");
            QTest::mouseClick(&AbortBatch(), Qt::LeftButton);
        }
        seen = true;
        EXPECT_EQ(Window("Form1")->findChild<toolkit::ListBox*>("l1")->ListCount(), 0);
        EXPECT_EQ(Strip("antal"), "0 %");
        EXPECT_EQ(BarWidth(), 15);
        EXPECT_FALSE(Window("Form1")->findChild<QTimer*>("Timer1")->isActive());
    });
    ClickOn("Command2");
    EXPECT_TRUE(seen);
    EXPECT_FALSE(Window("Form1"));
    EXPECT_EQ(LocalNames(), QStringList({"a.txt", "b.txt", "c.txt"}));
    EXPECT_EQ(Strip("antal"), "0 %");
    EXPECT_EQ(BarWidth(), 15);
    EXPECT_FALSE(Button("avb").isEnabled());
    EXPECT_TRUE(Get("listdir2").isEnabled());

    SelectServer({"y.txt", "z.txt"});
    ClickOn("Command2");
    EXPECT_EQ(LocalFile("z.txt"), Content('z'));
}

TEST_F(Transfers, AbortingFromTheMainWindowEndsTheRunningFileOnly) {
    StallUpload("a.txt");
    SelectLocal({"a.txt", "b.txt", "c.txt"});
    When([&] { return server_.Commands().back().starts_with("STOR a.txt") && Button("avb").isEnabled(); },
         [&] {
             ExpectBox question(kAbortTitle, kAbortQuestion, "cmdYes");
             ClickOn("avb");
         });
    ClickOn("Command1");
    EXPECT_EQ(server_.File("b.txt"), Sent('b'));
    EXPECT_EQ(server_.File("c.txt"), Sent('c'));
    EXPECT_FALSE(Window("Form1"));
}

TEST_F(Transfers, TheCloseBoxOfTheWindowAsksToAbort) {
    StallDownload("x.txt");
    SelectServer({"x.txt", "y.txt"});
    WhenStalled([&] {
        ExpectBox question(kAbortTitle, kAbortQuestion, "cmdYes");
        QCloseEvent close;
        QApplication::sendEvent(Window("Form1")->windowHandle(), &close);
        EXPECT_TRUE(Window("Form1"));
    });
    ClickOn("Command2");
    EXPECT_FALSE(Window("Form1"));
    EXPECT_EQ(LocalNames(), QStringList({"a.txt", "b.txt", "c.txt"}));
}

}  // namespace
}  // namespace forms
