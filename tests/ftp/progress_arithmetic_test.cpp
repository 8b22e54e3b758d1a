#include "ftp/progress_arithmetic.h"

#include <gtest/gtest.h>

#include <ostream>

namespace ftp {

namespace {

constexpr double kFull = 3000;
constexpr std::int64_t kGigabyte = 1024 * 1024 * 1024;

void ExpectSame(const StripChange& is, const StripChange& expected) {
    EXPECT_EQ(is.percent, expected.percent);
    EXPECT_EQ(is.counter, expected.counter);
    EXPECT_EQ(is.bar_width.has_value(), expected.bar_width.has_value());
    EXPECT_NEAR(is.bar_width.value_or(0), expected.bar_width.value_or(0), 1e-9);
}

StripChange Strip(std::optional<double> bar, const char* percent, std::optional<QString> counter = {}) {
    return {bar, QString::fromUtf8(percent), counter};
}

TEST(SizeColumn, IsTheFirstNumberAfter27Characters) {
    const QString lead(27, u'x');
    const QString digits(27, u'7');
    struct {
        QString line;
        std::optional<QString> size;
    } const rows[] = {
        {QStringLiteral("-rw-r--r--   1 anna users     48213 Jan  1 10:00 a.htm"), QStringLiteral("48213 ")},
        {lead + QStringLiteral("48213 Jan"), QStringLiteral("48213 ")},
        {lead + QStringLiteral("ab48213x9"), QStringLiteral("48213x")},
        {lead + QStringLiteral("48213"), QStringLiteral("48213")},
        {lead + u'7', QStringLiteral("7")},
        {digits + QStringLiteral("42 "), QStringLiteral("42 ")},
        {digits, std::nullopt},
        {digits + QStringLiteral(" Jan"), std::nullopt},
        {digits.chopped(1), std::nullopt},
        {lead + QStringLiteral("٣"), std::nullopt},  // a digit of another script is none here
        {QString(), std::nullopt},
    };
    for (const auto& row : rows) EXPECT_EQ(SizeColumn(row.line), row.size) << row.line.toStdString();
}

struct FileRow {
    std::int64_t bytes;
    const char* size;
    StripChange change;
};

void PrintTo(const FileRow& row, std::ostream* out) {
    *out << row.bytes << " of '" << row.size << "'";
}

class OneFile : public testing::TestWithParam<FileRow> {};

TEST_P(OneFile, ChangesTheStrip) {
    const auto& [bytes, size, change] = GetParam();
    ExpectSame(FileProgress(bytes, QString::fromUtf8(size), kFull), change);
}

INSTANTIATE_TEST_SUITE_P(
    Progress, OneFile,
    testing::Values(FileRow{0, "1000", Strip(0, "0 %")}, FileRow{250, "1000", Strip(750, "25 %")},
                    FileRow{250, "1000 ", Strip(750, "25 %")}, FileRow{250, " 1000x", Strip(750, "25 %")},
                    // Halves go to the even neighbour.
                    FileRow{125, "1000", Strip(375, "12 %")}, FileRow{135, "1000", Strip(405, "14 %")},
                    FileRow{575, "1000", Strip(1725, "58 %")}, FileRow{5, "1000", Strip(15, "0 %")},
                    FileRow{15, "1000", Strip(45, "2 %")}, FileRow{126, "1000", Strip(378, "13 %")},
                    // Only the whole file is complete; it shows the size as it was read.
                    FileRow{1000, "1000", Strip(kFull, "100 %", QStringLiteral("1000"))},
                    FileRow{1000, "1000 ", Strip(kFull, "100 %", QStringLiteral("1000 "))},
                    FileRow{9999, "10000", Strip(kFull * 0.9999, "100 %")},
                    FileRow{1500, "1000", Strip(4500, "150 %")},
                    // Nothing to divide by.
                    FileRow{500, "0", Strip({}, "0 %")}, FileRow{500, "", Strip({}, "0 %")},
                    FileRow{500, "  ", Strip({}, "0 %")}, FileRow{500, "x1000", Strip({}, "0 %")},
                    FileRow{0, "0", Strip({}, "0 %")},
                    // A percentage that 16 bits cannot hold.
                    FileRow{32767, "100", Strip(kFull * 327.67, "32767 %")},
                    FileRow{32768, "100", Strip(kFull * 327.68, "0 %")},
                    // Beyond 2 GB.
                    FileRow{3 * kGigabyte, "6442450944", Strip(1500, "50 %")},
                    FileRow{6 * kGigabyte, "6442450944",
                            Strip(kFull, "100 %", QStringLiteral("6442450944"))}));

struct FolderRow {
    std::int64_t done;
    std::int64_t total;
    StripChange change;
};

void PrintTo(const FolderRow& row, std::ostream* out) {
    *out << row.done << " of " << row.total;
}

class Folder : public testing::TestWithParam<FolderRow> {};

TEST_P(Folder, ChangesTheStrip) {
    const auto& [done, total, change] = GetParam();
    ExpectSame(FolderProgress(done, total, kFull), change);
}

INSTANTIATE_TEST_SUITE_P(
    Progress, Folder,
    testing::Values(FolderRow{0, 100'000, Strip(0, "0 %")}, FolderRow{25'000, 100'000, Strip(750, "25 %")},
                    FolderRow{12'500, 100'000, Strip(375, "12 %")},
                    FolderRow{13'500, 100'000, Strip(405, "14 %")},
                    // Complete with fewer than 1024 bytes missing, not with 1024.
                    FolderRow{98'976, 100'000, Strip(kFull * 0.98976, "99 %")},
                    FolderRow{98'977, 100'000, Strip(kFull, "100 %", QStringLiteral("100000"))},
                    FolderRow{100'000, 100'000, Strip(kFull, "100 %", QStringLiteral("100000"))},
                    FolderRow{100'001, 100'000, Strip(kFull, "100 %", QStringLiteral("100000"))},
                    FolderRow{0, 1023, Strip(kFull, "100 %", QStringLiteral("1023"))},
                    FolderRow{0, 1024, Strip(0, "0 %")},
                    // Nothing to divide by, and no completion either.
                    FolderRow{0, 0, Strip({}, "0 %")}, FolderRow{5000, 0, Strip({}, "0 %")},
                    FolderRow{3 * kGigabyte, 6 * kGigabyte, Strip(1500, "50 %")},
                    FolderRow{6 * kGigabyte, 6 * kGigabyte,
                              Strip(kFull, "100 %", QStringLiteral("6442450944"))}));

}  // namespace
}  // namespace ftp
