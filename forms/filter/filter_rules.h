#pragma once
// The rules of the filter dialog: what its fields make of the filter, and the way back. Pure functions.

#include <QDate>
#include <QString>
#include <cstdint>
#include <optional>

#include "app/shared/ftpglob.h"

namespace forms {

/// In the order in which the lists of the dialog show them.
enum class SizeRelation { Larger, Smaller };
enum class TimeRelation { Later, Earlier };

/// What a file has to be; a condition that is missing is not asked for.
struct FilterRelations {
    std::optional<SizeRelation> size;
    std::optional<TimeRelation> time;

    bool operator==(const FilterRelations&) const = default;
};

/// 0 (no condition) to 8, and back. A number that is no mode asks for nothing.
std::int16_t FilterModeOf(const FilterRelations& relations);
FilterRelations RelationsOf(int mode);

/// Bytes: the leading number of the text times 1024 to the power of `unit` (0..3), halves to the even
/// neighbour. Nothing beyond 32 bits.
std::optional<std::int32_t> SizeThreshold(const QString& number, int unit);

/// "02,28,1999": month, day and year of four digits. Nothing for what is not a day of the calendar.
std::optional<QDate> ParseMonthDayYear(const QString& text);

/// What the caption tells of a filter.
struct FilterWords {
    QString number, unit;  // as chosen, not converted
    QDate date;
    QString time;  // "12:30:00"
};
/// The caption that describes the filter, or says that there is none (mode 0).
QString FilterCaption(int mode, const FilterWords& words);

inline constexpr int kFirstYear = 1990, kLastYear = 2020;

/// The stored filter as the dialog shows it; nothing where the filter has no such condition.
struct SizeChoice {
    SizeRelation relation;
    QString bytes;

    bool operator==(const SizeChoice&) const = default;
};
struct TimeChoice {
    TimeRelation relation;
    int month, day, year, hour, minute;  // positions in the lists; -1 for what a list does not have

    bool operator==(const TimeChoice&) const = default;
};
std::optional<SizeChoice> StoredSize(const app::ftpglob& filter);
std::optional<TimeChoice> StoredTime(const app::ftpglob& filter);

}  // namespace forms
