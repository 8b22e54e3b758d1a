// Sessions that the server ends while nothing runs, and what an operation does that meets one.

#include "tests/ftp/engine/living.h"
#include "tests/support/certificates.h"

namespace worker_test {
namespace {

const std::vector<ftp::Operation>& HarmlessOnes() {
    static const std::vector<ftp::Operation> all{ftp::List{}, ftp::ChangeDirectory{"x"},
                                                 ftp::ChangeToParent{}};
    return all;
}
const std::vector<ftp::Operation>& ChangingOnes() {
    static const std::vector<ftp::Operation> all{ftp::DeleteFile{"a.txt"}, ftp::RemoveDirectory{"x"},
                                                 ftp::MakeDirectory{"x"}};
    return all;
}
std::string VerbOf(const ftp::Operation& operation) {
    if (std::holds_alternative<ftp::List>(operation)) return "EPSV";
    if (std::holds_alternative<ftp::DeleteFile>(operation)) return "DELE";
    if (std::holds_alternative<ftp::RemoveDirectory>(operation)) return "RMD";
    if (std::holds_alternative<ftp::MakeDirectory>(operation)) return "MKD";
    return "CWD";
}

// --- sessions that end while nothing runs ---

TEST_F(Living, EndedWhileIdleIsSaidAtOnceAndOpenedAgainWhereItWas) {
    std::vector<ftp::Operation> all = HarmlessOnes();
    all.insert(all.end(), ChangingOnes().begin(), ChangingOnes().end());
    all.push_back(ftp::RenameFile{"a.txt", "c.txt"});
    all.push_back(Retrieve());
    all.push_back(Store());
    for (std::size_t i = 0; i < all.size(); ++i) {
        SCOPED_TRACE(i);
        server_.AddFile("a.txt", kBytes);
        server_.At("PWD", {Say("257 \"/webb\" is here."), Hold(), Say("421 Idle for too long"), Close()});
        WorkerClient& client = Client();
        EXPECT_TRUE(client.Run(ftp::ChangeDirectory{"webb"}).Well());
        server_.Release();
        client.AwaitConnected(false);
        EXPECT_EQ(client.TakeAside().trace, std::vector<std::string>{"< 421 Idle for too long"});
        server_.At("PWD", {Say("257 \"/webb\" is here.")});
        const Told told = client.Run(all[i]);
        EXPECT_TRUE(told.Well()) << told;
        EXPECT_EQ(told.connected, true);
        EXPECT_EQ(std::ranges::count(told.trace, "> USER demo"), 1) << told;
        EXPECT_EQ(std::ranges::count(told.trace, "> CWD /webb"), 1) << told;
    }
}

TEST_F(Living, WhereItWasIsNotKnownOrNotLetInAnyMore) {
    server_.At("PWD", {Say("502 What?"), Hold(), Close()});
    WorkerClient& blind = Client();
    EXPECT_TRUE(blind.Run(ftp::ChangeDirectory{"webb"}).Well());
    server_.Release();
    blind.AwaitConnected(false);
    EXPECT_EQ(blind.Run(ftp::DeleteFile{"a.txt"}).Kind(), FailureKind::NotConnected);

    server_.At("PWD", {Say("257 \"/webb\" is here."), Hold(), Close()});
    server_.At("CWD /webb", {Say("550 Gone")});
    WorkerClient& shut_out = Client();
    EXPECT_TRUE(shut_out.Run(ftp::ChangeDirectory{"webb"}).Well());
    server_.Release();
    shut_out.AwaitConnected(false);
    const Told told = shut_out.Run(ftp::DeleteFile{"a.txt"});
    EXPECT_EQ(told.Kind(), FailureKind::Refused) << told;
    EXPECT_EQ(told.Code(), 550);
    EXPECT_EQ(shut_out.Run(ftp::DeleteFile{"a.txt"}).Kind(), FailureKind::NotConnected);
    EXPECT_EQ(Count("DELE"), 0) << "nothing happens in another folder";
    EXPECT_TRUE(server_.File("a.txt"));
}

TEST_F(Living, WhatTheUserHasEndedStaysEnded) {
    for (const ftp::Operation& end : {ftp::Operation(ftp::Quit{}), ftp::Operation(ftp::Reset{})}) {
        WorkerClient& client = Client();
        client.Run(end);
        EXPECT_EQ(client.Run(ftp::List{}).Kind(), FailureKind::NotConnected);
    }
    WorkerClient& client = Client();
    client.TheWorker().DropSession();
    client.AwaitConnected(false);
    EXPECT_EQ(client.Run(ftp::List{}).Kind(), FailureKind::NotConnected);
}

// --- sessions that turn out to be dead ---

TEST_F(Living, DeadSessionIsOpenedAgainOnceForWhatChangesNothing) {
    for (const ftp::Operation& operation : HarmlessOnes()) {
        for (const Script& end : {Script{Close()}, Script{Reset()}, Script{Say("421 Too late"), Close()}}) {
            SCOPED_TRACE(VerbOf(operation));
            WorkerClient& client = Client();
            server_.At(VerbOf(operation), Count(VerbOf(operation)) + 1, end);
            const Told told = client.Run(operation);
            EXPECT_TRUE(told.Well()) << told;
            EXPECT_EQ(std::ranges::count(told.trace, "> USER demo"), 1) << told;
        }
        WorkerClient& client = Client();
        const int logins = Count("USER");
        server_.At(VerbOf(operation), {Close()});
        EXPECT_EQ(client.Run(operation).Kind(), FailureKind::ConnectionLost);
        EXPECT_EQ(Count("USER"), logins + 1);
        server_.At(VerbOf(operation), {Proper()});
    }
}

TEST_F(Living, WhatMayHaveChangedSomethingIsNotAskedForTwice) {
    for (const ftp::Operation& operation : ChangingOnes()) {
        const std::string verb = VerbOf(operation);
        SCOPED_TRACE(verb);
        for (const Step& end : {Close(), Reset()}) {
            WorkerClient& client = Client();
            const int before = Count(verb);
            server_.At(verb, before + 1, {end});
            const Told told = client.Run(operation);
            EXPECT_EQ(told.Kind(), FailureKind::ConnectionLost) << told;
            EXPECT_EQ(Count(verb), before + 1);
            EXPECT_TRUE(client.Run(ftp::List{}).Well()) << "the next one finds a session";
        }
        WorkerClient& client = Client();
        const int before = Count(verb);
        server_.AddFile("a.txt", kBytes);
        server_.At(verb, before + 1, {Say("421 Too late"), Close()});
        const Told told = client.Run(operation);
        EXPECT_TRUE(told.Well()) << told;
        EXPECT_EQ(Count(verb), before + 2);
    }
}

TEST_F(Living, NewNameIsGivenOnce) {
    WorkerClient& client = Client();
    server_.At("RNTO", 1, {Close()});
    EXPECT_EQ(client.Run(ftp::RenameFile{"a.txt", "c.txt"}).Kind(), FailureKind::ConnectionLost);
    EXPECT_EQ(Count("RNTO"), 1);
    server_.At("RNFR", Count("RNFR") + 1, {Close()});
    const Told told = client.Run(ftp::RenameFile{"a.txt", "c.txt"});
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(server_.File("c.txt"), kBytes);
}

TEST_F(Living, FileIsNotSentTwiceBlindly) {
    WorkerClient& client = Client();
    server_.At("STOR", 1, {Close()});
    EXPECT_EQ(client.Run(Store()).Kind(), FailureKind::ConnectionLost);
    EXPECT_EQ(Count("STOR"), 1);
    server_.At("STOR", 2, {Say("421 Too late"), Close()});
    const Told told = client.Run(Store());
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(Count("STOR"), 3);
    EXPECT_EQ(server_.File("b.txt"), kBytes);
}

// --- kept awake ---

TEST_F(Living, IdleSessionIsKeptAwakeWhereThatIsWanted) {
    WorkerClient& client = Client({.idle = 5ms});
    client.keep_alive = true;
    EXPECT_TRUE(client.Run(ftp::List{}).Well());
    EXPECT_TRUE(server_.WaitFor("NOOP", 3));
    const Told told = client.Run(ftp::ChangeDirectory{"x"});
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(told.trace.size(), 4U) << told;
    EXPECT_TRUE(client.Connected());
    client.Destroy();
}

TEST_F(Living, NoopThatNobodyAnswersEndsTheSessionAndTheNextOperationOpensIt) {
    server_.At("NOOP", 1, {Stall()});
    WorkerClient& client = Client({.ahead = 20ms, .idle = 5ms});
    client.keep_alive = true;
    EXPECT_TRUE(client.Run(ftp::List{}).Well());
    client.AwaitConnected(false);
    const Told told = client.Run(ftp::List{});
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(told.connected, true);
}

TEST_F(Living, OperationWaitsForTheAnswerToNoop) {
    server_.At("NOOP", 1, {Hold(), Say("200 At last")});
    WorkerClient& client = Client({.idle = 5ms});
    client.keep_alive = true;
    EXPECT_TRUE(client.Run(ftp::List{}).Well());
    ASSERT_TRUE(server_.WaitFor("NOOP"));
    client.keep_alive = false;
    client.Start(ftp::ChangeDirectory{"x"});
    server_.Release();
    const Told told = client.Finish();
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(told.trace.front(), "> CWD x") << told;
}

TEST_F(Living, WorkerGoesAtOnceWhileNoopIsUnanswered) {
    server_.At("NOOP", {Stall()});
    WorkerClient& client = Client({.idle = 1ms});
    client.keep_alive = true;
    EXPECT_TRUE(client.Run(ftp::List{}).Well());
    ASSERT_TRUE(server_.WaitFor("NOOP"));
    const auto start = std::chrono::steady_clock::now();
    client.Destroy();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1s);
}

TEST_F(Living, SessionMayBeDroppedWhileItIsKeptAwake) {
    server_.At("NOOP", {Hold(), Proper()});
    WorkerClient& client = Client({.idle = 20ms});
    client.keep_alive = true;
    EXPECT_TRUE(client.Run(ftp::ChangeToParent{}).Well());
    EXPECT_TRUE(server_.WaitFor("NOOP"));
    client.TheWorker().DropSession();
    client.AwaitConnected(false);
    EXPECT_EQ(client.Run(ftp::List{}).Kind(), FailureKind::NotConnected);
    server_.Release();
}

TEST_F(Living, FaultOfTheWorkerWhileIdleIsToldAndCostsTheSession) {
    WorkerClient& client = Client({.idle = 5ms});
    client.keep_alive = true;
    client.fails_at = "NOOP";
    EXPECT_TRUE(client.Run(ftp::List{}).Well());
    client.AwaitConnected(false);
    const auto aside = client.TakeAside();
    ASSERT_EQ(aside.faults.size(), 1U);
    EXPECT_EQ(aside.faults.front().kind, FailureKind::Protocol);
    client.keep_alive = false;
    const Told told = client.Run(ftp::List{});
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(told.connected, true);
}

TEST_F(Living, PreliminaryRepliesDoNotPutTheDeadlineOff) {
    WorkerClient& client = Client({.reply = 300ms});
    Script drip;
    for (int i = 0; i < 50; ++i) {
        drip.push_back(Say("150 Still at it"));
        drip.push_back(Pause(100ms));
    }
    server_.At("DELE", drip);
    EXPECT_EQ(client.Run(ftp::DeleteFile{"a.txt"}).Kind(), FailureKind::TimedOut);
}

class LivingWithTls : public Living {
 protected:
    LivingWithTls() {
        const auto files = Certificates(ServerCertificate::SelfSigned);
        server_.PutTls(files.certificate, files.key);
        client_ = std::make_unique<WorkerClient>(ftp::Deadlines{});
        trusted_ = client_->Connect(server_.HostField()).tls.certificate.fingerprint;
    }
    Told Connect() {
        return client_->Run(ftp::Connect{server_.HostField(), "demo", "demo", {}, false, trusted_});
    }

