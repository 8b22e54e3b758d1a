#include "forms/main/selection_rules.h"

#include <gtest/gtest.h>

#include <ostream>

namespace forms {

void PrintTo(const ServerButtons& buttons, std::ostream* out) {
    for (const Change change :
         {buttons.Command2, buttons.Command10, buttons.Command11, buttons.Command12, buttons.Command13})
        *out << (change == Change::Leave ? '=' : change == Change::Enable ? '+' : '-');
}

namespace {

struct Row {
    const char* line;
    const char* name;
    const char* file;
    const char* dir;
};

TEST(ServerRow, IsADirectoryALinkOrAFile) {
    const Row table[] = {
        {"-rw-r--r-- 1 u g 3 Jan 1 10:00 a.txt", "a.txt", "a.txt", ""},
        {"drwxr-xr-x 2 u g 512 Jan 1 10:00 pub", "pub", "", "pub"},
        {"Drwxr-xr-x 2 u g 512 Jan 1 10:00 pub", "pub", "", "pub"},
        {"lrwxrwxrwx 1 u g 7 Jan 1 10:00 www -> htdocs", "htdocs", "", "htdocs"},
        {"Lrwxrwxrwx 1 u g 7 Jan 1 10:00 www -> htdocs", "htdocs", "", "htdocs"},
        {"Total 24", "24", "24", ""},
        {"", "", "", ""},
    };
    for (const Row& row : table) {
        const ServerRow meant = ClassifyServerRow(row.line, row.name);
        EXPECT_EQ(meant.file, row.file) << row.line;
        EXPECT_EQ(meant.dir, row.dir) << row.line;
    }
}

constexpr Change kOn = Change::Enable;
constexpr Change kOff = Change::Disable;
constexpr Change kAsIs = Change::Leave;

struct Selection {
    const char* what;
    ServerRow row;
    int selected;
    bool busy;
    ServerButtons buttons;
};

TEST(ServerButtons, FollowTheSelection) {
    const ServerRow file{"a.txt", {}}, dir{{}, "pub"}, nothing;
    //                            "Ta hem" "Döp om" "Kör"  "Visa" "Ta bort"
    const Selection table[] = {
        {"one file", file, 1, false, {kOn, kOn, kOn, kOn, kOn}},
        {"one file, busy", file, 1, true, {kOn, kOn, kOn, kOn, kOn}},
        {"one directory", dir, 1, false, {kOff, kOff, kOff, kOff, kOn}},
        {"one directory, busy", dir, 1, true, {kOff, kOff, kOff, kOff, kOn}},
        {"files", file, 2, false, {kOn, kOff, kOff, kOff, kOn}},
        {"many files", file, 100'000, false, {kOn, kOff, kOff, kOff, kOn}},
        {"files, busy", file, 2, true, {kOn, kOff, kOff, kOff, kOn}},
        {"several, a directory last", dir, 2, false, {kOff, kOff, kOff, kOff, kOff}},
        {"several, a directory last, busy", dir, 3, true, {kOff, kOff, kOff, kOff, kOff}},
        {"a file row, not selected", file, 0, false, {kOn, kAsIs, kAsIs, kAsIs, kAsIs}},
        {"a directory row, not selected", dir, 0, false, {kOff, kOff, kOff, kOff, kOn}},
        {"an empty row", nothing, 1, false, {kOn, kAsIs, kAsIs, kAsIs, kAsIs}},
        {"an empty row, busy", nothing, 1, true, {kOff, kAsIs, kAsIs, kAsIs, kAsIs}},
        {"no row", nothing, 0, false, {kOn, kAsIs, kAsIs, kAsIs, kAsIs}},
        {"several, an empty row last", nothing, 2, false, {kOn, kOff, kOff, kOff, kOn}},
        {"several, an empty row last, busy", nothing, 2, true, {kOff, kOff, kOff, kOff, kOn}},
    };
    for (const Selection& s : table)
        EXPECT_EQ(ButtonsForSelection(s.row, s.selected, s.busy), s.buttons) << s.what;
}

}  // namespace
}  // namespace forms
