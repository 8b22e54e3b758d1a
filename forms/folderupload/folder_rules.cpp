#include "forms/folderupload/folder_rules.h"

#include <algorithm>

#include "toolkit/conversions.h"

namespace forms {
namespace {

using toolkit::CLng;
using toolkit::Val;

constexpr double kKilobitsPerSecond = 28.8;
constexpr int kHighestClimbLevel = 3;
constexpr int kSecondsPerHour = 3600, kSecondsPerMinute = 60;

void DropSeparator(QString& path) {
    if (path.endsWith(u'\\')) path.chop(1);
}

QString TwoDigits(std::int64_t number) {
    return QStringLiteral("%1").arg(number, 2, 10, QChar(u'0'));
}

QString OneMore(const QString& count) {
    return toolkit::Str(Val(count) + 1) + QStringLiteral(" st");
}

// Three groups, filled from the right; what has no room in the first one stands before it.
QString Grouped(std::int64_t number) {
    constexpr qsizetype kGroup = 3;
    const QString digits = number == 0 ? QString() : QString::number(number);
    const QString before = digits.chopped(std::min(digits.size(), kGroup));
    return before.chopped(std::min(before.size(), kGroup)) + u' ' + before.right(kGroup) + u' ' +
           digits.right(kGroup);
}

}  // namespace

QString ParentFolderOf(QString& path) {
    DropSeparator(path);
    return path.left(path.lastIndexOf(u'\\') + 1).toLower();
}

QString FolderNameOf(QString& path) {
    DropSeparator(path);
    return path.mid(path.lastIndexOf(u'\\') + 1).toLower();
}

int ClimbLines(QString previous, QString folder) {
    const QString parent = ParentFolderOf(folder);
    if (ParentFolderOf(previous) == parent) return previous == folder ? 0 : 1;
    for (int ClimbLevel = 0; ClimbLevel <= kHighestClimbLevel; ++ClimbLevel) {
        previous = ParentFolderOf(previous);
        if (previous == parent) return ClimbLevel + 1;
    }
    return 0;
}

QString KilobyteText(double kilobytes) {
    const std::int64_t whole = toolkit::RoundHalfUp(kilobytes);
    return (whole == 0 ? QStringLiteral("0") : Grouped(whole)) + QStringLiteral(" KB");
}

std::optional<QString> EstimatedTime(double kilobytes) {
    const auto seconds = CLng(kilobytes / kKilobitsPerSecond * 8);
    if (!seconds) return std::nullopt;
    std::int64_t hours = CLng(*seconds / double{kSecondsPerHour}).value_or(0);
    if (hours * kSecondsPerHour > *seconds) --hours;
    const auto left = static_cast<double>(*seconds - hours * kSecondsPerHour);
    const std::int64_t minutes = toolkit::RoundHalfUp(left / kSecondsPerMinute);
    const bool nothing = hours == 0 && minutes == 0;
    return TwoDigits(hours) + QStringLiteral(" tim. ") + TwoDigits(nothing ? 1 : minutes) +
           QStringLiteral(" min.");
}

void FolderStatistics::CountFolder() {
    folders = OneMore(folders);
}

bool FolderStatistics::CountFile(std::int64_t bytes) {
    files = OneMore(files);
    size = KilobyteText(Val(size) + static_cast<double>(bytes) / 1024);
    const auto estimate = EstimatedTime(Val(size));
    if (estimate) time = *estimate;
    return estimate.has_value();
}

std::int64_t FolderStatistics::Bytes() const {
    return toolkit::RoundHalfUp(Val(size) * 1024);
}

}  // namespace forms
