#include "ftp/trace_translator.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace ftp {
namespace {

using Match = bool (*)(const QString& line, QStringView key);

bool StartsWith(const QString& line, QStringView key) {
    return line.startsWith(key);
}
bool Contains(const QString& line, QStringView key) {
    return line.contains(key);
}

/// In any case, and not at the very start.
bool ContainsLater(const QString& line, QStringView key) {
    return line.toUpper().indexOf(key) > 0;
}

/// In any case; servers end the sentence there or go on after a comma.
bool IsWrongLogin(const QString& line, QStringView key) {
    const QString start = line.left(20).toUpper();
    return start.startsWith(key) && (start.endsWith(u'.') || start.endsWith(u','));
}

struct Rule {
    enum Tail { Nothing, Rest, FileNames };

    Match matches;
    QStringView key;
    QStringView sentence;
    Tail tail = Nothing;
    int cut = 0;  // characters of the line that the rest leaves out
};

// The first match decides. DELE keeps the blank before its name, so that the status line shows two.
constexpr std::array kRules = {
    Rule{StartsWith, u"USER", u"Användarnamn: ", Rule::Rest, 5},
    Rule{IsWrongLogin, u"530 LOGIN INCORRECT",
         u"FELAKTIGT LÖSENORD/ANVÄNDARNAMN - kontrollera kontouppgifterna!"},
    Rule{StartsWith, u"PASS", u"Försöker logga in med aktuella kontouppgifter..."},
    Rule{StartsWith, u"CWD ..", u"Byter till katalogen 'ovanför'"},
    Rule{StartsWith, u"LIST", u"Listar innehållet i katalogen"},
    Rule{ContainsLater, u"ACCESS DENIED", u"FEL: Otillåtet tillträde!"},
    Rule{StartsWith, u"CWD", u"Byter till katalog ", Rule::Rest, 4},
    Rule{StartsWith, u"MKD", u"Skapar katalogen ", Rule::Rest, 4},
    Rule{StartsWith, u"RMD", u"Tar bort katalogen ", Rule::Rest, 4},
    Rule{Contains, u"File exists.", u"FEL: Katalogen innehåller filer och kan därför inte tas bort!"},
    Rule{StartsWith, u"STOR", u"Skickar upp filen ", Rule::Rest, 5},
    Rule{StartsWith, u"RETR", u"Hämtar hem filen ", Rule::Rest, 5},
    Rule{Contains, u"Transfer complete.", u"KLART: Kommandot/Överföringen är utförd."},
    Rule{StartsWith, u"DELE", u"Tar bort filen ", Rule::Rest, 4},
    Rule{StartsWith, u"RNTO", u"Döper om filen [", Rule::FileNames},
    Rule{StartsWith, u"230-", u"", Rule::Rest, 0},
    Rule{StartsWith, u"QUIT", u"Kopplar ner...."},
    Rule{StartsWith, u"221 Goodbye.", u"Har kopplat ner."},
};

}  // namespace

QString TranslateTraceLine(const QString& line, const QString& source, const QString& destination) {
    const auto rule =
        std::ranges::find_if(kRules, [&](const Rule& each) { return each.matches(line, each.key); });
    if (rule == std::end(kRules)) return {};
    const QString sentence = rule->sentence.toString();
    switch (rule->tail) {
        case Rule::Rest:
            return sentence + line.mid(rule->cut);
        case Rule::FileNames:
            return sentence + source + QStringLiteral("] till [") + destination + u']';
        case Rule::Nothing:
            break;
    }
    return sentence;
}

QString ErrorLine(int number, const QString& text) {
    return QStringLiteral("Fel nummer:") + QString::number(number) + u' ' + text;
}

}  // namespace ftp
