// Runs of transfers against real servers, on one connection and over lanes.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <thread>

#include "tests/ftp/engine/worker_client.h"
#include "tests/support/ftp_server.h"

namespace worker_test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ftp::FailureKind;
using ftp_test::Make;
using ftp_test::Server;
using ftp_test::ServerOptions;

using Files = std::map<std::string, std::string>;  // name or path -> bytes

std::string Noise(std::size_t size, std::mt19937& random) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

struct Case {
    Make make;
    std::size_t lanes;
};

class RunsTest : public testing::TestWithParam<Case> {
 protected:
    void SetUp() override {
        if (const auto reason = ftp_test::WhyMissing(GetParam().make)) GTEST_SKIP() << *reason;
        std::string name = (fs::temp_directory_path() / "websmide-runs-XXXXXX").native();
        folder_ = mkdtemp(name.data());
    }
    void TearDown() override {
        client_.reset();
        std::error_code ignored;
        if (!folder_.empty()) fs::remove_all(folder_, ignored);
    }

    void Serve(ServerOptions options = {}, ftp::Deadlines deadlines = {}) {
        server_.emplace(GetParam().make, std::move(options));
        client_ = std::make_unique<WorkerClient>(deadlines);
        const Told told = client_->Connect(server_->HostField());
        ASSERT_TRUE(told.Well()) << told;
    }
    /// Runs an operation of which nothing is expected but that it goes well.
    void Do(ftp::Operation operation) {
        const Told told = client_->Run(std::move(operation));
        EXPECT_TRUE(told.Well()) << told;
    }
    void Begin() { Do(ftp::BeginRun{GetParam().lanes}); }
    /// Every file of the run so far that failed was told by its own request.
    void ExpectNothingAside() {
        for (const ftp::FileProblem& problem : client_->TakeAside().problems)
            ADD_FAILURE() << problem.label << ": " << static_cast<int>(problem.failure.kind) << ' '
                          << problem.failure.code << ' ' << problem.failure.detail;
    }
    /// Begins a run and sends the file until a lane has taken it. What went over the session itself.
    std::string BeginAndAwaitLane(const std::string& name) {
        Begin();
        std::string main;
        for (int times = 0; times < 2000; ++times) {
            const Told told = client_->Run(Put(name));
            EXPECT_TRUE(told.Well()) << told;
            for (const std::string& line : told.trace) main += line + '\n';
            if (GetParam().lanes == 0 ? times == 10 : !client_->TakeAside().trace.empty()) return main;
        }
        ADD_FAILURE() << "no lane took anything";
        return main;
    }

