#include "tests/soak/soak.h"

#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>
#include <thread>
#include <utility>

#include "tests/soak/contents.h"

namespace soak {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using worker_test::Told;

constexpr std::size_t kFolders = 4;     // "d0" and so on, on each server
constexpr std::size_t kMostFiles = 40;  // on each server
constexpr std::size_t kTargets = 16;    // local files, which replace one another
constexpr auto kStuck = 30s;

/// For a violation: what is there instead.
std::string Described(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const auto version = VersionOf(bytes);
    const std::string kind = version ? "version " + std::to_string(*version) : "not whole";
    return !in.is_open() ? "nothing"
                         : kind + ", " + std::to_string(bytes.size()) + " bytes, " + bytes.substr(0, 63);
}

/// The end of what a server has said on its own screen.
std::string LastWords(const fs::path& log) {
    constexpr std::size_t kMost = 2000;
    std::ifstream in(log, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    return text.substr(text.size() - std::min(text.size(), kMost));
}

/// Short, so that what stalls does not take long; long enough for a busy machine.
ftp::Deadlines Short() {
    return {.connect = 4s,
            .reply = 3s,
            .data = 2s,
            .early_login = 2s,
            .ahead = 1s,
            .idle = 1s,
            .abort = 1s,
            .quit = 300ms};
}

std::string Join(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder + '/' + name;
}

std::string FolderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == path.npos ? std::string() : path.substr(0, slash);
}

}  // namespace

Soak::Site::Site(ftp_test::Make make, const Options& options)
    : server(make),
      proxy({.server_port = server.Port(),
             .seed = options.seed,
             .cuts_uploads = options.cuts_uploads,
             .server_is_trusting = make == ftp_test::Make::PyFtpdLib}) {
    for (std::size_t i = 0; i < kFolders; ++i) server.MakeFolder("d" + std::to_string(i));
}

Soak::Soak(const Options& options) : options_(options), random_(options.seed), client_(Short()) {
    std::string folder = (fs::temp_directory_path() / "websmide-soak-XXXXXX").string();
    if (!mkdtemp(folder.data())) throw std::system_error(errno, std::generic_category(), folder);
    folder_ = folder;
    fs::create_directory(folder_ / "up");
    fs::create_directory(folder_ / "down");
    for (const ftp_test::Make make : options_.makes) sites_.push_back(std::make_unique<Site>(make, options_));
}

