#pragma once
// The form of a settings file: UTF-8 lines "[section]" and "key=value", between the lines "# websmide 2" and
// "# end". Pure functions, any thread.
//
// The closing line tells a file that is whole from one that has lost its end. Files with neither line are
// read, too.
//
// Names and values may hold any text: a backslash starts an escape, "\\" or "\u" and four hexadecimal digits
// of a UTF-16 unit. Control characters, blanks at either end, and what would be taken for the line's form are
// escaped.

#include <QByteArray>
#include <QMap>
#include <QString>
#include <optional>

namespace settings {

/// section → key → value
using Sections = QMap<QString, QMap<QString, QString>>;

inline constexpr qsizetype kMaxFileSize = 16 * 1024 * 1024;  // bytes

/// Nothing for bytes that are not wholly of this form, or more than kMaxFileSize of them: in particular
/// nothing for a file that was cut off anywhere, and for an empty one, which nobody has written. What an
/// editor leaves behind is understood: empty lines, a byte order mark, CR LF line ends, and lines that
/// somebody has added below the closing one. A file with neither the first line nor the closing one is
/// understood, too.
std::optional<Sections> Parse(const QByteArray& bytes);

/// Parse(Serialise(sections)) == sections.
QByteArray Serialise(const Sections& sections);

/// The name of the application's file: readable, and safe whatever the application is called.
QByteArray FileName(const QString& application);

}  // namespace settings
