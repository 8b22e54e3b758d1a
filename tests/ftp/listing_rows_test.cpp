#include "ftp/listing_rows.h"

#include <gtest/gtest.h>

#include <ostream>

namespace ftp {
namespace {

struct RowOfListing {
    const char* line;
    int icon;
    const char* name;
    bool directory = false;
    bool summary = false;
};

void PrintTo(const RowOfListing& row, std::ostream* out) {
    *out << '"' << row.line << '"';
}

const RowOfListing kRows[] = {
    {"drwxr-xr-x 2 u g 512 Jan 1 10:00 pub", 2, "pub", true},
    {"Drwxr-xr-x 2 u g 512 Jan 1 10:00 pub", 2, "pub", true},
    {"lrwxrwxrwx 1 u g 7 Jan 1 10:00 www -> htdocs", 2, "htdocs", true},
    {"Lrwxrwxrwx 1 u g 7 Jan 1 10:00 www -> htdocs", 2, "htdocs", true},
    {"drwxr-xr-x 2 u g 512 Jan 1 10:00 ..", 6, "..", true},
    {"drwxr-xr-x 2 u g 512 Jan 1 10:00 .", 7, ".", true},
    {"drwxr-xr-x 2 u g 512 Jan 1 10:00 .ssh", 7, ".ssh", true},
    {"lrwxrwxrwx 1 u g 7 Jan 1 10:00 a -> ../b", 6, "../b", true},
    {"drwxr-xr-x 2 u g 512 Jan 1 10:00 old.zip", 8, "old.zip", true},
    {"drwxr-xr-x 2 u g 512 Jan 1 10:00 ..zip", 8, "..zip", true},
    {"lrwxrwxrwx 1 u g 7 Jan 1 10:00 a -> b.html", 1, "b.html", true},

    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 Index.HTML", 1, "Index.HTML"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.htm", 1, "a.htm"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.Asp", 1, "a.Asp"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.txt", 1, "a.txt"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.aspx", 3, "a.aspx"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 ahtml", 3, "ahtml"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.GIF", 4, "a.GIF"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.jpg", 4, "a.jpg"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.png", 4, "a.png"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.jpeg", 3, "a.jpeg"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.wav", 5, "a.wav"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.mid", 5, "a.mid"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.zip", 8, "a.zip"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.exe", 9, "a.exe"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 a.zip.exe", 9, "a.zip.exe"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 Makefile", 3, "Makefile"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 ..", 3, ".."},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 my page.htm", 1, "page.htm"},
    {"-rw-r--r-- 1 u g 100 Jan 1 10:00 å ä.htm", 1, "ä.htm"},

    {"total 24", 3, "24", false, true},
    {"total", 3, "total", false, true},
    {"totally", 3, "totally", false, true},
    {"Total 24", 3, "24"},
    {"tota", 3, "tota"},
    {" total 24", 3, "24"},

    {"", 3, ""},
    {" ", 3, " "},
    {"a", 3, "a"},
    {"d", 2, "d", true},
    {"l", 2, "l", true},
    {".", 3, "."},
    {"htm", 3, "htm"},
    {".htm", 1, ".htm"},
    {"name.without.blank", 3, "name.without.blank"},
    {"a b ", 3, "b "},
    {"a b  ", 3, " "},
    {"ab ", 3, "ab "},
    {"a\tb", 3, "a\tb"},
};

class Listing : public testing::TestWithParam<RowOfListing> {};

TEST_P(Listing, LineMeans) {
    const RowOfListing& row = GetParam();
    const QString line = QString::fromUtf8(row.line);
    EXPECT_EQ(ListingIcon(line), row.icon);
    EXPECT_EQ(NameOfListingLine(line).toStdString(), row.name);
    EXPECT_EQ(IsDirectoryOrLink(line), row.directory);
    EXPECT_EQ(IsSummaryLine(line), row.summary);
}

INSTANTIATE_TEST_SUITE_P(Rules, Listing, testing::ValuesIn(kRows));

}  // namespace
}  // namespace ftp