Soak::~Soak() {
    client_.Destroy();
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

std::uint64_t Soak::Faults() const {
    std::uint64_t faults = 0;
    for (const auto& site : sites_) faults += site->proxy.Faults();
    return faults;
}

void Soak::Step() {
    const std::size_t chance = Below(100);
    if (chance < 3) return Connect();
    if (chance < 13) return List();
    if (chance < 22) return ChangeFolder();
    if (chance < 45) return Upload();
    if (chance < 70) return Download();
    if (chance < 76) return Rename();
    if (chance < 82) return Delete();
    if (chance < 86) return MakeFolder();
    if (chance < 90) return RemoveFolder();
    if (chance < 98) return Run();
    LoseConnections();
}

void Soak::Rest() {
    client_.Run(ftp::Quit{});
    const auto connected = [this] {
        return std::ranges::any_of(sites_, [](const auto& site) { return site->proxy.Connections() > 0; });
    };
    const auto deadline = Clock::now() + kStuck;
    while (connected() && Clock::now() < deadline) std::this_thread::sleep_for(5ms);
    if (connected()) Violation("rest: connections are left");
    lost_ = true;
}

// The operations.

/// To any of the servers.
void Soak::Connect() {
    site_ = Below(sites_.size());
    faults_before_ = Here().proxy.Faults();
    current_.clear();
    Do("connect to " + ftp_test::Name(options_.makes[site_]),
       ftp::Connect{Here().HostField(), "demo", "demo", {}});
}

void Soak::List() {
    const std::size_t expected = std::ranges::count_if(
        Here().files, [this](const auto& file) { return FolderOf(file.first) == current_; });
    const std::uint64_t faults = Here().proxy.Faults();
    const Told told = Do("list", ftp::List{}, true);
    if (told.Well() && Here().proxy.Faults() == faults && told.lines.size() < expected)
        Violation("list: lines are missing");
}

void Soak::ChangeFolder() {
    const std::string folder = current_.empty() ? "d" + std::to_string(Below(kFolders)) : "";
    const Told told = folder.empty() ? Do("cd ..", ftp::ChangeToParent{})
                                     : Do("cd " + folder, ftp::ChangeDirectory{folder});
    if (told.Well()) current_ = folder;
}

void Soak::Upload() {
    Moving file{.up = true, .remote = {}, .local = {}, .version = 0};
    file.local = NewSource(file.version, false);
    const bool replaces = Below(3) == 0 && !Here().files.empty();
    file.remote = replaces ? AnyFile() : Join(current_, NewName());
    const std::string what = "up " + file.remote;
    const Told told = Do(what, ftp::Store{(folder_ / "up" / file.local).string(), As(file.remote)}, true);
    CheckUpload(what, file, told.Well());
    while (Here().files.size() > kMostFiles) Forget(AnyFile());
}

void Soak::Download() {
    if (Here().files.empty()) return Upload();
    Moving file{
        .up = false, .remote = AnyFile(), .local = "lokal" + std::to_string(Below(kTargets)), .version = 0};
    file.version = Here().files[file.remote];
    const std::string what = "down " + file.remote;
    const Told told =
        Do(what, ftp::Retrieve{As(file.remote), (folder_ / "down" / file.local).string()}, true);
    CheckDownload(what, file, told.Well());
}

void Soak::Rename() {
    if (Here().files.empty()) return Upload();
    const std::string from = AnyFile();
    const std::string to = Join("d" + std::to_string(Below(kFolders)), NewName());
    const std::uint64_t version = Here().files[from];
    const Told told = Do("rename " + from, ftp::RenameFile{As(from), As(to)});
    if (told.Well() && VersionOfFile(Here().server.Home() / to) != version)
        Violation("rename: the file is not there");
    if (told.Well()) Here().files[to] = version;
    if (!told.Well()) Forget(to);
    Forget(from);
}

void Soak::Delete() {
    if (Here().files.empty()) return Upload();
    const std::string name = AnyFile();
    const Told told = Do("delete " + name, ftp::DeleteFile{As(name)});
    if (told.Well() && fs::exists(Here().server.Home() / name)) Violation("delete: the file is there");
    Forget(name);
}

void Soak::MakeFolder() {
    const std::string name = "mapp" + std::to_string(++names_);
    const Told told = Do("mkdir " + name, ftp::MakeDirectory{As(name)});
    if (told.Well() && !fs::is_directory(Here().server.Home() / name))
        Violation("mkdir: the folder is not there");
    if (told.Well()) Here().folders.insert(name);
    if (!told.Well()) Forget(name);
}

void Soak::RemoveFolder() {
    if (Here().folders.empty()) return MakeFolder();
    const std::string name = *Here().folders.begin();
    const Told told = Do("rmdir " + name, ftp::RemoveDirectory{As(name)});
    if (told.Well() && fs::exists(Here().server.Home() / name)) Violation("rmdir: the folder is there");
    Here().folders.erase(name);
}

/// A folder upload, or a queue of downloads, or both.
void Soak::Run() {
    std::vector<Moving> moving;
    const std::string before = current_;
    const std::uint64_t faults = Here().proxy.Faults();
    in_run_ = run_is_well_ = true;
    run_is_disturbed_ = lost_;
    Do("begin run", ftp::BeginRun{Below(5)});
    if (Below(2) == 0) {
        const std::string name = "tr" + std::to_string(++names_);
        Do("run: mkdir " + name, ftp::MakeDirectory{name});
        Do("run: cd " + name, ftp::ChangeDirectory{name});
        current_ = Join(before, name);
    }
    const std::string folder = current_;
    for (std::size_t left = 3 + Below(10); left > 0; --left) moving.push_back(MoveInRun(moving.size()));
    if (folder != before) Do("run: cd ..", ftp::ChangeToParent{});
    current_ = before;
    Do("end run", ftp::EndRun{});
    in_run_ = false;
    CheckRun(moving);
    run_is_disturbed_ |= Here().proxy.Faults() != faults || faults != faults_before_;
    if (!run_is_well_ && !run_is_disturbed_) Violation("run: failed without a fault");
    if (!run_is_well_) Recover("end run");
    if (folder != before) Forget(folder);  // unless there is something in it
    while (Here().files.size() > kMostFiles) Forget(AnyFile());
    CheckLitter("end run");
}

Soak::Moving Soak::MoveInRun(std::size_t number) {
    Moving file{.up = Here().files.empty() || Below(3) > 0, .remote = {}, .local = {}, .version = 0};
    if (file.up) {
        file.local = NewSource(file.version, Below(6) > 0);
        const std::string name = NewName();
        file.remote = Join(current_, name);
        Do("run: up " + file.remote, ftp::Store{(folder_ / "up" / file.local).string(), name, file.remote},
           true);
    } else {
        file.local = "lokal" + std::to_string(number);
        file.remote = AnyFile();
        file.version = Here().files[file.remote];
        const std::string target = (folder_ / "down" / file.local).string();
        Do("run: down " + file.remote, ftp::Retrieve{"/" + file.remote, target, file.remote, 1000}, true);
    }
    // Where it has failed once, what follows may be somewhere else, or nowhere.
    file.doubtful = !run_is_well_;
    return file;
}

void Soak::CheckRun(const std::vector<Moving>& moving) {
    std::set<std::string> failed;
    for (const auto& problem : client_.TakeAside().problems) failed.insert(problem.label);
    run_is_well_ &= failed.empty();
    for (const Moving& file : moving) {
        const std::string what = (file.up ? "run: up " : "run: down ") + file.remote;
        const bool well = !file.doubtful && !failed.contains(file.remote);
        if (file.up) {
            CheckUpload(what, file, well);
        } else {  // one of several with this name may have failed, or something behind it
            const bool arrived = VersionOfFile(folder_ / "down" / file.local) == file.version;
            CheckDownload(what, file, well || arrived);
        }
    }
}

/// A server that has waited long enough, or a line that is gone.
void Soak::LoseConnections() {
    if (options_.tells) std::cerr << "lose connections\n";
    Here().proxy.EndAll(Below(2) == 0);
    lost_ = true;
}

// What they share.

Told Soak::Do(const std::string& what, ftp::Operation operation, bool may_be_called_off) {
    ++operations_;
    const std::uint64_t faults = Here().proxy.Faults();
    const auto start = Clock::now();
    client_.Start(std::move(operation));
    const Call call = may_be_called_off && Below(14) == 0 ? CallOff() : Call::None;
    Told told = client_.Finish();
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    longest_ = std::max(longest_, took);
    last_ = told;
    if (options_.tells) Tell(what, call, told, took);
    if (took > kStuck) Violation(what + ": stuck");
    if (!told.Well()) ++failed_;
    run_is_well_ &= told.Well();
    run_is_disturbed_ |= call != Call::None || told.Kind() == ftp::FailureKind::TimedOut;
    const bool excused =
        in_run_ || call != Call::None || lost_ || Here().proxy.Faults() != faults || faults != faults_before_;
    if (!told.Well() && !excused) Unexplained(what);
    faults_before_ = faults;  // what befell the operation before may show in this one
    lost_ = call == Call::Drop;
    if (in_run_) return told;
    client_.TakeAside();
    if (!told.Well()) Recover(what);
    CheckLitter(what);
    return told;
}

/// Nothing was done to the connections, and still it failed. On a busy machine a server may be late.
void Soak::Unexplained(const std::string& what) {
    if (last_.Kind() == ftp::FailureKind::TimedOut) {
        ++late_;
    } else {
        Violation(what + ": failed without a fault");
    }
}

Soak::Call Soak::CallOff() {
    client_.AwaitNotification(Below(8));
    const Call call = Below(4) > 0 ? Call::Abort : Call::Drop;
    if (call == Call::Abort) client_.TheWorker().AbortTransfer();
    if (call == Call::Drop) client_.TheWorker().DropSession();
    return call;
}

void Soak::Tell(const std::string& what, Call call, const Told& told, std::chrono::milliseconds took) const {
    static constexpr std::array kCalls{"", ", aborted", ", dropped"};
    std::cerr << ftp_test::Name(options_.makes[site_]) << ' ' << operations_ << ": " << what
              << kCalls[static_cast<std::size_t>(call)] << ", " << took.count() << " ms";
    for (const ftp::Failure& problem : told.problems)
        std::cerr << ", problem " << static_cast<int>(problem.kind) << ' ' << problem.code << ' '
                  << problem.detail;
    std::cerr << '\n';
}

/// Whatever has happened: the session works, or a new one does.
void Soak::Recover(const std::string& what) {
    Here().proxy.SetCalm(true);
    ++operations_;
    last_ = client_.Run(ftp::ChangeDirectory{"/"});
    if (!last_.Well()) {
        ++reconnected_;
        last_ = client_.Run(ftp::Connect{Here().HostField(), "demo", "demo", {}});
        if (!last_.Well()) Violation("cannot connect after " + what);
        last_ = client_.Run(ftp::ChangeDirectory{"/"});
        if (!last_.Well()) Violation("nothing works after " + what);
    }
    client_.TakeAside();
    Here().proxy.SetCalm(false);
    current_.clear();
    lost_ = false;
}

void Soak::CheckUpload(const std::string& what, const Moving& file, bool well) {
    if (!well) return Forget(file.remote);
    const auto version = VersionOfFile(Here().server.Home() / file.remote);
    if (version == file.version) {
        Here().files[file.remote] = file.version;
        return;
    }
    Violation(what + ": not what was sent (version " + std::to_string(file.version) + ") but " +
              Described(Here().server.Home() / file.remote));
    Forget(file.remote);
}

void Soak::CheckDownload(const std::string& what, const Moving& file, bool well) {
    if (well) local_[file.local] = file.version;
    const auto version = VersionOfFile(folder_ / "down" / file.local);
    const auto expected = local_.find(file.local);
    if (expected == local_.end() ? version.has_value() : version != expected->second)
        Violation(what + (well ? ": not what was to be fetched" : ": not what was there before") +
                  " (version " + (expected == local_.end() ? "none" : std::to_string(expected->second)) +
                  ") but " + Described(folder_ / "down" / file.local) + "; on the server " +
                  Described(Here().server.Home() / file.remote));
}

void Soak::CheckLitter(const std::string& what) {
    if (in_run_) return;
    for (const auto& entry : fs::directory_iterator(folder_ / "down"))
        if (entry.path().filename().string().starts_with(".")) {
            Violation(what + ": litter, " + entry.path().string());
            fs::remove(entry.path());
        }
}

void Soak::Violation(const std::string& what) {
    ++violations_;
    std::cerr << "VIOLATION at operation " << operations_ << " with " << ftp_test::Name(options_.makes[site_])
              << ", " << what << '\n'
              << last_ << LastWords(Here().server.Home().parent_path() / "output.log") << std::flush;
}

/// The file is of no further interest, whatever has become of it, and its name is not used again.
void Soak::Forget(const std::string& remote) {
    const fs::path path = Here().server.Home() / remote;
    Here().files.erase(std::string(remote));  // a copy: the name may be the list's own
    std::error_code not_there;
    fs::remove(path, not_there);
    if (path.parent_path().filename().string().starts_with("tr")) fs::remove(path.parent_path(), not_there);
}

std::string Soak::AnyFile() {
    return std::next(Here().files.begin(), static_cast<std::ptrdiff_t>(Below(Here().files.size())))->first;
}

/// A local file to send, of a new version.
std::string Soak::NewSource(std::uint64_t& version, bool small) {
    version = ++versions_;
    const std::string name = "fil" + std::to_string(version % 32);  // a run has fewer on their way
    std::ofstream(folder_ / "up" / name, std::ios::binary) << Contents(version, AnySize(small));
    return name;
}

/// As the client names what lies there: short where it can.
std::string Soak::As(const std::string& remote) const {
    return FolderOf(remote) == current_ ? remote.substr(remote.rfind('/') + 1) : "/" + remote;
}

std::size_t Soak::AnySize(bool small) {
    const double magnitude = std::uniform_real_distribution<>(0, small ? 4.6 : 6.4)(random_);
    return static_cast<std::size_t>(std::pow(10, magnitude)) - 1;
}

}  // namespace soak
