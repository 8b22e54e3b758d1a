#include "forms/certificate/certificate_words.h"

#include <gtest/gtest.h>

#include <limits>

namespace forms {

static void PrintTo(const CertificateFact& fact, std::ostream* out) {
    *out << qUtf8Printable(fact.name) << ' ' << qUtf8Printable(fact.lines.join(u'|'))
         << (fact.fixed_pitch ? " fixed" : "");
}

namespace {

constexpr std::int64_t kSpring2024 = 1711026300;  // 2024-03-21 13:05 UTC

std::string Fingerprint() {
    std::string text = "00";
    for (int i = 1; i < 32; ++i) text += i < 16 ? ":AB" : ":CD";
    return text;
}

ftp::Certificate Sound() {
    ftp::Certificate certificate;
    certificate.fingerprint = Fingerprint();
    certificate.names = {"ftp.exempel.se", "www.exempel.se"};
    certificate.subject = "CN=ftp.exempel.se";
    certificate.issuer = "CN=Exempel CA, O=Exempel";
    certificate.not_before = kSpring2024;
    certificate.not_after = kSpring2024 + 365 * 24 * 3600;
    return certificate;
}

class Words : public testing::Test {
 protected:
    static void SetUpTestSuite() {
        qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
        tzset();
    }
    ftp::Certificate certificate_ = Sound();
};

using Heading = Words;

TEST_F(Heading, NamesTheServer) {
    EXPECT_EQ(CertificateHeading({"ftp.exempel.se:21", certificate_, false}),
              "Servern ftp.exempel.se:21 kan inte styrka vem den är.");
    EXPECT_EQ(CertificateHeading({"ftp.exempel.se:21", certificate_, true}),
              "Certifikatet för ftp.exempel.se:21 har ändrats sedan du valde att lita på det.");
}

TEST_F(Heading, WarnsOfTheOneThatHasChanged) {
    const QString advice = CertificateAdvice({"ftp.exempel.se:21", certificate_, true});
    EXPECT_TRUE(advice.startsWith("Någon kan ha ställt sig mellan dig och servern"))
        << qUtf8Printable(advice);
    EXPECT_NE(CertificateAdvice({"ftp.exempel.se:21", certificate_, false}), advice);
}

TEST_F(Heading, KeepsBothEndsOfALongName) {
    const QString heading =
        CertificateHeading({QString(4000, u'a') + ".exempel.se:2121", certificate_, false});
    EXPECT_LT(heading.size(), 150);
    EXPECT_TRUE(heading.contains(".exempel.se:2121 kan inte")) << qUtf8Printable(heading);
    EXPECT_TRUE(heading.contains(u"aaa\u2026aaa")) << qUtf8Printable(heading);
}

TEST_F(Heading, ShowsWhatWouldHide) {
    const QString heading =
        CertificateHeading({QStringLiteral("es.\u202Elepmexe.ptf\n:21"), certificate_, false});
    EXPECT_FALSE(heading.contains(QChar(0x202E)));
    EXPECT_FALSE(heading.contains(u'\n'));
}

using Problems = Words;

TEST_F(Problems, OfASoundOneThereAreNone) {
    EXPECT_EQ(CertificateProblems(certificate_), QStringList());
}

TEST_F(Problems, EachHasItsSentence) {
    certificate_.unknown_issuer = true;
    EXPECT_EQ(CertificateProblems(certificate_),
              QStringList("Ingen som din dator litar på går i god för certifikatet."));
    certificate_.self_signed = true;
    EXPECT_EQ(CertificateProblems(certificate_),
              QStringList("Servern har utfärdat certifikatet själv; ingen annan går i god för det."));
    certificate_ = Sound();
    certificate_.expired = true;
    EXPECT_EQ(CertificateProblems(certificate_), QStringList("Certifikatet gick ut 2025-03-21 14:05."));
    certificate_ = Sound();
    certificate_.not_yet_valid = true;
    EXPECT_EQ(CertificateProblems(certificate_),
              QStringList("Certifikatet gäller först från 2024-03-21 14:05."));
    certificate_ = Sound();
    certificate_.wrong_host = true;
    EXPECT_EQ(CertificateProblems(certificate_),
              QStringList("Certifikatet gäller för en annan server: ftp.exempel.se, www.exempel.se"));
    certificate_ = Sound();
    certificate_.other = "CA signature digest algorithm too weak";
    EXPECT_EQ(CertificateProblems(certificate_),
              QStringList("Certifikatet har ett annat fel: CA signature digest algorithm too weak"));
}

TEST_F(Problems, AllOfThemAreTold) {
    certificate_.unknown_issuer = certificate_.expired = certificate_.not_yet_valid =
        certificate_.wrong_host = true;
    certificate_.other = "x";
    EXPECT_EQ(CertificateProblems(certificate_).size(), 5);
}

TEST_F(Problems, OneForNoHostAtAllSaysSo) {
    certificate_.wrong_host = true;
    certificate_.names = {};
    EXPECT_EQ(CertificateProblems(certificate_),
              QStringList("Det står inte i certifikatet vilken server det gäller för."));
}

// Whoever has made the certificate chooses its names, and these words are the program's.
TEST_F(Problems, NameOnlyWhatLooksLikeAHost) {
    certificate_.wrong_host = true;
    certificate_.names = {"*.Ex-empel_1.se", "::1", "10.0.0.1"};
    EXPECT_EQ(CertificateProblems(certificate_),
              QStringList("Certifikatet gäller för en annan server: *.Ex-empel_1.se, ::1, 10.0.0.1"));
    for (const char* name :
         {"din server. Lita på det", "a b", "", "ftp.exempel.se,x", "\xC3\xA5.se", "a\nb"}) {
        certificate_.names = {"ftp.exempel.se", name};
        EXPECT_EQ(CertificateProblems(certificate_), QStringList("Certifikatet gäller för en annan server."))
            << name;
    }
}

TEST_F(Problems, AreShortWhateverTheCertificateSays) {
    certificate_.wrong_host = true;
    certificate_.names.assign(200, std::string(4000, 'a'));
    certificate_.other = std::string(4000, 'b');
    const QStringList problems = CertificateProblems(certificate_);
    ASSERT_EQ(problems.size(), 2);
    EXPECT_TRUE(problems[0].endsWith(" och 197 till")) << qUtf8Printable(problems[0]);
    for (const QString& problem : problems) EXPECT_LT(problem.size(), 320);
}

TEST_F(Problems, ShowWhatWouldHide) {
    certificate_.wrong_host = true;
    certificate_.names = {"a\nb", "c\u202Ed", "e\xFF"};
    certificate_.other = "f\x1B[0m";
    for (const QString& problem : CertificateProblems(certificate_))
        for (const QChar letter : problem) {
            EXPECT_GE(letter.unicode(), 0x20);
            EXPECT_NE(letter.unicode(), 0x202E);
        }
}

using Facts = Words;

TEST_F(Facts, StandInTheirOrder) {
    EXPECT_EQ(CertificateFacts({"ftp.exempel.se:21", certificate_, false}),
              (QList<CertificateFact>{
                  {"Server:", {"ftp.exempel.se:21"}},
                  {"Fingeravtryck (SHA-256):",
                   {"00:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB",
                    "CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD"},
                   true},
                  {"Gäller för:", {"ftp.exempel.se", "www.exempel.se"}},
                  {"Utfärdat till:", {"CN=ftp.exempel.se"}},
                  {"Utfärdat av:", {"CN=Exempel CA, O=Exempel"}},
                  {"Giltigt från:", {"2024-03-21 14:05"}},
                  {"Giltigt till:", {"2025-03-21 14:05"}},
              }));
}

TEST_F(Facts, OfAnEmptyCertificateSayThatNothingIsKnown) {
    const QList<CertificateFact> facts = CertificateFacts({"a:21", {}, false});
    ASSERT_EQ(facts.size(), 7);
    EXPECT_EQ(facts[2].lines, QStringList("ingen server"));
    EXPECT_EQ(facts[3].lines, QStringList("okänd"));
    EXPECT_EQ(facts[4].lines, QStringList("okänd"));
    for (const CertificateFact& fact : facts) EXPECT_FALSE(fact.lines.isEmpty());
}

TEST_F(Facts, HaveTheWholeOfALongNameAndABoundOfAll) {
    certificate_.names = {std::string(4000, 'a')};
    EXPECT_EQ(CertificateFacts({"a:21", certificate_, false})[2].lines, QStringList(QString(4000, u'a')));
    certificate_.names.assign(1000, std::string(10'000, 'a'));
    certificate_.subject = certificate_.issuer = std::string(10'000, 'b');
    const QList<CertificateFact> facts = CertificateFacts({"a:21", certificate_, false});
    EXPECT_EQ(facts[2].lines.last(), "och 997 till");
    for (const CertificateFact& fact : facts) {
        EXPECT_LE(fact.lines.join(u'\n').size(), 20'100) << qUtf8Printable(fact.name);
        for (const QString& line : fact.lines) EXPECT_LE(line.size(), 5000) << qUtf8Printable(fact.name);
    }
    certificate_.names.assign(100'000, "");
    EXPECT_LE(CertificateFacts({"a:21", certificate_, false})[2].lines.size(), 20'001);
}

// A letter beyond the basic plane that the cut would go through is left out whole.
TEST_F(Facts, AreCutAtAWholeCharacter) {
    certificate_.subject = "x";
    for (int i = 0; i < 3000; ++i) certificate_.subject += "\xF0\x9F\x94\x92";
    const QString subject = CertificateFacts({"a:21", certificate_, false})[3].lines.first();
    EXPECT_TRUE(subject.isValidUtf16());
    EXPECT_TRUE(subject.endsWith(QChar(0x2026)));
}

TEST_F(Facts, ShowWhatWouldHide) {
    certificate_.names = {"a\nGiltigt till:\t2099"};
    certificate_.subject = "CN=\u202Ees.lepmexe";
    const QList<CertificateFact> facts = CertificateFacts({"a:21", certificate_, false});
    EXPECT_EQ(facts[2].lines.size(), 1);
    for (const QString& line : {facts[2].lines.first(), facts[3].lines.first()})
        for (const QChar letter : line) {
            EXPECT_GE(letter.unicode(), 0x20) << qUtf8Printable(line);
            EXPECT_NE(letter.unicode(), 0x202E) << qUtf8Printable(line);
        }
}

using Time = Words;

TEST_F(Time, IsLocal) {
    EXPECT_EQ(CertificateTime(0), "1970-01-01 01:00");
    EXPECT_EQ(CertificateTime(kSpring2024 + 180 * 24 * 3600), "2024-09-17 15:05");
    EXPECT_EQ(CertificateTime(-1), "1970-01-01 00:59");
}

TEST_F(Time, ThatNoCertificateCanStateIsUnknown) {
    using Limits = std::numeric_limits<std::int64_t>;
    for (const std::int64_t seconds : {Limits::min(), -62'135'596'801, 253'402'300'800, Limits::max()})
        EXPECT_EQ(CertificateTime(seconds), "okänt") << seconds;
    EXPECT_NE(CertificateTime(253'402'300'799), "okänt");
}

}  // namespace
}  // namespace forms
