// The worker against real servers over TLS, several makes of them.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <random>

#include "tests/ftp/engine/worker_client.h"
#include "tests/support/certificates.h"
#include "tests/support/ftp_server.h"

namespace worker_test {
namespace {

namespace fs = std::filesystem;
using ftp::FailureKind;
using ftp_test::Make;
using ftp_test::Server;
using ftp_test::ServerCertificate;
using ftp_test::ServerOptions;
using ftp_test::Tls;
using ftp_test::TlsVersions;

std::string Noise(std::size_t size) {
    std::mt19937 random(7);
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

class TlsTest : public testing::TestWithParam<Make> {
 protected:
    void SetUp() override {
        if (const auto reason = ftp_test::WhyMissing(GetParam(), Tls::Offered)) GTEST_SKIP() << *reason;
        ftp_test::TrustTestAuthority();
        std::string name = (fs::temp_directory_path() / "websmide-tls-XXXXXX").native();
        folder_ = mkdtemp(name.data());
        client_.emplace();
    }
    void TearDown() override {
        std::error_code ignored;
        if (!folder_.empty()) fs::remove_all(folder_, ignored);
    }

    Told Connect(const std::string& scheme = "ftpes://") {
        return client_->Connect(scheme + server_->HostField());
    }
    void Serve(ServerOptions options, const std::string& scheme = "ftpes://") {
        server_.emplace(GetParam(), std::move(options));
        const Told told = Connect(scheme);
        ASSERT_TRUE(told.Well()) << told;
        version_ = told.tls.version;
    }
    std::string Local(const std::string& name) const { return (folder_ / name).native(); }
    std::string WriteLocal(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
        return Local(name);
    }
    std::string ReadLocal(const std::string& name) const {
        std::ifstream in(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    /// Files of all sizes there and back, and listings; twice, so that sessions are resumed more than once.
    void MoveFiles() {
        for (const std::size_t size :
             {std::size_t{0}, std::size_t{1}, std::size_t{16 * 1024}, std::size_t{3'000'001}}) {
            SCOPED_TRACE(size);
            const std::string bytes = Noise(size), name = "fil" + std::to_string(size);
            const Told up = client_->Run(ftp::Store{WriteLocal("upp", bytes), name});
            EXPECT_TRUE(up.Well()) << up;
            EXPECT_EQ(server_->ReadFile(name), bytes);
            const Told down = client_->Run(ftp::Retrieve{name, Local("ned")});
            EXPECT_TRUE(down.Well()) << down;
            EXPECT_EQ(ReadLocal("ned"), bytes);
            const Told list = client_->Run(ftp::List{});
            EXPECT_TRUE(list.Well()) << list;
            EXPECT_NE(testing::PrintToString(list.lines).find(name), std::string::npos) << list;
        }
    }

    std::optional<Server> server_;
    std::optional<WorkerClient> client_;
    fs::path folder_;
    std::string version_;  // of the session's TLS
};

INSTANTIATE_TEST_SUITE_P(, TlsTest, testing::ValuesIn(ftp_test::AllServers()),
                         testing::PrintToStringParamName());

TEST_P(TlsTest, MovesFilesWhereItIsDemandedOnBothSides) {
    Serve({.tls = Tls::Demanded});
    EXPECT_EQ(version_, "TLSv1.3");
    MoveFiles();
}

TEST_P(TlsTest, IsTakenWhereItIsOffered) {
    Serve({.tls = Tls::Offered}, "");
    EXPECT_EQ(version_, "TLSv1.3");
    MoveFiles();
}

TEST_P(TlsTest, WorksWithVersion12) {
    Serve({.tls = Tls::Demanded, .tls_versions = TlsVersions::Only12});
    EXPECT_EQ(version_, "TLSv1.2");
    MoveFiles();
}

class ImplicitTlsTest : public TlsTest {};

INSTANTIATE_TEST_SUITE_P(, ImplicitTlsTest, testing::Values(Make::Vsftpd, Make::ProFtpd, Make::PyFtpdLib),
                         testing::PrintToStringParamName());  // pure-ftpd has no implicit TLS

TEST_P(ImplicitTlsTest, ComesBeforeTheGreeting) {
    Serve({.tls = Tls::Implicit}, "ftps://");
    MoveFiles();
}

TEST_P(TlsTest, IsLeftOutWhereTheUserSaysSo) {
    Serve({.tls = Tls::Offered}, "ftp://");
    EXPECT_EQ(version_, "");
    MoveFiles();
}

TEST_P(TlsTest, PlainServerIsSpokenToInPlainTextUnlessItHadTls) {
    Serve({}, "");
    EXPECT_EQ(version_, "");
    MoveFiles();
    const Told demanded = Connect("ftpes://");
    EXPECT_EQ(demanded.Kind(), FailureKind::NotEncrypted) << demanded;
    const Told had = client_->Run(ftp::Connect{server_->HostField(), "demo", "demo", "", true});
    EXPECT_EQ(had.Kind(), FailureKind::NotEncrypted) << had;
    for (const std::string& line : had.trace) EXPECT_FALSE(line.starts_with("USER")) << line;
}

TEST_P(TlsTest, RunsGoOverLanesToo) {
    Serve({.tls = Tls::Demanded});
    client_->Run(ftp::BeginRun{});
    for (int i = 0; i < 40; ++i) {
        const std::string name = "f" + std::to_string(i);
        client_->Run(ftp::Store{WriteLocal(name, Noise(100 + i)), name, name});
    }
    const Told end = client_->Run(ftp::EndRun{});
    EXPECT_TRUE(end.Well()) << end;
    for (const auto& problem : client_->TakeAside().problems)
        ADD_FAILURE() << problem.label << problem.failure.detail;
    for (int i = 0; i < 40; ++i) EXPECT_EQ(server_->ReadFile("f" + std::to_string(i)), Noise(100 + i)) << i;
}

TEST_P(TlsTest, RunOnOneConnection) {
    Serve({.tls = Tls::Demanded});
    client_->Run(ftp::BeginRun{0});
    for (int i = 0; i < 20; ++i) {
        const std::string name = "f" + std::to_string(i);
        const Told told = client_->Run(ftp::Store{WriteLocal(name, Noise(100 + i)), name, name});
        EXPECT_TRUE(told.Well()) << told;
    }
    const Told end = client_->Run(ftp::EndRun{});
    EXPECT_TRUE(end.Well()) << end;
    for (int i = 0; i < 20; ++i) EXPECT_EQ(server_->ReadFile("f" + std::to_string(i)), Noise(100 + i)) << i;
}

TEST_P(TlsTest, AbortedTransferLeavesASessionInOrder) {
    Serve({.tls = Tls::Demanded});
    WriteLocal("stor", Noise(50'000'000));
    client_->Start(ftp::Store{Local("stor"), "stor"});
    client_->AwaitBytes(1);
    client_->TheWorker().AbortTransfer();
    const Told aborted = client_->Finish();
    EXPECT_TRUE(aborted.Well() || aborted.Kind() == FailureKind::Cancelled) << aborted;
    MoveFiles();
}

struct Flaw {
    const char* name;
    ServerCertificate certificate;
    bool ftp::Certificate::*flag;
};
const Flaw kFlaws[] = {
    {"self_signed", ServerCertificate::SelfSigned, &ftp::Certificate::self_signed},
    {"expired", ServerCertificate::Expired, &ftp::Certificate::expired},
    {"other_host", ServerCertificate::OtherHost, &ftp::Certificate::wrong_host},
    {"not_yet_valid", ServerCertificate::NotYetValid, &ftp::Certificate::not_yet_valid},
    {"unknown_authority", ServerCertificate::UnknownAuthority, &ftp::Certificate::unknown_issuer},
};

TEST_P(TlsTest, CertificateWithAFlawIsTakenOnlyWhenItIsTrusted) {
    for (const Flaw& flaw : kFlaws) {
        SCOPED_TRACE(flaw.name);
        server_.emplace(GetParam(), ServerOptions{.tls = Tls::Demanded, .certificate = flaw.certificate});
        const Told refused = Connect();
        EXPECT_EQ(refused.Kind(), FailureKind::NotTrusted) << refused;
        for (const std::string& line : refused.trace) EXPECT_FALSE(line.starts_with("USER")) << line;
        const ftp::Certificate& shown = refused.tls.certificate;
        EXPECT_TRUE(shown.*flaw.flag);
        EXPECT_FALSE(shown.Valid());
        EXPECT_EQ(shown.fingerprint.size(), 95u);

        ftp::Connect connect{"ftpes://" + server_->HostField(), "demo", "demo", "", false, shown.fingerprint};
        const Told trusted = client_->Run(connect);
        EXPECT_TRUE(trusted.Well()) << trusted;
        connect.trusted[0] = connect.trusted[0] == 'A' ? 'B' : 'A';
        EXPECT_EQ(client_->Run(connect).Kind(), FailureKind::NotTrusted);
    }
}

}  // namespace
}  // namespace worker_test
