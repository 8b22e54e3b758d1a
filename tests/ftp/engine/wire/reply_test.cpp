#include "ftp/engine/wire/reply.h"

#include <gtest/gtest.h>

namespace ftp {
namespace {

using namespace std::string_literals;

/// What a parser made of a stream: the replies, and whether it failed.
struct Outcome {
    std::vector<Reply> replies;
    bool failed = false;
    bool in_the_middle = false;
};

void TakeAll(ReplyParser& parser, std::vector<Reply>& replies) {
    while (auto reply = parser.Take()) replies.push_back(std::move(*reply));
}

Outcome Parse(const std::vector<std::string_view>& pieces) {
    ReplyParser parser;
    Outcome outcome;
    for (const std::string_view piece : pieces) {
        outcome.failed = !parser.Feed(piece).has_value();
        TakeAll(parser, outcome.replies);
    }
    outcome.in_the_middle = parser.InTheMiddle();
    return outcome;
}

void ExpectSame(const Outcome& left, const Outcome& right) {
    EXPECT_EQ(left.failed, right.failed);
    ASSERT_EQ(left.replies.size(), right.replies.size());
    for (std::size_t i = 0; i < left.replies.size(); ++i) {
        EXPECT_EQ(left.replies[i].code, right.replies[i].code);
        EXPECT_EQ(left.replies[i].lines, right.replies[i].lines);
    }
}

struct Expected {
    int code;
    std::vector<std::string> lines;
    std::string text;
};

struct StreamRow {
    std::string name;
    std::string bytes;
    std::vector<Expected> replies;
    bool in_the_middle = false;
};

const StreamRow kStreams[] = {
    {"Single", "220 Welcome\r\n", {{220, {"220 Welcome"}, "Welcome"}}},
    {"CodeAlone", "200\r\n", {{200, {"200"}, ""}}},
    {"CodeAndBlank", "200 \r\n", {{200, {"200 "}, ""}}},
    {"NoSeparator", "150Opening\r\n", {{150, {"150Opening"}, "Opening"}}},
    {"TabAfterCode", "200\tok\r\n", {{200, {"200\tok"}, "\tok"}}},
    {"TwoReplies", "226 Done\r\n550 No\r\n", {{226, {"226 Done"}, "Done"}, {550, {"550 No"}, "No"}}},
    {"ManyLines", "230-Hello\r\nany text\r\n230 In\r\n", {{230, {"230-Hello", "any text", "230 In"}, "In"}}},
    {"CodeWithinAnIndentedLine",
     "211-Features:\r\n 211 not the end\r\n211 End\r\n",
     {{211, {"211-Features:", " 211 not the end", "211 End"}, "End"}}},
    {"OtherCodesWithin",
     "230-Hello\r\n220 inside\r\n550 inside\r\n230-more\r\n230 In\r\n",
     {{230, {"230-Hello", "220 inside", "550 inside", "230-more", "230 In"}, "In"}}},
    {"LooksNested",
     "211-a\r\n212-b\r\n212 c\r\n211 d\r\n",
     {{211, {"211-a", "212-b", "212 c", "211 d"}, "d"}}},
    {"LongerNumberWithin",
     "230-a\r\n2300 bytes used\r\n230 b\r\n",
     {{230, {"230-a", "2300 bytes used", "230 b"}, "b"}}},
    {"NoSeparatorWithin", "230-a\r\n230b\r\n230 c\r\n", {{230, {"230-a", "230b", "230 c"}, "c"}}},
    {"EmptyLinesWithin", "230-a\r\n\r\n\n230 b\r\n", {{230, {"230-a", "", "", "230 b"}, "b"}}},
    {"EndTrimmedToItsCode", "230-a\r\n230\r\n", {{230, {"230-a", "230"}, ""}}},
    {"BareLineFeeds", "230-a\nb\n230 c\n", {{230, {"230-a", "b", "230 c"}, "c"}}},
    {"CarriageReturnAlone", "200 a\rb\r\n", {{200, {"200 a\rb"}, "a\rb"}}},
    {"OneCarriageReturnIsDropped", "200 a\r\r\n", {{200, {"200 a\r"}, "a\r"}}},
    {"Nul", "200 a\0b\r\n"s, {{200, {"200 a\0b"s}, "a\0b"s}}},
    {"Escape", "200 \x1B[31mred\r\n", {{200, {"200 \x1B[31mred"}, "\x1B[31mred"}}},
    {"HighBytes", "200 \xE5\xFF\r\n", {{200, {"200 \xE5\xFF"}, "\xE5\xFF"}}},
    {"LowestAndHighestCode", "100 a\r\n599 b\r\n", {{100, {"100 a"}, "a"}, {599, {"599 b"}, "b"}}},
    {"Unfinished", "220 Welc", {}, true},
    {"UnfinishedLines", "220-Welcome\r\n", {}, true},
    {"Nothing", "", {}, false},
};

class Streams : public testing::TestWithParam<StreamRow> {};

TEST_P(Streams, AreCutIntoReplies) {
    const StreamRow& row = GetParam();
    const Outcome outcome = Parse({row.bytes});
    EXPECT_FALSE(outcome.failed);
    EXPECT_EQ(outcome.in_the_middle, row.in_the_middle);
    ASSERT_EQ(outcome.replies.size(), row.replies.size());
    for (std::size_t i = 0; i < row.replies.size(); ++i) {
        EXPECT_EQ(outcome.replies[i].code, row.replies[i].code);
        EXPECT_EQ(outcome.replies[i].lines, row.replies[i].lines);
        EXPECT_EQ(outcome.replies[i].Text(), row.replies[i].text);
    }
}

TEST_P(Streams, AreReadAlikeWhereverTheyAreSplit) {
    const std::string_view bytes = GetParam().bytes;
    const Outcome whole = Parse({bytes});
    for (std::size_t at = 0; at <= bytes.size(); ++at) {
        SCOPED_TRACE(at);
        ExpectSame(Parse({bytes.substr(0, at), bytes.substr(at)}), whole);
    }
    std::vector<std::string_view> single;
    for (std::size_t at = 0; at < bytes.size(); ++at) single.push_back(bytes.substr(at, 1));
    ExpectSame(Parse(single), whole);
}

INSTANTIATE_TEST_SUITE_P(ReplyParser, Streams, testing::ValuesIn(kStreams),
                         [](const auto& row) { return row.param.name; });

TEST(ReplyParser, RefusesAFirstLineWithoutACode) {
    for (const std::string line : {"", "000 a", "099 a", "600 a", "999 a", "abc", "22", "2", "22a b",
                                   "2200 a", " 220 a", "-20 a", "SSH-2.0-x", "\xFF\xFB\x01", "<html>"}) {
        SCOPED_TRACE(line);
        ReplyParser parser;
        const auto fed = parser.Feed(line + "\r\n");
        ASSERT_FALSE(fed);
        EXPECT_EQ(fed.error(), (Failure{FailureKind::Protocol, 0, line}));
        EXPECT_FALSE(parser.Take());
    }
}

TEST(ReplyParser, StaysFailedAndStillGivesWhatWasCompleteBefore) {
    ReplyParser parser;
    EXPECT_FALSE(parser.Feed("220 a\r\nrubbish\r\n230 b\r\n"));
    EXPECT_FALSE(parser.Feed("230 c\r\n"));
    ASSERT_TRUE(parser.Take());
    EXPECT_FALSE(parser.Take());
}

TEST(ReplyParser, ShowsOnlyTheBeginningOfALongLineWithoutACode) {
    ReplyParser parser;
    const auto fed = parser.Feed(std::string(1000, 'x') + "\r\n");
    ASSERT_FALSE(fed);
    EXPECT_EQ(fed.error().detail, std::string(200, 'x'));
}

TEST(ReplyParser, TakesALineOfExactlyTheBound) {
    const std::string line = "200 " + std::string(ReplyParser::kMaxLine - 4, 'x');
    for (const char* end : {"\n", "\r\n"}) {
        const std::string bytes = line + end;
        const Outcome whole = Parse({bytes});
        ASSERT_EQ(whole.replies.size(), 1u);
        EXPECT_EQ(whole.replies[0].lines[0], line);
        for (std::size_t at = bytes.size() - 3; at < bytes.size(); ++at)
            ExpectSame(Parse({std::string_view(bytes).substr(0, at), std::string_view(bytes).substr(at)}),
                       whole);
    }
}

TEST(ReplyParser, RefusesALineOverTheBoundWhetherItEndsOrNot) {
    const std::string line = "200 " + std::string(ReplyParser::kMaxLine - 3, 'x');
    for (const char* end : {"", "\n", "\r\n", "\r"}) {
        const std::string bytes = line + end;
        EXPECT_TRUE(Parse({bytes}).failed);
        for (std::size_t at = bytes.size() - 2; at < bytes.size(); ++at)
            EXPECT_TRUE(
                Parse({std::string_view(bytes).substr(0, at), std::string_view(bytes).substr(at)}).failed);
    }
}

TEST(ReplyParser, BoundsTheLinesOfAReply) {
    std::string bytes = "230-a\n";
    for (std::size_t i = 2; i < ReplyParser::kMaxLines; ++i) bytes += "b\n";
    const Outcome exactly = Parse({bytes + "230 c\n"});
    ASSERT_EQ(exactly.replies.size(), 1u);
    EXPECT_EQ(exactly.replies[0].lines.size(), ReplyParser::kMaxLines);
    EXPECT_TRUE(Parse({bytes + "b\n230 c\n"}).failed);
}

TEST(ReplyParser, BoundsTheBytesOfAReply) {
    const std::string line(ReplyParser::kMaxLine, 'x');
    std::string bytes = "230-" + line.substr(4) + "\n";
    for (std::size_t size = 2 * line.size(); size < ReplyParser::kMaxReply; size += line.size())
        bytes += line + "\n";
    const std::string last = "230 " + line.substr(4);
    EXPECT_FALSE(Parse({bytes + last + "\n"}).failed);
    EXPECT_EQ(Parse({bytes + "\n" + last + "\n"}).replies.size(), 1u);  // an empty line weighs nothing
    EXPECT_TRUE(Parse({bytes + "x\n" + last + "\n"}).failed);
}

TEST(ReplyParser, BoundsEachReplyByItself) {
    const std::string bytes = "200 " + std::string(ReplyParser::kMaxLine - 4, 'x') + "\r\n";
    ReplyParser parser;
    for (std::size_t i = 0; i < 2 * ReplyParser::kMaxReply / ReplyParser::kMaxLine; ++i) {
        ASSERT_TRUE(parser.Feed(bytes));
        EXPECT_TRUE(parser.Take());
    }
}

TEST(Reply, KnowsItsClass) {
    struct Row {
        int code;
        bool preliminary, completed, intermediate, refused;
    };
    for (const Row& row : {Row{150, true, false, false, false}, Row{226, false, true, false, false},
                           Row{331, false, false, true, false}, Row{425, false, false, false, true},
                           Row{550, false, false, false, true}}) {
        SCOPED_TRACE(row.code);
        const Reply reply{row.code, {std::to_string(row.code)}};
        EXPECT_EQ(reply.Preliminary(), row.preliminary);
        EXPECT_EQ(reply.Completed(), row.completed);
        EXPECT_EQ(reply.Intermediate(), row.intermediate);
        EXPECT_EQ(reply.Refused(), row.refused);
    }
}

TEST(Reply, BecomesAFailureWithTheServersWords) {
    EXPECT_EQ(RefusalOf({550, {"550 x: Access denied"}}),
              (Failure{FailureKind::Refused, 550, "x: Access denied"}));
    EXPECT_EQ(RefusalOf({530, {"530-Sorry,", "530 Login incorrect."}}),
              (Failure{FailureKind::Refused, 530, "Login incorrect."}));
}

}  // namespace
}  // namespace ftp
