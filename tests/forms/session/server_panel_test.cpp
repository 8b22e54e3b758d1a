#include "tests/forms/session/session.h"

namespace forms {
namespace {

class ServerPanel : public Session {
 protected:
    void SetUp() override {
        Session::SetUp();
        server_.SetListing({"total 24", "drwxr-xr-x 2 u g 512 Jan 1 10:00 pub",
                            "lrwxrwxrwx 1 u g 7 Jan 1 10:00 www -> htdocs",
                            "-rw-r--r-- 1 u g 100 Jan 1 10:00 a.txt",
                            "-rw-r--r-- 1 u g 200 Jan 1 10:00 b.txt"});
        Open();
        Connect(server_.HostField());
    }

    int Count(const std::string& command) const {
        const auto commands = server_.Commands();
        return static_cast<int>(std::ranges::count_if(
            commands, [&](const std::string& line) { return line.starts_with(command); }));
    }

    ftp_test::ScriptedServer server_;
};

TEST_F(ServerPanel, ConnectingEnablesWhatActsOnTheDirectory) {
    EXPECT_EQ(ServerLines().ListCount(), 4);  // the summary is no row
    EXPECT_EQ(Enabled(kPanelButtons), QStringList({"Command9", "Command14", "Command21", "Command23"}));
    EXPECT_TRUE(Button("Command16").isEnabled());
    EXPECT_FALSE(Button("cmdConnection").isEnabled());
}

TEST_F(ServerPanel, TheSelectionDecidesWhichButtonsAreEnabled) {
    ClickServer("a.txt");
    EXPECT_EQ(Enabled(kRowButtons), kRowButtons);
    EXPECT_EQ(app::Globals().SelectedServerFile, "a.txt");
    EXPECT_EQ(app::Globals().SelectedServerDir, "");

    ClickServer("b.txt", Qt::ControlModifier);
    EXPECT_EQ(Enabled(kRowButtons), QStringList({"Command2", "Command13"}));

    ClickServer("pub", Qt::ControlModifier);
    EXPECT_EQ(Enabled(kRowButtons), QStringList());
    EXPECT_EQ(app::Globals().SelectedServerFile, "");
    EXPECT_EQ(app::Globals().SelectedServerDir, "pub");

    ClickServer("pub");
    EXPECT_EQ(Enabled(kRowButtons), QStringList({"Command13"}));

    ClickServer("htdocs");
    EXPECT_EQ(Enabled(kRowButtons), QStringList({"Command13"}));
    EXPECT_EQ(app::Globals().SelectedServerDir, "htdocs");
}

TEST_F(ServerPanel, TheRowThatCountsIsAMarkedOne) {
    ClickServer("a.txt");
    ClickServer("b.txt", Qt::ControlModifier);
    ClickServer("a.txt", Qt::ControlModifier);  // b.txt alone is marked now
    EXPECT_EQ(app::Globals().SelectedServerFile, "b.txt");
    EXPECT_EQ(Enabled(kRowButtons), kRowButtons);
}

TEST_F(ServerPanel, TheKeyboardSelectsAsClicksDo) {
    ClickServer("pub");
    auto& list = Get("listdir2");
    QTest::keyClick(&list, Qt::Key_End);
    EXPECT_EQ(app::Globals().SelectedServerFile, "b.txt");
    EXPECT_EQ(Enabled(kRowButtons), kRowButtons);
    QTest::keyClick(&list, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(app::Globals().SelectedServerFile, "a.txt");
    EXPECT_EQ(Enabled(kRowButtons), QStringList({"Command2", "Command13"}));
    QTest::keyClick(&list, Qt::Key_Home);
    EXPECT_EQ(app::Globals().SelectedServerDir, "pub");
    EXPECT_EQ(Enabled(kRowButtons), QStringList({"Command13"}));
}

TEST_F(ServerPanel, AClickTakesTheEstimateOutOfTheTitle) {
    window_->setWindowTitle("Websmide's FTP-program 3.0   -   320 KB");
    ClickServer("a.txt");
    EXPECT_EQ(window_->windowTitle(), "Websmide's FTP-program 3.0");
}

TEST_F(ServerPanel, RefreshingListsAgainAndDisablesWhatActsOnARow) {
    ClickServer("a.txt");
    server_.SetListing({"-rw-r--r-- 1 u g 100 Jan 1 10:00 c.txt"});
    ClickOn("Command9");
    EXPECT_EQ(ServerLines().ListCount(), 1);
    EXPECT_EQ(ServerRowOf("c.txt"), 0);
    EXPECT_EQ(Enabled(kPanelButtons), QStringList({"Command9", "Command14", "Command21", "Command23"}));
    EXPECT_EQ(app::Globals().SelectedServerFile, "a.txt");  // until a row is clicked
    EXPECT_FALSE(app::Globals().ServerListBusy);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(ServerPanel, RefreshingIsBusyAndWaits) {
    server_.At("LIST", 2, {ftp_test::Hold(), ftp_test::Proper()});
    bool seen = false;
    When([&] { return server_.Commands().back().starts_with("LIST") && Count("LIST") == 2; },
         [&] {
             seen = true;
             EXPECT_TRUE(app::Globals().ServerListBusy);
             EXPECT_NE(QGuiApplication::overrideCursor(), nullptr);
             EXPECT_EQ(ServerLines().ListCount(), 0);
             ClickOn("Command21");  // swallowed
             server_.Release();
         });
    ClickOn("Command9");
    EXPECT_TRUE(seen);
    EXPECT_EQ(ServerLines().ListCount(), 4);
    EXPECT_EQ(Count("CDUP") + Count("CWD"), 0);
}

TEST_F(ServerPanel, AFailedListingLeavesThePanelUsable) {
    server_.At("LIST", 2, {ftp_test::Say("450 Not now.")});
    ClickOn("Command9");
    EXPECT_EQ(ServerLines().ListCount(), 0);
    EXPECT_EQ(Enabled(kPanelButtons), QStringList({"Command9", "Command14", "Command21", "Command23"}));
    EXPECT_FALSE(app::Globals().ServerListBusy);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    ClickOn("Command9");
    EXPECT_EQ(ServerLines().ListCount(), 4);
}

TEST_F(ServerPanel, ADoubleClickEntersADirectory) {
    DoubleClickServer("pub");
    EXPECT_EQ(Count("CWD pub"), 1);
    EXPECT_EQ(Count("LIST"), 2);
    EXPECT_EQ(Enabled(kPanelButtons), QStringList({"Command9", "Command14", "Command21", "Command23"}));
    DoubleClickServer("htdocs");
    EXPECT_EQ(Count("CWD htdocs"), 1);
    EXPECT_EQ(Count("LIST"), 3);
}

TEST_F(ServerPanel, EnterEntersADirectory) {
    ClickServer("pub");
    QTest::keyClick(&Get("listdir2"), Qt::Key_Return);
    EXPECT_EQ(Count("CWD pub"), 1);
    EXPECT_EQ(Count("LIST"), 2);
    QTest::keyClick(&Get("listdir2"), Qt::Key_Return);  // nothing is marked in the new listing
    EXPECT_EQ(Count("CWD pub"), 1);
}

TEST_F(ServerPanel, ADoubleClickOnAFileDoesNothing) {
    const auto before = server_.Commands();
    DoubleClickServer("a.txt");
    EXPECT_EQ(server_.Commands(), before);
}

TEST_F(ServerPanel, TheParentDirectoryIsListed) {
    ClickServer("a.txt");
    ClickOn("Command21");
    EXPECT_EQ(Count("CDUP") + Count("CWD .."), 1);
    EXPECT_EQ(Count("LIST"), 2);
    EXPECT_EQ(Enabled(kPanelButtons), QStringList({"Command9", "Command14", "Command21", "Command23"}));
}

TEST_F(ServerPanel, LosingTheFocusWithoutASelectionDisablesTheDownload) {
    ClickServer("a.txt");
    Get("list2").setFocus();
    EXPECT_TRUE(Button("Command2").isEnabled());  // a row is marked
    ClickServer("a.txt", Qt::ControlModifier);
    EXPECT_TRUE(Button("Command2").isEnabled());
    Get("list2").setFocus();
    EXPECT_FALSE(Button("Command2").isEnabled());
    EXPECT_FALSE(Button("Command1").isEnabled());
}

TEST_F(ServerPanel, ClosingTheConnectionDisablesThePanel) {
    ClickServer("a.txt");
    ClickOn("Command16");
    EXPECT_EQ(Enabled(kPanelButtons), QStringList());
    EXPECT_EQ(ServerLines().ListCount(), 0);
    EXPECT_FALSE(app::Globals().SessionOpen);
    EXPECT_TRUE(Button("cmdConnection").isEnabled());
    EXPECT_FALSE(Button("Command16").isEnabled());
    Connect(server_.HostField());
    EXPECT_EQ(ServerLines().ListCount(), 4);
}

}  // namespace
}  // namespace forms
