#include "tests/forms/session/session.h"

using ftp_test::Make;
using toolkit_test::ExpectBox;

namespace forms {
namespace {

const QString kRename = QStringLiteral("Döp om fil");
const QString kDelete = QStringLiteral("Ta bort fil/katalog från server");
const QString kDeleteSeveral = QStringLiteral("Ta bort filer");
const QString kSeveralQuestion = QStringLiteral("Vill du ta bort alla markerade filer ?");
const QString kMakeDirectory = QStringLiteral("Skapa katalog");
const QStringList kIdlePanel{"Command9", "Command14", "Command21", "Command23"};

// What is asked, what is sent and which buttons are left: on a server whose every command is seen.
class ServerFiles : public Session {
 protected:
    void SetUp() override {
        Session::SetUp();
        server_.SetListing({"drwxr-xr-x 2 u g 512 Jan 1 10:00 pub", "-rw-r--r-- 1 u g 3 Jan 1 10:00 a.txt",
                            "-rw-r--r-- 1 u g 3 Jan 1 10:00 b.txt", "-rw-r--r-- 1 u g 3 Jan 1 10:00 ends\\",
                            "-rw-r--r-- 1 u g 3 Jan 1 10:00 two words.txt"});
        for (const char* name : {"a.txt", "b.txt", "ends", "ends\\", "words.txt"})
            server_.AddFile(name, "hej");
        Open();
        Connect(server_.HostField());
        seen_ = server_.Commands().size();
    }

    /// The commands since the last call that change something or list, in order.
    QStringList Sent() {
        QStringList sent;
        const auto commands = server_.Commands();
        for (; seen_ < commands.size(); ++seen_)
            for (const char* verb : {"RNFR", "RNTO", "DELE", "RMD", "MKD", "LIST", "RETR"})
                if (commands[seen_].starts_with(verb)) sent.append(QString::fromStdString(commands[seen_]));
        return sent;
    }

