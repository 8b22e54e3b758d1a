#include "ftp/error_text.h"

#include <gtest/gtest.h>

namespace ftp {
namespace {

struct ErrorRow {
    Failure failure;
    const char16_t* words;
    std::int32_t number;
    const char* text;
};

TEST(ErrorEvent, TellsTheFailure) {
    using enum FailureKind;
    const ErrorRow rows[] = {
        {{Refused, 550, ""}, u"Failed to open file.", 550, "Servern vägrar: 550 Failed to open file."},
        {{Refused, 421, ""}, u"", 421, "Servern vägrar: 421"},
        {{Protocol, 0, ""}, u"", 10043, "Servern följer inte FTP-protokollet."},
        {{NotConnected, 0, ""}, u"", 10057, "Det finns ingen förbindelse med någon server."},
        {{HostNotFound, 0, ""}, u"ftp.finns.ej", 11001, "FTP-värden går inte att hitta: ftp.finns.ej"},
        {{ConnectionRefused, 0, ""}, u"", 10061, "Servern tar inte emot förbindelsen."},
        {{ConnectionLost, 0, ""}, u"", 10054, "Förbindelsen med servern bröts."},
        {{Unreachable, 0, ""}, u"", 10065, "Servern går inte att nå."},
        {{TimedOut, 0, ""}, u"", 10060, "Servern svarade inte i tid."},
        {{Cancelled, 0, ""}, u"", 10004, "Åtgärden avbröts."},
        {{NotEncrypted, 0, ""},
         u"",
         12157,
         "Servern erbjuder ingen krypterad förbindelse. Lösenordet har inte skickats."},
        {{TlsFailed, 0, ""},
         u"no ciphers",
         12157,
         "Den krypterade förbindelsen gick inte att upprätta: no ciphers"},
        {{NotTrusted, 0, ""},
         u"",
         12045,
         "Serverns certifikat är inte betrott. Lösenordet har inte skickats."},
        {{CutShort, 0, ""}, u"a.htm", 10054, "Filen kom inte fram i sin helhet: a.htm"},
        {{NotKept, 0, ""}, u"a.htm", 10054, "Hela filen finns inte på servern: a.htm"},
        {{BadArgument, 0, ""}, u"a\nb", 10022, "Namnet kan inte användas: a␊b"},
        {{LocalNotFound, 0, ""}, u"C:\\a.htm", 53, "Filen finns inte: C:\\a.htm"},
        {{LocalDenied, 0, ""}, u"C:\\a.htm", 70, "Åtkomst nekas: C:\\a.htm"},
        {{LocalDiskFull, 0, ""}, u"", 61, "Disken är full."},
        {{LocalPath, 0, ""}, u"C:\\", 75, "Sökvägen leder inte till en fil: C:\\"},
        {{LocalOther, 5, ""}, u"", 57, "Filen kan inte läsas eller skrivas."},
    };
    for (const ErrorRow& row : rows) {
        const ErrorEvent event = DescribeFailure(row.failure, QString::fromUtf16(row.words));
        EXPECT_EQ(event.number, row.number) << row.text;
        EXPECT_EQ(event.text.toStdString(), row.text);
    }
}

TEST(ErrorEvent, MarksWhatDoesNotShowInTextFromOutside) {
    struct {
        QString words;
        const char* shown;
    } const rows[] = {
        {QStringLiteral("\r\nKLART"), "␍␊KLART"},
        {QString(u'\0') + u'\x1b' + u'\x7f', "␀␛␡"},
        {QStringLiteral("a\u0085b\u2028c"), "a‹U+0085›b‹U+2028›c"},
        {QStringLiteral("\u202Efdp.exe\u202C"), "‹U+202E›fdp.exe‹U+202C›"},
        {QStringLiteral("räksmörgås €"), "räksmörgås €"},
    };
    for (const auto& row : rows) {
        const ErrorEvent event = DescribeFailure({FailureKind::HostNotFound, 0, ""}, row.words);
        EXPECT_EQ(event.text.toStdString(), std::string("FTP-värden går inte att hitta: ") + row.shown);
    }
}

}  // namespace
}  // namespace ftp
