// Servers that do not like what is sent ahead: nothing is lost, and the session goes on one step at a time.

#include <gtest/gtest.h>

#include "ftp/engine/session/files.h"
#include "ftp/engine/session/retrieve.h"
#include "ftp/engine/session/store.h"
#include "tests/ftp/engine/session/stage.h"

namespace ftp_script {
namespace {

using ftp::FailureKind;
using namespace std::chrono_literals;

Steps operator+(Steps first, const Steps& then) {
    first.insert(first.end(), then.begin(), then.end());
    return first;
}

const Steps kBegin{Connects(),      Reply("220 Welcome"),         Command("TYPE I"), Reply("200 Image"),
                   Command("EPSV"), Reply("229 Here (|||5000|)"), DataConnects(5000)};
const Steps kAhead{Command("STOR f"), Command("EPSV")};
const Steps kTaken{Reply("150 Waiting"), Takes("12345"), TakesEnd()};
const Steps kAgain{Command("EPSV"), Reply("229 Here (|||5001|)"), DataConnects(5001), Command("STOR f")};
const Steps kDone{Reply("226 Done")};

class RunTest : public testing::Test {
 protected:
    void Play(const Steps& steps) {
        stage.emplace(steps);
        ASSERT_TRUE(stage->LogIn());
        stage->scratch.Write("source", "12345");
        stage->session.in_run = true;
        stage->session.features.size = false;  // what the server has kept is asked in tests of its own
    }
    ftp::Result<> Store() {
        return stage->Run(
            [](Stage& s) { return ftp::StoreFile(s.session, {}, s.scratch.Path("source"), "f"); });
    }
    void ExpectOneAtATime() {
        EXPECT_TRUE(stage->session.habits.one_at_a_time);
        EXPECT_EQ(stage->script.Surprise(), "");
        EXPECT_TRUE(stage->script.Completed());
        EXPECT_TRUE(stage->Open());
        stage->ExpectInStepOrClosed();
    }

    std::optional<Stage> stage;
};

TEST_F(RunTest, RefusedQuestionAheadIsAskedInItsTurn) {
    for (const char* refusal : {"500 What?", "450 Busy", "229 (nonsense)"}) {
        Play(kBegin + kAhead + kTaken + kDone + Steps{Reply(refusal)} + kAgain + kTaken + kDone);
        EXPECT_TRUE(Store());
        EXPECT_TRUE(Store());
        ExpectOneAtATime();
    }
}

TEST_F(RunTest, QuestionRefusedWhileTheFileRunsDoesNotHurtTheFile) {
    Play(kBegin + kAhead + Steps{Reply("150 Waiting"), Reply("503 Not now")} +
         Steps{Takes("12345"), TakesEnd()} + kDone + kAgain + kTaken + kDone);
    EXPECT_TRUE(Store());
    EXPECT_TRUE(Store());
    ExpectOneAtATime();
}

TEST_F(RunTest, RefusedFileIsTheFilesOwnFailureAndTheNextGoesOn) {
    Play(kBegin + kAhead + Steps{Reply("553 Not here"), Reply("229 Next (|||5002|)"), DataConnects(5002)} +
         kAhead + kTaken + kDone + Steps{Reply("229 Next (|||5003|)")});
    const auto refused = Store();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), (ftp::Failure{FailureKind::Refused, 553, "Not here"}));
    EXPECT_TRUE(Store());
    EXPECT_FALSE(stage->session.habits.one_at_a_time);
    EXPECT_TRUE(stage->script.Completed());
}

TEST_F(RunTest, ServerThatOvertakesIsSentTheFileAgainAndWaitedFor) {
    // It opens the port for the next file and forgets the one before.
    const Steps waited_for{Command("EPSV"),    Reply("229 Here (|||5001|)"),
                           Command("STOR f"),  Reply("150 Waiting"),
                           DataConnects(5001), Takes("12345"),
                           TakesEnd(),         Reply("226 Done")};
    Play(kBegin + kAhead +
         Steps{Reply("150 Waiting"), Reply("229 Next (|||5002|)"), Command("ABOR"), Reply("225 Nothing"),
               Command("NOOP"), Reply("200 Fine")} +
         waited_for + waited_for);
    EXPECT_TRUE(Store());
    EXPECT_TRUE(Store());
    ExpectOneAtATime();
}

TEST_F(RunTest, ServerThatWaitsForTheConnectionIsTakenForAnOvertakerOnceOnly) {
    // It has lost the first file, said nothing of that, and opened the port for the next one.
    const Steps once_more{Command("EPSV"),      Reply("229 Here (|||5001|)"),
                          Command("STOR f"),    DataConnects(5001),
                          Reply("150 Waiting"), Takes("12345"),
                          TakesEnd(),           Reply("226 Done")};
    Play(kBegin + kAhead +
         Steps{Reply("150 Waiting"), Reply("229 Next (|||5002|)"), Command("ABOR"), Reply("225 Nothing"),
               Command("NOOP"), Reply("200 Fine")} +
         once_more + kAgain + kTaken + kDone);
    stage->deadlines.ahead = 5ms;
    EXPECT_TRUE(Store());
    EXPECT_FALSE(stage->session.habits.overtakes);
    EXPECT_TRUE(Store());
    ExpectOneAtATime();
}

