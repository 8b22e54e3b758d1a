// What the component asks and remembers about servers with TLS.

#include <gtest/gtest.h>

#include <QMap>

#include "tests/ftp/component_fixture.h"
#include "tests/support/certificates.h"
#include "tests/support/ftp_server.h"
#include "tests/support/scripted_server.h"

namespace ftp {
namespace {

using ftp_test::Make;
using ftp_test::ScriptedServer;
using ftp_test::Server;
using ftp_test::ServerCertificate;
using ftp_test::Tls;

constexpr std::int32_t kNotTrusted = 12045;
constexpr std::int32_t kNoTls = 12157;

class ComponentTls : public ComponentTest {
 protected:
    ComponentTls() {
        ftp_test::TrustTestAuthority();
        component->FindServer = [this](const QString& name) { return known.value(name); };
        component->KeepServer = [this](const QString& name, const KnownServer& now) {
            known[name] = now;
            ++kept;
        };
        component->AskAboutCertificate = [this](const CertificateQuestion& question) {
            EXPECT_FALSE(component->Busy());
            questions.push_back(question);
            return answer;
        };
    }

    void Serve(ServerCertificate certificate, Tls tls = Tls::Demanded) {
        server.emplace(Make::PyFtpdLib, ftp_test::ServerOptions{.tls = tls, .certificate = certificate});
        key = QString::fromStdString(server->HostField());
    }
    bool ToldPassword() const { return commands.join(u'\n').contains(QStringLiteral("PASS")); }

