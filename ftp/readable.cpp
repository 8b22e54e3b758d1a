#include "ftp/readable.h"

#include <QLocale>
#include <algorithm>
#include <array>
#include <optional>

#include "ftp/listing_rows.h"

namespace ftp {
namespace {

constexpr double kUnit = 1024;
constexpr double kRoundsToFourDigits = 999.95;
constexpr std::array kUnits = {u"kB", u"MB", u"GB", u"TB", u"PB", u"EB"};

constexpr qsizetype kLongestLine = 1000;  // that is looked at

const QLocale& Swedish() {
    static const QLocale swedish(QLocale::Swedish, QLocale::Sweden);
    return swedish;
}

QString DayText(QDate day) {
    return Swedish().toString(day, QStringLiteral("dddd d MMMM yyyy"));
}

QString Changed(const QString& when) {
    return QStringLiteral("senast ändrad ") + when;
}

/// When a line was changed, and where in its words that stands.
struct Stamp {
    qsizetype place = 0;
    QDate day;
    std::optional<QTime> time;
};

int MonthNamed(const QString& word) {
    static const QStringList months{"jan", "feb", "mar", "apr", "may", "jun",
                                    "jul", "aug", "sep", "oct", "nov", "dec"};
    return static_cast<int>(months.indexOf(word.toLower())) + 1;
}

std::optional<QTime> TimeIn(const QString& word) {
    const QTime time = QTime::fromString(word.left(5).rightJustified(5, u'0'), QStringLiteral("HH:mm"));
    return time.isValid() ? std::optional(time) : std::nullopt;
}

// 29 February is looked for further back.
QDate LastSuchDay(int month, int day, QDate today) {
    constexpr int kBetweenLeapDays = 8;
    for (int year = today.year() + 1; year >= today.year() - kBetweenLeapDays; --year) {
        const QDate candidate(year, month, day);
        if (candidate.isValid() && candidate <= today.addDays(1)) return candidate;
    }
    return {};
}

/// "Mar 12 2024" or "Mar 12 14:30" at this place.
std::optional<Stamp> ClassicStamp(const QStringList& words, qsizetype place, QDate today) {
    const int month = MonthNamed(words[place]);
    const int day = words[place + 1].toInt();
    if (month == 0 || day == 0) return std::nullopt;
    const QString& last = words[place + 2];
    const std::optional<QTime> time = last.contains(u':') ? TimeIn(last) : std::nullopt;
    const QDate date = time               ? LastSuchDay(month, day, today)
                       : last.size() == 4 ? QDate(last.toInt(), month, day)
                                          : QDate();
    return date.isValid() ? std::optional(Stamp{place, date, time}) : std::nullopt;
}

/// "2024-03-12 14:30" at this place.
std::optional<Stamp> IsoStamp(const QStringList& words, qsizetype place) {
    const QDate date = QDate::fromString(words[place], Qt::ISODate);
    const std::optional<QTime> time = TimeIn(words[place + 1]);
    if (!date.isValid() || !time) return std::nullopt;
    return Stamp{place, date, time};
}

// Before it stand at least the kind and the size, and after it the name.
std::optional<Stamp> StampIn(const QStringList& words, QDate today) {
    constexpr qsizetype kFirst = 2, kWords = 3;
    for (qsizetype place = kFirst; place + kWords <= words.size(); ++place) {
        if (const auto iso = IsoStamp(words, place)) return iso;
        if (place + kWords == words.size()) break;
        if (const auto classic = ClassicStamp(words, place, today)) return classic;
    }
    return std::nullopt;
}

}  // namespace

QString SizeText(std::int64_t bytes) {
    bytes = std::max<std::int64_t>(bytes, 0);
    if (static_cast<double>(bytes) < kUnit)
        return Swedish().toString(qlonglong{bytes}) + QStringLiteral(" byte");
    double value = static_cast<double>(bytes) / kUnit;
    std::size_t unit = 0;
    for (; value >= kRoundsToFourDigits && unit + 1 < kUnits.size(); ++unit) value /= kUnit;
    return Swedish().toString(value, 'f', 1) + u' ' + QString::fromUtf16(kUnits[unit]);
}

QString SizeInFull(std::int64_t bytes) {
    bytes = std::max<std::int64_t>(bytes, 0);
    const QString exact = Swedish().toString(qlonglong{bytes}) + QStringLiteral(" byte");
    return static_cast<double>(bytes) < kUnit ? exact : exact + QStringLiteral(" (%1)").arg(SizeText(bytes));
}

QString DateText(const QDateTime& time) {
    if (!time.isValid()) return {};
    return DayText(time.date()) + time.time().toString(QStringLiteral(" 'kl.' HH.mm"));
}

QString DurationText(std::chrono::seconds duration) {
    using namespace std::chrono;
    constexpr hours kOnlyHours(24);
    const seconds whole = std::max(duration, 0s);
    const hours hour = duration_cast<hours>(whole);
    const minutes minute = duration_cast<minutes>(whole - hour);
    const seconds second = whole - hour - minute;
    QStringList parts;
    if (hour > 0h) parts.append(QStringLiteral("%1 tim").arg(hour.count()));
    if (minute > 0min && hour < kOnlyHours) parts.append(QStringLiteral("%1 min").arg(minute.count()));
    if (hour == 0h && (second > 0s || minute == 0min))
        parts.append(QStringLiteral("%1 s").arg(second.count()));
    return parts.join(u' ');
}

QString FileTip(std::int64_t bytes, std::int64_t modified) {
    const QString size = SizeInFull(bytes);
    const QString when = modified ? DateText(QDateTime::fromSecsSinceEpoch(modified)) : QString();
    return when.isEmpty() ? size : size + u'\n' + Changed(when);
}

QString ListingTip(const QString& line, QDate today) {
    const QStringList words = line.left(kLongestLine).split(u' ', Qt::SkipEmptyParts);
    const std::optional<Stamp> stamp = StampIn(words, today);
    if (!stamp) return {};
    const QString changed =
        Changed(stamp->time ? DateText(QDateTime(stamp->day, *stamp->time, Qt::UTC)) : DayText(stamp->day));
    bool is_number = false;
    const qint64 size = words[stamp->place - 1].toLongLong(&is_number);
    if (!is_number || size < 0 || IsDirectoryOrLink(line)) return changed;
    return SizeInFull(size) + u'\n' + changed;
}

}  // namespace ftp