    ftp_test::ScriptedServer server_;
    std::size_t seen_ = 0;
};

TEST_F(ServerFiles, RenamingAsksForTheNewName) {
    ClickServer("a.txt");
    {
        ExpectBox box(kRename, "Nytt namn på [a.txt]", "cmdOk", "c d.txt");
        ClickOn("Command10");
    }
    EXPECT_EQ(Sent(), QStringList({"RNFR a.txt", "RNTO c d.txt", "LIST"}));
    EXPECT_EQ(Enabled(kPanelButtons), kIdlePanel);
}

TEST_F(ServerFiles, WithoutANewNameNothingIsRenamed) {
    ClickServer("a.txt");
    for (const auto& [press, typed] : {std::pair("cmdCancel", "c.txt"), std::pair("cmdOk", "")}) {
        ExpectBox box(kRename, "Nytt namn på [a.txt]", press, typed);
        ClickOn("Command10");
    }
    EXPECT_EQ(Sent(), QStringList());
    EXPECT_TRUE(Button("Command10").isEnabled());
}

TEST_F(ServerFiles, OnlyRenamingTakesABackslashFromTheNamesEnd) {
    ClickServer("ends\\");
    {
        ExpectBox box(kRename, "Nytt namn på [ends]", "cmdOk", "c.txt");
        ClickOn("Command10");
    }
    EXPECT_EQ(Sent(), QStringList({"RNFR ends", "RNTO c.txt", "LIST"}));
    ClickServer("ends\\");
    ExpectBox box(kDelete, "Vill du ta bort [ends\\] ?", "cmdYes");
    ClickOn("Command13");
    EXPECT_EQ(Sent(), QStringList({"DELE ends\\", "LIST"}));
}

TEST_F(ServerFiles, SeveralFilesAreNotRenamed) {
    ClickServer("a.txt");
    ClickServer("b.txt", Qt::ControlModifier);
    ExpectBox box("OBS!", "Det går tyvärr inte att ta döpa om fler än en fil i taget.", "cmdOk");
    QTest::keyClick(&Get("listdir2"), Qt::Key_F2);
    EXPECT_TRUE(box.HasCome());
    EXPECT_EQ(Sent(), QStringList());
}

TEST_F(ServerFiles, DeletingAFileAsksFirst) {
    ClickServer("a.txt");
    {
        ExpectBox box(kDelete, "Vill du ta bort [a.txt] ?", "cmdNo");
        ClickOn("Command13");
    }
    EXPECT_EQ(Sent(), QStringList());
    EXPECT_TRUE(Button("Command13").isEnabled());
    ExpectBox box(kDelete, "Vill du ta bort [a.txt] ?", "cmdYes");
    ClickOn("Command13");
    EXPECT_EQ(Sent(), QStringList({"DELE a.txt", "LIST"}));
    EXPECT_EQ(Enabled(kPanelButtons), kIdlePanel);
}

TEST_F(ServerFiles, DeletingADirectoryRemovesIt) {
    ClickServer("pub");
    {
        ExpectBox box(kDelete, "Vill du ta bort [pub] ?", ExpectBox::kEscape);
        ClickOn("Command13");
    }
    EXPECT_EQ(Sent(), QStringList());
    ExpectBox box(kDelete, "Vill du ta bort [pub] ?", "cmdYes");
    ClickOn("Command13");
    EXPECT_EQ(Sent(), QStringList({"RMD pub", "LIST"}));
}

TEST_F(ServerFiles, DeletingSeveralAsksOnceAndTakesTheListsOrder) {
    ClickServer("b.txt");
    ClickServer("a.txt", Qt::ControlModifier);
    {
        ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdNo");
        ClickOn("Command13");
    }
    EXPECT_EQ(Sent(), QStringList());
    EXPECT_TRUE(Button("Command13").isEnabled());
    ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
    ClickOn("Command13");
    EXPECT_EQ(Sent(), QStringList({"DELE a.txt", "DELE b.txt", "LIST"}));
    EXPECT_EQ(Enabled(kPanelButtons), kIdlePanel);
    EXPECT_TRUE(Get("listdir2").isEnabled());
}

// The names are trimmed, and without its blank the second one is a file that nobody has marked.
TEST_F(ServerFiles, AMarkedNameThatEndsWithABlankIsLeftOut) {
    server_.SetListing({"-rw-r--r-- 1 u g 3 Jan 1 10:00 a.txt", "-rw-r--r-- 1 u g 3 Jan 1 10:00 b.txt ",
                        "-rw-r--r-- 1 u g 3 Jan 1 10:00 b.txt", "-rw-r--r-- 1 u g 3 Jan 1 10:00 c.txt"});
    ClickOn("Command9");
    Sent();
    ClickServer("a.txt");
    ClickServer("b.txt ", Qt::ControlModifier);
    ClickServer("c.txt", Qt::ControlModifier);
    {
        ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
        ClickOn("Command13");
    }
    EXPECT_EQ(Sent(), QStringList({"DELE a.txt", "DELE c.txt", "LIST"}));
    EXPECT_EQ(
        TraceLines()
            .filter("Fel nummer:10022 Namnet kan inte användas, för det slutar med ett blanksteg: [b.txt ]")
            .size(),
        1);
}

TEST_F(ServerFiles, AMarkedDirectoryIsTriedAsAFileToo) {
    ClickServer("pub");
    ClickServer("a.txt", Qt::ControlModifier);
    ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
    ClickOn("Command13");
    EXPECT_EQ(Sent(), QStringList({"DELE pub", "DELE a.txt", "LIST"}));
}

TEST_F(ServerFiles, WhileSeveralAreDeletedThePanelIsHeld) {
    ClickServer("a.txt");
    ClickServer("b.txt", Qt::ControlModifier);
    server_.At("DELE b.txt", {ftp_test::Hold(), ftp_test::Say("550 No.")});
    bool seen = false;
    When([&] { return server_.Commands().back() == "DELE b.txt"; },
         [&] {
             seen = true;
             EXPECT_EQ(Enabled(kPanelButtons), QStringList());
             EXPECT_FALSE(Get("listdir2").isEnabled());
             auto& queue = Get<toolkit::ListBox>("l1");
             EXPECT_EQ(queue.ListCount(), 2);
             EXPECT_EQ(queue.ListIndex(), 1);
             server_.Release();
         });
    ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
    ClickOn("Command13");
    EXPECT_TRUE(seen);
    EXPECT_EQ(Enabled(kPanelButtons), kIdlePanel);
    EXPECT_FALSE(TraceLines().filter("Fel nummer:").filter("550").isEmpty());
}

TEST_F(ServerFiles, WithNothingMarkedTheQuestionIsAskedAllTheSame) {
    Button("Command13").setEnabled(true);  // no rule enables it then
    ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
    ClickOn("Command13");
    EXPECT_EQ(Sent(), QStringList("LIST"));
}

TEST_F(ServerFiles, MakingADirectoryAsksForItsName) {
    for (const auto& [press, typed] : {std::pair("cmdCancel", "ny"), std::pair("cmdOk", "")}) {
        ExpectBox box(kMakeDirectory, "Namn på ny katalog", press, typed);
        ClickOn("Command14");
    }
    EXPECT_EQ(Sent(), QStringList());
    ExpectBox box(kMakeDirectory, "Namn på ny katalog", "cmdOk", "nya bilder");
    ClickOn("Command14");
    EXPECT_EQ(Sent(), QStringList({"MKD nya bilder", "LIST"}));
    EXPECT_EQ(Enabled(kPanelButtons), kIdlePanel);
}

// What the server refuses is told in the trace, and the list is read again in any case.
TEST_F(ServerFiles, RefusalsAreToldAndTheListIsReadAgain) {
    server_.At("RNTO", {ftp_test::Say("553 Name taken.")});
    server_.At("DELE", {ftp_test::Say("550 Not yours.")});
    server_.At("RMD", {ftp_test::Say("550 Not empty.")});
    server_.At("MKD", {ftp_test::Say("521 It is there.")});
    ClickServer("a.txt");
    {
        ExpectBox box(kRename, "Nytt namn på [a.txt]", "cmdOk", "b.txt");
        ClickOn("Command10");
    }
    ClickServer("a.txt");
    {
        ExpectBox box(kDelete, "Vill du ta bort [a.txt] ?", "cmdYes");
        ClickOn("Command13");
    }
    ClickServer("pub");
    {
        ExpectBox box(kDelete, "Vill du ta bort [pub] ?", "cmdYes");
        ClickOn("Command13");
    }
    {
        ExpectBox box(kMakeDirectory, "Namn på ny katalog", "cmdOk", "pub");
        ClickOn("Command14");
    }
    EXPECT_EQ(Sent(), QStringList({"RNFR a.txt", "RNTO b.txt", "LIST", "DELE a.txt", "LIST", "RMD pub",
                                   "LIST", "MKD pub", "LIST"}));
    const QStringList errors = TraceLines().filter("Fel nummer:");
    ASSERT_EQ(errors.size(), 4) << qPrintable(errors.join('\n'));
    const char* const words[] = {"Name taken.", "Not yours.", "Not empty.", "It is there."};
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(errors[i].contains(words[i])) << qPrintable(errors[i]);
}

// Whatever the user types reaches the server as one name, or not at all.
TEST_F(ServerFiles, ANameCannotBecomeACommand) {
    ClickServer("a.txt");
    ExpectBox box(kRename, "Nytt namn på [a.txt]", "cmdOk");
    box.Meanwhile([](QDialog& dialog) {
        dialog.findChild<QLineEdit*>("txtInput")->setText(QStringLiteral("x\r\nDELE b.txt"));
    });
    ClickOn("Command10");
    EXPECT_EQ(Sent(), QStringList("LIST"));
    EXPECT_EQ(TraceLines().filter("Fel nummer:").size(), 1);
}

// The name is what stands after the last blank of the line.
TEST_F(ServerFiles, ANameWithABlankIsTakenFromTheBlankOn) {
    ClickServer("words.txt");
    {
        ExpectBox box(kDelete, "Vill du ta bort [words.txt] ?", "cmdYes");
        ClickOn("Command13");
    }
    EXPECT_EQ(Sent(), QStringList({"DELE words.txt", "LIST"}));
    ClickServer("words.txt");
    ClickServer("b.txt", Qt::ControlModifier);
    ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
    ClickOn("Command13");
    EXPECT_EQ(Sent(), QStringList({"DELE b.txt", "DELE words.txt", "LIST"}));
}

TEST_F(ServerFiles, WithNothingMarkedNothingIsRenamedOrFetched) {
    ClickServer("a.txt");
    ClickOn("Command9");  // the name is remembered, and no row is marked
    EXPECT_EQ(app::Globals().SelectedServerFile, "a.txt");
    Sent();
    for (const char* name : {"Command10", "Command11", "Command12"}) Button(name).setEnabled(true);
    ExpectBox box("OBS!", "Det går tyvärr inte att ta döpa om fler än en fil i taget.", "cmdOk");
    ClickOn("Command10");
    ClickOn("Command11");
    ClickOn("Command12");
    EXPECT_EQ(Sent(), QStringList());
}

// Who has pressed a button goes on in the list that it belongs to, with its keys.
TEST_F(ServerFiles, TheFocusStaysInTheServerPanel) {
    ClickServer("a.txt");
    {
        ExpectBox box(kDelete, "Vill du ta bort [a.txt] ?", "cmdYes");
        ClickOn("Command13");
    }
    EXPECT_TRUE(Get("listdir2").hasFocus());
    ClickServer("a.txt");
    ClickServer("b.txt", Qt::ControlModifier);
    ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
    QTest::keyClick(&Get("listdir2"), Qt::Key_Delete);
    EXPECT_TRUE(Get("listdir2").hasFocus());
}

// The same on servers as they are.
class ServerFilesOn : public Session, public ::testing::WithParamInterface<Make> {
 protected:
    void SetUp() override {
        if (auto reason = ftp_test::WhyMissing(GetParam())) GTEST_SKIP() << *reason;
        Session::SetUp();
        server_ = std::make_unique<ftp_test::Server>(GetParam());
    }