TEST_F(RunTest, PortThatWasGivenUpMeanwhileIsAskedForAgain) {
    Play(kBegin + kAhead + kTaken + kDone + Steps{Reply("229 Next (|||5002|)")} +
         Steps{DataConnects(5002), Command("STOR f"), Command("EPSV"), Reply("425 No connection"),
               Reply("229 Next (|||5003|)")} +
         kAgain + kTaken + kDone);
    EXPECT_TRUE(Store());
    EXPECT_TRUE(Store());
    ExpectOneAtATime();
}

TEST_F(RunTest, PortThatIsRefusedForNowIsNotRefusedForGood) {
    Play(Steps{Connects(), Reply("220 Welcome"), Command("TYPE I"), Reply("200 Image"), Command("EPSV"),
               Reply("425 Too many connections")} +
         kAgain + Steps{Command("EPSV")} + kTaken + kDone + Steps{Reply("229 Next (|||5002|)")});
    const auto refused = Store();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), (ftp::Failure{FailureKind::Refused, 425, "Too many connections"}));
    EXPECT_TRUE(Store());
    EXPECT_FALSE(stage->session.habits.refuses_epsv);
    EXPECT_TRUE(stage->script.Completed());
}

TEST_F(RunTest, SwallowedQuestionIsGivenUpInTime) {
    Play(kBegin + kAhead + kTaken + kDone + Steps{Command("NOOP"), Reply("200 Fine")} + kAgain + kTaken +
         kDone);
    stage->deadlines.ahead = 5ms;
    EXPECT_TRUE(Store());
    EXPECT_TRUE(Store());
    ExpectOneAtATime();
}

TEST_F(RunTest, LateAnswerIsNotTakenForAnother) {
    Play(kBegin + kAhead + kTaken + kDone +
         Steps{Command("NOOP"), Reply("229 Late (|||5002|)"), Reply("200 Fine")} + kAgain + kTaken + kDone);
    stage->deadlines.ahead = 5ms;
    EXPECT_TRUE(Store());
    EXPECT_TRUE(Store());
    ExpectOneAtATime();
}

TEST_F(RunTest, DownloadThatFailedForWhatWasAheadLeavesNoLitter) {
    Play(kBegin +
         Steps{Command("RETR f"), Command("EPSV"), Reply("150 Coming"), Sends("12"), Ends(),
               Reply("426 Lost it"), Reply("229 Next (|||5002|)")} +
         Steps{Command("EPSV"), Reply("229 Here (|||5001|)"), DataConnects(5001), Command("RETR f"),
               Reply("150 Coming"), Sends("12345"), Ends()} +
         kDone);
    EXPECT_TRUE(
        stage->Run([](Stage& s) { return ftp::RetrieveFile(s.session, {}, "f", s.scratch.Path("target")); }));
    EXPECT_EQ(stage->scratch.Read("target"), "12345");
    EXPECT_EQ(stage->scratch.Names(), (std::vector<std::string>{"source", "target"}));
    ExpectOneAtATime();
}

TEST_F(RunTest, RefusedStepsAreToldWhenTheyHaveLeft) {
    Play({Connects(), Reply("220 Welcome"), Command("MKD a"), Command("CWD a"), Command("PWD"),
          Reply("550 It is there"), Reply("250 In"), Reply("257 \"/a\"")});
    const auto walk = [](Stage& s) -> ftp::Task<> {
        const std::string name = "a";
        const auto made = co_await ftp::MakeDirectoryNamed(s.session, name);
        if (!made) co_return made;
        co_return co_await ftp::ChangeDirectoryTo(s.session, name);
    };
    EXPECT_TRUE(stage->Run(walk));
    EXPECT_EQ(stage->record.trace, std::vector<std::string>{"< 220 Welcome"});
    EXPECT_TRUE(stage->Run([](Stage& s) -> ftp::Task<> {
        const auto directory = co_await ftp::CurrentDirectory(s.session);
        if (!directory) co_return ftp::Fail(directory.error());
        EXPECT_EQ(*directory, "/a");
        co_return ftp::Result<>{};
    }));
    EXPECT_EQ(stage->record.troubles,
              (std::vector<ftp::Failure>{{FailureKind::Refused, 550, "It is there"}}));
}

TEST_F(RunTest, NoMoreStepsArePutOffThanOnePacketHolds) {
    Steps steps{Connects(), Reply("220 Welcome")};
    for (int i = 0; i < 16; ++i) steps.push_back(Command("CWD .."));
    steps.push_back(Command("PWD"));
    for (int i = 0; i < 16; ++i) steps.push_back(Reply("250 Up"));
    steps.push_back(Reply("257 \"/\""));
    Play(steps);
    for (int i = 0; i < 17; ++i)
        EXPECT_TRUE(stage->Run([](Stage& s) { return ftp::ChangeToParentDirectory(s.session); }));
    EXPECT_TRUE(stage->script.Completed());
    EXPECT_EQ(stage->session.put_off.size(), 1U);
}

}  // namespace
}  // namespace ftp_script
