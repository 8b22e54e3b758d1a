// The worker against a server that takes orders to misbehave.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/ftp/engine/worker_client.h"
#include "tests/support/scripted_server.h"
#include "tests/support/scripted_session.h"

namespace worker_test {
namespace {

namespace fs = std::filesystem;
using namespace ftp_test;
using namespace std::chrono_literals;
using ftp::FailureKind;

/// The question for a port, its answer, the transfer command, and then the bytes begin to move.
constexpr std::size_t kStarted = 4;

/// Lines without end; between two pieces the server looks whether the client has aborted.
Step EndlessListing() {
    std::string piece;
    for (int i = 0; i < 1000; ++i) piece += "-rw-r--r-- 1 a b 5 Jan 1 2020 another\r\n";
    return [piece](ScriptedSession& session) {
        Next next = Next::Go;
        while (next == Next::Go) {
            next = session.SendData(piece);
            if (next == Next::Go) next = session.Pause(0ms);
        }
        return next;
    };
}

class Misbehaviour : public testing::Test {
 protected:
    Misbehaviour() {
        std::string name = (fs::temp_directory_path() / "websmide-worker-XXXXXX").native();
        folder_ = mkdtemp(name.data());
        target_ = folder_ / "target";
        std::ofstream(target_) << "old";
        server_.AddFile("a.txt", "0123456789");
    }
    ~Misbehaviour() override {
        client_.reset();
        fs::remove_all(folder_);
    }

