#pragma once
// The bytes of a file as text for the eye.

#include <QByteArray>
#include <QString>

namespace forms {

/// What a text view lays out without a pause.
inline constexpr qsizetype kMostLines = 100'000;
inline constexpr qsizetype kLongestLine = 2'000;  // UTF-16 units

struct ViewedText {
    QString text;              // lines end with "\n"
    bool cut = false;          // there is more than this
    bool lines_split = false;  // lines that were too long stand as several
};

/// UTF-16 or UTF-32 where a byte order mark says so, UTF-8 where the bytes are that, with or without a mark,
/// else Windows-1252. Line ends of all systems are understood and tabs kept; the rest is as VisibleText makes
/// it. `more` when the bytes are the beginning of a longer file.
ViewedText TextOf(const QByteArray& bytes, bool more);

/// Characters that do something instead of being seen (controls, changes of direction, further kinds of line
/// ends) stand as U+FFFD.
QString VisibleText(const QString& text);

}  // namespace forms
