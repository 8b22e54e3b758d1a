#include "tests/support/ftp_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "tests/support/server_setup.h"

extern char** environ;

namespace ftp_test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

[[noreturn]] void Throw(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

std::string TextOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

bool IsIpv6(const std::string& address) {
    return address.find(':') != std::string::npos;
}

std::uint16_t FreePort(const std::string& address) {
    sockaddr_storage storage{};
    socklen_t size = sizeof(sockaddr_in);
    storage.ss_family = AF_INET;
    auto& v4 = reinterpret_cast<sockaddr_in&>(storage);
    auto& v6 = reinterpret_cast<sockaddr_in6&>(storage);
    if (IsIpv6(address)) {
        storage.ss_family = AF_INET6;
        size = sizeof(sockaddr_in6);
        inet_pton(AF_INET6, address.c_str(), &v6.sin6_addr);
    } else {
        inet_pton(AF_INET, address.c_str(), &v4.sin_addr);
    }
    const int probe = socket(storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    auto* name = reinterpret_cast<sockaddr*>(&storage);
    const bool bound = probe >= 0 && bind(probe, name, size) == 0 && getsockname(probe, name, &size) == 0;
    close(probe);
    if (!bound) Throw("a free port on " + address);
    return ntohs(IsIpv6(address) ? v6.sin6_port : v4.sin_port);
}

/// Looks into the kernel's table: a trial connection would use up one of the sessions that a server allows.
bool Listens(std::uint16_t port, bool ipv6) {
    std::ifstream table(ipv6 ? "/proc/net/tcp6" : "/proc/net/tcp");
    std::string line;
    std::getline(table, line);
    while (std::getline(table, line)) {
        std::string number, local, remote, state;
        std::istringstream(line) >> number >> local >> remote >> state;
        if (state == "0A" && std::stoi(local.substr(local.rfind(':') + 1), nullptr, 16) == port) return true;
    }
    return false;
}

std::string UniquePamService() {
    static std::atomic<int> count{0};
    return "websmide-test-" + std::to_string(getpid()) + "-" + std::to_string(++count);
}

/// PAM reads its services from one folder only; what a killed test left there goes with the next one.
void RemoveStalePamFiles() {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/etc/pam.d", ignored)) {
        int pid = 0;
        const std::string name = entry.path().filename();
        if (std::sscanf(name.c_str(), "websmide-test-%d-", &pid) == 1 && kill(pid, 0) != 0)
            fs::remove(entry, ignored);
    }
}

}  // namespace

struct Server::State {
    Make make;
    ServerOptions options;
    Place place;
    fs::path visible_home;
    std::vector<fs::path> protected_folders;
    pid_t keeper = -1;
    int lifeline = -1;  // the write end of the keeper's standard input

    ~State();
    void MakeFolders();
    void Start();
    void Restart();
    bool WaitUntilItListens();
    void Spawn(const std::vector<std::string>& command);
    void End();
    fs::path Below(const std::string& name) const { return visible_home / name; }
    void Own(const fs::path& path) const;
};

Server::State::~State() {
    End();
    std::error_code ignored;
    for (const fs::path& folder : protected_folders) fs::permissions(folder, fs::perms(0755), ignored);
    fs::remove(PamFile(place.pam_service), ignored);
    fs::remove_all(place.folder, ignored);
}

void Server::State::MakeFolders() {
    std::string folder = (fs::temp_directory_path() / "websmide-ftp-XXXXXX").string();
    if (!mkdtemp(folder.data())) Throw(folder);
    place.folder = folder;
    place.home = visible_home = place.folder / "home";
    place.pam_service = UniquePamService();
    fs::create_directory(place.home);
    fs::permissions(place.folder, fs::perms(0755));
    Own(place.home);
}

void Server::State::Own(const fs::path& path) const {
    const Owner owner = FileOwner();
    if (chown(path.c_str(), owner.uid, owner.gid) != 0) Throw(path);
}

void Server::State::Start() {
    MakeFolders();
    if (options.tls != Tls::None) place.certificate = Certificates(options.certificate, options.address);
    if (make == Make::Vsftpd) RemoveStalePamFiles();
    // A port that was free may be taken a moment later by somebody else's connection.
    for (int attempt = 1;; ++attempt) {
        place.port = FreePort(options.address);
        Spawn(SetUp(make, options, place));
        if (WaitUntilItListens()) break;
        End();
        if (attempt == 3) throw std::runtime_error(Name(make) + ": " + TextOf(place.folder / "output.log"));
    }
    if (options.home_bytes) visible_home = "/proc/" + std::to_string(keeper) + "/root" + place.home.string();
}