    std::string Local(const std::string& name) const { return (folder_ / name).native(); }
    void WriteLocal(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
    }
    std::string ReadLocal(const std::string& name) const {
        std::ifstream in(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    ftp::Operation Put(const std::string& name) const {
        return ftp::Store{.local_path = Local(name), .remote = name, .label = "label of " + name};
    }
    ftp::Operation Get(const std::string& name, std::size_t size) const {
        return ftp::Retrieve{.remote = name,
                             .local_path = Local("got " + name),
                             .label = name,
                             .size = static_cast<std::int64_t>(size)};
    }

    /// Small files, an empty one and a large one.
    Files MakeFiles(int count, unsigned seed) const {
        std::mt19937 random(seed);
        Files files{{"empty", ""}, {"large", Noise(300 * 1024, random)}};
        for (int i = 0; i < count; ++i) files["f" + std::to_string(i)] = Noise(random() % 5000, random);
        for (const auto& [name, bytes] : files) WriteLocal(name, bytes);
        return files;
    }
    /// Sends the files into each of the folders, one beside the other and each with a folder inside.
    void SendInto(const std::vector<std::string>& folders, const Files& files) {
        Begin();
        for (const std::string& folder : folders) {
            Do(ftp::MakeDirectory{folder});
            Do(ftp::ChangeDirectory{folder});
            for (const auto& [name, bytes] : files) Do(Put(name));
            Do(ftp::MakeDirectory{"inside"});
            Do(ftp::ChangeDirectory{"inside"});
            Do(Put("f0"));
            Do(ftp::ChangeToParent{});
            Do(ftp::ChangeToParent{});
        }
        Do(ftp::EndRun{});
        ExpectNothingAside();
    }
    void ExpectIn(const std::vector<std::string>& folders, const Files& files) {
        for (const std::string& folder : folders) {
            for (const auto& [name, bytes] : files)
                EXPECT_TRUE(server_->ReadFile(folder + "/" + name) == bytes) << folder << "/" << name;
            EXPECT_TRUE(server_->ReadFile(folder + "/inside/f0") == files.at("f0"));
        }
    }
    /// The session has its place and its step.
    void ExpectInStep() {
        const Told told = client_->Run(ftp::List{});
        EXPECT_TRUE(told.Well()) << told;
        WriteLocal("after", "all is well");
        Do(Put("after"));
        EXPECT_EQ(server_->ReadFile("after"), "all is well");
    }

    fs::path folder_;
    std::optional<Server> server_;
    std::unique_ptr<WorkerClient> client_;
};

/// pyftpdlib falls silent when its disk is full.
class FullDiskTest : public RunsTest {};

/// With lanes always.
class LanesTest : public RunsTest {};

std::vector<Case> Cases(const std::vector<Make>& makes, const std::vector<std::size_t>& lanes) {
    std::vector<Case> cases;
    for (const Make make : makes)
        for (const std::size_t count : lanes) cases.push_back({make, count});
    return cases;
}
std::string NameOf(const testing::TestParamInfo<Case>& info) {
    return ftp_test::Name(info.param.make) + "_" + std::to_string(info.param.lanes);
}
INSTANTIATE_TEST_SUITE_P(, RunsTest, testing::ValuesIn(Cases(ftp_test::AllServers(), {0, 1, 4})), NameOf);
INSTANTIATE_TEST_SUITE_P(, LanesTest, testing::ValuesIn(Cases(ftp_test::AllServers(), {1, 4})), NameOf);
INSTANTIATE_TEST_SUITE_P(, FullDiskTest,
                         testing::ValuesIn(Cases({Make::Vsftpd, Make::PureFtpd, Make::ProFtpd}, {0, 1, 4})),
                         NameOf);

TEST_P(RunsTest, FoldersOfFilesGoUpAndAgain) {
    Serve();
    const std::vector<std::string> folders{"a", "b c", "\xC3\xA5\"\xC3\xA4"};
    const Files files = MakeFiles(12, 1);
    SendInto(folders, files);
    ExpectIn(folders, files);

    // They are there now: making them again is refused, and everything else is as before.
    Begin();
    std::size_t refused = 0;
    const auto count = [&refused](const Told& told) { refused += told.problems.size(); };
    for (const std::string& folder : folders) {
        count(client_->Run(ftp::MakeDirectory{folder}));
        count(client_->Run(ftp::ChangeDirectory{folder}));
        for (const auto& [name, bytes] : files) count(client_->Run(Put(name)));
        count(client_->Run(ftp::ChangeToParent{}));
    }
    count(client_->Run(ftp::EndRun{}));
    EXPECT_EQ(refused, folders.size());
    ExpectNothingAside();
    ExpectIn(folders, files);
    ExpectInStep();
}

TEST_P(RunsTest, ManyFilesComeDown) {
    Serve();
    const Files files = MakeFiles(25, 2);
    for (const auto& [name, bytes] : files) server_->WriteFile(name, bytes);
    Begin();
    for (const auto& [name, bytes] : files) Do(Get(name, bytes.size()));
    Do(ftp::EndRun{});
    ExpectNothingAside();
    for (const auto& [name, bytes] : files) EXPECT_TRUE(ReadLocal("got " + name) == bytes) << name;
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), static_cast<long>(2 * files.size()));
    ExpectInStep();
}

TEST_P(RunsTest, SmallFilesGoOverTheLanesAndLargeOnesDoNot) {
    Serve();
    const Files files = MakeFiles(25, 3);
    BeginAndAwaitLane("f0");
    std::string main;
    for (const auto& [name, bytes] : files)
        for (const std::string& line : client_->Run(Put(name)).trace) main += line + '\n';
    Do(ftp::EndRun{});
    const bool over_session = main.find("> STOR f1\n") != std::string::npos;
    EXPECT_EQ(over_session, GetParam().lanes == 0) << main;
    EXPECT_NE(main.find("> STOR large\n"), std::string::npos);
    for (const auto& [name, bytes] : files) EXPECT_TRUE(server_->ReadFile(name) == bytes) << name;
}

