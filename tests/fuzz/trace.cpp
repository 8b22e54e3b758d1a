// The Swedish translation of the trace, and the list that takes it.

#include <QList>
#include <QStringList>
#include <algorithm>

#include "ftp/trace_translator.h"
#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Require;

/// What AppendTraceText needs of a list box.
class LineList {
 public:
    qsizetype Count() const { return lines_.size(); }
    void RemoveFirst() { lines_.removeFirst(); }
    void Add(const QString& line) { lines_.append(line); }
    void SelectLast() { selected_ = lines_.size() - 1; }

    const QStringList& Lines() const { return lines_; }
    qsizetype Selected() const { return selected_; }

 private:
    QStringList lines_;
    qsizetype selected_ = -1;
};

bool IsKnownSentence(const QString& text) {
    static const QStringList beginnings = {QStringLiteral("Användarnamn: "),
                                           QStringLiteral("FELAKTIGT LÖSENORD/ANVÄNDARNAMN"),
                                           QStringLiteral("Försöker logga in"),
                                           QStringLiteral("Byter till katalog"),
                                           QStringLiteral("Listar "),
                                           QStringLiteral("FEL: "),
                                           QStringLiteral("Skapar katalogen "),
                                           QStringLiteral("Tar bort katalogen "),
                                           QStringLiteral("Skickar upp filen "),
                                           QStringLiteral("Hämtar hem filen "),
                                           QStringLiteral("KLART: "),
                                           QStringLiteral("Tar bort filen "),
                                           QStringLiteral("Döper om filen ["),
                                           QStringLiteral("230-"),
                                           QStringLiteral("Kopplar ner...."),
                                           QStringLiteral("Har kopplat ner.")};
    return std::ranges::any_of(beginnings, [&text](const QString& each) { return text.startsWith(each); });
}

void CheckTranslation(const QString& line, const QString& source, const QString& destination) {
    const QString text = ftp::TranslateTraceLine(line, source, destination);
    Require(text.isEmpty() || IsKnownSentence(text), "a translation is a known sentence");
    if (line.startsWith(QStringLiteral("PASS")))
        Require(text == QStringLiteral("Försöker logga in med aktuella kontouppgifter..."),
                "a password is not shown");
    if (text.startsWith(QStringLiteral("230-"))) Require(text == line, "a welcome line is unchanged");
    if (text.startsWith(QStringLiteral("Användarnamn: ")))
        Require(line.startsWith(QStringLiteral("USER")) && text.endsWith(line.mid(5)),
                "the user's name is shown whole");
}

void CheckAppend(const QString& text) {
    const QString line_end = QStringLiteral("\r\n");
    LineList list;
    ftp::AppendTraceText(list, text);
    const QString shown = list.Lines().join(line_end) + line_end;
    Require(list.Selected() == list.Count() - 1, "the newest line is selected");
    if (!text.contains(line_end))
        Require(list.Lines() == QStringList{text}, "a text without line end is added whole");
    else
        Require(shown == text.left(text.lastIndexOf(line_end) + 2), "the terminated lines are added");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::AsText(data, size);
    const QString text = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    const QStringList lines = text.split(u'\n');
    for (const QString& line : lines) CheckTranslation(line, lines.first(), lines.last());
    CheckAppend(text);
    return 0;
}
