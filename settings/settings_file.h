#pragma once
// The form of a settings file: UTF-8 lines "[section]" and "key=value". Pure functions, any thread.
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

/// Nothing for bytes that are not wholly of this form, or more than kMaxFileSize of them. Empty lines, a byte
/// order mark and CR LF line ends, which editors leave behind, are understood.
std::optional<Sections> Parse(const QByteArray& bytes);

/// Parse(Serialise(sections)) == sections.
QByteArray Serialise(const Sections& sections);

/// The name of the application's file: readable, and safe whatever the application is called.
QByteArray FileName(const QString& application);

}  // namespace settings
