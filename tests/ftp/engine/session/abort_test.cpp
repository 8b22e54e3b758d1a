// Somebody aborts the transfer, or drops the session, at every step of every sequence.

#include <gtest/gtest.h>

#include <algorithm>
#include <asio/post.hpp>
#include <functional>
#include <stdexcept>

#include "tests/ftp/engine/session/sequences.h"

namespace ftp_script {
namespace {

using ftp::FailureKind;
using Replies = std::vector<std::string>;

/// What is called at the step; the server stands still from there, or goes on with its script meanwhile.
struct Call {
    void (ftp::Session::*call)();
    bool stops;
    Replies abort_replies;
};

void PlayWithCall(const Sequence& sequence, std::size_t at, const Call& what) {
    SCOPED_TRACE("at step " + std::to_string(at) + " " + sequence.steps[at].bytes);
    Setting setting(sequence);
    Stage& stage = setting.TheStage();
    const bool drops = what.call == &ftp::Session::Drop;
    Play play;
    play.call_at = at;
    play.call = [&stage, what] { (stage.session.*what.call)(); };
    play.stops_at_call = what.stops;
    play.abort_replies = what.abort_replies;

    const auto outcome = setting.Run(std::move(play));
    // A server that goes on may be done before the call is heard; and between two transfers there is nothing
    // to abort.
    const bool between = !drops && (sequence.steps[at].beside || sequence.steps[at].over);
    EXPECT_TRUE(between || (outcome ? !what.stops || sequence.never_fails
                                    : outcome.error().kind == FailureKind::Cancelled))
        << testing::PrintToString(stage.record.trace);
    setting.ExpectTidy(outcome.has_value());
    EXPECT_EQ(stage.Open(), !drops) << testing::PrintToString(stage.record.trace);
    stage.session.dropped = false;
    stage.ExpectInStepOrClosed();
}

class AbortTest : public testing::TestWithParam<Sequence> {
 protected:
    void AtEveryStep(const Call& call) {
        for (std::size_t at = 0; at < GetParam().steps.size(); ++at) PlayWithCall(GetParam(), at, call);
    }
    void AbortAtEveryStep(const Replies& replies) {
        for (const bool stops : {true, false}) AtEveryStep({&ftp::Session::AbortTransfer, stops, replies});
    }
};

class DropTest : public AbortTest {};

/// Nothing else can be aborted.
std::vector<Sequence> Transfers() {
    std::vector<Sequence> transfers = Sequences();
    std::erase_if(transfers, [](const Sequence& sequence) {
        return std::none_of(sequence.steps.begin(), sequence.steps.end(), std::mem_fn(&Step::IsData));
    });
    return transfers;
}

INSTANTIATE_TEST_SUITE_P(, AbortTest, testing::ValuesIn(Transfers()), testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(, DropTest, testing::ValuesIn(Sequences()), testing::PrintToStringParamName());

TEST_P(AbortTest, AnsweredWithTwoReplies) {
    AbortAtEveryStep({"426 Aborted", "226 Done"});
}
TEST_P(AbortTest, AnsweredWithTwoRepliesInTheOtherOrder) {
    AbortAtEveryStep({"225 Aborting", "426 Aborted"});
}
TEST_P(AbortTest, AnsweredWithOneReply) {
    AbortAtEveryStep({"226 Aborted"});
}
TEST_P(AbortTest, NotUnderstood) {
    AbortAtEveryStep({"426 Broken pipe", "500 ABOR?"});
}
TEST_P(AbortTest, TransferWasDone) {
    AbortAtEveryStep({"226 Done", "225 Nothing to abort"});
}

TEST_P(DropTest, AtEveryStep) {
    for (const bool stops : {true, false}) AtEveryStep({&ftp::Session::Drop, stops, {"226 Done"}});
}

const Sequence& Named(const std::string& name) {
    for (const Sequence& sequence : Sequences())
        if (sequence.name == name) return sequence;
    throw std::out_of_range(name);
}

TEST(AbortTwice, ChangesNothing) {
    const Sequence& retrieve = Named("retrieve");
    for (std::size_t at = 0; at < retrieve.steps.size(); ++at) {
        Setting setting(retrieve);
        Stage& stage = setting.TheStage();
        Play play;
        play.call_at = at;
        play.stops_at_call = true;
        play.call = [&stage] {
            stage.session.AbortTransfer();
            asio::post(stage.context, [&stage] { stage.session.AbortTransfer(); });
        };
        const auto outcome = setting.Run(std::move(play));
        EXPECT_EQ(outcome ? FailureKind::Protocol : outcome.error().kind, FailureKind::Cancelled);
        EXPECT_TRUE(stage.Open());
        stage.ExpectInStepOrClosed();
    }
}

TEST(AbortUnanswered, EndsTheSessionInTime) {
    Setting setting(Named("retrieve"));
    Stage& stage = setting.TheStage();
    stage.deadlines.abort = std::chrono::milliseconds(5);
    Play play;
    play.call_at = 9;  // in the middle of the data
    play.stops_at_call = true;
    play.abort_replies = {};
    play.call = [&stage] { stage.session.AbortTransfer(); };
    const auto outcome = setting.Run(std::move(play));
    EXPECT_EQ(outcome ? FailureKind::Protocol : outcome.error().kind, FailureKind::Cancelled);
    setting.ExpectTidy(false);
    EXPECT_FALSE(stage.Open());
}

}  // namespace
}  // namespace ftp_script
