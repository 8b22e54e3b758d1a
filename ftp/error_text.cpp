#include "ftp/error_text.h"

#include "ftp/visible_text.h"

namespace ftp {
namespace {

struct Description {
    std::int32_t number;
    QStringView sentence;
};

Description Describe(FailureKind kind) {
    switch (kind) {
        case FailureKind::Refused:
            return {0, u"Servern vägrar"};
        case FailureKind::Protocol:
            return {10043, u"Servern följer inte FTP-protokollet"};
        case FailureKind::NotConnected:
            return {10057, u"Det finns ingen förbindelse med någon server"};
        case FailureKind::HostNotFound:
            return {11001, u"FTP-värden går inte att hitta"};
        case FailureKind::ConnectionRefused:
            return {10061, u"Servern tar inte emot förbindelsen"};
        case FailureKind::ConnectionLost:
            return {10054, u"Förbindelsen med servern bröts"};
        case FailureKind::Unreachable:
            return {10065, u"Servern går inte att nå"};
        case FailureKind::TimedOut:
            return {10060, u"Servern svarade inte i tid"};
        case FailureKind::Cancelled:
            return {10004, u"Åtgärden avbröts"};
        case FailureKind::NotEncrypted:
            return {12157, u"Servern erbjuder ingen krypterad förbindelse. Lösenordet har inte skickats"};
        case FailureKind::TlsFailed:
            return {12157, u"Den krypterade förbindelsen gick inte att upprätta"};
        case FailureKind::NotTrusted:
            return {12045, u"Serverns certifikat är inte betrott. Lösenordet har inte skickats"};
        case FailureKind::CutShort:
            return {10054, u"Filen kom inte fram i sin helhet"};
        case FailureKind::NotKept:
            return {10054, u"Hela filen finns inte på servern"};
        case FailureKind::BadArgument:
            return {10022, u"Namnet kan inte användas"};
        case FailureKind::LocalNotFound:
            return {53, u"Filen finns inte"};
        case FailureKind::LocalDenied:
            return {70, u"Åtkomst nekas"};
        case FailureKind::LocalDiskFull:
            return {61, u"Disken är full"};
        case FailureKind::LocalPath:
            return {75, u"Sökvägen leder inte till en fil"};
        case FailureKind::LocalOther:
            break;
    }
    return {57, u"Filen kan inte läsas eller skrivas"};
}

}  // namespace

ErrorEvent DescribeFailure(const Failure& failure, const QString& words) {
    const Description known = Describe(failure.kind);
    const bool refused = failure.kind == FailureKind::Refused;
    QString outside = VisibleText(words);
    if (refused) outside = (QString::number(failure.code) + u' ' + outside).trimmed();
    return {refused ? failure.code : known.number,
            known.sentence.toString() +
                (outside.isEmpty() ? QStringLiteral(".") : QStringLiteral(": ") + outside)};
}

}  // namespace ftp
