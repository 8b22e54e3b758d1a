#include "tests/ftp/engine/session/sequences.h"

#include <gtest/gtest.h>

#include <ostream>

#include "ftp/engine/session/check.h"
#include "ftp/engine/session/files.h"
#include "ftp/engine/session/list.h"
#include "ftp/engine/session/login.h"
#include "ftp/engine/session/quit.h"
#include "ftp/engine/session/reopen.h"
#include "ftp/engine/session/retrieve.h"
#include "ftp/engine/session/store.h"

namespace ftp_script {
namespace {

constexpr char kOld[] = "what was here before";
constexpr char kSource[] = "uploaded";

Steps operator+(Steps first, const Steps& then) {
    first.insert(first.end(), then.begin(), then.end());
    return first;
}

// Pieces of scripts.
const Steps kGreeting{Connects(), Reply("220 Welcome")};
const Steps kName{Command("USER anna"), Reply("331 And the password?")};
const Steps kPassword{Command("PASS hemligt"), Reply("230 Logged in")};
const Steps kPrepared{Command("FEAT"),         Optional("211-Features\r\n SIZE\r\n UTF8\r\n211 End"),
                      Command("OPTS UTF8 ON"), Optional("200 UTF8"),
                      Command("TYPE I"),       Optional("200 Image")};
const Steps kTooEarly{Command("FEAT"),           Reply("530 Log in first"), Command("OPTS UTF8 ON"),
                      Reply("530 Log in first"), Command("TYPE I"),         Reply("530 Log in first")};
const Steps kAccount{Command("ACCT konto"), Reply("230 Logged in")};
const Steps kImage{Command("TYPE I"), Reply("200 Image")};
const Steps kEpsv{Command("EPSV"), Reply("229 Here (|||5000|)"), DataConnects(5000)};
/// An upload asks first what is there: what it finds afterwards may be that.
const Steps kAbsent{Command("SIZE fil.txt"), Optional("550 None")};
const Steps kNoEpsv{Command("EPSV"), Reply("502 What?")};
const Steps kPasv{Command("PASV"), Reply("227 Here (10,1,2,3,19,136)"), DataConnects(5000)};
const Steps kNoPasv{Command("PASV"), Reply("502 What?")};
const Steps kEprt{Command("EPRT |1|127.0.0.1|5001|"), Reply("200 Fine")};
const Steps kNoEprt{Command("EPRT |1|127.0.0.1|5001|"), Reply("502 What?")};
const Steps kPort{Command("PORT 127,0,0,1,19,137"), Reply("200 Fine")};
const Steps kList{Command("LIST"), Reply("150 Coming")};
const Steps kRows{Sends("first\r\nsec"), Sends("ond\nthird"), Ends(), Reply("226 Done")};
const std::string kGotRows = "first|second|third|";

ftp::Access AnnasAccess() {
    return {{{"host", 21}, ftp::Security::None}, "anna", "hemligt", "konto"};
}
ftp::Task<> LogIn(Stage& stage) {
    return ftp::Login(stage.session, AnnasAccess());
}
ftp::Task<> LogInSafely(Stage& stage, ftp::Security security) {
    ftp::Access access{{{"host", 21}, security}, "anna", "hemligt", "konto"};
    co_return co_await ftp::Login(stage.session, std::move(access));
}
ftp::Task<> List(Stage& stage) {
    return ftp::ListDirectory(stage.session, {});
}
ftp::Task<> ListActively(Stage& stage) {
    return ftp::ListDirectory(stage.session, {.passive = false});
}
ftp::Task<> Retrieve(Stage& stage) {
    return ftp::RetrieveFile(stage.session, {}, "fil.txt", stage.scratch.Path("target"));
}
ftp::Task<> RetrieveText(Stage& stage) {
    return ftp::RetrieveFile(stage.session, {.image = false}, "fil.txt", stage.scratch.Path("target"));
}
ftp::Task<> Store(Stage& stage) {
    return ftp::StoreFile(stage.session, {}, stage.scratch.Path("source"), "fil.txt");
}
ftp::Task<> StoreAndCheck(Stage& stage) {
    stage.session.in_run = true;
    const auto stored = co_await Store(stage);
    if (!stored) co_return stored;
    co_return co_await ftp::CheckAll(stage.session);
}
/// The same, where a try that breaks is not the last.
Stage::Sequence WithWayBack(ftp::Task<> (*sequence)(Stage&)) {
    return [sequence](Stage& stage) {
        stage.session.access = std::make_shared<const ftp::Access>(AnnasAccess());
        return sequence(stage);
    };
}
/// The connection has ended while the session was in another directory than that of the login.
ftp::Task<> Reopen(Stage& stage) {
    stage.session.strayed = true;
    stage.session.directory = "/webb/bilder";
    stage.session.control->Close();
    return ftp::Reopen(stage.session);
}
ftp::Task<> Quit(Stage& stage) {
    co_await ftp::QuitSession(stage.session);
    co_return ftp::Result<>{};
}

/// The sequence twice, as parts of a run.
Stage::Sequence TwiceInRun(ftp::Task<> (*sequence)(Stage&)) {
    return [sequence](Stage& stage) -> ftp::Task<> {
        stage.session.in_run = true;
        const auto first = co_await sequence(stage);
        if (!first) co_return first;
        stage.scratch.Write("target", kOld);
        co_return co_await sequence(stage);
    };
}

/// Three steps that are put off, and what they have come to.
ftp::Task<> WalkInRun(Stage& stage) {
    stage.session.in_run = true;
    const std::string name = "ny mapp";
    const auto up = co_await ftp::ChangeToParentDirectory(stage.session);
    if (!up) co_return up;
    const auto made = co_await ftp::MakeDirectoryNamed(stage.session, name);
    if (!made) co_return made;
    const auto entered = co_await ftp::ChangeDirectoryTo(stage.session, name);
    if (!entered) co_return entered;
    const auto directory = co_await ftp::CurrentDirectory(stage.session);
    if (!directory) co_return ftp::Fail(directory.error());
    EXPECT_EQ(*directory, directory->empty() ? "" : "/webb/ny mapp");
    co_return ftp::Result<>{};
}

std::vector<Sequence> Logins() {
    const Steps whole = kGreeting + kName + kPassword + kPrepared;
    const Steps slow_greeting{Connects(), Reply("120 In a minute"),
                              Reply("220-Welcome\r\n 220 no\r\n220 Now")};
    const Steps no_password{Command("USER anna"), Reply("230 Logged in"), Command("PASS hemligt"),
                            Optional("503 You are")};
    const Steps account_first{Command("USER anna"), Reply("332 And the account?"), Command("PASS hemligt"),
                              Reply("503 Not now")};
    const Steps account_too{Command("PASS hemligt"), Reply("332 And the account?")};
    const Steps one_by_one{Command("USER anna"), Reply("503 One at a time")};
    return {
        {"login", true, whole, LogIn, {}},
        {"login_after_120", true, slow_greeting + kName + kPassword + kPrepared, LogIn, {}},
        {"login_without_password", true, kGreeting + no_password + kPrepared, LogIn, {}},
        {"login_account_first",
         true,
         kGreeting + account_first + kTooEarly + kAccount + kPrepared,
         LogIn,
         {}},
        {"login_account_too",
         true,
         kGreeting + kName + account_too + kTooEarly + kAccount + kPrepared,
         LogIn,
         {}},
        {"login_one_by_one", true, kGreeting + one_by_one + whole, LogIn, {}},
        {"login_hung_up", true, kGreeting + kName + Steps{HangsUp()} + whole, LogIn, {}},
    };
}

std::vector<Sequence> SafeLogins() {
    const auto with = [](ftp::Security security) {
        return [security](Stage& stage) { return LogInSafely(stage, security); };
    };
    const auto if_offered = with(ftp::Security::IfOffered);
    const Steps offered{Connects(), Command("AUTH TLS"), Reply("220 Welcome"), Reply("234 Go on")};
    const Steps not_offered{Connects(), Command("AUTH TLS"), Reply("220 Welcome"), Optional("502 What?")};
    const Steps hello{Command(kClientHello), Reply(kServerHello)};
    const Steps protects{Command("PBSZ 0"), Optional("200 Fine"), Command("PROT P"), Reply("200 Fine")};
    const Steps log_in = kName + kPassword;
    const Steps too_early{Command("PBSZ 0"), Reply("503 Log in first"), Command("PROT P"),
                          Reply("503 Log in first")};
    const Steps in_turn = kGreeting + Steps{Command("AUTH TLS"), Reply("234 Go on")};
    return {
        {"login_tls",
         true,
         offered + hello + protects + log_in + kPrepared,
         with(ftp::Security::Explicit),
         {}},
        {"login_tls_if_offered", true, offered + hello + protects + log_in + kPrepared, if_offered, {}},
        {"login_tls_not_offered", true, not_offered + log_in + kPrepared, if_offered, {}},
        {"login_tls_implicit",
         true,
         Steps{Connects()} + hello + Steps{Reply("220 Welcome")} + protects + log_in + kPrepared,
         with(ftp::Security::Implicit),
         {}},
        {"login_tls_one_by_one",
         true,
         offered + hello + too_early + in_turn + hello + log_in + protects + kPrepared,
         if_offered,
         {}},
    };
}

/// A listing over TLS.
std::vector<Sequence> SafeTransfers() {
    const Steps hello{Takes(kClientHello + "\r\n"), Sends(kServerHello + "\r\n")};
    const auto safely = [](ftp::Task<> (*sequence)(Stage&)) {
        return [sequence](Stage& stage) {
            stage.session.tls_version = "TLSv1.3";
            return sequence(stage);
        };
    };
    return {
        {"list_tls", false, kImage + kEpsv + kList + hello + kRows, safely(List), kGotRows},
        {"list_tls_eprt", false, kImage + kEprt + kList + Steps{DataCalls()} + hello + kRows,
         safely(ListActively), kGotRows},
        {"store_tls",
         false,
         kImage + kAbsent + kEpsv + Steps{Command("STOR fil.txt"), Reply("150 Waiting")} + hello +
             Steps{Takes("uploaded"), TakesEnd(), Reply("226 Done")},
         safely(Store),
         {}},
    };
}

std::vector<Sequence> Transfers() {
    const Steps size{Command("SIZE fil.txt"), Reply("213 10")};
    const Steps no_size{Command("SIZE fil.txt"), Reply("500 What?")};
    const Steps retrieve{Command("RETR fil.txt"), Reply("150 Coming"), Sends("0123"), Sends("456789"), Ends(),
                         Reply("226 Done")};
    const Steps early_end{Command("RETR fil.txt"), Reply("150 Coming (10 bytes)"),
                          Sends("0123"),           Reply("226 Done"),
                          Sends("456789"),         Ends()};
    const Steps store{Command("STOR fil.txt"), Reply("150 Waiting"), Takes("uplo"),
                      Takes("aded"),           TakesEnd(),           Reply("226 Done")};
    const Steps checked{Over(Command("SIZE fil.txt")), Over(Optional("213 8"))};
    const Steps checked_late{Over(Command("SIZE fil.txt")), Over(Optional("213 5")),
                             Over(Command("SIZE fil.txt")), Over(Optional("213 8"))};
    const Steps text{Command("TYPE A"), Reply("200 Text")};
    const Steps store_ahead{Command("STOR fil.txt"),
                            Command("EPSV"),
                            Reply("150 Waiting"),
                            Takes("uploaded"),
                            TakesEnd(),
                            Reply("226 Done"),
                            Beside("229 Next (|||5000|)")};
    const Steps retrieve_ahead{Command("RETR fil.txt"),      Command("EPSV"), Reply("150 Coming"),
                               Sends("0123456789"),          Ends(),          Reply("226 Done"),
                               Beside("229 Next (|||5000|)")};
    const Steps with_size{
        DataConnects(5000), Command("SIZE fil.txt"),      Command("RETR fil.txt"), Command("EPSV"),
        Reply("213 10"),    Reply("150 Coming"),          Sends("0123456789"),     Ends(),
        Reply("226 Done"),  Beside("229 Next (|||5000|)")};
    const Steps once_more{Over(Command("SIZE fil.txt")), Optional("213 8"), Command("EPSV"),
                          Reply("229 Here (|||5000|)"), DataConnects(5000)};
    const Steps stored_in_run{
        DataConnects(5000), Command("SIZE fil.txt"),      Command("STOR fil.txt"), Command("EPSV"),
        Reply("213 8"),     Reply("150 Waiting"),         Takes("uploaded"),       TakesEnd(),
        Reply("226 Done"),  Beside("229 Next (|||5000|)")};
    const Steps breaks_down{Command("RETR fil.txt"), Reply("150 Coming"), Sends("0123"), Ends(),
                            Reply("426 Lost")};
    const Steps goes_on_down{Command("REST 4"),   Reply("350 From there"), Command("RETR fil.txt"),
                             Reply("150 Coming"), Sends("456789"),         Ends(),
                             Reply("226 Done")};
    const Steps rest_refused{Command("REST 4"), Reply("502 What?")};
    const Steps breaks_up{Command("STOR fil.txt"), Reply("150 Waiting"), Takes("uplo"), Ends(),
                          Reply("426 Lost")};
    const Steps has_four{Command("SIZE fil.txt"), Reply("213 4")};
    const Steps goes_on_up{Command("APPE fil.txt"), Reply("150 Waiting"), Takes("aded"), TakesEnd(),
                           Reply("226 Done")};
    return {
        {"list", false, kImage + kEpsv + kList + kRows, List, kGotRows},
        {"list_empty", false, kImage + kEpsv + kList + Steps{Ends(), Reply("226 Done")}, List, {}},
        {"list_pasv", false, kImage + kNoEpsv + kPasv + kList + kRows, List, kGotRows},
        {"list_eprt", false, kImage + kEprt + kList + Steps{DataCalls()} + kRows, ListActively, kGotRows},
        {"list_port", false,
         kImage + kNoEpsv + kNoPasv + kNoEprt + kPort + kList + Steps{DataCalls()} + kRows, List, kGotRows},
        {"retrieve", false, kImage + size + kEpsv + retrieve, Retrieve, "0123456789"},
        {"retrieve_without_size", false, kImage + no_size + kEpsv + retrieve, Retrieve, "0123456789"},
        {"retrieve_confirmed_early", false, kImage + size + kEpsv + early_end, Retrieve, "0123456789"},
        {"retrieve_text", false, text + kEpsv + retrieve, RetrieveText, "0123456789"},
        {"store", false, kImage + kAbsent + kEpsv + store + checked, Store, {}},
        {"store_kept_late", false, kImage + kAbsent + kEpsv + store + checked_late, Store, {}},
        {"store_twice",
         false,
         kImage + kAbsent + kEpsv + store + checked + once_more + store + checked,
         [](Stage& stage) -> ftp::Task<> {
             const auto first = co_await Store(stage);
             if (!first) co_return first;
             co_return co_await Store(stage);
         },
         {}},
        {"store_in_run", false, kImage + kEpsv + store_ahead + stored_in_run, TwiceInRun(Store), {}},
        {"store_in_run_checked", false, kImage + kEpsv + store_ahead + checked, StoreAndCheck, {}},
        {"store_resumed",
         false,
         kImage + kAbsent + kEpsv + breaks_up + has_four + kEpsv + goes_on_up + checked,
         WithWayBack(Store),
         {},
         false,
         true},
        {"retrieve_resumed", false, kImage + size + kEpsv + breaks_down + size + kEpsv + goes_on_down,
         WithWayBack(Retrieve), "0123456789", false, true},
        {"retrieve_resumed_without_rest", false,
         kImage + size + kEpsv + breaks_down + size + kEpsv + rest_refused + size + kEpsv + retrieve,
         WithWayBack(Retrieve), "0123456789", false, true},
        {"store_in_run_pasv",
         false,
         kImage + kNoEpsv + kPasv +
             Steps{Command("STOR fil.txt"), Command("PASV"), Reply("150 Waiting"), Takes("uploaded"),
                   TakesEnd(), Reply("226 Done"), Beside("227 Next (10,1,2,3,19,136)")},
         [](Stage& stage) {
             stage.session.in_run = true;
             return Store(stage);
         },
         {}},
        {"retrieve_in_run", false, kImage + size + kEpsv + retrieve_ahead + with_size, TwiceInRun(Retrieve),
         "0123456789"},
    };
}

Sequence OneCommand(const std::string& name, const std::string& line, Stage::Sequence run) {
    return {name, false, {Command(line), Reply("250-Well\r\n250 done")}, std::move(run), {}};
}

Sequence OneStep(const std::string& name, const std::string& line, Stage::Sequence run) {
    return {name,
            false,
            {Command(line), Command("PWD"), Reply("250-Well\r\n250 done"), Optional("257 \"/webb\" is here")},
            std::move(run),
            {}};
}

std::vector<Sequence> Others() {
    const Steps rename{Command("RNFR old name"), Reply("350 To what?"), Command("RNTO -new"),
                       Reply("250 Done")};
    const Steps reopened =
        kGreeting + kName + kPassword + kPrepared + Steps{Command("CWD /webb/bilder"), Reply("250 Here")};
    const auto named = [](auto operation, std::string name) {
        return [=](Stage& stage) { return operation(stage.session, name); };
    };
    return {
        OneStep("change_directory", "CWD a b", named(ftp::ChangeDirectoryTo, "a b")),
        OneStep("change_to_parent", "CWD ..",
                [](Stage& stage) { return ftp::ChangeToParentDirectory(stage.session); }),
        {"reopen", false, reopened, WithWayBack(Reopen), {}, false, true},
        OneCommand("make_directory", "MKD -x", named(ftp::MakeDirectoryNamed, "-x")),
        OneCommand("remove_directory", "RMD \xE5", named(ftp::RemoveDirectoryNamed, "\xE5")),
        OneCommand("delete_file", "DELE \xFF\xFF", named(ftp::DeleteFileNamed, "\xFF")),
        {"rename",
         false,
         rename,
         [](Stage& stage) { return ftp::Rename(stage.session, "old name", "-new"); },
         {}},
        {"walk_in_run",
         false,
         {Command("CWD .."), Command("MKD ny mapp"), Command("CWD ny mapp"), Command("PWD"),
          Optional("250 Up"), Optional("257 \"ny mapp\" made"), Optional("250 In"),
          Optional("257 \"/webb/ny mapp\" is here")},
         WalkInRun,
         {}},
        {"quit", false, {Command("QUIT"), Reply("221 Goodbye.")}, Quit, {}, true},
    };
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Sequence& sequence) {
    return out << sequence.name;
}

const std::vector<Sequence>& Sequences() {
    static const std::vector<Sequence> all = [] {
        std::vector<Sequence> sequences = Logins();
        for (auto&& more : {SafeLogins(), Transfers(), SafeTransfers(), Others()})
            sequences.insert(sequences.end(), more.begin(), more.end());
        return sequences;
    }();
    return all;
}

Setting::Setting(const Sequence& sequence)
    : sequence_(sequence), stage_(sequence.logs_in ? sequence.steps : kGreeting + sequence.steps) {
    stage_.scratch.Write("source", kSource);
    stage_.scratch.Write("target", kOld);
    EXPECT_TRUE(sequence.logs_in || stage_.LogIn());
}

ftp::Result<> Setting::Run(Play play) {
    stage_.script.Follow(std::move(play));
    return stage_.Run(sequence_.run);
}

void Setting::ExpectTidy(bool succeeded) const {
    const bool retrieved = succeeded && sequence_.name.starts_with("retrieve");
    EXPECT_EQ(stage_.scratch.Names(), (std::vector<std::string>{"source", "target"}));
    EXPECT_EQ(stage_.scratch.Read("source"), kSource);
    EXPECT_EQ(stage_.scratch.Read("target"), retrieved ? sequence_.got : kOld);
}

}  // namespace ftp_script