TEST_P(RunsTest, RefusedFilesAreToldByTheirNames) {
    Serve();
    server_->MakeFolder("closed");
    server_->ProtectFolder("closed");
    const Files files = MakeFiles(15, 4);
    Begin();
    Do(ftp::ChangeDirectory{"closed"});
    std::size_t refused = 0;
    for (const auto& [name, bytes] : files) refused += client_->Run(Put(name)).problems.size();
    Do(ftp::ChangeToParent{});
    Do(ftp::EndRun{});
    for (const ftp::FileProblem& problem : client_->TakeAside().problems) {
        EXPECT_EQ(problem.failure.kind, FailureKind::Refused);
        EXPECT_TRUE(problem.label.starts_with("label of ")) << problem.label;
        ++refused;
    }
    EXPECT_EQ(refused, files.size());
    ExpectInStep();
}

TEST_P(RunsTest, VanishedFilesAreToldAtOnce) {
    Serve();
    const Files files = MakeFiles(10, 5);
    Begin();
    for (const auto& [name, bytes] : files) {
        Do(Put(name));
        const Told told = client_->Run(Put("gone " + name));
        EXPECT_EQ(told.Kind(), FailureKind::LocalNotFound) << told;
    }
    Do(ftp::EndRun{});
    for (const auto& [name, bytes] : files) EXPECT_TRUE(server_->ReadFile(name) == bytes) << name;
}

TEST_P(RunsTest, ServerThatLetsFewerInGetsAllFilesAllTheSame) {
    Serve({.max_clients = 3});
    const std::vector<std::string> folders{"a", "b"};
    const Files files = MakeFiles(20, 6);
    SendInto(folders, files);
    ExpectIn(folders, files);
    ExpectInStep();
}

