// Single situations that the table of sequences does not hold.

#include <gtest/gtest.h>

#include "ftp/engine/session/files.h"
#include "ftp/engine/session/list.h"
#include "ftp/engine/session/login.h"
#include "ftp/engine/session/retrieve.h"
#include "ftp/engine/session/store.h"
#include "tests/ftp/engine/session/stage.h"

namespace ftp_script {
namespace {

using ftp::FailureKind;
using namespace std::chrono_literals;
using Strings = std::vector<std::string>;

Steps Greeted(const Steps& then) {
    Steps steps{Connects(), Reply("220 Welcome")};
    steps.insert(steps.end(), then.begin(), then.end());
    return steps;
}

FailureKind KindOf(const ftp::Result<>& outcome) {
    EXPECT_FALSE(outcome);
    return outcome ? FailureKind::Protocol : outcome.error().kind;
}

ftp::Task<> ChangeTo(Stage& stage, const std::string& name) {
    return ftp::ChangeDirectoryTo(stage.session, name);
}

ftp::Task<> LogIn(Stage& stage) {
    ftp::HostAndPort where{"host", 21};
    ftp::Access access{{where, ftp::Security::None}, "anna", "hemligt", ""};
    co_return co_await ftp::Login(stage.session, std::move(access));
}

ftp::Task<> LogInWithTls(Stage& stage, bool had_tls, std::string trusted) {
    ftp::HostAndPort where{"host", 21};
    ftp::Access access{.server = {where, ftp::Security::IfOffered},
                       .user = "anna",
                       .password = "hemligt",
                       .account = {},
                       .had_tls = had_tls,
                       .trusted = std::move(trusted)};
    co_return co_await ftp::Login(stage.session, std::move(access));
}

const Steps kOffered{Connects(), Command("AUTH TLS"), Reply("220 Welcome"), Reply("234 Go on")};

TEST(Tls, IsNotGivenUpForPlainTextOnceItHasBeenThere) {
    Stage stage({Connects(), Command("AUTH TLS"), Reply("220 Welcome"), Reply("502 What?")});
    const auto outcome = stage.Run([](Stage& s) { return LogInWithTls(s, true, {}); });
    EXPECT_EQ(KindOf(outcome), FailureKind::NotEncrypted);
    EXPECT_EQ(stage.record.trace, (Strings{"< 220 Welcome", "> AUTH TLS", "< 502 What?"}));
    EXPECT_FALSE(stage.session.LoggedIn());
}

TEST(Tls, EndsWithACertificateThatNobodyTrustsBeforeAnythingIsSaid) {
    Stage stage({Connects(), Command("AUTH TLS"), Reply("220 Welcome"), Reply("234 Go on"),
                 Command(kClientHello), Reply(kServerHello + " expired")});
    const auto outcome = stage.Run([](Stage& s) { return LogInWithTls(s, false, "EF:01"); });
    EXPECT_EQ(KindOf(outcome), FailureKind::NotTrusted);
    EXPECT_EQ(stage.record.secured, Strings{"TLSv1.3 AB:CD"});
    EXPECT_EQ(stage.record.trace, (Strings{"< 220 Welcome", "> AUTH TLS", "< 234 Go on"}));
    EXPECT_EQ(stage.script.Surprise(), "");
}

TEST(Tls, TakesTheCertificateThatTheUserTrusts) {
    Stage stage({Connects(),
                 Command("AUTH TLS"),
                 Reply("220 Welcome"),
                 Reply("234 Go on"),
                 Command(kClientHello),
                 Reply(kServerHello + " expired"),
                 Command("PBSZ 0"),
                 Command("PROT P"),
                 Command("USER anna"),
                 Command("PASS hemligt"),
                 Command("FEAT"),
                 Command("OPTS UTF8 ON"),
                 Command("TYPE I"),
                 Reply("200 Fine"),
                 Reply("200 Fine"),
                 Reply("331 Password?"),
                 Reply("230 In"),
                 Reply("500 What?"),
                 Reply("500 What?"),
                 Reply("200 Image")});
    EXPECT_TRUE(stage.Run([](Stage& s) { return LogInWithTls(s, false, "AB:CD"); }));
    EXPECT_TRUE(stage.session.Encrypted());
}

TEST(Tls, EndsWhereSomethingWasSaidBeforeTheHandshake) {
    for (const char* more : {"\r\n230 In", "\r\n23", "\r\n\xFF"}) {
        Steps steps = kOffered;
        steps.back().bytes += more;
        Stage stage(steps);
        const auto outcome = stage.Run([](Stage& s) { return LogInWithTls(s, false, {}); });
        EXPECT_EQ(KindOf(outcome), FailureKind::TlsFailed) << more;
        EXPECT_TRUE(stage.record.secured.empty());
    }
}

TEST(Session, TraceReadsCommandThenRepliesAlthoughCommandsLeaveTogether) {
    Stage stage({Connects(), Reply("220 Welcome"), Command("USER anna"), Command("PASS hemligt"),
                 Command("FEAT"), Command("OPTS UTF8 ON"), Command("TYPE I"), Reply("331 Password?"),
                 Reply("230-Hi\r\n230 In"), Reply("500 What?"), Reply("500 What?"), Reply("200 Image")});
    EXPECT_TRUE(stage.Run(LogIn));
    EXPECT_EQ(stage.record.trace, (Strings{"< 220 Welcome", "> USER anna", "< 331 Password?", "> PASS ****",
                                           "< 230-Hi", "< 230 In", "> FEAT", "< 500 What?", "> OPTS UTF8 ON",
                                           "< 500 What?", "> TYPE I", "< 200 Image"}));
}

TEST(Session, WrongPasswordIsNotTriedAgain) {
    Stage stage(Greeted({Command("USER anna"), Reply("331 Password?"), Command("PASS hemligt"),
                         Reply("530 Login incorrect.")}));
    const auto outcome = stage.Run(LogIn);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error(), (ftp::Failure{FailureKind::Refused, 530, "Login incorrect."}));
    EXPECT_EQ(stage.session.control, nullptr);
}

TEST(Session, ServerThatSwallowsCommandsSentAheadIsAskedOneByOne) {
    Stage stage({Connects(), Reply("220 Welcome"), Command("USER anna"), Reply("331 Password?"), Connects(),
                 Reply("220 Welcome"), Command("USER anna"), Reply("331 Password?"), Command("PASS hemligt"),
                 Reply("230 In"), Command("FEAT"), Reply("500 What?"), Command("OPTS UTF8 ON"),
                 Reply("500 What?"), Command("TYPE I"), Reply("200 Image")});
    stage.deadlines.early_login = 5ms;
    EXPECT_TRUE(stage.Run(LogIn));
    EXPECT_TRUE(stage.session.habits.one_at_a_time);
    EXPECT_TRUE(stage.script.Completed());
}

TEST(Session, ClosedWhileIdleIsSaidAtTheNextCommand) {
    struct Row {
        Steps end;
        FailureKind kind;
        int code;
    };
    for (const Row& row : {Row{{HangsUp()}, FailureKind::ConnectionLost, 0},
                           Row{{Reply("421 Idle too long"), HangsUp()}, FailureKind::Refused, 421},
                           Row{{Reply("garbage")}, FailureKind::Protocol, 0}}) {
        Stage stage(Greeted(row.end));
        ASSERT_TRUE(stage.LogIn());
        const auto outcome = stage.Run([](Stage& s) { return ChangeTo(s, "x"); });
        ASSERT_FALSE(outcome);
        EXPECT_EQ(outcome.error().kind, row.kind);
        EXPECT_EQ(outcome.error().code, row.code);
        EXPECT_FALSE(stage.Open());
    }
}

TEST(Session, DoubledRepliesAreNotTakenForTheNextCommands) {
    Stage stage(Greeted({Command("RMD a"), Reply("250 first"), Command("MKD b"), Reply("257 second"),
                         Command("TYPE I"), Reply("200 Image")}));
    ASSERT_TRUE(stage.LogIn());
    stage.script.Follow({.doubled = true});
    EXPECT_TRUE(stage.Run([](Stage& s) { return ftp::RemoveDirectoryNamed(s.session, "a"); }));
    EXPECT_TRUE(stage.Run([](Stage& s) { return ftp::MakeDirectoryNamed(s.session, "b"); }));
    EXPECT_TRUE(stage.Run([](Stage& s) { return s.session.Do("TYPE", "I"); }));
    EXPECT_EQ(stage.record.trace,
              (Strings{"< 220 Welcome", "> RMD a", "< 250 first", "< 250 first", "> MKD b", "< 257 second",
                       "< 257 second", "> TYPE I", "< 200 Image"}));
}

TEST(Session, AnswerThatIsNotAboutTheDirectoryEndsTheHaste) {
    Stage stage(Greeted({Command("CWD a"), Command("PWD"), Reply("250 In"), Reply("250 In"), Command("CWD b"),
                         Reply("250 In"), Command("PWD"), Reply("257 \"/a/b\"")}));
    ASSERT_TRUE(stage.LogIn());
    EXPECT_TRUE(stage.Run([](Stage& s) { return ChangeTo(s, "a"); }));
    EXPECT_EQ(stage.session.directory, "") << "nobody knows";
    EXPECT_TRUE(stage.Run([](Stage& s) { return ChangeTo(s, "b"); }));
    EXPECT_EQ(stage.session.directory, "/a/b");
    EXPECT_TRUE(stage.script.Completed());
}

TEST(Session, KnowsWhereItIs) {
    Stage stage(Greeted({Command("CWD a"), Command("PWD"), Reply("250 In"), Reply("257 \"/a\""),
                         Command("CWD b"), Command("PWD"), Reply("550 No"), Reply("502 What?"),
                         Command("CWD c"), Command("PWD"), Reply("250 In"), Reply("502 What?")}));
    ASSERT_TRUE(stage.LogIn());
    EXPECT_EQ(stage.session.directory, std::nullopt);
    EXPECT_TRUE(stage.Run([](Stage& s) { return ChangeTo(s, "a"); }));
    EXPECT_EQ(stage.session.directory, "/a");
    EXPECT_EQ(KindOf(stage.Run([](Stage& s) { return ChangeTo(s, "b"); })), FailureKind::Refused);
    EXPECT_EQ(stage.session.directory, "/a") << "where it was";
    EXPECT_TRUE(stage.Run([](Stage& s) { return ChangeTo(s, "c"); })) << "a server need not know PWD";
    EXPECT_EQ(stage.session.directory, "");
}

TEST(Session, NamesThatCannotBeSentAreRefusedBeforeAnythingIsSent) {
    Stage stage(Greeted({}));
    ASSERT_TRUE(stage.LogIn());
    stage.scratch.Write("source", "x");
    for (const std::string& name : {std::string("a\r\nDELE b"), std::string("a\0b", 3), std::string()}) {
        const std::vector<Stage::Sequence> operations{
            [&](Stage& s) { return ChangeTo(s, name); },
            [&](Stage& s) { return ftp::MakeDirectoryNamed(s.session, name); },
            [&](Stage& s) { return ftp::RemoveDirectoryNamed(s.session, name); },
            [&](Stage& s) { return ftp::DeleteFileNamed(s.session, name); },
            [&](Stage& s) { return ftp::Rename(s.session, name, "b"); },
            [&](Stage& s) { return ftp::Rename(s.session, "a", name); },
            [&](Stage& s) { return ftp::RetrieveFile(s.session, {}, name, s.scratch.Path("target")); },
            [&](Stage& s) { return ftp::StoreFile(s.session, {}, s.scratch.Path("source"), name); },
        };
        for (const auto& operation : operations)
            EXPECT_EQ(KindOf(stage.Run(operation)), FailureKind::BadArgument);
    }
    EXPECT_EQ(stage.record.trace, Strings{"< 220 Welcome"});
    EXPECT_EQ(stage.scratch.Names(), Strings{"source"});
}

TEST(Session, WithoutOneEverythingIsNotConnected) {
    Stage stage({});
    stage.scratch.Write("source", "x");
    const std::vector<Stage::Sequence> operations{
        [](Stage& s) { return ChangeTo(s, "a"); },
        [](Stage& s) { return ftp::ChangeToParentDirectory(s.session); },
        [](Stage& s) { return ftp::Rename(s.session, "a", "b"); },
        [](Stage& s) { return ftp::ListDirectory(s.session, {}); },
        [](Stage& s) { return ftp::RetrieveFile(s.session, {}, "a", s.scratch.Path("target")); },
        [](Stage& s) { return ftp::StoreFile(s.session, {}, s.scratch.Path("source"), "a"); },
    };
    for (const auto& operation : operations)
        EXPECT_EQ(KindOf(stage.Run(operation)), FailureKind::NotConnected);
    EXPECT_EQ(stage.scratch.Names(), Strings{"source"});
}

TEST(Session, DownloadThatIsShorterThanStatedIsNotKept) {
    for (const char* begin : {"150 Coming (10 bytes)", "150 Coming"}) {
        const bool stated_by_size = std::string(begin).ends_with("Coming");
        Stage stage(Greeted({Command("TYPE I"), Reply("200 Image"), Command("SIZE f"),
                             Reply(stated_by_size ? "213 10" : "550 No"), Command("EPSV"),
                             Reply("229 Here (|||5000|)"), DataConnects(5000), Command("RETR f"),
                             Reply(begin), Sends("012345678"), Ends(), Reply("226 Done")}));
        ASSERT_TRUE(stage.LogIn());
        stage.scratch.Write("target", "old");
        EXPECT_EQ(KindOf(stage.Run([](Stage& s) {
                      return ftp::RetrieveFile(s.session, {}, "f", s.scratch.Path("target"));
                  })),
                  FailureKind::CutShort);
        EXPECT_EQ(stage.scratch.Read("target"), "old");
        EXPECT_EQ(stage.scratch.Names(), Strings{"target"});
        stage.ExpectInStepOrClosed();
        EXPECT_TRUE(stage.Open());
    }
}

TEST(Session, UploadTellsItsSizeAndItsEnd) {
    Stage stage(Greeted({Command("TYPE I"), Reply("200 Image"), Command("SIZE f"), Reply("550 None"),
                         Command("EPSV"), Reply("229 Here (|||5000|)"), DataConnects(5000), Command("STOR f"),
                         Reply("150 Waiting"), Takes("12345"), TakesEnd(), Reply("226 Done")}));
    ASSERT_TRUE(stage.LogIn());
    stage.scratch.Write("source", "12345");
    stage.script.Follow({.piece = 2});
    EXPECT_TRUE(
        stage.Run([](Stage& s) { return ftp::StoreFile(s.session, {}, s.scratch.Path("source"), "f"); }));
    EXPECT_EQ(stage.record.sizes, std::vector<std::int64_t>{5});
    EXPECT_EQ(stage.record.moved, (std::vector<std::int64_t>{0, 2, 4, 5, 5}));
}

TEST(Session, ServerThatTalksWithoutEndIsNotHeardWithoutEnd) {
    Stage stage(Greeted({}));
    ASSERT_TRUE(stage.LogIn());
    std::string chatter;
    for (int i = 0; i < 200'000; ++i) chatter += "200 bla\r\n";
    stage.script.Interject(chatter);
    stage.context.restart();
    while (stage.context.poll() > 0) continue;
    EXPECT_GT(stage.script.Unheard(), chatter.size() / 2);
}

}  // namespace
}  // namespace ftp_script
