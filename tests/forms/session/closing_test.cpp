#include "tests/forms/session/session.h"

using ftp_test::Say;
using ftp_test::SendData;
using ftp_test::Stall;
using ftp_test::TakeData;
using toolkit_test::ExpectBox;

namespace forms {
namespace {

/// The main window is closed in the middle of an operation: that ends, and leaves nothing half done.
class Closing : public Session {
 protected:
    void SetUp() override {
        Session::SetUp();
        WriteLocalFile("a.txt", QByteArray(2000, 'a'));
        WriteLocalFile("b.txt", QByteArray(2000, 'b'));
        server_.AddFile("x.txt", "xxx");
        server_.AddFile("y.txt", "yyy");
        Open();
    }

    void TearDown() override {
        EXPECT_TRUE(closed_);
        EXPECT_FALSE(window_->isVisible());
        for (const char* name : {"frmConnection", "Form1", "MsgBox"}) EXPECT_FALSE(Window(name)) << name;
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
        Session::TearDown();
        EXPECT_EQ(LocalNames(), QStringList({"a.txt", "b.txt"}));
    }

    void CloseAt(const std::string& command) {
        When(
            [this, command] {
                return !server_.Commands().empty() && server_.Commands().back().starts_with(command);
            },
            [this] {
                closed_ = true;
                window_->close();
            });
    }

    ftp_test::ScriptedServer server_;
    bool closed_ = false;
};

TEST_F(Closing, WhileConnecting) {
    server_.At("PASS", {Stall()});
    QWidget* dialog = OpenConnectionDialog(server_.HostField());
    CloseAt("PASS");
    QTest::mouseClick(dialog->findChild<QPushButton*>("cmdConnect"), Qt::LeftButton);
}

TEST_F(Closing, WhileListing) {
    Connect(server_.HostField());
    server_.At("LIST",
               {Say("150 Here it comes."), SendData("-rw-r--r-- 1 u g 3 Jan 1 10:00 x.txt\r\n"), Stall()});
    CloseAt("LIST");
    ClickOn("Command9");
}

TEST_F(Closing, WhileAFileGoesUp) {
    Connect(server_.HostField());
    server_.At("STOR", {Say("150 Send it."), TakeData(10), Stall()});
    ClickLocal("a.txt");
    CloseAt("STOR");
    ClickOn("Command1");
}

TEST_F(Closing, WhileAFileComesDown) {
    Connect(server_.HostField());
    server_.At("RETR", {Say("150 Here it comes."), SendData("x"), Stall()});
    ClickServer("x.txt");
    CloseAt("RETR");
    ExpectBox name("Ladda hem fil från Server", "Spara x.txt(?)som", "cmdOk");
    ClickOn("Command2");
}

TEST_F(Closing, WhileABatchGoesUp) {
    Connect(server_.HostField());
    server_.At("STOR", {Say("150 Send it."), TakeData(10), Stall()});
    ClickLocal("a.txt");
    ClickLocal("b.txt", Qt::ControlModifier);
    CloseAt("STOR");
    ClickOn("Command1");
    EXPECT_EQ(server_.File("b.txt"), std::nullopt);
}

TEST_F(Closing, WhileABatchComesDown) {
    Connect(server_.HostField());
    server_.At("RETR", {Say("150 Here it comes."), SendData("x"), Stall()});
    ClickServer("x.txt");
    ClickServer("y.txt", Qt::ControlModifier);
    CloseAt("RETR");
    ClickOn("Command2");
}

// No program is started for what has not come: that would be told in the trace where none is chosen.
TEST_F(Closing, WhileAFileIsFetchedToBeOpened) {
    Connect(server_.HostField());
    server_.At("RETR", {Say("150 Here it comes."), SendData("x"), Stall()});
    ClickServer("x.txt");
    CloseAt("RETR");
    ClickOn("Command11");
    EXPECT_EQ(TraceLines().filter("Fel nummer:").size(), 1) << qPrintable(TraceLines().join('\n'));
}

TEST_F(Closing, WhileSeveralServerFilesAreDeleted) {
    Connect(server_.HostField());
    server_.At("DELE x.txt", {Stall()});
    ClickServer("x.txt");
    ClickServer("y.txt", Qt::ControlModifier);
    CloseAt("DELE");
    ExpectBox box("Ta bort filer", "Vill du ta bort alla markerade filer ?", "cmdYes");
    ClickOn("Command13");
    EXPECT_EQ(server_.File("y.txt"), "yyy");
}

TEST_F(Closing, WhileAServerFileIsRenamed) {
    Connect(server_.HostField());
    server_.At("RNFR", {Stall()});
    ClickServer("x.txt");
    CloseAt("RNFR");
    ExpectBox box("Döp om fil", "Nytt namn på [x.txt]", "cmdOk", "z.txt");
    ClickOn("Command10");
    EXPECT_EQ(server_.File("x.txt"), "xxx");
}

TEST_F(Closing, WhileADirectoryIsMade) {
    Connect(server_.HostField());
    server_.At("MKD", {Stall()});
    CloseAt("MKD");
    ExpectBox box("Skapa katalog", "Namn på ny katalog", "cmdOk", "ny");
    ClickOn("Command14");
}

}  // namespace
}  // namespace forms
