#pragma once
// Real FTP servers on loopback, several makes of them, each with one account of its own: demo / demo.
//
// A server lives as long as its object, and never longer than the process. Any number may run at once, in any
// number of processes. vsftpd, pure-ftpd and proftpd need root and the folder that tools/install fills
// (build/servers, or what WEBSMIDE_SERVERS names); pyftpdlib needs neither.

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/certificates.h"

namespace ftp_test {

enum class Make { Vsftpd, PureFtpd, ProFtpd, PyFtpdLib };

/// "vsftpd", "pure_ftpd", "proftpd", "pyftpdlib": fit for the name of a parameterised test.
std::string Name(Make make);
std::ostream& operator<<(std::ostream& out, Make make);

enum class Tls {
    None,
    Offered,   // AUTH TLS is understood; who does not ask for it is served in plain text
    Demanded,  // a login, and data connections, only under TLS
    Implicit,  // TLS before the greeting; not pure-ftpd
};
enum class TlsVersions { Both, Only12, Only13 };

/// Every make, for parameterised tests that skip, and say why, what cannot run here:
///     if (auto reason = WhyMissing(GetParam())) GTEST_SKIP() << *reason;
std::vector<Make> AllServers();
/// The makes that can run here.
std::vector<Make> AvailableServers();
/// Why a make cannot run here, or nothing.
std::optional<std::string> WhyMissing(Make make, Tls tls = Tls::None);

struct ServerOptions {
    std::string address = "127.0.0.1";  // or "::1"
    /// First and last port of data connections; otherwise any.
    std::optional<std::pair<int, int>> passive_ports = {};
    int max_clients = 0;   // sessions at once; 0: no limit
    int idle_seconds = 0;  // 0: the server's own default
    bool utf8 = true;      // false: UTF8 is not among the features (pure-ftpd always says it)
    /// The home folder is a disk of this size of its own; 0: no limit. Root only. Not for pyftpdlib, which
    /// falls silent when its disk is full.
    std::int64_t home_bytes = 0;
    /// With TLS vsftpd and proftpd want each data connection to resume the session of its control connection,
    /// as proftpd does by default; pure-ftpd and pyftpdlib do not ask for it.
    Tls tls = Tls::None;
    ServerCertificate certificate = ServerCertificate::Valid;
    TlsVersions tls_versions = TlsVersions::Both;  // both: 1.2 and 1.3
};

class Server {
 public:
    /// Returns when the server listens. Throws std::runtime_error with the server's own words when it does
    /// not.
    explicit Server(Make make, ServerOptions options = {});
    /// Ends the server and its sessions at once, and removes its home folder.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    const std::string& Address() const;
    std::uint16_t Port() const;
    /// "127.0.0.1:40001", "[::1]:40001".
    std::string HostField() const;
    /// The account's home folder as this process sees it. Its contents are the test's to change.
    const std::filesystem::path& Home() const;

    // Names are paths below the home folder, byte for byte. What is made belongs to the account.
    void WriteFile(const std::string& name, const std::string& bytes);
    void MakeFolder(const std::string& name);
    /// Takes the account's right to change what is in the folder; "" is the home folder itself.
    void ProtectFolder(const std::string& name);
    /// The file's bytes, or nothing when there is no such file.
    std::optional<std::string> ReadFile(const std::string& name) const;

    /// The certificate (PEM) that the server shows, for FingerprintOf.
    const std::filesystem::path& Certificate() const;

    /// Ends the server and its sessions now; the home folder stays.
    void Kill();
    /// The same as Kill; then the server runs again on its port, with a new certificate, also where the kind
    /// is the same. Not with a disk of its own.
    void ReplaceCertificate(ServerCertificate kind);

 private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace ftp_test
