// Transfers that break, and what the server has kept of a file.

#include "tests/ftp/engine/living.h"

namespace worker_test {
namespace {

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

}  // namespace
}  // namespace worker_test