    WorkerClient& Client(ftp::Deadlines deadlines = {}) {
        deadlines.pause = std::min<std::chrono::milliseconds>(deadlines.pause, 1ms);
        client_ = std::make_unique<WorkerClient>(deadlines);
        const Told told = client_->Connect(server_.HostField());
        EXPECT_TRUE(told.Well()) << told;
        return *client_;
    }
    ftp::Operation Retrieve() const { return ftp::Retrieve{"a.txt", target_.native()}; }
    std::string Target() const {
        std::ifstream in(target_, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void ExpectUntouched() const {
        EXPECT_EQ(Target(), "old");
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1);
    }
    void ExpectInStep() {
        const Told told = client_->Run(ftp::ChangeDirectory{"/"});
        EXPECT_TRUE(told.Well()) << told;
        EXPECT_EQ(told.trace.size(), 4U) << told;  // CWD and PWD, each with its own answer
    }
    /// A file of so many zero bytes, which take no room.
    ftp::Operation StoreHuge() const {
        const fs::path source = folder_ / "huge";
        std::ofstream(source).close();
        fs::resize_file(source, 200'000'000);
        return ftp::Store{source.native(), "huge"};
    }

    fs::path folder_, target_;
    ScriptedServer server_;
    std::unique_ptr<WorkerClient> client_;
};

TEST_F(Misbehaviour, NobodyThere) {
    std::string deserted;
    {
        const ScriptedServer gone;
        deserted = gone.HostField();
    }
    WorkerClient client;
    EXPECT_EQ(client.Connect(deserted).Kind(), FailureKind::ConnectionRefused);
    const std::string impossible(64, 'a');  // no label is that long, so that nobody is asked
    EXPECT_EQ(client.Connect(impossible + ".invalid").Kind(), FailureKind::HostNotFound);
    EXPECT_EQ(client.Connect("two words").Kind(), FailureKind::BadArgument);
}

TEST_F(Misbehaviour, GoodbyeInPlaceOfGreeting) {
    server_.At(kConnect, {Say("421 Too many of you"), Close()});
    WorkerClient client;
    const Told told = client.Connect(server_.HostField());
    EXPECT_EQ(told.Kind(), FailureKind::Refused) << told;
    EXPECT_EQ(told.Code(), 421);
}

TEST_F(Misbehaviour, SilenceInPlaceOfGreetingEndsInTime) {
    server_.At(kConnect, {Stall()});
    WorkerClient client({.reply = 20ms, .early_login = 20ms});
    EXPECT_EQ(client.Connect(server_.HostField()).Kind(), FailureKind::TimedOut);
}

TEST_F(Misbehaviour, ListRefused) {
    WorkerClient& client = Client();
    server_.At("LIST", {Say("550 Not for you")});
    const Told told = client.Run(ftp::List{});
    EXPECT_EQ(told.Kind(), FailureKind::Refused) << told;
    EXPECT_EQ(told.problems.front().detail, "Not for you");
    ExpectInStep();
}

TEST_F(Misbehaviour, LongListing) {
    std::vector<std::string> lines;
    for (int i = 0; i < 200'000; ++i)
        lines.push_back("-rw-r--r-- 1 a b 5 Jan 1 2020 file" + std::to_string(i));
    server_.SetListing(lines);
    const Told told = Client().Run(ftp::List{});
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_TRUE(told.lines == lines);
}

TEST_F(Misbehaviour, EndlessLineInListingIsLeftOutAndTold) {
    server_.SetListing({"a", std::string(1 << 20, 'x'), "b"});
    const Told told = Client().Run(ftp::List{});
    EXPECT_EQ(told.lines, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(told.Kind(), FailureKind::Protocol) << told;
    ExpectInStep();
}

TEST_F(Misbehaviour, EndlessLineInReplyEndsTheSession) {
    WorkerClient& client = Client();
    server_.At("CWD", {Raw("250 " + std::string(1 << 20, 'x') + "\r\n")});
    const Told told = client.Run(ftp::ChangeDirectory{"x"});
    EXPECT_EQ(told.Kind(), FailureKind::Protocol) << told;
    EXPECT_EQ(told.connected, false);
}

TEST_F(Misbehaviour, NulBytesPass) {
    WorkerClient& client = Client();
    const std::string row("a\0b", 3);
    server_.SetListing({row});
    EXPECT_EQ(client.Run(ftp::List{}).lines, std::vector<std::string>{row});
    server_.At("CWD", {Raw("250 " + row + "\r\n")});
    EXPECT_EQ(client.Run(ftp::ChangeDirectory{"x"}).trace.at(1), "< 250 " + row);
}

TEST_F(Misbehaviour, ForeignAddressIsNotGoneTo) {
    server_.At("EPSV", {Say("500 What?")});
    server_.At("PASV", {ListenData(), Say("227 Entering Passive Mode (10,9,8,7,%P)")});
    const Told told = Client().Run(Retrieve());
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(Target(), "0123456789");
}

TEST_F(Misbehaviour, GoneInTheMiddle) {
    for (const char* command : {"SIZE", "EPSV", "RETR"}) {
        for (const Step& end : {Close(), Reset()}) {
            SCOPED_TRACE(command);
            WorkerClient& client = Client();
            server_.At(command, {end});
            const Told told = client.Run(Retrieve());
            server_.At(command, {Proper()});
            EXPECT_EQ(told.Kind(), FailureKind::ConnectionLost) << told;
            EXPECT_EQ(told.connected, false);
            ExpectUntouched();
        }
    }
}

TEST_F(Misbehaviour, DataConnectionThatNobodyAccepts) {
    WorkerClient& client = Client({.connect = 200ms});
    server_.At("EPSV", {BlockData(), Say("229 Here (|||%p|)")});
    server_.At("RETR", {Say("150 Coming"), Stall()});
    EXPECT_EQ(client.Run(Retrieve()).Kind(), FailureKind::TimedOut);
    ExpectUntouched();
    ExpectInStep();
}

TEST_F(Misbehaviour, DataConnectionRefused) {
    WorkerClient& client = Client();
    server_.At("EPSV", {RefuseData(), Say("229 Here (|||%p|)")});
    server_.At("RETR", {Say("425 Cannot open it")});
    const Told told = client.Run(Retrieve());
    EXPECT_TRUE(told.Kind() == FailureKind::ConnectionRefused || told.Code() == 425) << told;
    ExpectUntouched();
    ExpectInStep();
}

TEST_F(Misbehaviour, StalledDataEndsInTime) {
    WorkerClient& client = Client({.data = 50ms});
    server_.At("RETR", {Say("150 Coming"), SendData("012"), Stall()});
    EXPECT_EQ(client.Run(Retrieve()).Kind(), FailureKind::TimedOut);
    ExpectUntouched();
    ExpectInStep();
}

TEST_F(Misbehaviour, CutShortButConfirmed) {
    WorkerClient& client = Client();
    server_.At("RETR", {Say("150 Coming"), SendData("012"), CloseData(), Say("226 Done")});
    EXPECT_EQ(client.Run(Retrieve()).Kind(), FailureKind::CutShort);
    ExpectUntouched();
    ExpectInStep();
}

TEST_F(Misbehaviour, ConfirmedBeforeTheEnd) {
    server_.At("RETR",
               {Say("150 Coming"), SendData("012"), Say("226 Done"), SendData("3456789"), CloseData()});
    const Told told = Client().Run(Retrieve());
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(Target(), "0123456789");
}

TEST_F(Misbehaviour, BrokenOffByTheServer) {
    for (const char* reply : {"426 Broken", "451 Disk error", "552 Full"}) {
        SCOPED_TRACE(reply);
        WorkerClient& client = Client();
        server_.At("RETR", {Say("150 Coming"), SendData("012"), ResetData(), Say(reply)});
        Told told = client.Run(Retrieve());
        EXPECT_EQ(told.Kind(), FailureKind::Refused) << told;
        EXPECT_EQ(told.Code(), std::stoi(reply));
        ExpectUntouched();
        ExpectInStep();
        server_.At("STOR", {Say("150 Waiting"), TakeData(1000), ResetData(), Say(reply)});
        told = client.Run(StoreHuge());
        EXPECT_EQ(told.Kind(), FailureKind::Refused) << told;
        EXPECT_EQ(told.Code(), std::stoi(reply));
        fs::remove(folder_ / "huge");
        ExpectInStep();
    }
}

TEST_F(Misbehaviour, EndlessListingIsDroppedOrAborted) {
    server_.At("LIST", {Say("150 Coming"), EndlessListing()});
    WorkerClient& client = Client();
    client.Start(ftp::List{});
    client.AwaitBatches(40);
    client.TheWorker().AbortTransfer();
    Told told = client.Finish();
    EXPECT_EQ(told.Kind(), FailureKind::Cancelled) << told;
    EXPECT_EQ(told.connected, std::nullopt) << told;
    ExpectInStep();
    client.Start(ftp::List{});
    client.AwaitBatches(40);
    client.TheWorker().DropSession();
    told = client.Finish();
    EXPECT_EQ(told.Kind(), FailureKind::Cancelled) << told;
    EXPECT_EQ(told.connected, false);
}

TEST_F(Misbehaviour, ListingThatNobodyTakesIsNotReadOn) {
    server_.At("LIST", 1, {Say("150 Coming"), EndlessListing()});
    server_.SetListing(std::vector<std::string>(200'000, "line"));
    WorkerClient& client = Client();
    client.takes_batches = false;
    client.Start(ftp::List{});
    client.AwaitBatches(16);
    WorkerClient meanwhile;
    EXPECT_TRUE(meanwhile.Connect(server_.HostField()).Well());
    EXPECT_EQ(meanwhile.Run(ftp::List{}).lines.size(), 200'000U);
    client.TheWorker().AbortTransfer();
    EXPECT_EQ(client.Finish().Kind(), FailureKind::Cancelled);
    EXPECT_LE(client.Batches(), 17);
}

TEST_F(Misbehaviour, DestroyedWhileNobodyTakes) {
    server_.At("LIST", {Say("150 Coming"), EndlessListing()});
    WorkerClient& client = Client();
    client.takes_batches = false;
    client.Start(ftp::List{});
    client.AwaitBatches(16);
    client.Destroy();
}

TEST_F(Misbehaviour, UploadThatNobodyReadsCanBeAborted) {
    for (const bool passive : {true, false}) {
        SCOPED_TRACE(passive);
        server_.At("STOR", {Say("150 Waiting"), TakeData(1), Stall()});
        WorkerClient& client = Client();
        client.passive = passive;
        client.Start(StoreHuge());
        client.AwaitNotification(kStarted);
        client.TheWorker().AbortTransfer();
        EXPECT_EQ(client.Finish().Kind(), FailureKind::Cancelled);
        ExpectInStep();
    }
}

TEST_F(Misbehaviour, FileThatShrinksIsNotTakenForWhole) {
    server_.At("STOR", {Say("150 Waiting"), TakeData(100'000), Hold(), TakeData(300'000'000), CloseData(),
                        Say("226 Done")});
    WorkerClient& client = Client();
    client.Start(StoreHuge());
    client.AwaitNotification(kStarted);
    fs::resize_file(folder_ / "huge", 0);
    server_.Release();
    const Told told = client.Finish();
    EXPECT_EQ(told.Kind(), FailureKind::LocalOther) << told;
    ExpectInStep();
}

}  // namespace
}  // namespace worker_test
