#include "forms/filter/filter_rules.h"

#include <gtest/gtest.h>

namespace forms {
namespace {

constexpr auto kLarger = SizeRelation::Larger;
constexpr auto kSmaller = SizeRelation::Smaller;
constexpr auto kLater = TimeRelation::Later;
constexpr auto kEarlier = TimeRelation::Earlier;

TEST(FilterMode, StandsForItsRelations) {
    const struct {
        FilterRelations relations;
        int mode;
    } rows[] = {
        {{{}, {}}, 0},
        {{kLarger, {}}, 1},
        {{kSmaller, {}}, 2},
        {{{}, kLater}, 3},
        {{{}, kEarlier}, 4},
        {{kLarger, kLater}, 5},
        {{kLarger, kEarlier}, 6},
        {{kSmaller, kLater}, 7},
        {{kSmaller, kEarlier}, 8},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FilterModeOf(row.relations), row.mode);
        EXPECT_EQ(RelationsOf(row.mode), row.relations) << row.mode;
    }
}

TEST(FilterMode, ThatIsNoneAsksForNothing) {
    for (const int mode : {-32768, -1, 9, 32767}) EXPECT_EQ(RelationsOf(mode), FilterRelations()) << mode;
    EXPECT_EQ(FilterModeOf({static_cast<SizeRelation>(-1), {}}), 0);  // where nothing is chosen
}

constexpr int kBytes = 0, kKB = 1, kMB = 2, kGB = 3;

TEST(SizeThreshold, IsTheNumberInItsUnit) {
    const struct {
        const char* number;
        int unit;
        std::optional<std::int32_t> bytes;
    } rows[] = {
        {"1", kBytes, 1},
        {"5", kKB, 5120},
        {"2", kKB, 2048},
        {"1", kMB, 1048576},
        {"1", kGB, 1073741824},
        {"1.9", kGB, 2040109466},  // 2040109465.6
        {"1.99999999999", kGB, std::nullopt},
        {"2", kGB, std::nullopt},
        {"750", kGB, std::nullopt},
        {"-2", kGB, -2147483647 - 1},
        {"-3", kGB, std::nullopt},
        {"2147483647", kBytes, 2147483647},
        {"2147483647.4", kBytes, 2147483647},
        {"2147483647.5", kBytes, std::nullopt},
        {"2147483648", kBytes, std::nullopt},
        {"-2147483648.5", kBytes, -2147483647 - 1},
        {"-2147483649", kBytes, std::nullopt},
        {"-3", kBytes, -3},
        {"-3", kKB, -3072},
        {"0.5", kBytes, 0},
        {"1.5", kBytes, 2},
        {"2.5", kBytes, 2},
        {"3.5", kBytes, 4},
        {"-0.5", kBytes, 0},
        {"1.5", kKB, 1536},
        {"1,5", kKB, 1024},  // the leading number ends at the comma
        {"0.0004", kMB, 419},
        {"", kGB, 0},
        {"abc", kGB, 0},
        {"inf", kBytes, 0},
        {"nan", kBytes, 0},
        {" 12 KB", kBytes, 12},
        {"1 000", kBytes, 1000},
        {"&HFF", kBytes, 255},
        {"&hff", kKB, 261120},
        {"&O17", kBytes, 15},
        {"1e3", kBytes, 1000},
        {"1e400", kBytes, std::nullopt},
        {"-1e400", kBytes, std::nullopt},
        {"1e308", kGB, std::nullopt},
    };
    for (const auto& row : rows)
        EXPECT_EQ(SizeThreshold(QString::fromLatin1(row.number), row.unit), row.bytes)
            << row.number << " unit " << row.unit;
}

TEST(MonthDayYear, IsADayOfTheCalendar) {
    const struct {
        const char* text;
        QDate date;  // none where invalid
    } rows[] = {
        {"01,01,1999", {1999, 1, 1}},
        {"12,31,2020", {2020, 12, 31}},
        {"02,03,1990", {1990, 2, 3}},  // month before day
        {"13,01,1999", {}},
        {"02,28,1999", {1999, 2, 28}},
        {"02,29,1999", {}},
        {"02,29,2000", {2000, 2, 29}},
        {"02,29,1996", {1996, 2, 29}},
        {"02,30,1996", {}},
        {"02,31,1999", {}},
        {"04,31,1999", {}},
        {"00,01,1999", {}},
        {",,", {}},
        {"01,01,", {}},
        {"", {}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ParseMonthDayYear(QString::fromLatin1(row.text)).value_or(QDate()), row.date) << row.text;
}

TEST(FilterCaption, TellsWhatIsListed) {
    const FilterWords words{QStringLiteral("2,5 "), QStringLiteral("KB"), QDate(1999, 4, 6),
                            QStringLiteral("09:05:00")};
    const struct {
        int mode;
        const char* caption;
    } rows[] = {
        {0, "Visar filer oavsett 'senast ändrad' och 'storlek'. Klicka här för att ändra!"},
        {1, "FILTER=  Filstorlek större än 2,5  KB. Klicka här för att ändra!"},
        {2, "FILTER=  Filstorlek mindre än 2,5  KB. Klicka här för att ändra!"},
        {3, "FILTER=  Ändrad senare än 1999-04-06, 09:05:00. Klicka här för att ändra!"},
        {4, "FILTER=  Ändrad tidigare än 1999-04-06, 09:05:00. Klicka här för att ändra!"},
        {5, "FILTER=  Större: 2,5  KB, senare: 1999-04-06. Klicka här för att ändra!"},
        {6, "FILTER=  Större: 2,5  KB, tidigare: 1999-04-06. Klicka här för att ändra!"},
        {7, "FILTER=  Mindre: 2,5  KB, senare: 1999-04-06. Klicka här för att ändra!"},
        {8, "FILTER=  Mindre: 2,5  KB, tidigare: 1999-04-06. Klicka här för att ändra!"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FilterCaption(row.mode, words).toStdString(), row.caption) << row.mode;
}

app::ftpglob StoredFilter(std::int16_t mode) {
    app::ftpglob filter;
    filter.FilterMode = mode;
    filter.FilterSizeBytes = 2048;
    filter.FilterTime = QDate(2001, 12, 31).startOfDay();
    filter.FilterTimeValue = QStringLiteral("07:59:00");
    return filter;
}

TEST(StoredFilter, IsShownByTheConditionsThatItHas) {
    for (std::int16_t mode = 0; mode <= 8; ++mode) {
        const app::ftpglob filter = StoredFilter(mode);
        const FilterRelations relations = RelationsOf(mode);
        std::optional<SizeChoice> size;
        if (relations.size) size = SizeChoice{*relations.size, QStringLiteral("2048")};
        std::optional<TimeChoice> time;
        if (relations.time) time = TimeChoice{*relations.time, 11, 30, 11, 7, 59};
        EXPECT_EQ(StoredSize(filter), size) << mode;
        EXPECT_EQ(StoredTime(filter), time) << mode;
    }
}

TEST(StoredFilter, ShowsItsSizeInBytes) {
    app::ftpglob filter = StoredFilter(1);
    filter.FilterSizeBytes = -3072;
    EXPECT_EQ(StoredSize(filter)->bytes, QStringLiteral("-3072"));
    filter.FilterSizeBytes = 2147483647;
    EXPECT_EQ(StoredSize(filter)->bytes, QStringLiteral("2147483647"));
}

TEST(StoredFilter, ShowsNoYearOutsideTheList) {
    const struct { int year, position; } rows[] = {{1989, -1}, {1990, 0}, {1999, 9}, {2020, 30}, {2021, -1}};
    for (const auto& row : rows) {
        app::ftpglob filter = StoredFilter(3);
        filter.FilterTime = QDate(row.year, 1, 2).startOfDay();
        EXPECT_EQ(StoredTime(filter), (TimeChoice{kLater, 0, 1, row.position, 7, 59})) << row.year;
    }
}

}  // namespace
}  // namespace forms
