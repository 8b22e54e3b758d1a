#include "forms/filter/filter_rules.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "toolkit/conversions.h"

namespace forms {
namespace {

constexpr int kBitsPerUnit = 10;  // 1024 is 2 to the power of 10

constexpr auto kLarger = SizeRelation::Larger;
constexpr auto kSmaller = SizeRelation::Smaller;
constexpr auto kLater = TimeRelation::Later;
constexpr auto kEarlier = TimeRelation::Earlier;

// By mode.
constexpr std::array<FilterRelations, 9> kModes{{{{}, {}},
                                                 {kLarger, {}},
                                                 {kSmaller, {}},
                                                 {{}, kLater},
                                                 {{}, kEarlier},
                                                 {kLarger, kLater},
                                                 {kLarger, kEarlier},
                                                 {kSmaller, kLater},
                                                 {kSmaller, kEarlier}}};

QString Condition(const FilterRelations& relations, const FilterWords& words) {
    const bool larger = relations.size == kLarger, later = relations.time == kLater;
    const QString size = words.number + u' ' + words.unit;
    const QString date = words.date.toString(Qt::ISODate);
    if (!relations.time)
        return (larger ? QStringLiteral(" Filstorlek större än ")
                       : QStringLiteral(" Filstorlek mindre än ")) +
               size;
    if (!relations.size)
        return (later ? QStringLiteral(" Ändrad senare än ") : QStringLiteral(" Ändrad tidigare än ")) +
               date + QStringLiteral(", ") + words.time;
    return (larger ? QStringLiteral(" Större: ") : QStringLiteral(" Mindre: ")) + size +
           (later ? QStringLiteral(", senare: ") : QStringLiteral(", tidigare: ")) + date;
}

}  // namespace

std::int16_t FilterModeOf(const FilterRelations& relations) {
    const auto found = std::ranges::find(kModes, relations);
    return found == kModes.end() ? std::int16_t{0} : static_cast<std::int16_t>(found - kModes.begin());
}

FilterRelations RelationsOf(int mode) {
    const auto row = static_cast<std::size_t>(mode);
    return row < kModes.size() ? kModes[row] : FilterRelations();
}

std::optional<std::int32_t> SizeThreshold(const QString& number, int unit) {
    return toolkit::CLng(std::ldexp(toolkit::Val(number), kBitsPerUnit * unit));
}

std::optional<QDate> ParseMonthDayYear(const QString& text) {
    const QDate date = QDate::fromString(text, QStringLiteral("MM,dd,yyyy"));
    return date.isValid() ? std::optional(date) : std::nullopt;
}

QString FilterCaption(int mode, const FilterWords& words) {
    const FilterRelations relations = RelationsOf(mode);
    if (relations == FilterRelations())
        return QStringLiteral("Visar filer oavsett 'senast ändrad' och 'storlek'. Klicka här för att ändra!");
    return QStringLiteral("FILTER= ") + Condition(relations, words) +
           QStringLiteral(". Klicka här för att ändra!");
}

std::optional<SizeChoice> StoredSize(const app::ftpglob& filter) {
    const auto relation = RelationsOf(filter.FilterMode).size;
    if (!relation) return std::nullopt;
    return SizeChoice{*relation, QString::number(filter.FilterSizeBytes)};
}

std::optional<TimeChoice> StoredTime(const app::ftpglob& filter) {
    const auto relation = RelationsOf(filter.FilterMode).time;
    if (!relation) return std::nullopt;
    const QDate date = filter.FilterTime.date();
    const QTime time = QTime::fromString(filter.FilterTimeValue);
    const bool listed = date.year() >= kFirstYear && date.year() <= kLastYear;
    return TimeChoice{*relation,   date.month() - 1, date.day() - 1, listed ? date.year() - kFirstYear : -1,
                      time.hour(), time.minute()};
}

}  // namespace forms
