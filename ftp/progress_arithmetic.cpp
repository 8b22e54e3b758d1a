#include "ftp/progress_arithmetic.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ftp {
namespace {

constexpr qsizetype kColumnsBeforeSize = 27;
constexpr double kFolderTolerance = 1024;  // bytes

bool IsDigit(QChar c) {
    return c >= u'0' && c <= u'9';
}

/// The number that the text begins with; 0 when there is none.
double LeadingNumber(const QString& text) {
    const QString trimmed = text.trimmed();
    const auto end = std::find_if_not(trimmed.begin(), trimmed.end(), IsDigit);
    return trimmed.left(end - trimmed.begin()).toDouble();
}

/// Halves go to the even neighbour. What does not fit 16 bits leaves the percentage at nothing.
QString PercentText(double percent) {
    const double rounded = std::nearbyint(percent);
    const bool fits = rounded >= std::numeric_limits<std::int16_t>::min() &&
                      rounded <= std::numeric_limits<std::int16_t>::max();
    return QString::number(fits ? static_cast<int>(rounded) : 0) + QStringLiteral(" %");
}

StripChange PartOf(double done, double total, double full_width) {
    if (total == 0) return {.bar_width = {}, .percent = PercentText(0), .counter = {}};
    // Multiplied first, so that a half per cent is exactly a half.
    return {
        .bar_width = full_width * (done / total), .percent = PercentText(done * 100 / total), .counter = {}};
}

StripChange Complete(const QString& total_text, double full_width) {
    return {.bar_width = full_width, .percent = PercentText(100), .counter = total_text};
}

}  // namespace

std::optional<QString> SizeColumn(const QString& line) {
    const auto columns = line.begin() + std::min(kColumnsBeforeSize, line.size());
    const auto first = std::find_if(columns, line.end(), IsDigit);
    if (first == line.end()) return std::nullopt;
    const auto after = std::find_if_not(first, line.end(), IsDigit);
    return line.mid(first - line.begin(), after - first + 1);
}

StripChange FileProgress(std::int64_t bytes, const QString& size_text, double full_width) {
    const auto done = static_cast<double>(bytes);
    const double size = LeadingNumber(size_text);
    if (size != 0 && done / size == 1) return Complete(size_text, full_width);
    return PartOf(done, size, full_width);
}

StripChange FolderProgress(std::int64_t done, std::int64_t total, double full_width) {
    const auto sent = static_cast<double>(done);
    const auto size = static_cast<double>(total);
    if (size != 0 && (sent + kFolderTolerance) / size > 1)
        return Complete(QString::number(total), full_width);
    return PartOf(sent, size, full_width);
}

}  // namespace ftp
