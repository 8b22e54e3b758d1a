// Every sequence once whole, and once more going wrong in every way at every step.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "tests/ftp/engine/session/sequences.h"

namespace ftp_script {
namespace {

using ftp::FailureKind;
using namespace std::chrono_literals;

class SequenceTest : public testing::TestWithParam<Sequence> {
 protected:
    const Steps& TheSteps() const { return GetParam().steps; }
};

INSTANTIATE_TEST_SUITE_P(, SequenceTest, testing::ValuesIn(Sequences()), testing::PrintToStringParamName());

void ExpectWhole(const Sequence& sequence, Play play) {
    Setting setting(sequence);
    const auto outcome = setting.Run(std::move(play));
    Stage& stage = setting.TheStage();
    EXPECT_TRUE(outcome) << static_cast<int>(outcome.error().kind) << outcome.error().detail;
    EXPECT_EQ(stage.script.Surprise(), "");
    EXPECT_TRUE(stage.script.Completed());
    EXPECT_TRUE(stage.record.troubles.empty());
    setting.ExpectTidy(true);
    std::string rows;
    for (const std::string& line : stage.record.lines) rows += line + '|';
    if (sequence.name.starts_with("list")) {
        EXPECT_EQ(rows, sequence.got);
    }
    EXPECT_TRUE(stage.Open() || sequence.never_fails);
    stage.ExpectInStepOrClosed();
}

TEST_P(SequenceTest, GoesWell) {
    ExpectWhole(GetParam(), {});
}

TEST_P(SequenceTest, GoesWellByteForByte) {
    ExpectWhole(GetParam(), {.piece = 1});
}

/// Whether all that the server has left to say may be refused.
bool MayBeRefused(const Steps& steps, std::size_t from) {
    return std::all_of(steps.begin() + static_cast<std::ptrdiff_t>(from), steps.end(), [](const Step& step) {
        return step.kind == Step::Kind::Command || step.may_be_refused;
    });
}

/// Once the server has answered everything it cannot refuse, and who says goodbye does no more than close.
bool HasAnswered(const Steps& steps, std::size_t at) {
    return std::none_of(steps.begin() + static_cast<std::ptrdiff_t>(at), steps.end(),
                        [](const Step& step) { return step.kind == Step::Kind::Reply; });
}

bool MaySucceed(const Sequence& sequence, std::size_t at, Fault fault) {
    // The end of the data, when all else is done, is the same whoever else is closed.
    const bool ends_anyway = fault == Fault::Close && sequence.steps[at].kind == Step::Kind::Ends;
    const bool all_beside = std::all_of(sequence.steps.begin() + static_cast<std::ptrdiff_t>(at),
                                        sequence.steps.end(), std::mem_fn(&Step::beside));
    return sequence.never_fails || all_beside ||
           (fault == Fault::Refuse && MayBeRefused(sequence.steps, at)) ||
           (ends_anyway && at + 1 == sequence.steps.size());
}

bool IsSensible(const ftp::Failure& failure, Fault fault, const Step& step, bool tried_again) {
    // A server that has stalled and then refuses everything refuses the next try, too.
    if (fault == Fault::Stall && tried_again && failure.code == 500) return true;
    // A handshake that is broken off, and one that the second attempt at a login asks for in vain.
    const bool in_handshake = step.bytes.starts_with(kClientHello) || step.bytes.starts_with(kServerHello);
    if (failure.kind == FailureKind::TlsFailed) return in_handshake || fault == Fault::Refuse;
    if (in_handshake && failure.kind == FailureKind::ConnectionRefused) return true;
    if (step.kind == Step::Kind::Connects && failure.kind == FailureKind::ConnectionRefused) return true;
    switch (fault) {
        case Fault::Close:
        case Fault::Reset:
            return failure.kind == FailureKind::ConnectionLost || failure.kind == FailureKind::CutShort ||
                   failure.kind == FailureKind::ConnectionRefused;
        case Fault::Goodbye:
            if (step.beside) return failure.kind == FailureKind::ConnectionLost;  // nobody was asked then
            return failure.kind == FailureKind::Refused && failure.code == 421 && failure.detail == "Goodbye";
        case Fault::Refuse:
            if (failure.kind == FailureKind::NotEncrypted) return true;
            return failure.kind == FailureKind::Refused && failure.code == 500;
        case Fault::Silence:
            if (step.beside) return failure.kind == FailureKind::Cancelled;  // closed before it began
            return failure.kind == FailureKind::TimedOut;
        case Fault::Stall:
            return failure.kind == FailureKind::TimedOut;
        case Fault::None:
            break;
    }
    return false;
}

/// A handshake takes its time where the machine is busy, and more under the sanitizers.
bool Computes(const Sequence& sequence) {
    return std::ranges::any_of(sequence.steps,
                               [](const Step& step) { return step.bytes.starts_with(kClientHello); });
}

void PlayWithFault(const Sequence& sequence, std::size_t at, Fault fault) {
    if (HasAnswered(sequence.steps, at)) {
        if (fault == Fault::Refuse) return;
        if (fault == Fault::Goodbye) fault = Fault::Close;
    }
    SCOPED_TRACE(Name(fault) + " at step " + std::to_string(at) + " " + sequence.steps[at].bytes);
    Setting setting(sequence);
    Stage& stage = setting.TheStage();
    if (fault == Fault::Silence) stage.deadlines = Impatient(Computes(sequence) ? 50ms : 5ms);
    if (fault == Fault::Stall) stage.deadlines.connect = stage.deadlines.data = 5ms;

    const auto outcome = setting.Run({.fault_at = at, .fault = fault});
    if (outcome) {
        EXPECT_TRUE(MaySucceed(sequence, at, fault));
    } else {
        EXPECT_FALSE(sequence.never_fails);
        EXPECT_TRUE(IsSensible(outcome.error(), fault, sequence.steps[at], sequence.knows_way_back))
            << static_cast<int>(outcome.error().kind) << " " << outcome.error().code << " "
            << outcome.error().detail << testing::PrintToString(stage.record.trace);
    }
    setting.ExpectTidy(outcome.has_value());
    const bool must_end = fault == Fault::Silence || sequence.never_fails;
    const bool must_live =
        !must_end &&
        (fault == Fault::Stall || (fault == Fault::Refuse && !sequence.logs_in && sequence.name != "reopen"));
    EXPECT_FALSE(must_end && stage.Open());
    EXPECT_TRUE(stage.Open() || !must_live) << "lost a session that was in order";
    stage.ExpectInStepOrClosed();
}

class FaultTest : public SequenceTest {
 protected:
    void AtEveryStep(Fault fault) {
        for (std::size_t at = 0; at < TheSteps().size(); ++at) PlayWithFault(GetParam(), at, fault);
    }
};

INSTANTIATE_TEST_SUITE_P(, FaultTest, testing::ValuesIn(Sequences()), testing::PrintToStringParamName());

TEST_P(FaultTest, ServerCloses) {
    AtEveryStep(Fault::Close);
}
TEST_P(FaultTest, ServerCrashes) {
    AtEveryStep(Fault::Reset);
}
TEST_P(FaultTest, ServerSaysGoodbye) {
    AtEveryStep(Fault::Goodbye);
}
TEST_P(FaultTest, ServerRefuses) {
    AtEveryStep(Fault::Refuse);
}
TEST_P(FaultTest, ServerFallsSilent) {
    AtEveryStep(Fault::Silence);
}

TEST_P(FaultTest, DataStallsAndTheSessionSurvives) {
    for (std::size_t at = 0; at < TheSteps().size(); ++at) {
        const Step::Kind kind = TheSteps()[at].kind;
        // What the client has sent is under way, and then it is the reply that is missing.
        const bool up = kind == Step::Kind::Takes || kind == Step::Kind::TakesEnd ||
                        (kind == Step::Kind::Ends && GetParam().name.starts_with("store"));
        if (!TheSteps()[at].IsData() || up) continue;
        PlayWithFault(GetParam(), at, Fault::Stall);
    }
}

}  // namespace
}  // namespace ftp_script
