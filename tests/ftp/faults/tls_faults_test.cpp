// TLS that does not come about, is not what it seems or breaks, and certificates with every flaw.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "tests/ftp/faults/stage.h"
#include "tests/support/certificates.h"
#include "tests/support/scripted_manners.h"

namespace ftp {
namespace {

using namespace ftp_test;

const CertificateFiles& FilesOf(ServerCertificate kind) {
    static std::map<ServerCertificate, CertificateFiles> made;
    if (!made.contains(kind)) made[kind] = Certificates(kind);
    return made[kind];
}

class TlsStage : public FaultStage {
 protected:
    TlsStage() { TrustTestAuthority(); }

    void SetUp() override { Serve(ServerCertificate::Valid); }
    void Serve(ServerCertificate kind) {
        const CertificateFiles& files = FilesOf(kind);
        server.PutTls(files.certificate, files.key);
    }
    /// The server is to be reached with TLS, or not at all.
    void DemandTls() { component->HostName = QStringLiteral("ftpes://") + component->HostName; }
    bool HasToldPassword() const {
        const auto sent = server.Commands();
        return std::ranges::any_of(sent, [](const auto& command) { return command.starts_with("PASS"); });
    }
    void ExpectInOrder() {
        for (const Work work : {Work::Enter, Work::List, Work::Get, Work::Put})
            EXPECT_TRUE(DoInSession(work)) << NameOf(work) << "\n" << Told();
        EXPECT_EQ(component->TlsVersion(), QStringLiteral("TLSv1.3"));
        EXPECT_TRUE(Do(Work::Quit)) << Told();
    }
};

TEST_F(TlsStage, NothingSpoiled) {
    EXPECT_TRUE(Do(Work::Connect)) << Told();
    for (const Work work : {Work::List, Work::Enter, Work::Get, Work::Put, Work::Rename, Work::Delete,
                            Work::Make, Work::Remove, Work::Leave})
        EXPECT_TRUE(Do(work)) << NameOf(work) << "\n" << Told();
    ExpectInOrder();
}

// --- before the session is encrypted ---

struct Beginning {
    const char* name;
    const char* command;
    Script script;
    Deadlines deadlines = kPatient;
};

const std::vector<Beginning> kBeginnings = {
    {"InjectedBehind234", "AUTH", {Raw("234 Go ahead.\r\n230 You are in.\r\n"), StartTls()}},
    {"InjectedHalfALineBehind234", "AUTH", {Raw("234 Go ahead.\r\n230 You"), StartTls()}},
    {"InjectedCommandsBehind234",
     "AUTH",
     {Raw("234 Go ahead.\r\n331 P\r\n230 In.\r\n211 F\r\n"), StartTls()}},
    {"InjectedBehindTheGreeting",
     kConnect.c_str(),
     {Raw("220 Ready.\r\n234 Go ahead.\r\n230 In.\r\n")},
     kImpatient},
    {"InjectedBeforeTheGreeting", kConnect.c_str(), {Raw("230 In.\r\n220 Ready.\r\n")}, kImpatient},
    {"ClosedInPlaceOfHandshake", "AUTH", {Say("234 Go ahead."), Close()}},
    {"ResetInPlaceOfHandshake", "AUTH", {Say("234 Go ahead."), ftp_test::Reset()}},
    {"SilenceInPlaceOfHandshake", "AUTH", {Say("234 Go ahead."), Stall()}, kImpatient},
    {"GarbageInPlaceOfHandshake",
     "AUTH",
     {Say("234 Go ahead."), Pause(std::chrono::milliseconds(20)), Raw("HTTP/1.1 400 Bad Request\r\n\r\n"),
      Stall()},
     kImpatient},
    {"ReplyInPlaceOfHandshake",
     "AUTH",
     {Say("234 Go ahead."), Pause(std::chrono::milliseconds(20)), Say("230 You are in."), Stall()},
     kImpatient},
    {"HalfARecordInPlaceOfHandshake",
     "AUTH",
     {Say("234 Go ahead."), Pause(std::chrono::milliseconds(20)), Raw("\x16\x03\x03\x10"), Stall()},
     kImpatient},
    {"AlertInPlaceOfHandshake",
     "AUTH",
     {Say("234 Go ahead."), Pause(std::chrono::milliseconds(20)), Raw({"\x15\x03\x03\x00\x02\x02\x28", 7}),
      Stall()},
     kImpatient},
    {"SilenceInPlaceOf234", "AUTH", {Stall()}, kImpatient},
    {"ClosedInPlaceOf234", "AUTH", {Close()}},
    {"RefusesPbszAndProt", "P", {Say("534 No.")}},
};

class TlsBeginning : public TlsStage, public testing::WithParamInterface<Beginning> {};

/// There is no session in that case, and the password has not left. Once more in plain text is no way out.
TEST_P(TlsBeginning, TellsNoPassword) {
    UseDeadlines(GetParam().deadlines);
    DemandTls();
    StrikeEach(GetParam().command, GetParam().script);
    const bool about_protection = std::string(GetParam().command) == "P";
    if (about_protection) server.At("PASS", {Proper()});
    EXPECT_FALSE(Do(Work::Connect)) << Told();
    EXPECT_FALSE(component->Connected());
    EXPECT_GE(Struck(), 1);
    if (!about_protection) {
        EXPECT_FALSE(HasToldPassword());
    }
    server.At(GetParam().command, {Proper()});
    ExpectInOrder();
}

INSTANTIATE_TEST_SUITE_P(All, TlsBeginning, testing::ValuesIn(kBeginnings),
                         [](const auto& each) { return std::string(each.param.name); });

/// The same where TLS is only wanted: whoever can spoil it does not get the password in its place.
class TlsWanted : public TlsStage, public testing::WithParamInterface<Beginning> {};

TEST_P(TlsWanted, TellsNoPassword) {
    UseDeadlines(GetParam().deadlines);
    StrikeEach(GetParam().command, GetParam().script);
    EXPECT_FALSE(Do(Work::Connect)) << Told();
    EXPECT_FALSE(component->Connected());
    EXPECT_FALSE(HasToldPassword());
    server.At(GetParam().command, {Proper()});
    ExpectInOrder();
}

/// Without those that come to the same as a refusal of AUTH.
std::vector<Beginning> Spoilers() {
    std::vector<Beginning> all = kBeginnings;
    std::erase_if(all, [](const Beginning& each) {
        return each.name == std::string("InjectedBeforeTheGreeting") ||
               each.name == std::string("RefusesPbszAndProt");
    });
    return all;
}

INSTANTIATE_TEST_SUITE_P(All, TlsWanted, testing::ValuesIn(Spoilers()),
                         [](const auto& each) { return std::string(each.param.name); });

/// A refusal of AUTH: plain text where TLS is only wanted, nothing where it is demanded.
class TlsRefused : public TlsStage, public testing::WithParamInterface<const char*> {};

TEST_P(TlsRefused, LeavesPlainTextOnlyWhereItMayBe) {
    StrikeEach("AUTH", {Say(std::string(GetParam()) + " No.")});
    DemandTls();
    EXPECT_FALSE(Do(Work::Connect)) << Told();
    EXPECT_EQ(OnlyError(), 12157);
    EXPECT_FALSE(HasToldPassword());

    UseDeadlines(kPatient);
    component->FindServer = [](const QString&) { return KnownServer{.had_tls = true, .fingerprint = {}}; };
    EXPECT_FALSE(Do(Work::Connect)) << "a server that has had TLS\n" << Told();
    EXPECT_FALSE(HasToldPassword());

    UseDeadlines(kPatient);
    EXPECT_TRUE(Do(Work::Connect)) << Told();
    EXPECT_EQ(component->TlsVersion(), QString());
    EXPECT_TRUE(Do(Work::Get));
}

INSTANTIATE_TEST_SUITE_P(All, TlsRefused, testing::Values("500", "502", "504", "534"),
                         [](const auto& each) { return "Code" + std::string(each.param); });

// --- certificates ---

struct Flaw {
    const char* name;
    ServerCertificate kind;
};

class CertificateFault : public TlsStage, public testing::WithParamInterface<Flaw> {};

TEST_P(CertificateFault, TellsNoPasswordUnlessTheUserTrustsIt) {
    Serve(GetParam().kind);
    EXPECT_FALSE(Do(Work::Connect)) << Told();
    EXPECT_EQ(errors.back().first, 12045);
    EXPECT_FALSE(component->Connected());
    EXPECT_FALSE(HasToldPassword());

    int asked = 0;
    component->AskAboutCertificate = [&asked](const CertificateQuestion&) {
        ++asked;
        return CertificateAnswer::TrustNow;
    };
    EXPECT_TRUE(Do(Work::Connect)) << Told();
    EXPECT_EQ(asked, 1);
    ExpectInOrder();
}

INSTANTIATE_TEST_SUITE_P(All, CertificateFault,
                         testing::Values(Flaw{"Expired", ServerCertificate::Expired},
                                         Flaw{"OtherHost", ServerCertificate::OtherHost},
                                         Flaw{"SelfSigned", ServerCertificate::SelfSigned},
                                         Flaw{"NotYetValid", ServerCertificate::NotYetValid},
                                         Flaw{"UnknownAuthority", ServerCertificate::UnknownAuthority}),
                         [](const auto& each) { return std::string(each.param.name); });

// --- in an encrypted session ---

enum class Must { Succeed, Fail, DoEither };

struct Break {
    const char* name;
    Work work;
    const char* command;
    Script script;
    Must must;
    Deadlines deadlines = kPatient;
};

const std::string kOpening = "150 Opening.", kDone = "226 Done.";
constexpr std::size_t kPiece = 1000;

const std::vector<Break> kBreaks = {
    {"GetWithoutCloseNotify",
     Work::Get,
     "RETR",
     {Say(kOpening), SendFile(), DropData(), Say(kDone)},
     Must::DoEither},
    {"GetCutWithoutCloseNotify",
     Work::Get,
     "RETR",
     {Say(kOpening), SendFile(kPiece), DropData(), Say(kDone)},
     Must::DoEither},
    {"GetReset",
     Work::Get,
     "RETR",
     {Say(kOpening), SendFile(kPiece), ResetData(), Say("426 Broken.")},
     Must::DoEither},
    {"GetInPlainText",
     Work::Get,
     "RETR",
     {PlainData(), Say(kOpening), SendFile(), CloseData(), Say(kDone)},
     Must::Fail,
     kImpatient},
    {"ListInPlainText",
     Work::List,
     "LIST",
     {PlainData(), Say(kOpening), SendData("-rw 1 a a 1 Jan 01 00:00 x\r\n"), CloseData(), Say(kDone)},
     Must::Fail,
     kImpatient},
    {"PutInPlainText",
     Work::Put,
     "STOR",
     {PlainData(), Say(kOpening), TakeData(1), Stall()},
     Must::Fail,
     kImpatient},
    {"GetSilentHandshake",
     Work::Get,
     "RETR",
     {PlainData(), Say(kOpening), OpenData(), Stall()},
     Must::Fail,
     kImpatient},
    {"ListCutWithoutCloseNotify",
     Work::List,
     "LIST",
     {Say(kOpening), SendData("-rw-r--r-- 1 a"), DropData(), Say("426 Broken.")},
     Must::Fail},
    {"PutCutWithoutCloseNotify",
     Work::Put,
     "STOR",
     {Say(kOpening), KeepData(kPiece), DropData(), Say(kDone)},
     Must::DoEither},
    {"ReplyInPlainText", Work::Enter, "CWD", {RawPlain("250 Done.\r\n")}, Must::Fail},
    {"ReplyInPlainTextOfATransfer",
     Work::Get,
     "RETR",
     {RawPlain("150 Opening.\r\n")},
     Must::DoEither,
     kImpatient},
    {"GarbageForReply", Work::Enter, "CWD", {RawPlain(std::string(1000, '\xFF'))}, Must::Fail},
    {"SessionClosed", Work::Enter, "CWD", {Close()}, Must::DoEither},
    {"SessionReset", Work::Enter, "CWD", {ftp_test::Reset()}, Must::DoEither},
    {"SessionResetInATransfer",
     Work::Get,
     "RETR",
     {Say(kOpening), SendFile(kPiece), ftp_test::Reset()},
     Must::DoEither},
};

class TlsBreak : public TlsStage, public testing::WithParamInterface<Break> {};

TEST_P(TlsBreak, DamagesNothing) {
    UseDeadlines(GetParam().deadlines);
    if (GetParam().work == Work::Put) source = Pattern(8'000'000);
    EXPECT_TRUE(Do(Work::Connect)) << Told();
    StrikeEach(GetParam().command, GetParam().script);
    const bool succeeded = Do(GetParam().work);
    EXPECT_GE(Struck(), 1);
    if (GetParam().must != Must::DoEither) {
        EXPECT_EQ(succeeded, GetParam().must == Must::Succeed) << Told();
    }
    server.At(GetParam().command, {Proper()});
    ExpectInOrder();
}

INSTANTIATE_TEST_SUITE_P(All, TlsBreak, testing::ValuesIn(kBreaks),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace ftp
