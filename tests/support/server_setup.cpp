#include "tests/support/server_setup.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace ftp_test {
namespace {

using std::filesystem::path;
using Command = std::vector<std::string>;
constexpr const char* kPython = "/usr/bin/python3";  // the system's: it has the packaged modules

void Write(const path& file, const std::string& text) {
    if (!(std::ofstream(file) << text << std::flush))
        throw std::runtime_error("cannot write " + file.string());
    std::filesystem::permissions(file, std::filesystem::perms(0600));
}

std::string BytesOf(const path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string OutputOf(const std::string& command) {
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::array<char, 256> line{};
    if (!pipe || !fgets(line.data(), line.size(), pipe.get()))
        throw std::runtime_error("no answer: " + command);
    return std::string(line.data(), std::string(line.data()).find('\n'));
}

void Run(const std::string& command) {
    if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

/// "demo" with its password, owner and home, as in passwd(5).
std::string AccountLine(const Place& place, const std::string& home_and_rest) {
    const Owner owner = FileOwner();
    return "demo:" + OutputOf("openssl passwd -5 demo") + ":" + std::to_string(owner.uid) + ":" +
           std::to_string(owner.gid) + "::" + place.home.string() + home_and_rest + "\n";
}

std::string Line(const std::string& key, const std::string& value) {
    return key + value + "\n";
}

/// For every program that uses OpenSSL, whatever its own configuration can say about versions.
path LimitVersions(TlsVersions versions, const Place& place) {
    const std::string version = versions == TlsVersions::Only12 ? "TLSv1.2\n" : "TLSv1.3\n";
    path file = place.folder / "openssl.cnf";
    Write(file,
          "openssl_conf = program\n[program]\nssl_conf = ssl\n[ssl]\nsystem_default = versions\n[versions]\n"
          "MinProtocol = " +
              version + "MaxProtocol = " + version);
    return file;
}

std::string VsftpdTls(const ServerOptions& options, const Place& place) {
    if (options.tls == Tls::None) return "";
    const bool demanded = options.tls != Tls::Offered;
    std::string text = "ssl_enable=YES\nssl_ciphers=HIGH\nrequire_ssl_reuse=YES\n";
    text += Line("rsa_cert_file=", place.certificate.certificate.string());
    text += Line("rsa_private_key_file=", place.certificate.key.string());
    text += Line("force_local_logins_ssl=", demanded ? "YES" : "NO");
    text += Line("force_local_data_ssl=", demanded ? "YES" : "NO");
    text += Line("implicit_ssl=", options.tls == Tls::Implicit ? "YES" : "NO");
    return text;
}

Command SetUpVsftpd(const ServerOptions& options, const Place& place) {
    // Accounts only through PAM: a service of its own with a database of one user.
    const path users = place.folder / "users";
    Run(std::string(kPython) + " -c 'import dbm.ndbm, sys\nwith dbm.ndbm.open(sys.argv[1], \"n\") as users:" +
        " users[\"demo\"] = \"demo\"' " + users.string());
    Write(PamFile(place.pam_service),
          "auth required pam_userdb.so db=" + users.string() +
              "\naccount required pam_permit.so\nsession required pam_permit.so\n");
    std::filesystem::create_directory(place.folder / "empty");

    const bool ipv6 = options.address.find(':') != std::string::npos;
    std::string text = ipv6 ? "listen=NO\nlisten_ipv6=YES\nlisten_address6=" : "listen=YES\nlisten_address=";
    text += options.address + "\n";
    text += Line("listen_port=", std::to_string(place.port));
    text += Line("guest_username=", FileOwner().user);
    text += Line("pam_service_name=", place.pam_service);
    text += Line("local_root=", place.home.string());
    text += Line("secure_chroot_dir=", (place.folder / "empty").string());
    text += Line("utf8_filesystem=", options.utf8 ? "YES" : "NO");
    text += Line("max_clients=", std::to_string(options.max_clients));
    text +=
        "background=NO\nanonymous_enable=NO\nlocal_enable=YES\nguest_enable=YES\nvirtual_use_local_privs="
        "YES\n"
        "chroot_local_user=YES\nallow_writeable_chroot=YES\nlocal_umask=022\nmdtm_write=YES\nmax_per_ip=0\n"
        "write_enable=YES\ndelay_failed_login=0\nxferlog_enable=NO\n";
    if (options.idle_seconds) text += Line("idle_session_timeout=", std::to_string(options.idle_seconds));
    if (const auto& ports = options.passive_ports)
        text += Line("pasv_min_port=", std::to_string(ports->first)) +
                Line("pasv_max_port=", std::to_string(ports->second));
    text += VsftpdTls(options, place);
    const path file = place.folder / "vsftpd.conf";
    Write(file, text);
    return {ProgramOf(Make::Vsftpd).string(), file.string()};
}

Command PureFtpdTls(const ServerOptions& options, const Place& place) {
    if (options.tls == Tls::None) return {};
    const path both = place.folder / "certificate.pem";  // one file for certificate and key
    Write(both, BytesOf(place.certificate.certificate) + BytesOf(place.certificate.key));
    return {"-2", both.string(), "-Y", options.tls == Tls::Offered ? "1" : "3"};
}

Command SetUpPureFtpd(const ServerOptions& options, const Place& place) {
    // crypt() instead of the server's own hash, which takes seconds for each login.
    const path passwd = place.folder / "passwd", users = place.folder / "users.pdb";
    Write(passwd, AccountLine(place, "/./::::::::::::"));
    Run((ServersFolder() / "usr/bin/pure-pw").string() + " mkdb " + users.string() + " -f " +
        passwd.string());

    const bool ipv6 = options.address.find(':') != std::string::npos;
    Command command{ProgramOf(Make::PureFtpd).string(), ipv6 ? "-6" : "-4", "-E", "-A", "-H"};
    command.insert(command.end(), {"-u", "1", "-l", "puredb:" + users.string(), "-f", "none"});
    command.insert(command.end(), {"-S", options.address + "," + std::to_string(place.port)});
    command.insert(command.end(), {"-g", (place.folder / "server.pid").string(), "-L", "1000000:50"});
    command.insert(command.end(), {"-c", std::to_string(options.max_clients ? options.max_clients : 500)});
    if (options.idle_seconds)  // whole minutes only
        command.insert(command.end(), {"-I", std::to_string((options.idle_seconds + 59) / 60)});
    if (const auto& ports = options.passive_ports)
        command.insert(command.end(),
                       {"-p", std::to_string(ports->first) + ":" + std::to_string(ports->second)});
    const Command tls = PureFtpdTls(options, place);
    command.insert(command.end(), tls.begin(), tls.end());
    return command;
}

std::string ProFtpdTls(const ServerOptions& options, const Place& place) {
    if (options.tls == Tls::None) return "";
    std::string text = "LoadModule mod_tls.c\nTLSEngine on\nTLSVerifyClient off\n";
    text += Line("TLSECCertificateFile ", place.certificate.certificate.string());
    text += Line("TLSECCertificateKeyFile ", place.certificate.key.string());
    text += Line("TLSLog ", (place.folder / "tls.log").string());
    text += Line("TLSRequired ", options.tls == Tls::Offered ? "off" : "on");
    if (options.tls == Tls::Implicit) text += "TLSOptions UseImplicitSSL\n";
    return text;
}

Command SetUpProFtpd(const ServerOptions& options, const Place& place) {
    const path passwd = place.folder / "passwd";
    Write(passwd, AccountLine(place, ":/bin/sh"));
    const Owner owner = FileOwner();
    std::string text = Line("DefaultAddress ", options.address);
    text += Line("Port ", std::to_string(place.port));
    text += Line("UseIPv6 ", options.address.find(':') != std::string::npos ? "on" : "off");
    text += Line("User ", owner.user) + Line("Group ", owner.group);
    text += Line("AuthUserFile ", passwd.string());
    text += Line("SystemLog ", (place.folder / "server.log").string());
    text += Line("PidFile ", (place.folder / "server.pid").string());
    text += Line("ScoreboardFile ", (place.folder / "scoreboard").string());
    text += Line("ModulePath ", ProFtpdModules().string());
    text +=
        "ServerName test\nServerType standalone\nDefaultServer on\nSocketBindTight on\nUseReverseDNS off\n"
        "AuthOrder mod_auth_file.c\nRequireValidShell off\nDefaultRoot ~\nUmask 022\nAllowOverwrite on\n"
        "WtmpLog off\nTransferLog none\nControlsEngine off\nTimesGMT on\n"
        "<IfModule mod_delay.c>\nDelayEngine off\n</IfModule>\n";
    text += options.utf8 ? "UseEncoding UTF-8 UTF-8\n" : "LangEngine off\nUseEncoding off\n";
    if (options.max_clients) text += Line("MaxClients ", std::to_string(options.max_clients));
    if (options.idle_seconds) text += Line("TimeoutIdle ", std::to_string(options.idle_seconds));
    if (const auto& ports = options.passive_ports)
        text += "PassivePorts " + std::to_string(ports->first) + " " + std::to_string(ports->second) + "\n";
    text += ProFtpdTls(options, place);
    const path file = place.folder / "proftpd.conf";
    Write(file, text);
    return {ProgramOf(Make::ProFtpd).string(), "-n", "-q", "-c", file.string()};
}

Command SetUpPyFtpdLib(const ServerOptions& options, const Place& place) {
    Command command{kPython, "-B", WEBSMIDE_SOURCE_DIR "/tests/support/pyftpd.py"};
    command.insert(command.end(), {options.address, std::to_string(place.port), place.home.string()});
    command.insert(command.end(), {"--owner", FileOwner().user});
    if (!options.utf8) command.push_back("--no-utf8");
    if (options.max_clients)
        command.insert(command.end(), {"--clients", std::to_string(options.max_clients)});
    if (options.idle_seconds) command.insert(command.end(), {"--idle", std::to_string(options.idle_seconds)});
    if (const auto& ports = options.passive_ports)
        command.insert(command.end(),
                       {"--ports", std::to_string(ports->first), std::to_string(ports->second)});
    if (options.tls != Tls::None) {
        const char* kind = options.tls == Tls::Offered    ? "offered"
                           : options.tls == Tls::Demanded ? "demanded"
                                                          : "implicit";
        command.insert(command.end(), {"--tls", kind, place.certificate.certificate.string(),
                                       place.certificate.key.string()});
    }
    return command;
}

Command CommandOf(Make make, const ServerOptions& options, const Place& place) {
    switch (make) {
        case Make::Vsftpd:
            return SetUpVsftpd(options, place);
        case Make::PureFtpd:
            return SetUpPureFtpd(options, place);
        case Make::ProFtpd:
            return SetUpProFtpd(options, place);
        case Make::PyFtpdLib:
            break;
    }
    return SetUpPyFtpdLib(options, place);
}

}  // namespace

Owner FileOwner() {
    const passwd* user = getuid() == 0 ? getpwnam("daemon") : getpwuid(getuid());
    if (!user) throw std::runtime_error("no account to own the served files");
    const group* its_group = getgrgid(user->pw_gid);
    return {user->pw_name, its_group ? its_group->gr_name : std::to_string(user->pw_gid), user->pw_uid,
            user->pw_gid};
}

path ServersFolder() {
    const char* named = std::getenv("WEBSMIDE_SERVERS");
    return named ? path(named) : path(WEBSMIDE_SOURCE_DIR "/build/servers");
}

path LibrariesFolder() {
    // Named after the machine, as in usr/lib/x86_64-linux-gnu.
    std::error_code none_unpacked;
    for (const auto& entry : std::filesystem::directory_iterator(ServersFolder() / "usr/lib", none_unpacked))
        if (entry.path().filename().string().find("-linux-gnu") != std::string::npos) return entry.path();
    return {};
}

path ProgramOf(Make make) {
    switch (make) {
        case Make::Vsftpd:
            return ServersFolder() / "usr/sbin/vsftpd";
        case Make::PureFtpd:
            return ServersFolder() / "usr/sbin/pure-ftpd";
        case Make::ProFtpd:
            return ServersFolder() / "usr/sbin/proftpd";
        case Make::PyFtpdLib:
            break;
    }
    return {};
}

path ProFtpdModules() {
    return ServersFolder() / "usr/lib/proftpd";
}

path PamFile(const std::string& service) {
    return "/etc/pam.d/" + service;
}

Command SetUp(Make make, const ServerOptions& options, const Place& place) {
    Command command = CommandOf(make, options, place);
    if (options.tls_versions != TlsVersions::Both)
        command.insert(command.begin(),
                       "OPENSSL_CONF=" + LimitVersions(options.tls_versions, place).string());
    return command;
}

}  // namespace ftp_test
