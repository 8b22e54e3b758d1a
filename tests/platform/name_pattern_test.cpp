#include <gtest/gtest.h>

#include "platform/folder.h"

namespace platform {
namespace {

TEST(NamePattern, MatchesAsTheFileListDoes) {
    struct Row {
        QString name, patterns;
        bool matches;
    };
    const Row rows[] = {
        {"index.htm", "*.*", true},
        {"README", "*.*", true},
        {"README", "", true},
        {"README", " ; ;", true},
        {"README", "*", true},
        {"", "*", true},
        {"", "?", false},
        {"index.htm", "*.htm*", true},
        {"index.html", "*.htm*", true},
        {"INDEX.HTML", "*.htm*", true},
        {"index.html", "*.HTM*", true},
        {"index.xhtml", "*.htm*", false},
        {"a.htm.bak", "*.htm", false},
        {"setup.exe", "*.exe", true},
        {"exe", "*.exe", false},
        {"läs mig.txt", "*.htm*;*.txt", true},
        {"läs mig.txt", "*.htm* ; *.txt ", true},
        {"arkiv.zip", "*.htm*;*.txt", false},
        {"arkiv.zip", ";*.txt", false},
        {"arkiv.zip", "*.txt;*.*", true},
        {"bild1.gif", "bild?.gif", true},
        {"bild12.gif", "bild?.gif", false},
        {"bild.gif", "bild?.gif", false},
        {"ÅÄÖ.TXT", "åäö.t?t", true},
        {"🐟.txt", "?.txt", true},
        {"aaaaab", "*a*a*b", true},
        {"aaaaa", "*a*a*b", false},
        {"abcabd", "*ab?", true},
        {"a[1].txt", "a[1].txt", true},
        {"a1.txt", "a[1].txt", false},
        {"a+b.txt", "a+b.*", true},
        {"a.b", "a?b*", true},
        {"fil;a", "*;a", true},
        {"b", "a", false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(MatchesPattern(row.name, row.patterns), row.matches)
            << row.name.toStdString() << " against " << row.patterns.toStdString();
    }
}

TEST(NamePattern, ManyStarsDoNotExplode) {
    EXPECT_FALSE(MatchesPattern(QString(5000, u'a'), QStringLiteral("*a").repeated(100) + "b"));
}

}  // namespace
}  // namespace platform
