#pragma once
// How each make of server is configured. Writes files, starts nothing.

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/ftp_server.h"

namespace ftp_test {

/// The owner of the served files. For root that is "daemon": unlike "nobody" it has a home folder, which
/// vsftpd asks for.
struct Owner {
    std::string user, group;
    uid_t uid;
    gid_t gid;
};
Owner FileOwner();

struct Place {
    std::filesystem::path folder;  // the server's own, for configuration and logs
    std::filesystem::path home;    // the account's
    std::uint16_t port;
    std::string pam_service;       // a name of its own in /etc/pam.d, for vsftpd
    CertificateFiles certificate;  // with TLS
};

/// The folder with the unpacked server packages.
std::filesystem::path ServersFolder();
/// The libraries that were unpacked with them.
std::filesystem::path LibrariesFolder();
/// The server's program; empty for pyftpdlib.
std::filesystem::path ProgramOf(Make make);
std::filesystem::path ProFtpdModules();
std::filesystem::path PamFile(const std::string& service);

/// Writes the configuration. The command that runs the server in the foreground, as env(1) takes it: settings
/// of its environment may stand before it.
std::vector<std::string> SetUp(Make make, const ServerOptions& options, const Place& place);

}  // namespace ftp_test