TEST_P(FullDiskTest, IsToldFileByFile) {
    Serve({.home_bytes = 256 * 1024});
    std::mt19937 random(7);
    Begin();
    std::size_t failed = 0;
    for (int i = 0; i < 20; ++i) {
        const std::string name = "f" + std::to_string(i);
        WriteLocal(name, Noise(40'000, random));
        failed += client_->Run(Put(name)).problems.size();
    }
    Do(ftp::EndRun{});
    failed += client_->TakeAside().problems.size();
    std::size_t whole = 0;
    for (int i = 0; i < 20; ++i) {
        const std::string name = "f" + std::to_string(i);
        whole += server_->ReadFile(name) == ReadLocal(name);
    }
    EXPECT_GE(failed, 13U);
    EXPECT_EQ(failed + whole, 20U) << "what was not told to have failed is there";
    const Told told = client_->Run(ftp::List{});
    EXPECT_TRUE(told.Well()) << told;
}

TEST_P(RunsTest, ServerThatDisappearsEndsTheRunSoon) {
    Serve();
    const Files files = MakeFiles(30, 8);
    Begin();
    std::size_t told = 0;
    int sent = 0;
    for (const auto& [name, bytes] : files) {
        if (++sent == 15) server_->Kill();
        told += client_->Run(Put(name)).problems.size();
    }
    client_->Run(ftp::EndRun{});
    told += client_->TakeAside().problems.size();
    std::size_t missing = 0;
    for (const auto& [name, bytes] : files) missing += server_->ReadFile(name) != bytes;
    EXPECT_GE(missing, files.size() - 15);
    EXPECT_GE(told, missing) << "a file is missing and nobody was told";
    EXPECT_EQ(client_->Run(ftp::List{}).Kind(), FailureKind::NotConnected);
}

TEST_P(RunsTest, AbortsAtAnyMomentLeaveTheSessionInStep) {
    Serve();
    std::mt19937 random(10);
    std::size_t cancelled = 0;
    for (unsigned round = 0; round < 16; ++round) {
        const bool up = round % 2 == 0;
        const Files files = MakeFiles(8, 100 + round);
        if (!up)
            for (const auto& [name, bytes] : files) server_->WriteFile(name, bytes);
        Begin();
        std::thread aborter([this, pause = std::chrono::microseconds(random() % 8000)] {
            std::this_thread::sleep_for(pause);
            client_->TheWorker().AbortTransfer();
        });
        std::size_t told = 0;
        for (const auto& [name, bytes] : files)
            told += client_->Run(up ? Put(name) : Get(name, bytes.size())).problems.size();
        aborter.join();
        Do(ftp::EndRun{});
        for (const ftp::FileProblem& problem : client_->TakeAside().problems) {
            EXPECT_EQ(problem.failure.kind, FailureKind::Cancelled);
            ++told;
        }
        std::size_t missing = 0;
        for (const auto& [name, bytes] : files)
            missing += (up ? server_->ReadFile(name) : std::optional(ReadLocal("got " + name))) != bytes;
        EXPECT_GE(told, missing) << "a file is missing and nobody was told";
        cancelled += told;
        const Told listed = client_->Run(ftp::List{});
        ASSERT_TRUE(listed.Well()) << listed;
    }
    EXPECT_GT(cancelled, 0U);
    for (const auto& entry : fs::directory_iterator(folder_))
        EXPECT_FALSE(entry.path().filename().native().ends_with(".tmp")) << entry;
}

TEST_P(RunsTest, WorkerMayGoAtAnyMoment) {
    Serve();
    const Files files = MakeFiles(6, 11);
    std::mt19937 random(12);
    for (int round = 0; round < 10; ++round) {
        Begin();
        for (const auto& [name, bytes] : files) client_->Run(Put(name));
        if (round % 2) client_->Start(ftp::EndRun{});
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
        const auto start = std::chrono::steady_clock::now();
        client_->Destroy();
        EXPECT_LT(std::chrono::steady_clock::now() - start, 1s);
        client_ = std::make_unique<WorkerClient>();
        ASSERT_TRUE(client_->Connect(server_->HostField()).Well());
    }
}

// LOGO.GIF and logo.gif have one name on the server.
TEST_P(RunsTest, OfTwoFilesWithOneNameTheLaterOneIsThere) {
    Serve();
    std::mt19937 random(14);
    MakeFiles(1, 14);
    BeginAndAwaitLane("f0");
    for (int round = 0; round < 12; ++round) {
        const std::string name = "twin" + std::to_string(round);
        const std::string first = Noise(200'000, random),
                          second = Noise(round % 2 ? 90'000 : 280'000, random);
        WriteLocal("first", round % 3 ? first : first + first);  // large ones go another way
        WriteLocal("second", second);
        Do(ftp::Store{.local_path = Local("first"), .remote = name});
        Do(ftp::Store{.local_path = Local("second"), .remote = name});
        Do(ftp::ChangeDirectory{"."});
        Do(ftp::List{});  // waits for both
        EXPECT_TRUE(server_->ReadFile(name) == second) << round;
    }
    Do(ftp::EndRun{});
}

TEST_P(RunsTest, OtherOperationsFindWhatWasSentBefore) {
    Serve();
    MakeFiles(1, 15);
    BeginAndAwaitLane("f0");
    WriteLocal("new", std::string(100'000, 'x'));
    for (int round = 0; round < 10; ++round) {
        Do(Put("new"));
        Do(ftp::RenameFile{"new", "renamed"});
        Do(ftp::DeleteFile{"renamed"});
    }
    Do(ftp::EndRun{});
}

TEST_P(RunsTest, AnotherServerGetsNothingOfTheRunBefore) {
    Serve();
    const Server other(GetParam().make);
    MakeFiles(1, 16);
    BeginAndAwaitLane("f0");
    Do(ftp::MakeDirectory{"put off"});
    ASSERT_TRUE(client_->Connect(other.HostField()).Well());
    WriteLocal("new", "bytes");
    for (int i = 0; i < 5; ++i) Do(Put("new"));
    Do(ftp::EndRun{});
    EXPECT_EQ(other.ReadFile("new"), "bytes");
    EXPECT_EQ(server_->ReadFile("new"), std::nullopt);
    EXPECT_FALSE(fs::exists(other.Home() / "put off"));
}

TEST_P(LanesTest, KeepTheSessionItselfAwake) {
    Serve({}, {.idle = 0ms});
    const Files files = MakeFiles(1, 13);
    BeginAndAwaitLane("f0");
    const Told told = client_->Run(Put("f0"));
    EXPECT_EQ(told.trace.empty() ? "" : told.trace.front(), "> NOOP") << told;
    Do(ftp::EndRun{});
    EXPECT_TRUE(server_->ReadFile("f0") == files.at("f0"));
}

}  // namespace
}  // namespace worker_test