    std::optional<Server> server;
    QString key;
    QMap<QString, KnownServer> known;
    int kept = 0;
    std::vector<CertificateQuestion> questions;
    CertificateAnswer answer = CertificateAnswer::Refuse;
};

TEST_F(ComponentTls, ValidCertificateIsNoQuestionAndTheServerIsKnownFromThenOn) {
    Serve(ServerCertificate::Valid);
    Connect(server->HostField());
    EXPECT_TRUE(component->Connected());
    EXPECT_EQ(component->TlsVersion(), QStringLiteral("TLSv1.3"));
    EXPECT_TRUE(questions.empty());
    EXPECT_EQ(known.value(key), (KnownServer{true, {}}));
    Connect(server->HostField());
    EXPECT_EQ(kept, 1);
    component->CloseConnection();
    EXPECT_EQ(component->TlsVersion(), QString());
}

TEST_F(ComponentTls, RefusedCertificateIsAnErrorAndNothingIsSaid) {
    Serve(ServerCertificate::SelfSigned);
    Connect(server->HostField());
    ASSERT_EQ(questions.size(), 1u);
    EXPECT_EQ(questions[0].server, key);
    EXPECT_TRUE(questions[0].certificate.self_signed);
    EXPECT_FALSE(questions[0].changed);
    EXPECT_EQ(OnlyError(), kNotTrusted);
    EXPECT_FALSE(component->Connected());
    EXPECT_FALSE(ToldPassword());
    EXPECT_EQ(kept, 0);
    component->ListDirectory();
    EXPECT_EQ(errors.back().first, 10057);
}

TEST_F(ComponentTls, CertificateTrustedNowIsAskedAboutAgainNextTime) {
    Serve(ServerCertificate::Expired);
    answer = CertificateAnswer::TrustNow;
    for (const std::size_t times : {1u, 2u}) {
        Connect(server->HostField());
        EXPECT_TRUE(component->Connected());
        EXPECT_EQ(questions.size(), times);
        component->ListDirectory();
    }
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(known.value(key), (KnownServer{true, {}})) << "TLS has been there all the same";
    EXPECT_EQ(kept, 1);
}

TEST_F(ComponentTls, CertificateTrustedNowLeavesTheOneThatIsTrustedForGood) {
    Serve(ServerCertificate::SelfSigned);
    const KnownServer other{true, QByteArray(":0F").repeated(32).mid(1)};
    known[key] = other;
    answer = CertificateAnswer::TrustNow;
    Connect(server->HostField());
    EXPECT_TRUE(component->Connected());
    ASSERT_EQ(questions.size(), 1u);
    EXPECT_TRUE(questions[0].changed);
    EXPECT_EQ(known.value(key), other);
    EXPECT_EQ(kept, 0);
}

TEST_F(ComponentTls, CertificateTrustedForGoodIsNotAskedAboutUntilItChanges) {
    Serve(ServerCertificate::SelfSigned);
    answer = CertificateAnswer::TrustAlways;
    Connect(server->HostField());
    Connect(server->HostField());
    EXPECT_TRUE(component->Connected());
    ASSERT_EQ(questions.size(), 1u);
    const std::string first = questions[0].certificate.fingerprint;
    EXPECT_EQ(known.value(key), (KnownServer{true, QByteArray::fromStdString(first)}));

    server->ReplaceCertificate(ServerCertificate::SelfSigned);
    answer = CertificateAnswer::Refuse;
    Connect(server->HostField());
    ASSERT_EQ(questions.size(), 2u);
    EXPECT_TRUE(questions[1].changed);
    EXPECT_NE(questions[1].certificate.fingerprint, first);
    EXPECT_EQ(OnlyError(), kNotTrusted);
    EXPECT_EQ(known.value(key).fingerprint, QByteArray::fromStdString(first));

    server->ReplaceCertificate(ServerCertificate::Valid);
    Connect(server->HostField());
    EXPECT_EQ(questions.size(), 2u);
    EXPECT_EQ(known.value(key), (KnownServer{true, {}}));
}

TEST_F(ComponentTls, PlainTextIsRefusedWhereTlsHasBeen) {
    ScriptedServer plain;
    known[QString::fromStdString(plain.HostField())] = {true, {}};
    Connect(plain.HostField());
    EXPECT_EQ(OnlyError(), kNoTls) << errors[0].second;
    EXPECT_FALSE(component->Connected());
    for (const std::string& command : plain.Commands()) EXPECT_FALSE(command.starts_with("USER")) << command;

    Connect("ftp://" + plain.HostField());
    EXPECT_TRUE(component->Connected());
    EXPECT_EQ(component->TlsVersion(), QString());
}

TEST_F(ComponentTls, ComponentMayGoWhileTheQuestionIsOpen) {
    Serve(ServerCertificate::SelfSigned);
    component->AskAboutCertificate = [this](const CertificateQuestion&) {
        component.reset();
        return CertificateAnswer::TrustAlways;
    };
    Connect(server->HostField());
    EXPECT_EQ(kept, 0);
    EXPECT_TRUE(errors.empty());
}

TEST_F(ComponentTls, SessionDroppedWhileTheQuestionIsOpenIsNotOpened) {
    Serve(ServerCertificate::SelfSigned);
    for (const std::int16_t action : {9, 20}) {
        component->UserName = component->Password = QStringLiteral("demo");
        component->AskAboutCertificate = [this, action](const CertificateQuestion&) {
            component->SetAction(action);
            return CertificateAnswer::TrustAlways;
        };
        errors.clear();
        Connect(server->HostField());
        EXPECT_FALSE(component->Connected());
        EXPECT_EQ(OnlyError(), kNotTrusted);
        EXPECT_FALSE(ToldPassword());
        EXPECT_EQ(kept, 0);
    }
}

TEST_F(ComponentTls, SessionThatIsOpenedAgainInAnotherWaySaysSo) {
    ScriptedServer two_ways;
    const auto files = ftp_test::Certificates(ServerCertificate::Valid);
    two_ways.PutTls(files.certificate, files.key);
    two_ways.At("AUTH", 1, {ftp_test::Say("502 Not yet.")});
    two_ways.At("CWD", 1, {ftp_test::Close()});
    QStringList told;
    QObject::connect(component.get(), &Component::ConnectedChanged,
                     [&](bool) { told += component->TlsVersion(); });
    Connect(two_ways.HostField());
    ASSERT_TRUE(component->Connected());
    EXPECT_EQ(told, QStringList(QString()));
    component->DirectoryName = QStringLiteral("a");
    component->ChangeDirectory();
    EXPECT_TRUE(component->Connected());
    EXPECT_EQ(component->TlsVersion(), QStringLiteral("TLSv1.3"));
    EXPECT_EQ(told.last(), QStringLiteral("TLSv1.3"));
}

TEST_F(ComponentTls, ShutdownWhileTheQuestionIsOpenEndsTheConnect) {
    Serve(ServerCertificate::SelfSigned);
    component->AskAboutCertificate = [this](const CertificateQuestion&) {
        component->Shutdown();
        return CertificateAnswer::TrustAlways;
    };
    Connect(server->HostField());
    EXPECT_FALSE(component->Connected());
    EXPECT_EQ(kept, 0);
}

}  // namespace
}  // namespace ftp