    void Begin() {
        Open();
        Connect(server_->HostField());
    }

    bool IsListed(const QString& name) {
        for (int row = 0; row < ServerLines().ListCount(); ++row)
            if (ServerLines().List(row).endsWith(u' ' + name)) return true;
        return false;
    }

    std::unique_ptr<ftp_test::Server> server_;
};

TEST_P(ServerFilesOn, RenamesMakesAndRemoves) {
    server_->WriteFile("gammal.txt", "innehåll");
    Begin();
    ClickServer("gammal.txt");
    {
        ExpectBox box(kRename, "Nytt namn på [gammal.txt]", "cmdOk", "nyår.txt");
        ClickOn("Command10");
    }
    EXPECT_EQ(server_->ReadFile("nyår.txt"), "innehåll");
    EXPECT_TRUE(IsListed("nyår.txt"));
    EXPECT_FALSE(IsListed("gammal.txt"));
    {
        ExpectBox box(kMakeDirectory, "Namn på ny katalog", "cmdOk", "bilder");
        ClickOn("Command14");
    }
    EXPECT_TRUE(std::filesystem::is_directory(server_->Home() / "bilder"));
    ClickServer("bilder");
    {
        ExpectBox box(kDelete, "Vill du ta bort [bilder] ?", "cmdYes");
        ClickOn("Command13");
    }
    EXPECT_FALSE(std::filesystem::exists(server_->Home() / "bilder"));
    ClickServer("nyår.txt");
    {
        ExpectBox box(kDelete, "Vill du ta bort [nyår.txt] ?", "cmdYes");
        ClickOn("Command13");
    }
    EXPECT_EQ(server_->ReadFile("nyår.txt"), std::nullopt);
    EXPECT_EQ(TraceLines().filter("Fel nummer:"), QStringList());
}

TEST_P(ServerFilesOn, ADirectoryThatIsNotEmptyStays) {
    server_->MakeFolder("full");
    server_->WriteFile("full/a.txt", "a");
    Begin();
    ClickServer("full");
    ExpectBox box(kDelete, "Vill du ta bort [full] ?", "cmdYes");
    ClickOn("Command13");
    EXPECT_EQ(server_->ReadFile("full/a.txt"), "a");
    EXPECT_TRUE(IsListed("full"));
    EXPECT_EQ(TraceLines().filter("Fel nummer:").size(), 1);
}

TEST_P(ServerFilesOn, OfSeveralTheFilesAreDeletedAndADirectoryStays) {
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) server_->WriteFile(name, name);
    server_->MakeFolder("mapp");
    Begin();
    ClickServer("mapp");
    ClickServer("a.txt", Qt::ControlModifier);
    ClickServer("c.txt", Qt::ControlModifier);
    ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
    ClickOn("Command13");
    EXPECT_FALSE(IsListed("a.txt"));
    EXPECT_TRUE(IsListed("b.txt"));
    EXPECT_FALSE(IsListed("c.txt"));
    EXPECT_TRUE(IsListed("mapp"));
    EXPECT_EQ(TraceLines().filter("Fel nummer:").size(), 1);
}

INSTANTIATE_TEST_SUITE_P(Servers, ServerFilesOn, ::testing::ValuesIn(ftp_test::AllServers()),
                         [](const auto& server) { return ftp_test::Name(server.param); });

}  // namespace
}  // namespace forms
