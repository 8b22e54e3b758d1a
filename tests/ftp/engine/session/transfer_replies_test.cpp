// Which reply is whose, in every order that servers answer in.

#include "ftp/engine/session/transfer_replies.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <vector>

namespace ftp {
namespace {

struct Row {
    std::string name;
    std::string asked;       // besides the transfer: C sizes of files before, S its own, P the port behind it
    std::vector<int> codes;  // as they arrive
    int size, final, port;   // whose is which; 0: none
    std::string state;       // overtaken, unclear, due (the port is)
};
std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.name;
}

int CodeOf(const std::optional<Reply>& reply) {
    return reply ? reply->code : 0;
}

class TransferRepliesTest : public testing::TestWithParam<Row> {};

const std::vector<Row> kRows{
    {"alone", "", {150, 226}, 0, 226, 0, ""},
    {"alone_refused", "", {550}, 0, 550, 0, ""},
    {"alone_and_too_much", "", {150, 226, 226}, 0, 226, 0, ""},
    {"in_order", "P", {150, 226, 229}, 0, 226, 229, ""},
    {"passive", "P", {150, 226, 227}, 0, 226, 227, ""},
    {"port_to_come", "P", {150, 250}, 0, 250, 0, "due"},
    {"refused_at_once", "P", {553, 229}, 0, 553, 229, ""},
    {"refused_later", "P", {150, 552, 229}, 0, 552, 229, ""},
    {"refused_both", "P", {553, 500}, 0, 553, 500, ""},
    {"port_refused", "P", {150, 226, 502}, 0, 226, 502, ""},
    {"port_refused_first", "P", {150, 503, 226}, 0, 226, 503, ""},
    {"port_refused_before_150", "P", {503, 150, 226}, 0, 226, 503, ""},
    {"one_refusal_so_far", "P", {150, 503}, 0, 0, 0, "unclear, due"},
    {"overtaken", "P", {150, 229}, 0, 0, 229, "overtaken"},
    {"overtaken_then_done", "P", {150, 229, 226}, 0, 226, 229, "overtaken"},
    {"broken_off_in_two_words", "P", {150, 426, 226, 229}, 0, 426, 229, ""},
    {"broken_off_in_two_refusals", "P", {150, 451, 500}, 0, 451, 500, ""},
    {"end_said_twice", "P", {150, 226, 226}, 0, 226, 0, "due"},
    {"goodbye", "P", {150, 421}, 0, 421, 0, ""},
    {"goodbye_after_refusal", "P", {503, 421}, 0, 503, 0, ""},
    {"goodbye_after_the_end", "P", {150, 226, 421}, 0, 226, 0, ""},
    {"size_first", "SP", {213, 150, 226, 229}, 213, 226, 229, ""},
    {"size_refused", "SP", {550, 550, 229}, 550, 550, 229, ""},
    {"checks_first", "CCSP", {550, 213, 213, 150, 226, 229}, 213, 226, 229, ""},
    {"goodbye_to_a_check", "CP", {421}, 0, 421, 0, ""},
};

INSTANTIATE_TEST_SUITE_P(, TransferRepliesTest, testing::ValuesIn(kRows), testing::PrintToStringParamName());

TEST_P(TransferRepliesTest, AreMatched) {
    const Row& row = GetParam();
    TransferReplies replies;
    replies.Expect(static_cast<std::size_t>(std::ranges::count(row.asked, 'C')),
                   row.asked.find('S') != std::string::npos, row.asked.ends_with('P'));
    for (const int code : row.codes) replies.Take({code, {std::to_string(code) + " words"}});
    EXPECT_EQ(CodeOf(replies.Size()), row.size);
    EXPECT_EQ(CodeOf(replies.Final()), row.final);
    EXPECT_EQ(CodeOf(replies.Port()), row.port);
    const auto says = [&row](const char* word) { return row.state.find(word) != std::string::npos; };
    EXPECT_EQ(replies.Overtaken(), says("overtaken"));
    EXPECT_EQ(replies.Unclear(), says("unclear"));
    EXPECT_EQ(replies.PortDue(), says("due"));
}

TEST(TransferReplies, RefusalThatNothingFollowsWasTheTransfers) {
    TransferReplies replies;
    replies.Expect(0, false, true);
    replies.Take({503, {"503 words"}});
    replies.Close();
    EXPECT_EQ(CodeOf(replies.Final()), 503);
    EXPECT_FALSE(replies.Unclear());
    EXPECT_TRUE(replies.PortDue());
}

TEST(TransferReplies, AboutFilesBeforeKeepTheirOrder) {
    TransferReplies replies;
    replies.Expect(2, true, false);
    for (const int code : {550, 213, 500}) replies.Take({code, {std::to_string(code) + " words"}});
    ASSERT_EQ(replies.Checks().size(), 2U);
    EXPECT_EQ(replies.Checks()[0].code, 550);
    EXPECT_EQ(replies.Checks()[1].code, 213);
    EXPECT_EQ(CodeOf(replies.Size()), 500);
    EXPECT_FALSE(replies.Final());
}

TEST(TransferReplies, BeginWithThePreliminaryOne) {
    TransferReplies replies;
    replies.Expect(0, true, false);
    replies.Take({213, {"213 10"}});
    EXPECT_FALSE(replies.Begun());
    replies.Take({150, {"150 words"}});
    EXPECT_TRUE(replies.Begun());
}

}  // namespace
}  // namespace ftp
