#include "forms/certificate/certificate_words.h"

#include <QDateTime>
#include <algorithm>
#include <string_view>

#include "ftp/visible_text.h"

namespace forms {
namespace {

// Characters, far more than honest certificates have.
constexpr qsizetype kLongestInSentence = 60;
constexpr qsizetype kLongestFact = 5'000;
constexpr qsizetype kLongestNames = 20'000;  // all together

constexpr std::size_t kNamesInSentence = 3;
constexpr qsizetype kPairsOfLine = 16;

const QString kUnknownTime = QStringLiteral("okänt");
const QString kUnknownName = QStringLiteral("okänd");

// Cut at a whole character. Marks make a text longer and never shorter.
QString Visible(const QString& text, qsizetype longest) {
    const QString visible = ftp::VisibleText(text.left(longest + 1));
    if (visible.size() <= longest) return visible;
    const qsizetype end = longest - 1;
    return visible.left(visible[end - 1].isHighSurrogate() ? end - 1 : end) + QChar(0x2026);
}

// UTF-8 has four bytes for a character at most.
QString Visible(std::string_view text, qsizetype longest) {
    const std::string_view begin = text.substr(0, 4 * static_cast<std::size_t>(longest + 1));
    return Visible(QString::fromUtf8(begin.data(), static_cast<qsizetype>(begin.size())), longest);
}

// Host and port both stay in sight.
QString ServerInSentence(const QString& server) {
    const QString visible = ftp::VisibleText(server);
    if (visible.size() <= kLongestInSentence) return visible;
    constexpr qsizetype kHalf = kLongestInSentence / 2;
    return visible.left(kHalf) + QChar(0x2026) + visible.right(kHalf - 1);
}

QString Further(std::size_t number) {
    return QStringLiteral("och ") + QString::number(number) + QStringLiteral(" till");
}

bool LooksLikeAHost(std::string_view name) {
    constexpr std::string_view kLetters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-*:_";
    return !name.empty() && name.find_first_not_of(kLetters) == name.npos;
}

// A certificate may hold a whole sentence as a name, and that is not to stand among the program's own.
QString OtherHosts(const std::vector<std::string>& names) {
    if (names.empty()) return QStringLiteral("Det står inte i certifikatet vilken server det gäller för.");
    QStringList hosts;
    for (std::size_t i = 0; i < std::min(names.size(), kNamesInSentence); ++i) {
        if (!LooksLikeAHost(names[i])) return QStringLiteral("Certifikatet gäller för en annan server.");
        hosts.append(Visible(names[i], kLongestInSentence));
    }
    QString sentence =
        QStringLiteral("Certifikatet gäller för en annan server: ") + hosts.join(QStringLiteral(", "));
    if (names.size() > kNamesInSentence) sentence += u' ' + Further(names.size() - kNamesInSentence);
    return sentence;
}

QStringList AllNames(const std::vector<std::string>& names) {
    if (names.empty()) return {QStringLiteral("ingen server")};
    QStringList lines;
    qsizetype left = kLongestNames;
    for (const std::string& name : names) {
        const QString line = Visible(name, kLongestFact);
        left -= line.size() + 1;
        if (left < 0) return lines << Further(names.size() - static_cast<std::size_t>(lines.size()));
        lines.append(line);
    }
    return lines;
}

QStringList FingerprintLines(std::string_view fingerprint) {
    const QStringList pairs = Visible(fingerprint, kLongestFact).split(u':');
    QStringList lines;
    for (qsizetype i = 0; i < pairs.size(); i += kPairsOfLine)
        lines.append(pairs.mid(i, kPairsOfLine).join(u':'));
    return lines;
}

QString OrUnknown(const QString& text) {
    return text.isEmpty() ? kUnknownName : text;
}

}  // namespace

QString CertificateHeading(const ftp::CertificateQuestion& question) {
    const QString server = ServerInSentence(question.server);
    if (question.changed)
        return QStringLiteral("Certifikatet för ") + server +
               QStringLiteral(" har ändrats sedan du valde att lita på det.");
    return QStringLiteral("Servern ") + server + QStringLiteral(" kan inte styrka vem den är.");
}

QString CertificateAdvice(const ftp::CertificateQuestion& question) {
    if (question.changed)
        return QStringLiteral(
            "Någon kan ha ställt sig mellan dig och servern för att läsa ditt lösenord och dina filer. Fråga "
            "den som sköter servern om certifikatet är utbytt, och avbryt tills du vet.");
    return QStringLiteral(
        "Förbindelsen är krypterad, men det kan vara någon annan än du tror i andra änden. Lita bara på "
        "servern om fingeravtrycket nedan är detsamma som du har fått av den som sköter den.");
}

QStringList CertificateProblems(const ftp::Certificate& certificate) {
    QStringList problems;
    if (certificate.self_signed)
        problems.append(
            QStringLiteral("Servern har utfärdat certifikatet själv; ingen annan går i god för det."));
    else if (certificate.unknown_issuer)
        problems.append(QStringLiteral("Ingen som din dator litar på går i god för certifikatet."));
    if (certificate.expired)
        problems.append(QStringLiteral("Certifikatet gick ut ") + CertificateTime(certificate.not_after) +
                        u'.');
    if (certificate.not_yet_valid)
        problems.append(QStringLiteral("Certifikatet gäller först från ") +
                        CertificateTime(certificate.not_before) + u'.');
    if (certificate.wrong_host) problems.append(OtherHosts(certificate.names));
    if (!certificate.other.empty())
        problems.append(QStringLiteral("Certifikatet har ett annat fel: ") +
                        Visible(certificate.other, kLongestInSentence));
    return problems;
}

QList<CertificateFact> CertificateFacts(const ftp::CertificateQuestion& question) {
    const ftp::Certificate& certificate = question.certificate;
    return {
        {QStringLiteral("Server:"), {Visible(question.server, kLongestFact)}},
        {QStringLiteral("Fingeravtryck (SHA-256):"), FingerprintLines(certificate.fingerprint), true},
        {QStringLiteral("Gäller för:"), AllNames(certificate.names)},
        {QStringLiteral("Utfärdat till:"), {OrUnknown(Visible(certificate.subject, kLongestFact))}},
        {QStringLiteral("Utfärdat av:"), {OrUnknown(Visible(certificate.issuer, kLongestFact))}},
        {QStringLiteral("Giltigt från:"), {CertificateTime(certificate.not_before)}},
        {QStringLiteral("Giltigt till:"), {CertificateTime(certificate.not_after)}},
    };
}

// Certificates know the years 0 to 9999.
QString CertificateTime(std::int64_t seconds) {
    constexpr std::int64_t kEarliest = -62'135'596'800, kLatest = 253'402'300'799;
    if (seconds < kEarliest || seconds > kLatest) return kUnknownTime;
    return QDateTime::fromSecsSinceEpoch(seconds).toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

}  // namespace forms