void Server::State::Restart() {
    // The port is the server's for as long as nobody else's connection takes it, which is not for ever.
    for (int attempt = 1; attempt <= 3; ++attempt) {
        End();
        Spawn(SetUp(make, options, place));
        if (WaitUntilItListens()) return;
    }
    throw std::runtime_error(Name(make) + ": " + TextOf(place.folder / "output.log"));
}

bool Server::State::WaitUntilItListens() {
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (!Listens(place.port, IsIpv6(options.address))) {
        if (waitpid(keeper, nullptr, WNOHANG) == keeper) {
            keeper = -1;
            return false;
        }
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

void Server::State::Spawn(const std::vector<std::string>& command) {
    std::vector<std::string> words{WEBSMIDE_KEEPER};
    if (options.home_bytes) {
        const Owner owner = FileOwner();
        words.insert(words.end(), {"--disk", place.home.string(), std::to_string(options.home_bytes),
                                   std::to_string(owner.uid), std::to_string(owner.gid)});
    }
    words.insert(words.end(), {"env", "LD_LIBRARY_PATH=" + LibrariesFolder().string()});
    words.insert(words.end(), command.begin(), command.end());
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) Throw("pipe");
    const std::string log = (place.folder / "output.log").string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    errno = posix_spawn(&keeper, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[0]);
    lifeline = ends[1];
    if (errno != 0) Throw(words.front());
}

void Server::State::End() {
    if (lifeline >= 0) close(lifeline);
    if (keeper > 0) waitpid(keeper, nullptr, 0);
    lifeline = -1;
    keeper = -1;
}

Server::Server(Make make, ServerOptions options) : state_(std::make_unique<State>()) {
    if (const auto reason = WhyMissing(make, options.tls))
        throw std::runtime_error(Name(make) + ": " + *reason);
    state_->make = make;
    state_->options = std::move(options);
    state_->Start();
}

Server::~Server() = default;

const std::string& Server::Address() const {
    return state_->options.address;
}
std::uint16_t Server::Port() const {
    return state_->place.port;
}
const fs::path& Server::Home() const {
    return state_->visible_home;
}
const fs::path& Server::Certificate() const {
    return state_->place.certificate.certificate;
}
void Server::Kill() {
    state_->End();
}

void Server::ReplaceCertificate(ServerCertificate kind) {
    if (state_->options.home_bytes) throw std::logic_error("the disk would go with the server");
    state_->place.certificate = Certificates(kind, Address());
    state_->Restart();
}

std::string Server::HostField() const {
    const std::string host = IsIpv6(Address()) ? "[" + Address() + "]" : Address();
    return host + ":" + std::to_string(Port());
}

void Server::WriteFile(const std::string& name, const std::string& bytes) {
    const fs::path path = state_->Below(name);
    if (!(std::ofstream(path, std::ios::binary) << bytes << std::flush)) Throw(path);
    state_->Own(path);
}

void Server::MakeFolder(const std::string& name) {
    fs::create_directory(state_->Below(name));
    state_->Own(state_->Below(name));
}

void Server::ProtectFolder(const std::string& name) {
    fs::permissions(state_->Below(name), fs::perms(0555));
    state_->protected_folders.push_back(state_->Below(name));
}

std::optional<std::string> Server::ReadFile(const std::string& name) const {
    const fs::path path = state_->Below(name);
    if (!fs::is_regular_file(path)) return std::nullopt;
    return TextOf(path);
}

std::string Name(Make make) {
    switch (make) {
        case Make::Vsftpd:
            return "vsftpd";
        case Make::PureFtpd:
            return "pure_ftpd";
        case Make::ProFtpd:
            return "proftpd";
        case Make::PyFtpdLib:
            break;
    }
    return "pyftpdlib";
}

std::ostream& operator<<(std::ostream& out, Make make) {
    return out << Name(make);
}

std::vector<Make> AllServers() {
    return {Make::Vsftpd, Make::PureFtpd, Make::ProFtpd, Make::PyFtpdLib};
}

std::vector<Make> AvailableServers() {
    std::vector<Make> makes = AllServers();
    std::erase_if(makes, [](Make make) { return WhyMissing(make).has_value(); });
    return makes;
}

std::optional<std::string> WhyMissing(Make make, Tls tls) {
    if (make == Make::PyFtpdLib) return std::nullopt;
    if (getuid() != 0) return Name(make) + " needs root";
    if (!fs::exists(ProgramOf(make)))
        return ProgramOf(make).string() + " is missing: run tools/install servers";
    if (make == Make::PureFtpd && tls == Tls::Implicit) return Name(make) + " has no implicit TLS";
    if (make == Make::ProFtpd && tls != Tls::None && !fs::exists(ProFtpdModules() / "mod_tls.so"))
        return "proftpd has no mod_tls: run tools/install servers";
    return std::nullopt;
}

}  // namespace ftp_test
