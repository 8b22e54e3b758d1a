#include "forms/main/local_rules.h"

#include <gtest/gtest.h>

#include <array>

namespace forms {
namespace {

TEST(SelectionTitle, TellsSizeAndTimeTwice) {
    struct Row {
        std::int64_t kilobytes;
        const char* title;
    };
    const Row rows[] = {
        {0, "Websmide's FTP-program 3.0   -   0 KB  =  ca 0 min     =  1 sek med 28.8"},
        {1, "Websmide's FTP-program 3.0   -   1 KB  =  ca 0 min     =  1 sek med 28.8"},
        {2, "Websmide's FTP-program 3.0   -   2 KB  =  ca 0 min     =  2 sek med 28.8"},
        {8,
         "Websmide's FTP-program 3.0   -   8 KB  =  ca 0 min     =  4 sek med 28.8"},  // 3.5: a half upwards
        {96, "Websmide's FTP-program 3.0   -   96 KB  =  ca 1 min     =  31 sek med 28.8"},
        {320, "Websmide's FTP-program 3.0   -   320 KB  =  ca 2 min     =  101 sek med 28.8"},
        {3'000'000'000,
         "Websmide's FTP-program 3.0   -   3000000000 KB  =  ca 15625000 min     =  937500001 sek med 28.8"},
    };
    for (const Row& row : rows) EXPECT_EQ(SelectionTitle(row.kilobytes), QString::fromUtf8(row.title));
}

TEST(Kilobytes, RoundsAHalfUpwards) {
    const std::array<std::array<std::int64_t, 2>, 8> rows{
        {{0, 0}, {511, 0}, {512, 1}, {1024, 1}, {1535, 1}, {1536, 2}, {2560, 3}, {5'000'000'000, 4'882'813}}};
    for (const auto& [bytes, kilobytes] : rows) EXPECT_EQ(Kilobytes(bytes), kilobytes) << bytes;
}

TEST(FilterTimes, AreComparedToTheMinute) {
    const QDateTime filter(QDate(2001, 6, 15), QTime(12, 30));
    struct Row {
        QDateTime file;
        bool later, earlier;
    };
    const Row rows[] = {
        {{QDate(2002, 1, 1), QTime(0, 0)}, true, false},
        {{QDate(2000, 12, 31), QTime(23, 59)}, false, true},
        {{QDate(2001, 7, 1), QTime(0, 0)}, true, false},
        {{QDate(2001, 5, 31), QTime(23, 59)}, false, true},
        {{QDate(2001, 6, 16), QTime(0, 0)}, true, false},
        {{QDate(2001, 6, 14), QTime(23, 59)}, false, true},
        {{QDate(2001, 6, 15), QTime(13, 0)}, true, false},
        {{QDate(2001, 6, 15), QTime(11, 59)}, false, true},
        {{QDate(2001, 6, 15), QTime(12, 31)}, true, false},
        {{QDate(2001, 6, 15), QTime(12, 29, 59)}, false, true},
        {{QDate(2001, 6, 15), QTime(12, 30)}, false, false},
        {{QDate(2001, 6, 15), QTime(12, 30, 59)}, false, false},
    };
    for (const Row& row : rows) {
        const QDate day = row.file.date();
        const QTime time = row.file.time();
        EXPECT_EQ(IsLater(day, filter.date(), time, filter.time()), row.later)
            << qPrintable(row.file.toString());
        EXPECT_EQ(IsEarlier(day, filter.date(), time, filter.time()), row.earlier)
            << qPrintable(row.file.toString());
    }
}

TEST(FilterTimes, TakeDaysAndTimesFromTheirOwnArguments) {
    EXPECT_TRUE(IsLater(QDate(2001, 6, 15), QDate(2001, 6, 15), QTime(9, 1), QTime(9, 0)));
    EXPECT_FALSE(IsLater(QDate(2001, 6, 14), QDate(2001, 6, 15), QTime(9, 1), QTime(9, 0)));
    EXPECT_TRUE(IsEarlier(QDate(2001, 6, 14), QDate(2001, 6, 15), QTime(9, 1), QTime(9, 0)));
}

// One row per standing, one column per mode 0..8.
TEST(FilterMode, ListsWhatItsConditionSays) {
    struct Row {
        FileStanding file;
        std::array<bool, 9> listed;
    };
    const Row rows[] = {
        {{false, false, false, false}, {true, false, false, false, false, false, false, false, false}},
        {{true, false, false, false}, {true, true, false, false, false, false, false, false, false}},
        {{false, true, false, false}, {true, false, true, false, false, false, false, false, false}},
        {{false, false, true, false}, {true, false, false, true, false, false, false, false, false}},
        {{false, false, false, true}, {true, false, false, false, true, false, false, false, false}},
        {{true, false, true, false}, {true, true, false, true, false, true, false, false, false}},
        {{true, false, false, true}, {true, true, false, false, true, false, true, false, false}},
        {{false, true, true, false}, {true, false, true, true, false, false, false, true, false}},
        {{false, true, false, true}, {true, false, true, false, true, false, false, false, true}},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i)
        for (int mode = 0; mode <= 8; ++mode)
            EXPECT_EQ(FilterLists(mode, rows[i].file), rows[i].listed[static_cast<std::size_t>(mode)])
                << "row " << i << " mode " << mode;
    EXPECT_FALSE(FilterLists(9, rows[1].file));
}

}  // namespace
}  // namespace forms
