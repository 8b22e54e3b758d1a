// Sessions that the server ends, and transfers that break: the worker against a server that does so on order.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/ftp/engine/worker_client.h"
#include "tests/support/certificates.h"
#include "tests/support/scripted_server.h"
#include "tests/support/scripted_session.h"

namespace worker_test {
namespace {

namespace fs = std::filesystem;
using namespace ftp_test;
using namespace std::chrono_literals;
using ftp::FailureKind;

const std::string kBytes = "0123456789";

class Living : public testing::Test {
 protected:
    Living() {
        std::string name = (fs::temp_directory_path() / "websmide-living-XXXXXX").native();
        folder_ = mkdtemp(name.data());
        server_.AddFile("a.txt", kBytes);
        std::ofstream(folder_ / "source") << kBytes;
    }
    ~Living() override {
        client_.reset();
        fs::remove_all(folder_);
    }

    WorkerClient& Client(ftp::Deadlines deadlines = {}) {
        if (deadlines.pause == ftp::Deadlines().pause) deadlines.pause = 1ms;
        client_ = std::make_unique<WorkerClient>(deadlines);
        const Told told = client_->Connect(server_.HostField());
        EXPECT_TRUE(told.Well()) << told;
        return *client_;
    }
    int Count(const std::string& command) const {
        const auto commands = server_.Commands();
        return static_cast<int>(
            std::ranges::count_if(commands, [&](const auto& each) { return each.starts_with(command); }));
    }
    ftp::Operation Retrieve() const { return ftp::Retrieve{"a.txt", (folder_ / "target").native()}; }
    ftp::Operation Store() const { return ftp::Store{(folder_ / "source").native(), "b.txt", "label of b"}; }
    /// Fetches the file; the server breaks off when so many bytes have come.
    Told BreakAndFinish(std::int64_t bytes) {
        client_->Start(Retrieve());
        client_->AwaitBytes(bytes);
        server_.Release();
        return client_->Finish();
    }
    std::string Target() const {
        std::ifstream in(folder_ / "target", std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void ExpectNoLitter() const {
        for (const auto& entry : fs::directory_iterator(folder_))
            EXPECT_FALSE(entry.path().filename().native().ends_with(".tmp")) << entry;
    }

    fs::path folder_;
    ScriptedServer server_;
    std::unique_ptr<WorkerClient> client_;
};

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

// --- what the server has kept ---

TEST_F(Living, FileThatIsNotKeptWholeIsToldAfterASecondQuestion) {
    WorkerClient& client = Client();
    server_.At("SIZE b.txt", {Say("213 4")});
    const Told told = client.Run(Store());
    EXPECT_EQ(told.Kind(), FailureKind::NotKept) << told;
    EXPECT_EQ(told.problems.front().detail, "b.txt");
    EXPECT_EQ(Count("SIZE b.txt"), 3);  // the first before the upload
    server_.At("SIZE b.txt", 5, {Say("213 4")});
    server_.At("SIZE b.txt", 6, {Proper()});
    EXPECT_TRUE(client.Run(Store()).Well()) << "it was behind";
    server_.At("SIZE b.txt", {Say("550 No")});
    EXPECT_TRUE(client.Run(Store()).Well()) << "no number, no verdict";
}

TEST_F(Living, FileOfARunThatIsNotKeptIsToldByItsLabelAndCostsNoRoundTrip) {
    WorkerClient& client = Client();
    server_.At("SIZE b.txt", {Say("213 4")});
    client.Run(ftp::BeginRun{0});
    EXPECT_TRUE(client.Run(Store()).Well());
    EXPECT_EQ(Count("SIZE"), 0);
    for (const char* name : {"c.txt", "d.txt"})
        EXPECT_TRUE(client.Run(ftp::Store{(folder_ / "source").native(), name, "another"}).Well());
    const auto problems = client.TakeAside().problems;
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(problems.front().label, "label of b");
    EXPECT_EQ(problems.front().failure, (ftp::Failure{FailureKind::NotKept, 0, "b.txt"}));
    EXPECT_EQ(Count("SIZE d.txt"), 0);
    EXPECT_TRUE(client.Run(ftp::EndRun{}).Well());
    EXPECT_EQ(Count("SIZE d.txt"), 1);
    EXPECT_TRUE(client.TakeAside().problems.empty());
}

TEST_F(Living, SizeIsAskedForBeforeTheFolderIsLeft) {
    WorkerClient& client = Client();
    client.Run(ftp::BeginRun{0});
    EXPECT_TRUE(client.Run(Store()).Well());
    EXPECT_TRUE(client.Run(ftp::ChangeDirectory{"x"}).Well());
    EXPECT_TRUE(client.Run(ftp::EndRun{}).Well());
    const auto commands = server_.Commands();
    const auto size = std::ranges::find(commands, "SIZE b.txt");
    ASSERT_NE(size, commands.end());
    EXPECT_EQ(*std::next(size), "CWD x");
    EXPECT_EQ(*std::next(size, 2), "PWD");
}

TEST_F(Living, StepsThatWerePutOffOutliveTheSession) {
    server_.At("PWD", {Say("257 \"/webb\" is here."), Hold(), Close()});
    WorkerClient& client = Client();
    EXPECT_TRUE(client.Run(ftp::ChangeDirectory{"webb"}).Well());
    client.Run(ftp::BeginRun{0});
    EXPECT_TRUE(client.Run(ftp::MakeDirectory{"x"}).Well());
    EXPECT_TRUE(client.Run(ftp::ChangeDirectory{"x"}).Well());
    server_.Release();
    client.AwaitConnected(false);
    server_.At("PWD", {Say("257 \"/webb/x\" is here.")});
    const Told told = client.Run(Store());
    EXPECT_TRUE(told.Well()) << told;
    const auto commands = server_.Commands();
    const auto back = std::ranges::find(commands, "CWD /webb");
    ASSERT_NE(back, commands.end());
    EXPECT_EQ(*std::next(back), "MKD x");
    EXPECT_EQ(*std::next(back, 2), "CWD x");
    EXPECT_TRUE(client.Run(ftp::EndRun{}).Well());
}

// --- transfers that break ---

/// What has come is to be taken first: a refusal ends the data at once.
Script BreaksWhenToldTo() {
    return {Say("150 Coming"), SendData("012"), Hold(), CloseData(), Say("426 Lost")};
}
Script Comes(const std::string& bytes) {
    return {Say("150 Coming"), SendData(bytes), CloseData(), Say("226 Done")};
}

TEST_F(Living, DownloadThatBreaksGoesOn) {
    const std::vector<Script> breaks{
        {Say("150 Coming"), SendData("012"), Hold(), CloseData(), Say("426 Lost")},
        {Say("150 Coming"), SendData("012"), Hold(), CloseData(), Say("226 Done")},
        {Say("150 Coming"), SendData("012"), Hold(), Say("421 Goodbye"), Close()},
        {Say("150 Coming"), SendData("012"), Hold(), Reset()},
        {Say("150 Coming"), SendData("012"), Stall()},
    };
    server_.At("REST", {Say("350 From there")});
    for (std::size_t i = 0; i < breaks.size(); ++i) {
        SCOPED_TRACE(i);
        WorkerClient& client = Client({.data = 100ms});
        const int before = Count("RETR");
        server_.At("RETR", before + 1, breaks[i]);
        server_.At("RETR", before + 2, Comes("3456789"));
        client.Start(Retrieve());
        client.AwaitBytes(3);
        if (i != 4) server_.Release();
        const Told told = client.Finish();
        EXPECT_TRUE(told.Well()) << told;
        EXPECT_EQ(Target(), kBytes);
        EXPECT_EQ(std::ranges::count(told.trace, "> REST 3"), 1) << told;
        EXPECT_EQ(client.TheWorker().BytesTransferred(), 10);
        ExpectNoLitter();
    }
}

TEST_F(Living, DownloadOfAnotherFileBeginsAtTheBeginning) {
    Client();
    server_.At("REST", {Say("350 From there")});
    server_.At("RETR", 1, BreaksWhenToldTo());
    server_.At("SIZE", 2, {Say("213 11")});
    server_.At("SIZE", 3, {Say("213 11")});
    server_.At("RETR", 2, Comes("abcdefghijk"));
    const Told told = BreakAndFinish(3);
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(Target(), "abcdefghijk");
    EXPECT_EQ(Count("REST"), 0);
}

TEST_F(Living, DownloadWhoseRestIsIgnoredBeginsAtTheBeginning) {
    Client();
    server_.At("REST", {Say("350 From there")});
    server_.At("RETR", 1, BreaksWhenToldTo());
    const Told told = BreakAndFinish(3);  // the server sends all of it once more
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(Target(), kBytes);
}

TEST_F(Living, TextBeginsAtTheBeginning) {
    WorkerClient& client = Client();
    client.image = false;
    server_.At("RETR", 1, BreaksWhenToldTo());
    const Told told = BreakAndFinish(3);
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(Target(), kBytes);
    EXPECT_EQ(Count("REST"), 0);
}

TEST_F(Living, DownloadIsTriedThreeTimesMoreAndThenTold) {
    WorkerClient& client = Client();
    server_.At("REST", {Say("350 From there")});
    server_.At("RETR", {Say("150 Coming"), SendData("0"), Hold(), CloseData(), Say("426 Lost")});
    client.Start(Retrieve());
    for (std::int64_t bytes = 1; bytes <= 4; ++bytes) {
        client.AwaitBytes(bytes);
        server_.Release();
    }
    const Told told = client.Finish();
    EXPECT_EQ(told.Kind(), FailureKind::Refused) << told;
    EXPECT_EQ(told.Code(), 426);
    EXPECT_EQ(Count("RETR"), 4);
    EXPECT_EQ(Target(), "");
    ExpectNoLitter();
}

TEST_F(Living, WhatNeverBeganIsNotTriedAgain) {
    WorkerClient& client = Client();
    server_.At("RETR", {Say("150 Coming"), CloseData(), Say("426 Lost")});
    EXPECT_EQ(client.Run(Retrieve()).Code(), 426);
    EXPECT_EQ(Count("RETR"), 1);
}

TEST_F(Living, UploadThatBreaksGoesOn) {
    const std::vector<Script> breaks{
        {Say("150 Waiting"), TakeData(4), ResetData(), Say("426 Lost")},
        {Say("150 Waiting"), TakeData(4), ResetData(), Say("451 Trouble")},
        {Say("150 Waiting"), TakeData(4), Say("421 Goodbye"), Close()},
        {Say("150 Waiting"), TakeData(4), Reset()},
    };
    for (std::size_t i = 0; i < breaks.size(); ++i) {
        SCOPED_TRACE(i);
        WorkerClient& client = Client();
        const int before = Count("STOR"), sizes = Count("SIZE");
        server_.At("STOR", before + 1, breaks[i]);
        server_.At("SIZE", sizes + 1, {Say("550 None")});
        server_.At("SIZE", sizes + 2, {Say("213 4")});
        server_.At("SIZE", sizes + 3, {Say("213 10")});
        server_.At("APPE", {Say("150 Waiting"), TakeData(7), CloseData(), Say("226 Done")});
        const Told told = client.Run(Store());
        EXPECT_TRUE(told.Well()) << told;
        EXPECT_EQ(Count("STOR"), before + 1);
        EXPECT_EQ(std::ranges::count(told.trace, "> APPE b.txt"), 1) << told;
        EXPECT_EQ(client.TheWorker().BytesTransferred(), 10);
    }
}

TEST_F(Living, UploadThatCannotGoOnBeginsAtTheBeginning) {
    struct Row {
        const char* size;
        const char* appe;
    };
    for (const Row& row : {Row{"213 11", ""}, Row{"550 No", ""}, Row{"213 4", "502 What?"}}) {
        SCOPED_TRACE(row.size);
        WorkerClient& client = Client();
        server_.At("STOR", Count("STOR") + 1,
                   {Say("150 Waiting"), TakeData(4), ResetData(), Say("426 Lost")});
        server_.At("SIZE", Count("SIZE") + 1, {Say("550 None")});
        server_.At("SIZE", Count("SIZE") + 2, {Say(row.size)});
        server_.At("APPE", {Say(row.appe)});
        const int before = Count("APPE");
        const Told told = client.Run(Store());
        EXPECT_TRUE(told.Well()) << told;
        EXPECT_EQ(server_.File("b.txt"), kBytes);
        EXPECT_EQ(Count("APPE") - before, *row.appe ? 1 : 0);
    }
}

TEST_F(Living, UploadThatGetsNoFurtherIsToldWithoutAPause) {
    WorkerClient& client = Client({.pause = 60s});
    server_.At("STOR", {Say("150 Waiting"), TakeData(4), ResetData(), Say("451 Full")});
    server_.At("APPE", {Say("150 Waiting"), TakeData(2), ResetData(), Say("451 Full")});
    server_.At("SIZE", {Say("213 4")});
    server_.At("SIZE", 1, {Say("550 None")});
    const Told told = client.Run(Store());
    EXPECT_EQ(told.Code(), 451) << told;
    EXPECT_EQ(Count("APPE"), 1);
}

TEST_F(Living, PartsThatDoNotFitTogetherAreSentAnew) {
    WorkerClient& client = Client();
    server_.At("STOR", 1, {Say("150 Waiting"), TakeData(4), ResetData(), Say("426 Lost")});
    server_.At("SIZE", 1, {Say("213 4")});
    server_.At("APPE", {Say("150 Waiting"), TakeData(7), CloseData(), Say("226 Done")});
    server_.At("SIZE", 2, {Say("213 12")});
    server_.At("SIZE", 3, {Say("213 12")});
    const Told told = client.Run(Store());
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(server_.File("b.txt"), kBytes);
    EXPECT_EQ(Count("STOR"), 2);
}

TEST_F(Living, ConfirmedFileWhoseSessionEndsIsLookedAtAgain) {
    WorkerClient& client = Client();
    server_.At("SIZE", 2, {Close()});
    const Told told = client.Run(Store());
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(Count("STOR"), 1);
    EXPECT_EQ(Count("APPE"), 1);  // of nothing: that all is there is still to be confirmed
}

TEST_F(Living, PauseBetweenTwoTriesEndsAtOnce) {
    for (const bool drops : {false, true}) {
        SCOPED_TRACE(drops);
        WorkerClient& client = Client({.pause = 60s});
        server_.At("REST", {Say("350 From there")});
        const int before = Count("RETR");
        server_.At("RETR", {Say("150 Coming"), SendData("0"), Hold(), CloseData(), Say("426 Lost")});
        client.Start(Retrieve());
        for (std::int64_t bytes = 1; bytes <= 2; ++bytes) {
            client.AwaitBytes(bytes);
            server_.Release();
        }
        client.AwaitReply("426", 2);
        drops ? client.TheWorker().DropSession() : client.TheWorker().AbortTransfer();
        const Told told = client.Finish();
        EXPECT_EQ(told.Kind(), FailureKind::Cancelled) << told;
        EXPECT_EQ(Count("RETR"), before + 2);
        ExpectNoLitter();
        EXPECT_EQ(client.Run(ftp::List{}).Well(), !drops);
    }
}

TEST_F(Living, LoginBetweenTwoTriesEndsAtOnce) {
    for (const bool drops : {false, true}) {
        SCOPED_TRACE(drops);
        WorkerClient& client = Client();
        server_.At("RETR", {Say("150 Coming"), SendData("0"), Hold(), Reset()});
        client.Start(Retrieve());
        client.AwaitBytes(1);
        const int logins = Count(kConnect);
        server_.At(kConnect, logins + 1, {Stall()});
        server_.Release();
        ASSERT_TRUE(server_.WaitFor(kConnect, logins + 1));
        drops ? client.TheWorker().DropSession() : client.TheWorker().AbortTransfer();
        const Told told = client.Finish();
        EXPECT_EQ(told.Kind(), FailureKind::Cancelled) << told;
        ExpectNoLitter();
        EXPECT_EQ(client.Run(ftp::List{}).Well(), !drops);
    }
}

TEST_F(Living, UploadThatIsTurnedDownWhenAllHasArrivedIsAFailure) {
    WorkerClient& client = Client();
    server_.At("STOR", {Say("150 Waiting"), KeepData(), CloseData(), Say("451 Rejected")});
    const Told told = client.Run(Store());
    EXPECT_EQ(told.Code(), 451) << told;
    EXPECT_EQ(Count("APPE") + Count("STOR"), 1);
}

TEST_F(Living, OldFileThatTheServerHasKeptIsNotTakenForTheNewOne) {
    for (const char* old : {"ABCDEFGHIJ", "ABCD"}) {
        SCOPED_TRACE(old);
        server_.AddFile("b.txt", old);
        WorkerClient& client = Client();
        server_.AtNext("STOR", {Say("150 Waiting"), TakeData(6), ftp_test::Reset()});
        const Told told = client.Run(Store());
        EXPECT_TRUE(told.Well()) << told;
        EXPECT_EQ(server_.File("b.txt"), kBytes);
        EXPECT_EQ(Count("APPE"), 0);
    }
}

TEST_F(Living, UploadGoesOnWithTheFileThatItBeganWith) {
    WorkerClient& client = Client();
    server_.At("STOR", 1, {Say("150 Waiting"), TakeData(4), Hold(), ResetData(), Say("426 Lost")});
    server_.At("SIZE", 2, {Say("213 4")});
    server_.At("SIZE", 3, {Say("213 10")});
    server_.At("APPE", {Say("150 Waiting"), KeepData(), CloseData(), Say("226 Done")});
    client.Start(Store());
    client.AwaitBytes(10);
    std::ofstream(folder_ / "new") << "ABCDEFGHIJ";
    fs::rename(folder_ / "new", folder_ / "source");
    server_.Release();
    const Told told = client.Finish();
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(server_.File("b.txt"), kBytes.substr(4));
}

TEST_F(Living, StepsThatWerePutOffLeaveOnceMoreAsTheyWere) {
    WorkerClient& client = Client();
    EXPECT_TRUE(client.Run(ftp::BeginRun{0}).Well());
    server_.At("CWD", 1, {Say("421 Idle for too long"), Close()});
    for (int i = 0; i < 16; ++i)
        EXPECT_TRUE(client.Run(ftp::ChangeDirectory{"d" + std::to_string(i)}).Well()) << i;
    const Told told = client.Run(ftp::ChangeToParent{});
    const Told end = client.Run(ftp::List{});
    EXPECT_TRUE(end.Well()) << end;
    EXPECT_EQ(std::ranges::count(told.trace, "> CWD ..") + std::ranges::count(end.trace, "> CWD .."), 1)
        << told << end;
    client.Run(ftp::EndRun{});
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
