#pragma once
// What a raw listing line means: its icon, its kind, its name. Pure rules over the Unix long format.

#include <QString>

namespace ftp {

/// Index 1..9 into the main window's image list.
int ListingIcon(const QString& line);

/// Whether the line is the server's summary ("total" in exactly these letters), which is never listed.
bool IsSummaryLine(const QString& line);

/// Whether the first character, lower-cased, is "d" or "l". An empty line is a file.
bool IsDirectoryOrLink(const QString& line);

/// The text after the last blank; the line's last character is never taken as the separator.
/// Empty for an empty line; the whole line when it has no blank.
QString NameOfListingLine(const QString& line);

}  // namespace ftp
