#include "forms/folderupload/folder_rules.h"

#include <gtest/gtest.h>

namespace forms {
namespace {

TEST(ParentFolder, IsAllBeforeTheLastNameInLowerCase) {
    const struct {
        const char *path, *parent, *path_after;
    } rows[] = {
        {"C:\\Webb\\Bilder", "c:\\webb\\", "C:\\Webb\\Bilder"},
        {"C:\\Webb\\Bilder\\", "c:\\webb\\", "C:\\Webb\\Bilder"},
        {"C:\\Webb", "c:\\", "C:\\Webb"},
        {"C:\\", "", "C:"},
        {"c:\\webb\\", "c:\\", "c:\\webb"},
        {"C:\\ÅÄÖ\\x", "c:\\åäö\\", "C:\\ÅÄÖ\\x"},
        {"", "", ""},
    };
    for (const auto& row : rows) {
        QString path = row.path;
        EXPECT_EQ(ParentFolderOf(path), row.parent) << row.path;
        EXPECT_EQ(path, row.path_after);
    }
}

TEST(FolderName, IsTheLastNameInLowerCase) {
    const struct {
        const char *path, *name, *path_after;
    } rows[] = {
        {"C:\\Webb\\Bilder\\", "bilder", "C:\\Webb\\Bilder"},
        {"C:\\Webb\\Bilder", "bilder", "C:\\Webb\\Bilder"},
        {"C:\\", "c:", "C:"},
        {"C:\\ÅÄÖ", "åäö", "C:\\ÅÄÖ"},
        {"", "", ""},
    };
    for (const auto& row : rows) {
        QString path = row.path;
        EXPECT_EQ(FolderNameOf(path), row.name) << row.path;
        EXPECT_EQ(path, row.path_after);
    }
}

TEST(Climb, LeadsToWhereTheNextFolderIsMade) {
    const struct {
        const char *previous, *folder;
        int lines;
    } rows[] = {
        {"C:\\R", "C:\\R", 0},                    // the root itself
        {"C:\\R", "C:\\R\\a", 0},                 // its first subfolder
        {"C:\\R\\a", "C:\\R\\b", 1},              // a sibling
        {"C:\\R\\a", "C:\\R\\A", 1},              // one that is equal but for case
        {"C:\\R\\a\\b", "C:\\R\\x", 2},           //
        {"C:\\R\\a\\b\\c", "C:\\R\\x", 3},        // a sibling of c's grandparent
        {"C:\\R\\a\\b\\c\\d", "C:\\R\\x", 4},     // the most
        {"C:\\R\\a\\b\\c\\d\\e", "C:\\R\\x", 0},  // too deep
        {"C:\\R\\a\\b\\c\\d\\e\\f", "C:\\R\\x", 0},
        {"C:\\R\\a\\b\\c\\d\\e", "C:\\R\\a\\x", 4},
        {"C:\\R\\A\\B", "C:\\r\\x", 2},  // case does not count
        {"C:\\R\\a\\", "C:\\R\\b\\", 1},
        {"C:\\a", "C:\\b", 1},
        {"C:\\a\\b", "C:\\c", 2},
        {"C:\\R\\ab", "C:\\R\\a\\b", 0},  // names, not letters
    };
    for (const auto& row : rows)
        EXPECT_EQ(ClimbLines(row.previous, row.folder), row.lines) << row.previous << ' ' << row.folder;
}

TEST(Kilobytes, AreWholeAndInGroups) {
    const struct {
        double kilobytes;
        const char* text;
    } rows[] = {
        {0, "0 KB"},
        {0.49, "0 KB"},
        {0.5, "  1 KB"},
        {1.5, "  2 KB"},
        {2.5, "  3 KB"},
        {5, "  5 KB"},
        {10, "  10 KB"},
        {999, "  999 KB"},
        {999.5, " 1 000 KB"},
        {1234, " 1 234 KB"},
        {12345, " 12 345 KB"},
        {123456, " 123 456 KB"},
        {1234567, "1 234 567 KB"},
        {12345678, "12 345 678 KB"},
        {1234567890, "1234 567 890 KB"},
        {1000000, "1 000 000 KB"},
    };
    for (const auto& row : rows) EXPECT_EQ(KilobyteText(row.kilobytes), row.text) << row.kilobytes;
}

TEST(Time, IsEstimatedForASlowLine) {
    const struct {
        double kilobytes;
        const char* text;
    } rows[] = {
        {0, "00 tim. 01 min."},     {10, "00 tim. 01 min."},     // 3 seconds
        {28.8, "00 tim. 01 min."},                               // 8
        {104.4, "00 tim. 01 min."},                              // 29
        {108, "00 tim. 01 min."},                                // 30, half a minute up
        {320, "00 tim. 01 min."},                                // 89
        {324, "00 tim. 02 min."},                                // 90
        {1000, "00 tim. 05 min."},                               // 278
        {12850, "00 tim. 59 min."},                              // 3569
        {12852, "00 tim. 60 min."},                              // 3570
        {12956, "00 tim. 60 min."},                              // 3599
        {12960, "01 tim. 00 min."},                              // 3600
        {12970, "01 tim. 00 min."}, {19440, "01 tim. 30 min."},  // 5400: an hour and a half
        {25920, "02 tim. 00 min."}, {32400, "02 tim. 30 min."}, {1296000, "100 tim. 00 min."},
    };
    for (const auto& row : rows) EXPECT_EQ(EstimatedTime(row.kilobytes), row.text) << row.kilobytes;
}

TEST(Time, IsNotEstimatedBeyond32Bits) {
    const double last = 2147483647 * 28.8 / 8;
    EXPECT_EQ(EstimatedTime(last), "596523 tim. 14 min.");
    EXPECT_EQ(EstimatedTime(last + 4), std::nullopt);
}

TEST(Statistics, BeginWithNothing) {
    const FolderStatistics statistics;
    EXPECT_EQ(statistics.folders, "0 st");
    EXPECT_EQ(statistics.files, "0 st");
    EXPECT_EQ(statistics.size, "0 KB");
    EXPECT_EQ(statistics.time, "00 tim. 00 min.");
    EXPECT_EQ(statistics.Bytes(), 0);
}

TEST(Statistics, CountFolders) {
    FolderStatistics statistics;
    for (int i = 0; i < 1234; ++i) statistics.CountFolder();
    EXPECT_EQ(statistics, FolderStatistics{.folders = "1234 st"});
}

TEST(Statistics, OfOneFile) {
    FolderStatistics statistics;
    ASSERT_TRUE(statistics.CountFile(10240));
    EXPECT_EQ(statistics.files, "1 st");
    EXPECT_EQ(statistics.size, "  10 KB");
    EXPECT_EQ(statistics.time, "00 tim. 01 min.");
    EXPECT_EQ(statistics.Bytes(), 10240);
}

// The text is what is counted on from, so that small files may not count at all, or for twice as much.
TEST(Statistics, RoundAtEachFile) {
    const struct {
        std::int64_t each;
        int files;
        const char* size;
    } rows[] = {
        {511, 1000, "0 KB"},
        {512, 1000, " 1 000 KB"},
        {1024, 1000, " 1 000 KB"},
        {1535, 1000, " 1 000 KB"},
        {1536, 1000, " 2 000 KB"},
        {0, 3, "0 KB"},
        {1023, 1, "  1 KB"},
        {1 << 20, 1205, "1 233 920 KB"},
        {std::int64_t{3} << 30, 4, "12 582 912 KB"},
    };
    for (const auto& row : rows) {
        FolderStatistics statistics;
        for (int i = 0; i < row.files; ++i) ASSERT_TRUE(statistics.CountFile(row.each));
        EXPECT_EQ(statistics.size, row.size) << row.each;
        EXPECT_EQ(statistics.files, QString::number(row.files) + " st");
    }
}

TEST(Statistics, TheTotalMayBeMoreThanTwoGigabytes) {
    FolderStatistics statistics;
    ASSERT_TRUE(statistics.CountFile((std::int64_t{5} << 30) + 600));
    EXPECT_EQ(statistics.size, "5 242 881 KB");
    EXPECT_EQ(statistics.Bytes(), (std::int64_t{5} << 30) + 1024);
}

TEST(Statistics, AFileBeyondAllEstimatesCountsButHasNone) {
    FolderStatistics statistics;
    ASSERT_TRUE(statistics.CountFile(1024));
    EXPECT_FALSE(statistics.CountFile(std::int64_t{1} << 53));
    EXPECT_EQ(statistics.files, "2 st");
    EXPECT_EQ(statistics.time, "00 tim. 01 min.");
}

}  // namespace
}  // namespace forms
