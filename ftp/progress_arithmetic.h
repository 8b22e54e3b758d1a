#pragma once
// The arithmetic of the progress strip. Widths are in twips, counts in bytes.

#include <QString>
#include <cstdint>
#include <optional>

namespace ftp {

/// The size column of a listing line as text: the first 27 characters are dropped, then from the first digit
/// up to and including the first character that is no digit. Nothing when the line is shorter or holds no
/// digit.
std::optional<QString> SizeColumn(const QString& line);

/// What one progress event does to the strip; a member without a value leaves its control as it is.
struct StripChange {
    std::optional<double> bar_width;  // p2
    QString percent;                  // antal and antal2
    std::optional<QString> counter;   // label7, where the event sets it beyond the byte count itself
    bool operator==(const StripChange&) const = default;
};

/// A single file: `bytes` so far, the total as text, the width of the full bar.
StripChange FileProgress(std::int64_t bytes, const QString& size_text, double full_width);

/// The folder upload: bytes of the files done plus `bytes` of this one, against the total of all.
StripChange FolderProgress(std::int64_t done, std::int64_t total, double full_width);

}  // namespace ftp
