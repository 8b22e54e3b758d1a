// The worker against real servers, several makes of them.

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>

#include "tests/ftp/engine/worker_client.h"
#include "tests/support/ftp_server.h"

namespace worker_test {
namespace {

namespace fs = std::filesystem;
using ftp::FailureKind;
using ftp_test::Make;
using ftp_test::Server;
using ftp_test::ServerOptions;

std::string Noise(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

std::string ReadAll(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class ServersTest : public testing::TestWithParam<Make> {
 protected:
    void SetUp() override {
        if (const auto reason = ftp_test::WhyMissing(GetParam())) GTEST_SKIP() << *reason;
        std::string name = (fs::temp_directory_path() / "websmide-worker-XXXXXX").native();
        folder_ = mkdtemp(name.data());
    }
    void TearDown() override {
        std::error_code ignored;
        if (!folder_.empty()) fs::remove_all(folder_, ignored);
    }
    void Serve(ServerOptions options = {}) {
        server_.emplace(GetParam(), std::move(options));
        const Told told = client_.Connect(server_->HostField());
        ASSERT_TRUE(told.Well()) << told;
        EXPECT_EQ(told.connected, true);
    }
    std::string Local(const std::string& name) const { return (folder_ / name).native(); }
    void WriteLocal(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
    }
    std::vector<std::string> LocalNames() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_)) names.push_back(entry.path().filename());
        std::ranges::sort(names);
        return names;
    }
    /// Up, listed, down, renamed and deleted again.
    void ThereAndBack(const std::string& name, const std::string& bytes) {
        SCOPED_TRACE(testing::PrintToString(name));
        WriteLocal("up", bytes);
        Told told = client_.Run(ftp::Store{Local("up"), name});
        ASSERT_TRUE(told.Well()) << told;
        EXPECT_EQ(client_.TheWorker().BytesTransferred(), static_cast<std::int64_t>(bytes.size()));
        EXPECT_TRUE(server_->ReadFile(name) == bytes);
        told = client_.Run(ftp::List{});
        EXPECT_TRUE(told.Well()) << told;
        EXPECT_TRUE(std::ranges::any_of(told.lines, [&](auto& line) { return line.ends_with(name); }))
            << name;
        told = client_.Run(ftp::Retrieve{name, Local("down")});
        ASSERT_TRUE(told.Well()) << told;
        EXPECT_EQ(client_.TheWorker().BytesTransferred(), static_cast<std::int64_t>(bytes.size()));
        EXPECT_TRUE(ReadAll(Local("down")) == bytes);
        told = client_.Run(ftp::RenameFile{name, "new " + name});
        ASSERT_TRUE(told.Well()) << told;
        told = client_.Run(ftp::DeleteFile{"new " + name});
        EXPECT_TRUE(told.Well()) << told;
        EXPECT_EQ(server_->ReadFile("new " + name), std::nullopt);
    }

