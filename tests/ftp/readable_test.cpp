#include "ftp/readable.h"

#include <gtest/gtest.h>

namespace ftp {
namespace {

using namespace std::chrono_literals;

QString Plain(QString text) {
    return text.replace(QChar::Nbsp, u' ');
}

TEST(SizeText, HasOneDecimalAndAComma) {
    const std::pair<std::int64_t, const char*> table[] = {
        {-1, "0 byte"},        {0, "0 byte"},         {1, "1 byte"},
        {1023, "1 023 byte"},  {1024, "1,0 kB"},      {48213, "47,1 kB"},
        {1023897, "999,9 kB"}, {1023949, "1,0 MB"},   {1468006, "1,4 MB"},
        {3LL << 30, "3,0 GB"}, {5LL << 40, "5,0 TB"}, {std::numeric_limits<std::int64_t>::max(), "8,0 EB"},
    };
    for (const auto& [bytes, text] : table) EXPECT_EQ(Plain(SizeText(bytes)), text) << bytes;
}

TEST(SizeInFull, TellsTheBytesToo) {
    EXPECT_EQ(Plain(SizeInFull(48213)), "48 213 byte (47,1 kB)");
    EXPECT_EQ(Plain(SizeInFull(812)), "812 byte");
    EXPECT_EQ(Plain(SizeInFull(3LL << 30)), "3 221 225 472 byte (3,0 GB)");
}

// Whatever language the program has been started in.
TEST(DateText, IsSwedish) {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_EQ(DateText(QDateTime(QDate(2024, 3, 12), QTime(14, 30))), "tisdag 12 mars 2024 kl. 14.30");
    EXPECT_EQ(DateText(QDateTime(QDate(1999, 5, 1), QTime(7, 5, 59))), "lördag 1 maj 1999 kl. 07.05");
    EXPECT_EQ(Plain(SizeText(1468006)), "1,4 MB");
    EXPECT_EQ(DateText(QDateTime()), "");
    QLocale::setDefault(before);
}

TEST(DurationText, HasTwoPartsAtMost) {
    const std::pair<std::chrono::seconds, const char*> table[] = {
        {-5s, "0 s"},           {0s, "0 s"},      {59s, "59 s"},    {60s, "1 min"},
        {130s, "2 min 10 s"},   {3600s, "1 tim"}, {3659s, "1 tim"}, {3900s, "1 tim 5 min"},
        {26h + 5min, "26 tim"},
    };
    for (const auto& [duration, text] : table) EXPECT_EQ(DurationText(duration), text) << duration.count();
}

TEST(FileTip, TellsSizeAndTime) {
    const QDateTime time(QDate(2024, 3, 12), QTime(14, 30));
    EXPECT_EQ(Plain(FileTip(48213, time.toSecsSinceEpoch())),
              "48 213 byte (47,1 kB)\nsenast ändrad tisdag 12 mars 2024 kl. 14.30");
    EXPECT_EQ(FileTip(7, 0), "7 byte");
    EXPECT_EQ(FileTip(7, std::numeric_limits<std::int64_t>::max()), "7 byte");
}

TEST(ListingTip, ReadsTheLine) {
    struct Row {
        const char *line, *tip;
    };
    const Row table[] = {
        {"-rw-r--r--   1 ftp      ftp         48213 Mar 12  2024 a.txt",
         "48 213 byte (47,1 kB)\nsenast ändrad tisdag 12 mars 2024"},
        {"-rw-r--r--   1 ftp      ftp         48213 Mar 12 14:30 a.txt",
         "48 213 byte (47,1 kB)\nsenast ändrad tisdag 12 mars 2024 kl. 14.30"},
        {"-rw-r--r-- 1 u g 3 JAN 1 9:05 b c.txt", "3 byte\nsenast ändrad måndag 1 januari 2024 kl. 09.05"},
        // The server's day may have begun already; later days are of last year.
        {"-rw-r--r-- 1 u g 3 Jun 16 00:05 b", "3 byte\nsenast ändrad söndag 16 juni 2024 kl. 00.05"},
        {"-rw-r--r-- 1 u g 3 Jun 17 00:05 b", "3 byte\nsenast ändrad lördag 17 juni 2023 kl. 00.05"},
        {"-rw-r--r-- 1 u g 3 Feb 29 10:00 b", "3 byte\nsenast ändrad torsdag 29 februari 2024 kl. 10.00"},
        {"-rw-r--r-- 1 u g 3 2023-12-24 15:00 b", "3 byte\nsenast ändrad söndag 24 december 2023 kl. 15.00"},
        {"-rw-r--r-- 1 u g 3 2023-12-24 15:00:07.5 +0100 b",
         "3 byte\nsenast ändrad söndag 24 december 2023 kl. 15.00"},
        {"drwxr-xr-x 2 u g 4096 Mar 12 2024 bilder", "senast ändrad tisdag 12 mars 2024"},
        {"lrwxrwxrwx 1 u g 4 Mar 12 2024 a -> b", "senast ändrad tisdag 12 mars 2024"},
        // A user called Jan, and a name that looks like a date.
        {"-rw-r--r-- 1 Jan 12 48 Mar 3 2020 x", "48 byte\nsenast ändrad tisdag 3 mars 2020"},
        {"-rw-r--r-- 1 u g 7 Mar 3 2020 9 Apr 4 2021 x", "7 byte\nsenast ändrad tisdag 3 mars 2020"},
        {"crw-r--r-- 1 u g 1,3 Mar 3 2020 null", "senast ändrad tisdag 3 mars 2020"},
        {"-rw-r--r-- 1 u g 99999999999999999999999 Mar 3 2020 x", "senast ändrad tisdag 3 mars 2020"},
        {"-rw-r--r-- 1 u g -5 Mar 3 2020 x", "senast ändrad tisdag 3 mars 2020"},
        {"-rw-r--r-- 1 u g 7 Mar 3 2020", ""},  // no name
        {"-rw-r--r-- 1 u g 7 Mar 32 2020 x", ""},
        {"-rw-r--r-- 1 u g 7 Mar 3 25:00 x", ""},
        {"-rw-r--r-- 1 u g 7 Mar 3 20 x", ""},
        {"-rw-r--r--   1 ftp      ftp", ""},
        {"Mar 3 2020 x", ""},
        {"", ""},
    };
    for (const Row& row : table)
        EXPECT_EQ(Plain(ListingTip(QString::fromUtf8(row.line), QDate(2024, 6, 15))), row.tip) << row.line;
}

TEST(ListingTip, OfALeapDayLooksFurtherBack) {
    EXPECT_EQ(ListingTip("-rw-r--r-- 1 u g 3 Feb 29 10:00 b", QDate(2027, 1, 1)),
              "3 byte\nsenast ändrad torsdag 29 februari 2024 kl. 10.00");
}

TEST(ListingTip, LooksAtTheBeginningOfALongLineOnly) {
    EXPECT_EQ(ListingTip(QString(100'000, u'x') + " 1 u g 3 Mar 3 2020 b", QDate(2024, 6, 15)), "");
}

}  // namespace
}  // namespace ftp
