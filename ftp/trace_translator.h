#pragma once
// The Swedish translation of the protocol trace.

#include <QString>

namespace ftp {

/// The status line for one trace line, or an empty text: then nothing is shown. Stateless.
/// `source` and `destination` are the component's file names, read when a rename is reported.
QString TranslateTraceLine(const QString& line, const QString& source, const QString& destination);

/// The trace line of an error event: "Fel nummer:", the number, a blank and the text.
QString ErrorLine(int number, const QString& text);

/// Shared routine for `listTrace` and `listDir`: adds the terminated lines of `text`, at most about 10,000
/// kept. List needs Count(), RemoveFirst(), Add(QString) and SelectLast().
inline constexpr int kMaxListLines = 10'000;

template <class List>
void AppendTraceText(List& list, QString text) {
    if (list.Count() > kMaxListLines) list.RemoveFirst();
    const QString line_end = QStringLiteral("\r\n");
    if (!text.contains(line_end)) text += line_end;
    qsizetype from = 0;
    for (qsizetype end; (end = text.indexOf(line_end, from)) >= 0; from = end + line_end.size()) {
        list.Add(text.mid(from, end - from));
        list.SelectLast();
    }
}

}  // namespace ftp