    fs::path folder_;
    std::optional<Server> server_;
    WorkerClient client_;
};

INSTANTIATE_TEST_SUITE_P(, ServersTest, testing::ValuesIn(ftp_test::AllServers()),
                         testing::PrintToStringParamName());

TEST_P(ServersTest, RightAndWrongPassword) {
    Serve();
    EXPECT_EQ(client_.Run(ftp::Quit{}).connected, false);
    const Told told = client_.Connect(server_->HostField(), "wrong");
    EXPECT_EQ(told.Kind(), FailureKind::Refused) << told;
    EXPECT_EQ(told.Code(), 530);
    EXPECT_EQ(client_.Run(ftp::List{}).Kind(), FailureKind::NotConnected);
    EXPECT_TRUE(client_.Connect(server_->HostField()).Well());
}

TEST_P(ServersTest, FilesOfAllSizesThereAndBack) {
    Serve();
    unsigned seed = 1;
    for (const std::size_t size : {0UL, 1UL, 65'536UL, 5'000'000UL})
        ThereAndBack("f.bin", Noise(size, ++seed));
}

TEST_P(ServersTest, TextWithLineEndsIsNotTouched) {
    Serve();
    ThereAndBack("text.txt", "a\r\nb\nc\rd\xFF\n\n");
}

TEST_P(ServersTest, NamesOfAllKindsThereAndBack) {
    Serve({.utf8 = false});
    std::vector<std::string> names{"two words.txt", "-rf", "[a]*?.txt", "\xC3\xA5\xC3\xA4\xC3\xB6.txt"};
    // These makes take names for bytes; the others insist on UTF-8. Only one of them reads Telnet's doubled
    // 0xFF.
    if (GetParam() == Make::Vsftpd || GetParam() == Make::ProFtpd) names.push_back("\xE5\xE4\xF6.txt");
    if (GetParam() == Make::ProFtpd) names.push_back("a\xFF_\xFF\xFF.txt");
    for (const std::string& name : names) ThereAndBack(name, "x");
}

TEST_P(ServersTest, WalksFolders) {
    Serve();
    EXPECT_TRUE(client_.Run(ftp::MakeDirectory{"a b"}).Well());
    EXPECT_TRUE(client_.Run(ftp::ChangeDirectory{"a b"}).Well());
    EXPECT_EQ(client_.Run(ftp::List{}).lines.size(), 0U);
    WriteLocal("up", "x");
    EXPECT_TRUE(client_.Run(ftp::Store{Local("up"), "x"}).Well());
    EXPECT_TRUE(server_->ReadFile("a b/x"));
    EXPECT_TRUE(client_.Run(ftp::DeleteFile{"x"}).Well());
    EXPECT_TRUE(client_.Run(ftp::ChangeToParent{}).Well());
    EXPECT_TRUE(client_.Run(ftp::RemoveDirectory{"a b"}).Well());
    EXPECT_FALSE(fs::exists(server_->Home() / "a b"));
}

TEST_P(ServersTest, RefusesWhatIsNotThere) {
    Serve();
    const std::vector<ftp::Operation> operations{
        ftp::Retrieve{"none", Local("down")}, ftp::ChangeDirectory{"none"}, ftp::DeleteFile{"none"},
        ftp::RemoveDirectory{"none"},         ftp::RenameFile{"none", "x"}, ftp::MakeDirectory{"none/none"},
    };
    for (const auto& operation : operations) {
        const Told told = client_.Run(operation);
        EXPECT_EQ(told.Kind(), FailureKind::Refused) << told;
        EXPECT_GE(told.Code(), 500);
        EXPECT_EQ(told.connected, std::nullopt);
    }
    EXPECT_EQ(LocalNames(), std::vector<std::string>{});
    EXPECT_TRUE(client_.Run(ftp::List{}).Well());
}

TEST_P(ServersTest, RefusesUploadIntoProtectedFolder) {
    Serve();
    server_->MakeFolder("closed");
    server_->ProtectFolder("closed");
    WriteLocal("up", Noise(1'000'000, 7));
    const Told told = client_.Run(ftp::Store{Local("up"), "closed/x"});
    EXPECT_EQ(told.Kind(), FailureKind::Refused) << told;
    EXPECT_TRUE(client_.Run(ftp::Store{Local("up"), "open"}).Well());
}

TEST_P(ServersTest, OverIpv6) {
    Serve({.address = "::1"});
    ThereAndBack("f", Noise(100'000, 3));
}

TEST_P(ServersTest, Actively) {
    client_.passive = false;
    Serve();
    ThereAndBack("f", Noise(3'000'000, 4));
    client_.Run(ftp::Quit{});
    Serve({.address = "::1"});
    ThereAndBack("f", Noise(3'000'000, 5));
}

/// A disk of its own, on top of a folder.
class Disk {
 public:
    Disk(std::string path, const char* options, unsigned long flags = 0) : path_(std::move(path)) {
        fs::create_directory(path_);
        mounted_ = mount("none", path_.c_str(), "tmpfs", flags, options) == 0;
    }
    ~Disk() {
        if (mounted_) umount2(path_.c_str(), MNT_DETACH);
    }
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;
    bool Mounted() const { return mounted_; }
    bool MakeReadOnly() const {
        return mount(nullptr, path_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

 private:
    std::string path_;
    bool mounted_;
};

TEST_P(ServersTest, FullDiskKeepsTheOldFile) {
    const Disk disk(Local("disk"), "size=1m");
    if (!disk.Mounted()) GTEST_SKIP() << "needs the right to mount";
    Serve();
    server_->WriteFile("big", Noise(3'000'000, 8));
    WriteLocal("disk/target", "old");
    const Told told = client_.Run(ftp::Retrieve{"big", Local("disk/target")});
    EXPECT_EQ(told.Kind(), FailureKind::LocalDiskFull) << told;
    EXPECT_EQ(ReadAll(Local("disk/target")), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(Local("disk")), {}), 1);
    EXPECT_TRUE(client_.Run(ftp::List{}).Well());
}

TEST_P(ServersTest, ClosedDiskIsSaidBeforeTheServerIsAsked) {
    const Disk disk(Local("disk"), "size=1m");
    if (!disk.Mounted()) GTEST_SKIP() << "needs the right to mount";
    Serve();
    server_->WriteFile("f", "new");
    WriteLocal("disk/target", "old");
    ASSERT_TRUE(disk.MakeReadOnly());
    for (const char* target : {"disk/target", "disk/fresh"}) {
        const Told told = client_.Run(ftp::Retrieve{"f", Local(target)});
        EXPECT_EQ(told.Kind(), FailureKind::LocalDenied) << told;
        EXPECT_EQ(told.trace.size(), 0U);
    }
}

TEST_P(ServersTest, UploadsPlainFilesOnly) {
    Serve();
    ASSERT_EQ(mkfifo(Local("pipe").c_str(), 0600), 0);
    EXPECT_EQ(client_.Run(ftp::Store{Local("none"), "x"}).Kind(), FailureKind::LocalNotFound);
    EXPECT_EQ(client_.Run(ftp::Store{Local("."), "x"}).Kind(), FailureKind::LocalPath);
    EXPECT_EQ(client_.Run(ftp::Store{Local("pipe"), "x"}).Kind(), FailureKind::LocalPath);
    EXPECT_EQ(client_.Run(ftp::Retrieve{"x", Local("none/x")}).Kind(), FailureKind::LocalPath);
    EXPECT_EQ(server_->ReadFile("x"), std::nullopt);
}

TEST_P(ServersTest, ServerThatIsGoneIsSaidAndForgotten) {
    Serve();
    server_->Kill();
    const Told told = client_.Run(ftp::ChangeDirectory{"x"});
    EXPECT_TRUE(told.Kind() == FailureKind::ConnectionLost || told.Kind() == FailureKind::ConnectionRefused)
        << told;
    EXPECT_FALSE(client_.Connected());
    EXPECT_EQ(client_.Run(ftp::List{}).Kind(), FailureKind::NotConnected);
    EXPECT_EQ(client_.Connect(server_->HostField()).Kind(), FailureKind::ConnectionRefused);
}

/// pure-ftpd counts idle time in minutes, and pyftpdlib ends no session for it.
class IdleTest : public ServersTest {};

INSTANTIATE_TEST_SUITE_P(, IdleTest, testing::Values(Make::Vsftpd, Make::ProFtpd),
                         testing::PrintToStringParamName());

TEST_P(IdleTest, SessionThatTheServerEndsIsOpenedAgainInItsFolder) {
    server_.emplace(GetParam(), ServerOptions{.idle_seconds = 1});
    server_->MakeFolder("a b");
    server_->WriteFile("a b/f", "inside");
    server_->WriteFile("f", "outside");
    ASSERT_TRUE(client_.Connect(server_->HostField()).Well());
    ASSERT_TRUE(client_.Run(ftp::ChangeDirectory{"a b"}).Well());
    client_.AwaitConnected(false);
    Told told = client_.Run(ftp::Retrieve{"f", Local("down")});
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_EQ(told.connected, true);
    EXPECT_EQ(ReadAll(Local("down")), "inside");
    client_.AwaitConnected(false);
    WriteLocal("up", Noise(100'000, 21));
    told = client_.Run(ftp::Store{Local("up"), "g"});
    EXPECT_TRUE(told.Well()) << told;
    EXPECT_TRUE(server_->ReadFile("a b/g") == ReadAll(Local("up")));
}

/// Ends a transfer at a random moment: as a notification comes, or as so many bytes have moved.
class Interruption {
 public:
    explicit Interruption(unsigned seed) : random_(seed) {}
    void Await(WorkerClient& client, std::int64_t size) {
        if (random_() % 2 == 0) return client.AwaitNotification(random_() % 8);
        client.AwaitBytes(static_cast<std::int64_t>(random_() % static_cast<unsigned long>(size)));
    }

 private:
    std::mt19937 random_;
};

/// Not with pyftpdlib: after an abort it confirms the next transfer and then sends a part of it, or something
/// else.
class AbortTest : public ServersTest {};
INSTANTIATE_TEST_SUITE_P(, AbortTest, testing::Values(Make::Vsftpd, Make::PureFtpd, Make::ProFtpd),
                         testing::PrintToStringParamName());

TEST_P(AbortTest, AtAnyMomentGoesOn) {
    Serve();
    const std::string bytes = Noise(4'000'000, 9);
    server_->WriteFile("big", bytes);
    WriteLocal("up", bytes);
    WriteLocal("down", "old");
    int aborted = 0;
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Interruption interruption(seed);
        const bool up = seed % 2 == 0;
        if (up)
            client_.Start(ftp::Store{Local("up"), "stored"});
        else
            client_.Start(ftp::Retrieve{"big", Local("down")});
        interruption.Await(client_, 4'000'000);
        client_.TheWorker().AbortTransfer();
        const Told told = client_.Finish();
        ASSERT_TRUE(told.Well() || told.Kind() == FailureKind::Cancelled) << told;
        ASSERT_EQ(told.connected, std::nullopt) << "lost the session\n" << told;
        if (!told.Well()) ++aborted;
        if (!up) {
            ASSERT_TRUE(ReadAll(Local("down")) == (told.Well() ? bytes : "old"))
                << told << ReadAll(Local("down")).size();
            WriteLocal("down", "old");
        }
        ASSERT_EQ(LocalNames(), (std::vector<std::string>{"down", "up"}));
        const Told next = client_.Run(ftp::ChangeDirectory{"."});
        ASSERT_TRUE(next.Well()) << told << next;
        ASSERT_EQ(next.trace.size(), 4U) << told << next;
    }
    EXPECT_GT(aborted, 20);
    ThereAndBack("f", Noise(100'000, 10));
}

TEST_P(ServersTest, DroppedAtAnyMoment) {
    Serve();
    const std::string bytes = Noise(4'000'000, 11);
    server_->WriteFile("big", bytes);
    WriteLocal("up", bytes);
    for (unsigned seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Interruption interruption(seed);
        const std::vector<ftp::Operation> operations{ftp::Store{Local("up"), "stored"},
                                                     ftp::Retrieve{"big", Local("down")}, ftp::List{},
                                                     ftp::Connect{server_->HostField(), "demo", "demo", {}}};
        client_.Start(operations[seed % operations.size()]);
        interruption.Await(client_, 4'000'000);
        client_.TheWorker().DropSession();
        const Told told = client_.Finish();
        ASSERT_TRUE(told.Well() || told.Kind() == FailureKind::Cancelled) << told;
        fs::remove(Local("down"));
        ASSERT_EQ(LocalNames(), std::vector<std::string>{"up"});
        const Told again = client_.Connect(server_->HostField());
        ASSERT_TRUE(again.Well()) << again;
    }
}

TEST_P(ServersTest, DestroyedAtAnyMoment) {
    server_.emplace(GetParam());
    server_->WriteFile("big", Noise(4'000'000, 12));
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        WorkerClient client;
        const Told told = client.Connect(server_->HostField());
        ASSERT_TRUE(told.Well()) << told;
        client.Start(ftp::Retrieve{"big", Local("down")});
        Interruption(seed).Await(client, 4'000'000);
        client.Destroy();
        fs::remove(Local("down"));
        ASSERT_EQ(LocalNames(), std::vector<std::string>{});
    }
}

}  // namespace
}  // namespace worker_test
