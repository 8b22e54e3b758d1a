// The progress strip: sizes that a server states, in its listing and by itself, against bytes that have
// moved.

#include <QString>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "ftp/progress_arithmetic.h"
#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Require;

constexpr double kFullWidth = 4215;

void Check(const ftp::StripChange& change) {
    if (change.bar_width) Require(std::isfinite(*change.bar_width), "the bar has a width");
    Require(change.percent.endsWith(QStringLiteral(" %")), "a percentage is shown as one");
    bool is_number = false;
    const int percent = change.percent.chopped(2).toInt(&is_number);
    Require(is_number && percent >= -32768 && percent <= 32767, "a percentage is a small number");
}

void CheckSizeColumn(const QString& line) {
    const auto column = ftp::SizeColumn(line);
    if (!column) return;
    Require(!column->isEmpty() && line.sliced(27).contains(*column), "the size column is a part of the line");
    Require(column->front() >= u'0' && column->front() <= u'9', "a size begins with a digit");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::int64_t counts[2]{};
    const std::size_t head = std::min(size, sizeof(counts));
    if (head > 0) std::memcpy(counts, data, head);
    const std::string_view rest = fuzz::AsText(data, size).substr(head);
    const QString line = QString::fromUtf8(rest.data(), static_cast<qsizetype>(rest.size()));
    CheckSizeColumn(line);
    Check(ftp::FolderProgress(counts[0], counts[1], kFullWidth));
    for (const QString& text : {line, ftp::SizeColumn(line).value_or(QString())})
        for (const std::int64_t bytes : {std::int64_t{0}, counts[0], counts[1]})
            Check(ftp::FileProgress(bytes, text, kFullWidth));
    return 0;
}
