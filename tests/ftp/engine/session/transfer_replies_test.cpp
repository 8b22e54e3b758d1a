// Which reply is whose, in every order that servers answer in.

#include "ftp/engine/session/transfer_replies.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace ftp {
namespace {

struct Row {
    std::string name;
    bool size, port;         // what left besides the transfer command
    std::vector<int> codes;  // as they arrive
    int size_code = 0;       // 0: none
    int final_code = 0;
    int port_code = 0;
    bool overtaken = false;
    bool unclear = false;
    bool port_due = false;
};
std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.name;
}

int CodeOf(const std::optional<Reply>& reply) {
    return reply ? reply->code : 0;
}

class TransferRepliesTest : public testing::TestWithParam<Row> {};

const std::vector<Row> kRows{
    {.name = "alone", .size = false, .port = false, .codes = {150, 226}, .final_code = 226},
    {.name = "alone_refused", .size = false, .port = false, .codes = {550}, .final_code = 550},
    {.name = "alone_and_too_much", .size = false, .port = false, .codes = {150, 226, 226}, .final_code = 226},
    {.name = "in_order",
     .size = false,
     .port = true,
     .codes = {150, 226, 229},
     .final_code = 226,
     .port_code = 229},
    {.name = "passive",
     .size = false,
     .port = true,
     .codes = {150, 226, 227},
     .final_code = 226,
     .port_code = 227},
    {.name = "port_to_come",
     .size = false,
     .port = true,
     .codes = {150, 250},
     .final_code = 250,
     .port_due = true},
    {.name = "refused_at_once",
     .size = false,
     .port = true,
     .codes = {553, 229},
     .final_code = 553,
     .port_code = 229},
    {.name = "refused_later",
     .size = false,
     .port = true,
     .codes = {150, 552, 229},
     .final_code = 552,
     .port_code = 229},
    {.name = "refused_both",
     .size = false,
     .port = true,
     .codes = {553, 500},
     .final_code = 553,
     .port_code = 500},
    {.name = "port_refused",
     .size = false,
     .port = true,
     .codes = {150, 226, 502},
     .final_code = 226,
     .port_code = 502},
    {.name = "port_refused_first",
     .size = false,
     .port = true,
     .codes = {150, 503, 226},
     .final_code = 226,
     .port_code = 503},
    {.name = "port_refused_before_150",
     .size = false,
     .port = true,
     .codes = {503, 150, 226},
     .final_code = 226,
     .port_code = 503},
    {.name = "one_refusal_so_far",
     .size = false,
     .port = true,
     .codes = {150, 503},
     .unclear = true,
     .port_due = true},
    {.name = "overtaken",
     .size = false,
     .port = true,
     .codes = {150, 229},
     .port_code = 229,
     .overtaken = true},
    {.name = "overtaken_then_done",
     .size = false,
     .port = true,
     .codes = {150, 229, 226},
     .final_code = 226,
     .port_code = 229,
     .overtaken = true},
    {.name = "broken_off_in_two_words",
     .size = false,
     .port = true,
     .codes = {150, 426, 226, 229},
     .final_code = 426,
     .port_code = 229},
    {.name = "broken_off_in_two_refusals",
     .size = false,
     .port = true,
     .codes = {150, 451, 500},
     .final_code = 451,
     .port_code = 500},
    {.name = "end_said_twice",
     .size = false,
     .port = true,
     .codes = {150, 226, 226},
     .final_code = 226,
     .port_due = true},
    {.name = "goodbye", .size = false, .port = true, .codes = {150, 421}, .final_code = 421},
    {.name = "goodbye_after_refusal", .size = false, .port = true, .codes = {503, 421}, .final_code = 503},
    {.name = "goodbye_after_the_end",
     .size = false,
     .port = true,
     .codes = {150, 226, 421},
     .final_code = 226},
    {.name = "size_first",
     .size = true,
     .port = true,
     .codes = {213, 150, 226, 229},
     .size_code = 213,
     .final_code = 226,
     .port_code = 229},
    {.name = "size_refused",
     .size = true,
     .port = true,
     .codes = {550, 550, 229},
     .size_code = 550,
     .final_code = 550,
     .port_code = 229},
};

INSTANTIATE_TEST_SUITE_P(, TransferRepliesTest, testing::ValuesIn(kRows), testing::PrintToStringParamName());

TEST_P(TransferRepliesTest, AreMatched) {
    const Row& row = GetParam();
    TransferReplies replies;
    replies.Expect(row.size, row.port);
    for (const int code : row.codes) replies.Take({code, {std::to_string(code) + " words"}});
    EXPECT_EQ(CodeOf(replies.Size()), row.size_code);
    EXPECT_EQ(CodeOf(replies.Final()), row.final_code);
    EXPECT_EQ(CodeOf(replies.Port()), row.port_code);
    EXPECT_EQ(replies.Overtaken(), row.overtaken);
    EXPECT_EQ(replies.Unclear(), row.unclear);
    EXPECT_EQ(replies.PortDue(), row.port_due);
}

TEST(TransferReplies, RefusalThatNothingFollowsWasTheTransfers) {
    TransferReplies replies;
    replies.Expect(false, true);
    replies.Take({503, {"503 words"}});
    replies.Close();
    EXPECT_EQ(CodeOf(replies.Final()), 503);
    EXPECT_FALSE(replies.Unclear());
    EXPECT_TRUE(replies.PortDue());
}

TEST(TransferReplies, BeginWithThePreliminaryOne) {
    TransferReplies replies;
    replies.Expect(true, false);
    replies.Take({213, {"213 10"}});
    EXPECT_FALSE(replies.Begun());
    replies.Take({150, {"150 words"}});
    EXPECT_TRUE(replies.Begun());
}

}  // namespace
}  // namespace ftp
