#include "ftp/trace_translator.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <ostream>

namespace ftp {
namespace {

struct TraceRow {
    const char* line;
    const char* status;
};

void PrintTo(const TraceRow& row, std::ostream* out) {
    *out << '"' << row.line << '"';
}

constexpr const char* kWrongLogin = "FELAKTIGT LÖSENORD/ANVÄNDARNAMN - kontrollera kontouppgifterna!";
constexpr const char* kLoggingIn = "Försöker logga in med aktuella kontouppgifter...";
constexpr const char* kDenied = "FEL: Otillåtet tillträde!";
constexpr const char* kNotEmpty = "FEL: Katalogen innehåller filer och kan därför inte tas bort!";
constexpr const char* kDone = "KLART: Kommandot/Överföringen är utförd.";

const TraceRow kTraceRows[] = {
    {"USER anonymous", "Användarnamn: anonymous"},
    {"USER  two blanks", "Användarnamn:  two blanks"},
    {"USER", "Användarnamn: "},
    {"USER ", "Användarnamn: "},
    {"user anonymous", ""},
    {" USER anonymous", ""},

    {"530 Login incorrect.", kWrongLogin},
    {"530 login incorrect.", kWrongLogin},
    {"530 LOGIN INCORRECT. Bye", kWrongLogin},
    {"530 Login incorrect, try again", kWrongLogin},
    {"530 Login incorrect", ""},
    {"530 Login incorrectly done", ""},
    {"530-Login incorrect.", ""},
    {"530 Not logged in.", ""},

    {"PASS ****", kLoggingIn},
    {"PASS secret", kLoggingIn},
    {"PASS", kLoggingIn},
    {"PASV", ""},

    {"CWD ..", "Byter till katalogen 'ovanför'"},
    {"CWD ../pub", "Byter till katalogen 'ovanför'"},
    {"CWD /pub", "Byter till katalog /pub"},
    {"CWD", "Byter till katalog "},
    {"CWD ", "Byter till katalog "},
    {"CDUP", ""},

    {"LIST", "Listar innehållet i katalogen"},
    {"LIST -a", "Listar innehållet i katalogen"},

    {"550 /x: Access denied", kDenied},
    {"550 ACCESS DENIED", kDenied},
    {" ACCESS DENIED", kDenied},
    {"ACCESS DENIED", ""},
    {"access denied, and access denied again", ""},
    {"CWD access denied", kDenied},
    {"LIST access denied", "Listar innehållet i katalogen"},
    {"550 File exists. Access denied", kDenied},

    {"MKD bilder", "Skapar katalogen bilder"},
    {"MKD", "Skapar katalogen "},
    {"RMD bilder", "Tar bort katalogen bilder"},
    {"RMD", "Tar bort katalogen "},

    {"550 bilder: File exists.", kNotEmpty},
    {"File exists.", kNotEmpty},
    {"550 bilder: file exists.", ""},
    {"550 bilder: File exists", ""},
    {"MKD File exists.", "Skapar katalogen File exists."},
    {"STOR File exists.", kNotEmpty},

    {"STOR index.htm", "Skickar upp filen index.htm"},
    {"STOR", "Skickar upp filen "},
    {"RETR index.htm", "Hämtar hem filen index.htm"},
    {"RETR", "Hämtar hem filen "},
    {"RETR åäö.htm", "Hämtar hem filen åäö.htm"},

    {"226 Transfer complete.", kDone},
    {"226 Transfer Complete", ""},
    {"226 Transfer Complete.", ""},
    {"DELE Transfer complete.", kDone},

    {"DELE index.htm", "Tar bort filen  index.htm"},
    {"DELE", "Tar bort filen "},

    {"RNFR gammal.htm", ""},
    {"RNTO whatever", "Döper om filen [gammal.htm] till [ny.htm]"},
    {"RNTO", "Döper om filen [gammal.htm] till [ny.htm]"},

    {"230-Welcome", "230-Welcome"},
    {"230-", "230-"},
    {"230 User logged in.", ""},
    {"230", ""},

    {"QUIT", "Kopplar ner...."},
    {"221 Goodbye.", "Har kopplat ner."},
    {"221 Goodbye. Come back", "Har kopplat ner."},
    {"221 Goodbye", ""},
    {"221 goodbye.", ""},
    {"221-Goodbye.", ""},

    {"", ""},
    {"220 ready", ""},
    {"TYPE I", ""},
    {"250 CWD command successful.", ""},
};

class TraceLine : public testing::TestWithParam<TraceRow> {};

TEST_P(TraceLine, IsTranslated) {
    const QString status = TranslateTraceLine(QString::fromUtf8(GetParam().line),
                                              QStringLiteral("gammal.htm"), QStringLiteral("ny.htm"));
    EXPECT_EQ(status.toStdString(), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Rules, TraceLine, testing::ValuesIn(kTraceRows));

TEST(TraceLine, OfAnErrorEvent) {
    EXPECT_EQ(ErrorLine(550, QStringLiteral("Nej.")).toStdString(), "Fel nummer:550 Nej.");
    EXPECT_EQ(ErrorLine(-1, {}).toStdString(), "Fel nummer:-1 ");
}

class TextList {
 public:
    explicit TextList(int count = 0) : lines(count, QStringLiteral("old")) {}
    int Count() const { return static_cast<int>(lines.size()); }
    void RemoveFirst() { lines.removeFirst(); }
    void Add(const QString& line) { lines += line; }
    void SelectLast() { selected = Count() - 1; }

    QStringList lines;
    int selected = -1;
};

struct AppendRow {
    const char* text;
    QStringList added;
};

TEST(AppendTraceText, AddsTerminatedLinesOnly) {
    const AppendRow rows[] = {
        {"a", {"a"}},
        {"a\r\n", {"a"}},
        {"a\r\nb", {"a"}},
        {"a\r\nb\r\n", {"a", "b"}},
        {"a\r\n\r\nb\r\nrest", {"a", "", "b"}},
        {"a\nb", {"a\nb"}},
        {"a\rb", {"a\rb"}},
        {"\r\n", {""}},
        {"", {""}},
    };
    for (const AppendRow& row : rows) {
        TextList list;
        AppendTraceText(list, QString::fromUtf8(row.text));
        EXPECT_EQ(list.lines, row.added) << row.text;
        EXPECT_EQ(list.selected, list.Count() - 1) << row.text;
    }
}

TEST(AppendTraceText, KeepsTheListBounded) {
    TextList at_the_bound(kMaxListLines);
    AppendTraceText(at_the_bound, QStringLiteral("new"));
    EXPECT_EQ(at_the_bound.Count(), 10'001);

    TextList above(kMaxListLines + 1);
    AppendTraceText(above, QStringLiteral("new"));
    EXPECT_EQ(above.Count(), 10'001);
    EXPECT_EQ(above.lines.last(), QStringLiteral("new"));

    AppendTraceText(above, QStringLiteral("one\r\ntwo\r\n"));
    EXPECT_EQ(above.Count(), 10'002) << "one line goes for each call, whatever the call adds";
}

}  // namespace
}  // namespace ftp