    std::string trusted_;
};

TEST_F(LivingWithTls, ServerThatWantsTheLoginFirstIsAskedInThatOrder) {
    for (const char* command : {"PBSZ", "PROT"}) server_.AtNext(command, {Say("530 Please log in first")});
    const Told told = Connect();
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_LT(std::ranges::find(told.trace, "> USER demo"), std::ranges::find(told.trace, "< 200 Fine."));
}

TEST_F(LivingWithTls, SecondAttemptAtALoginDoesNotDoWithoutIt) {
    server_.AtNext("USER", {ftp_test::Reset()});
    server_.At("AUTH", 3, {Say("502 What?")});
    const Told told = Connect();
    EXPECT_EQ(told.Kind(), FailureKind::NotEncrypted) << told;
    EXPECT_EQ(Count("USER"), 1);
}

TEST_F(Living, ServerThatHasTlsButNotNowIsNotSpokenToInPlainText) {
    server_.At("AUTH", {Say("431 Not now")});
    client_ = std::make_unique<WorkerClient>(ftp::Deadlines{});
    EXPECT_EQ(client_->Connect(server_.HostField()).Kind(), FailureKind::NotEncrypted);
    EXPECT_EQ(Count("USER"), 0);
}

}  // namespace
}  // namespace worker_test
