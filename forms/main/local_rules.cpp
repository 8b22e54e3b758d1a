#include "forms/main/local_rules.h"

#include <tuple>

#include "toolkit/conversions.h"

namespace forms {
namespace {

auto ToTheMinute(QDate date, QTime time) {
    return std::tuple(date.year(), date.month(), date.day(), time.hour(), time.minute());
}

}  // namespace

bool IsLater(QDate file_date, QDate filter_date, QTime file_time, QTime filter_time) {
    return ToTheMinute(file_date, file_time) > ToTheMinute(filter_date, filter_time);
}

bool IsEarlier(QDate file_date, QDate filter_date, QTime file_time, QTime filter_time) {
    return ToTheMinute(file_date, file_time) < ToTheMinute(filter_date, filter_time);
}

bool FilterLists(int mode, const FileStanding& file) {
    switch (mode) {
        case 0:
            return true;
        case 1:
            return file.larger;
        case 2:
            return file.smaller;
        case 3:
            return file.later;
        case 4:
            return file.earlier;
        case 5:
            return file.larger && file.later;
        case 6:
            return file.larger && file.earlier;
        case 7:
            return file.smaller && file.later;
        case 8:
            return file.smaller && file.earlier;
        default:
            return false;
    }
}

std::int64_t Kilobytes(std::int64_t bytes) {
    return toolkit::RoundHalfUp(static_cast<double>(bytes) / 1024);
}

QString SelectionTitle(std::int64_t kilobytes) {
    const double seconds = static_cast<double>(kilobytes) / 3.2;
    // The two figures tell the same time twice; the one extra second is part of the estimate.
    return QStringLiteral("Websmide's FTP-program 3.0   -   ") + QString::number(kilobytes) +
           QStringLiteral(" KB  =  ca ") + QString::number(toolkit::RoundHalfUp(seconds / 60)) +
           QStringLiteral(" min     =  ") + QString::number(toolkit::RoundHalfUp(seconds + 1)) +
           QStringLiteral(" sek med 28.8");
}

}  // namespace forms
