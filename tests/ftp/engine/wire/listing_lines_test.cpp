#include "ftp/engine/wire/listing_lines.h"

#include <gtest/gtest.h>

namespace ftp {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

struct Outcome {
    Lines lines;
    std::size_t dropped = 0;
    bool operator==(const Outcome&) const = default;
};

Outcome Cut(const std::vector<std::string_view>& pieces) {
    ListingLines cutter;
    Outcome outcome;
    for (const std::string_view piece : pieces) cutter.Feed(piece, outcome.lines);
    cutter.Finish(outcome.lines);
    outcome.dropped = cutter.Dropped();
    return outcome;
}

TEST(ListingLines, AreCutAlikeWhereverTheBytesAreSplit) {
    const std::pair<std::string, Lines> rows[] = {
        {"", {}},
        {"a\r\nb\r\n", {"a", "b"}},
        {"a\nb\n", {"a", "b"}},
        {"a\r\nb", {"a", "b"}},
        {"a\r\nb\r", {"a", "b"}},
        {"a\r\n\r\n\n\r\nb\r\n", {"a", "b"}},
        {"\r\n", {}},
        {"\r", {}},
        {"a\r\r\n", {"a\r"}},
        {"a\rb\n", {"a\rb"}},
        {" a \n", {" a "}},
        {"a\0b\n"s, {"a\0b"s}},
        {"-rw-r--r-- 1 u g 100 Jan 1 10:00 b\xE5t.gif\r\ntotal 24\r\n",
         {"-rw-r--r-- 1 u g 100 Jan 1 10:00 b\xE5t.gif", "total 24"}},
    };
    for (const auto& [bytes, lines] : rows) {
        SCOPED_TRACE(bytes);
        const std::string_view all = bytes;
        for (std::size_t at = 0; at <= all.size(); ++at)
            EXPECT_EQ(Cut({all.substr(0, at), all.substr(at)}), (Outcome{lines, 0}));
    }
}

TEST(ListingLines, KeepsALineOfExactlyTheBound) {
    const std::string line(ListingLines::kMaxLine, 'x');
    EXPECT_EQ(Cut({line + "\r\n"}), (Outcome{{line}, 0}));
    EXPECT_EQ(Cut({line, "\r", "\n"}), (Outcome{{line}, 0}));
    EXPECT_EQ(Cut({line + "\n"}), (Outcome{{line}, 0}));
    EXPECT_EQ(Cut({line}), (Outcome{{line}, 0}));
}

TEST(ListingLines, DropsALineOverTheBoundAndKeepsTheOthers) {
    const std::string line(ListingLines::kMaxLine + 1, 'x');
    for (const char* end : {"\n", "\r\n"}) {
        const std::string bytes = "a\n" + line + end + "b\n";
        const std::string_view all = bytes;
        EXPECT_EQ(Cut({all}), (Outcome{{"a", "b"}, 1}));
        for (const std::size_t at : {line.size() + 1, line.size() + 2, line.size() + 3})
            EXPECT_EQ(Cut({all.substr(0, at), all.substr(at)}), (Outcome{{"a", "b"}, 1}));
    }
    EXPECT_EQ(Cut({line}), (Outcome{{}, 1}));
    EXPECT_EQ(Cut({line, line, line, "\n", line, "\nb"}), (Outcome{{"b"}, 2}));
}

TEST(ListingLines, AppendsToWhatIsThere) {
    ListingLines cutter;
    Lines lines{"before"};
    cutter.Feed("a\nb", lines);
    EXPECT_EQ(lines, (Lines{"before", "a"}));
    cutter.Finish(lines);
    cutter.Finish(lines);
    EXPECT_EQ(lines, (Lines{"before", "a", "b"}));
}

}  // namespace
}  // namespace ftp
