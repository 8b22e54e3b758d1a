// The test servers with TLS: that each make is really spoken to in each kind, and what it shows and demands.

#include <gtest/gtest.h>
#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ftp_server.h"
#include "tests/support/line_client.h"

namespace ftp_test {
namespace {

template <auto free>
struct FreeWith {
    void operator()(auto* what) const { free(what); }
};
using Settings = std::unique_ptr<SSL_CTX, FreeWith<SSL_CTX_free>>;
using Session = std::unique_ptr<SSL_SESSION, FreeWith<SSL_SESSION_free>>;

/// The port in "229 Anything (|||40001|)".
std::uint16_t PortIn(const std::string& reply) {
    const std::size_t bars = reply.find("|||");
    EXPECT_NE(bars, std::string::npos) << reply;
    return bars == std::string::npos ? std::uint16_t{0}
                                     : static_cast<std::uint16_t>(std::stoi(reply.substr(bars + 3)));
}

/// A blocking connection, at first in plain text.
class Line {
 public:
    Line(const std::string& address, std::uint16_t port) : bio_(BIO_new(BIO_s_connect())) {
        BIO_set_conn_hostname(
            bio_.get(), (address.find(':') == std::string::npos ? address : "[" + address + "]").c_str());
        BIO_set_conn_port(bio_.get(), std::to_string(port).c_str());
        if (BIO_do_connect(bio_.get()) != 1) throw std::runtime_error("nobody listens");
        const timeval limit{20, 0};
        setsockopt(static_cast<int>(BIO_get_fd(bio_.get(), nullptr)), SOL_SOCKET, SO_RCVTIMEO, &limit,
                   sizeof limit);
    }

    void Protect(SSL_CTX* settings, const std::string& address, SSL_SESSION* session = nullptr) {
        BIO* tls = BIO_new_ssl(settings, 1);
        BIO_get_ssl(tls, &ssl_);
        X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(ssl_), address.c_str());
        if (session) SSL_set_session(ssl_, session);
        bio_.reset(BIO_push(tls, bio_.release()));
        if (BIO_do_handshake(bio_.get()) != 1) throw std::runtime_error("no handshake");
    }
    SSL* Tls() const { return ssl_; }

    void Send(const std::string& bytes) {
        BIO_write(bio_.get(), bytes.data(), static_cast<int>(bytes.size()));
    }
    /// One byte at least; empty when the peer has closed.
    std::string Receive() {
        std::string bytes(4096, '\0');
        const int got = BIO_read(bio_.get(), bytes.data(), static_cast<int>(bytes.size()));
        bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        return bytes;
    }
    /// Ends TLS in good order, then the connection.
    void Close() {
        SSL_shutdown(ssl_);
        bio_.reset();
    }

 private:
    std::unique_ptr<BIO, FreeWith<BIO_free_all>> bio_;
    SSL* ssl_ = nullptr;
};

/// A small FTP client whose data connections resume the control connection's session.
class TlsClient {
 public:
    explicit TlsClient(const Server& server, bool implicit = false)
        : address_(server.Address()),
          settings_(SSL_CTX_new(TLS_client_method())),
          control_(address_, server.Port()) {
        SSL_CTX_set_default_verify_paths(settings_.get());
        if (!implicit) {
            EXPECT_EQ(Reply().substr(0, 3), "220");
            EXPECT_EQ(Ask("AUTH TLS").substr(0, 3), "234");
        }
        control_.Protect(settings_.get(), address_);
        if (implicit) {
            EXPECT_EQ(Reply().substr(0, 3), "220");
        }
    }

    void LogIn() {
        ASSERT_EQ(Ask("USER demo").substr(0, 3), "331");
        ASSERT_EQ(Ask("PASS demo").substr(0, 3), "230");
        ASSERT_EQ(Ask("PBSZ 0").substr(0, 3), "200");
        ASSERT_EQ(Ask("PROT P").substr(0, 3), "200");
        ASSERT_EQ(Ask("TYPE I").substr(0, 3), "200");
    }

    std::string Ask(const std::string& command) {
        control_.Send(command + "\r\n");
        return Reply();
    }

    /// All lines of the next reply; empty when the peer has closed.
    std::string Reply() {
        for (;;) {
            // The last line of a reply is the one with a blank behind its number.
            for (std::size_t begin = 0, end; (end = text_.find('\n', begin)) != std::string::npos;
                 begin = end + 1) {
                if (end < begin + 4 || text_[begin + 3] != ' ' || text_[begin] == ' ') continue;
                std::string reply = text_.substr(0, end + 1);
                text_.erase(0, end + 1);
                return reply;
            }
            const std::string more = control_.Receive();
            if (more.empty()) return "";
            text_ += more;
        }
    }

    std::string Download(const std::string& command) {
        Line data = DataFor(command);
        std::string bytes;
        for (std::string more; !(more = data.Receive()).empty();) bytes += more;
        data.Close();
        EXPECT_EQ(Reply().substr(0, 3), "226");
        return bytes;
    }

