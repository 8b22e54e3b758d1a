#pragma once
// Sizes, times and listing lines as a Swedish reader likes them, whatever language the desktop has. Pure
// rules. A kilobyte is 1024 bytes, as in all the program's figures: "kB" here is the "KB" of the fixed texts
// of the windows.

#include <QDateTime>
#include <QString>
#include <chrono>
#include <cstdint>

namespace ftp {

/// "812 byte", "1 023 byte", "47,1 kB", "1,4 MB": from kilobytes on one decimal, and never four digits before
/// it. Below 0 as 0.
QString SizeText(std::int64_t bytes);

/// "48 213 byte (47,1 kB)".
QString SizeInFull(std::int64_t bytes);

/// "tisdag 12 mars 2024 kl. 14.30"; empty where the time is not valid.
QString DateText(const QDateTime& time);

/// "5 s", "2 min 10 s", "1 tim 5 min", "26 tim". What is below 0 is 0.
QString DurationText(std::chrono::seconds duration);

/// What a file's size and time, in seconds since 1970, tell in two lines; 0, or what no calendar reaches, is
/// a time that is not known.
QString FileTip(std::int64_t bytes, std::int64_t modified);

/// The same of a listing line in the Unix long format; of a directory or a link only its time. A line that
/// names no year means the last such day up to `today`, or tomorrow, since the server's day may have begun
/// already. Empty where the line cannot be read.
QString ListingTip(const QString& line, QDate today);

}  // namespace ftp