    void Upload(const std::string& name, const std::string& bytes) {
        Line data = DataFor("STOR " + name);
        data.Send(bytes);
        data.Close();
        EXPECT_EQ(Reply().substr(0, 3), "226");
    }

    Line DataFor(const std::string& command, bool resume = true) {
        Line data(address_, PortIn(Ask("EPSV")));
        EXPECT_EQ(Ask(command).substr(0, 1), "1");
        const Session session(resume ? SSL_get1_session(Tls()) : nullptr);
        data.Protect(settings_.get(), address_, session.get());
        return data;
    }
    SSL* Tls() const { return control_.Tls(); }

 private:
    std::string address_;
    Settings settings_;
    Line control_;
    std::string text_;
};

void Prepare() {
    TrustTestAuthority();
    // OpenSSL has last words for a peer that is gone. A handler, unlike SIG_IGN, is not passed on to the
    // servers.
    signal(SIGPIPE, [](int) {});
}

struct Case {
    Make make;
    Tls tls;
};

std::string NameOf(const Case& with) {
    return Name(with.make) + (with.tls == Tls::Offered    ? "_offered"
                              : with.tls == Tls::Demanded ? "_demanded"
                                                          : "_implicit");
}
void PrintTo(const Case& with, std::ostream* out) {
    *out << NameOf(with);
}

std::vector<Case> EveryCase() {
    std::vector<Case> cases;
    for (const Make make : AllServers()) {
        cases.push_back({make, Tls::Offered});
        cases.push_back({make, Tls::Demanded});
        if (make != Make::PureFtpd) cases.push_back({make, Tls::Implicit});
    }
    return cases;
}

class FtpServerTls : public testing::TestWithParam<Case> {
 protected:
    void SetUp() override {
        Prepare();
        if (const auto reason = WhyMissing(make, tls)) GTEST_SKIP() << *reason;
    }
    const Make make = GetParam().make;
    const Tls tls = GetParam().tls;
};
INSTANTIATE_TEST_SUITE_P(Every, FtpServerTls, testing::ValuesIn(EveryCase()),
                         [](const auto& with) { return NameOf(with.param); });

class FtpServerWithTls : public testing::TestWithParam<Make> {
 protected:
    void SetUp() override {
        Prepare();
        if (const auto reason = WhyMissing(GetParam(), Tls::Demanded)) GTEST_SKIP() << *reason;
    }
};
INSTANTIATE_TEST_SUITE_P(Every, FtpServerWithTls, testing::ValuesIn(AllServers()),
                         [](const auto& server) { return Name(server.param); });

TEST_P(FtpServerTls, ListsAndTransfersBothWays) {
    for (const TlsVersions versions : {TlsVersions::Both, TlsVersions::Only12, TlsVersions::Only13}) {
        Server server(make, {.tls = tls, .tls_versions = versions});
        server.WriteFile("ner.txt", "hej\n");
        TlsClient client(server, tls == Tls::Implicit);
        EXPECT_EQ(SSL_get_verify_result(client.Tls()), X509_V_OK);
        EXPECT_EQ(SSL_version(client.Tls()),
                  versions == TlsVersions::Only12 ? TLS1_2_VERSION : TLS1_3_VERSION);
        ASSERT_NO_FATAL_FAILURE(client.LogIn());
        EXPECT_NE(client.Download("LIST").find("ner.txt"), std::string::npos);
        EXPECT_EQ(client.Download("RETR ner.txt"), "hej\n");
        client.Upload("upp.txt", "tack");
        EXPECT_EQ(server.ReadFile("upp.txt"), "tack");
    }
}

TEST_P(FtpServerWithTls, ServesPlainTextOnlyWhereTlsIsOffered) {
    for (const Tls tls : {Tls::Offered, Tls::Demanded}) {
        Server server(GetParam(), {.tls = tls});
        LineClient control(server.Address(), server.Port());
        control.Reply();
        std::string reply = control.Ask("USER demo");
        if (reply[0] < '4') reply = control.Ask("PASS demo");
        EXPECT_EQ(reply.substr(0, 3) == "230", tls == Tls::Offered) << reply;
    }
}

TEST_P(FtpServerWithTls, IsDemandedForDataToo) {
    Server server(GetParam(), {.tls = Tls::Demanded});
    TlsClient client(server);
    ASSERT_NO_FATAL_FAILURE(client.LogIn());
    std::string reply = client.Ask("PROT C");
    if (reply[0] < '4') reply = client.Ask("EPSV");
    if (reply[0] < '4') {
        LineClient data(server.Address(), PortIn(reply));
        reply = client.Ask("NLST");
    }
    EXPECT_GE(reply, "4");
}

TEST_P(FtpServerWithTls, WantsSessionsResumedWhereThatIsItsWay) {
    Server server(GetParam(), {.tls = Tls::Demanded});
    server.WriteFile("ner.txt", "hej\n");
    TlsClient client(server);
    ASSERT_NO_FATAL_FAILURE(client.LogIn());
    std::string bytes;
    try {
        bytes = client.DataFor("RETR ner.txt", false).Receive();
    } catch (const std::runtime_error&) {  // refused in the handshake already
    }
    const bool any_session = GetParam() == Make::PureFtpd || GetParam() == Make::PyFtpdLib;
    EXPECT_EQ(bytes, any_session ? "hej\n" : "");
}

TEST_P(FtpServerTls, ServesIpv6) {
    Server server(make, {.address = "::1", .tls = tls});
    server.WriteFile("a", "1");
    TlsClient client(server, tls == Tls::Implicit);
    EXPECT_EQ(SSL_get_verify_result(client.Tls()), X509_V_OK);
    ASSERT_NO_FATAL_FAILURE(client.LogIn());
    EXPECT_EQ(client.Download("RETR a"), "1");
}

std::string ShownBy(const TlsClient& client) {
    const std::unique_ptr<X509, FreeWith<X509_free>> shown(SSL_get1_peer_certificate(client.Tls()));
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    X509_digest(shown.get(), EVP_sha256(), digest, &size);
    char text[3 * EVP_MAX_MD_SIZE + 1];
    OPENSSL_buf2hexstr_ex(text, sizeof text, nullptr, digest, size, ':');
    return text;
}

TEST_P(FtpServerTls, TakesAnotherCertificateWhereItIsAndWithWhatItHas) {
    Server server(make, {.tls = tls});
    server.WriteFile("ner.txt", "hej\n");
    const std::uint16_t port = server.Port();
    TlsClient first(server, tls == Tls::Implicit);
    const std::string before = ShownBy(first);
    EXPECT_EQ(before, FingerprintOf(server.Certificate()));
    server.ReplaceCertificate(ServerCertificate::Valid);
    EXPECT_EQ(first.Reply(), "");
    EXPECT_EQ(server.Port(), port);
    TlsClient second(server, tls == Tls::Implicit);
    EXPECT_NE(ShownBy(second), before);
    EXPECT_EQ(ShownBy(second), FingerprintOf(server.Certificate()));
    ASSERT_NO_FATAL_FAILURE(second.LogIn());
    EXPECT_EQ(second.Download("RETR ner.txt"), "hej\n");
}

TEST(FtpServerWithoutTls, RefusesToBegin) {
    for (const Make make : AvailableServers()) {
        Server server(make);
        LineClient control(server.Address(), server.Port());
        control.Reply();
        EXPECT_GE(control.Ask("AUTH TLS"), "5") << make;
    }
}

TEST(FtpServerWithImplicitTls, IsNotForPureFtpd) {
    EXPECT_THROW(Server(Make::PureFtpd, {.tls = Tls::Implicit}), std::runtime_error);
}

TEST(Certificates, HaveTheFlawThatWasAskedFor) {
    Prepare();
    const std::pair<ServerCertificate, int> kinds[] = {
        {ServerCertificate::Valid, X509_V_OK},
        {ServerCertificate::SelfSigned, X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT},
        {ServerCertificate::Expired, X509_V_ERR_CERT_HAS_EXPIRED},
        {ServerCertificate::OtherHost, X509_V_ERR_IP_ADDRESS_MISMATCH},
        {ServerCertificate::NotYetValid, X509_V_ERR_CERT_NOT_YET_VALID},
        {ServerCertificate::UnknownAuthority, X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY}};
    Server server(Make::PyFtpdLib, {.tls = Tls::Offered});
    for (const auto& [kind, flaw] : kinds) {
        server.ReplaceCertificate(kind);
        const TlsClient client(server);
        EXPECT_EQ(SSL_get_verify_result(client.Tls()), flaw) << static_cast<int>(kind);
    }
}

TEST(Certificates, AreForTheNamesOfThisMachine) {
    const auto read = [](const CertificateFiles& files) {
        const std::unique_ptr<BIO, FreeWith<BIO_free_all>> file(
            BIO_new_file(files.certificate.c_str(), "rb"));
        return std::unique_ptr<X509, FreeWith<X509_free>>(
            PEM_read_bio_X509(file.get(), nullptr, nullptr, nullptr));
    };
    const auto plain = read(Certificates(ServerCertificate::Valid));
    const auto further = read(Certificates(ServerCertificate::Valid, "10.99.0.2"));
    EXPECT_EQ(X509_check_host(plain.get(), "localhost", 0, 0, nullptr), 1);
    EXPECT_EQ(X509_check_ip_asc(plain.get(), "127.0.0.1", 0), 1);
    EXPECT_EQ(X509_check_ip_asc(plain.get(), "::1", 0), 1);
    EXPECT_EQ(X509_check_ip_asc(plain.get(), "10.99.0.2", 0), 0);
    EXPECT_EQ(X509_check_ip_asc(further.get(), "10.99.0.2", 0), 1);
    const auto other = read(Certificates(ServerCertificate::OtherHost, "10.99.0.2"));
    EXPECT_EQ(X509_check_ip_asc(other.get(), "10.99.0.2", 0), 0);
}

}  // namespace
}  // namespace ftp_test
