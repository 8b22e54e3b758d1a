// The user aborts, and the server answers in every order, or not at all; and what would never end by itself.

#include <gtest/gtest.h>

#include <QMetaObject>

#include "tests/ftp/faults/stage.h"

namespace ftp {
namespace {

using namespace ftp_test;

struct Answer {
    const char* name;
    Script script;
    Deadlines deadlines = kPatient;
};

const std::vector<Answer> kAnswers = {
    {"426Then226", {Proper()}},
    {"426Then226Apart",
     {CloseData(), Say("426 Aborted."), Pause(std::chrono::milliseconds(20)), Say("226 Done.")}},
    {"226Then426", {CloseData(), Say("226 Done."), Say("426 Aborted.")}},
    {"226Then226", {CloseData(), Say("226 Done."), Say("226 Aborted.")}},
    {"426Then225", {CloseData(), Say("426 Aborted."), Say("225 No transfer.")}},
    {"426Only", {CloseData(), Say("426 Aborted.")}},
    {"226Only", {CloseData(), Say("226 Done.")}},
    {"225Only", {CloseData(), Say("225 No transfer.")}},
    {"451Then226", {CloseData(), Say("451 Broken."), Say("226 Done.")}},
    {"500", {CloseData(), Say("500 What?")}},
    {"502", {CloseData(), Say("502 Not here.")}},
    {"502Then426", {CloseData(), Say("502 Not here."), Say("426 Broken.")}},
    {"421", {Say("421 Leaving."), Close()}},
    {"NotAtAll", {Stall()}, kImpatient},
    {"NotAtAllButOpen", {CloseData()}, kImpatient},
    {"WithGarbage", {CloseData(), Raw("\x01\x02 what\r\n")}, kImpatient},
    {"WithoutEnd", {CloseData(), Raw("426 Abo"), Stall()}, kImpatient},
    {"WithAnEndlessReply", {CloseData(), SayForever("426-x")}, kImpatient},
    {"Closed", {Close()}},
    {"Reset", {ftp_test::Reset()}},
};

using Case = std::tuple<const Answer*, Work>;

class AbortFault : public FaultStage, public testing::WithParamInterface<Case> {
 protected:
    const Answer& TheAnswer() const { return *std::get<0>(GetParam()); }
    Work TheWork() const { return std::get<1>(GetParam()); }

    /// The user's click on the button, when the server has come so far.
    Step UserAborts() {
        return [this](ScriptedSession&) {
            QMetaObject::invokeMethod(component.get(), &Component::AbortTransfer, Qt::QueuedConnection);
            return Next::Go;
        };
    }
    void ExpectAborted(Work work) {
        EXPECT_FALSE(Do(work)) << Told();
        EXPECT_EQ(OnlyError(), 10004) << Told();
        EXPECT_GE(Struck(), 1);
    }
    void ExpectInOrder() {
        for (const Work work : {Work::Enter, Work::List, Work::Get, Work::Put})
            EXPECT_TRUE(DoInSession(work)) << Told();
        EXPECT_TRUE(Do(Work::Quit));
    }
};

TEST_P(AbortFault, LeavesNothingBehind) {
    UseDeadlines(TheAnswer().deadlines);
    if (TheWork() == Work::Put) source = Pattern(8'000'000);
    EXPECT_TRUE(Do(Work::Connect)) << Told();
    server.AtNext("RETR", {Say("150 Opening."), SendFile(1000), UserAborts(), Stall()});
    server.AtNext("LIST", {Say("150 Opening."), SendData("-rw 1 a"), UserAborts(), Stall()});
    server.AtNext("STOR", {Say("150 Opening."), KeepData(1000), UserAborts(), Stall()});
    StrikeNext("ABOR", TheAnswer().script);
    ExpectAborted(TheWork());
    for (const char* command : {"RETR", "LIST", "STOR", "ABOR"}) server.At(command, {Proper()});
    ExpectInOrder();
}

std::vector<const Answer*> Answers() {
    std::vector<const Answer*> all;
    for (const Answer& answer : kAnswers) all.push_back(&answer);
    return all;
}

INSTANTIATE_TEST_SUITE_P(All, AbortFault,
                         testing::Combine(testing::ValuesIn(Answers()),
                                          testing::Values(Work::Get, Work::List, Work::Put)),
                         [](const auto& each) {
                             return std::string("Answered") + std::get<0>(each.param)->name + "_in_" +
                                    NameOf(std::get<1>(each.param));
                         });

/// The transfer is over on the server's side when the user aborts.
class LateAbort : public AbortFault {};

TEST_P(LateAbort, MeetsTheEndOfTheTransfer) {
    UseDeadlines(TheAnswer().deadlines);
    EXPECT_TRUE(Do(Work::Connect)) << Told();
    server.AtNext("RETR", {Say("150 Opening."), SendFile(), UserAborts(), CloseData(), Say("226 Done.")});
    Do(Work::Get);
    server.At("RETR", {Proper()});
    ExpectInOrder();
}

INSTANTIATE_TEST_SUITE_P(All, LateAbort,
                         testing::Combine(testing::Values(&kAnswers.front()), testing::Values(Work::Get)),
                         [](const auto&) { return "Get"; });

class EndlessFault : public AbortFault {
 protected:
    static constexpr int kPieces = 100;

    /// Data without end, until the user has had enough of it.
    Script WithoutEnd(const std::string& line) {
        std::string piece;
        while (piece.size() < 50'000) piece += line;
        Script script{Say("150 Opening.")};
        for (int i = 0; i < kPieces; ++i) script.push_back(SendData(piece));
        script.push_back(UserAborts());
        script.push_back(SendDataForever(piece));
        return script;
    }
    void ExpectEnded(Work work, const char* command, const std::string& line) {
        EXPECT_TRUE(Do(Work::Connect)) << Told();
        StrikeNext(command, WithoutEnd(line));
        EXPECT_FALSE(Do(work));
        EXPECT_EQ(errors.back().first, 10004);
        EXPECT_EQ(Struck(), 1);
        ExpectInOrder();
    }
};

TEST_F(EndlessFault, ListingOfLines) {
    ExpectEnded(Work::List, "LIST", "-rw-r--r-- 1 a a 1 Jan 01 00:00 x\r\n");
}
TEST_F(EndlessFault, ListingOfOneLine) {
    ExpectEnded(Work::List, "LIST", "x");
    EXPECT_TRUE(listing.filter(QStringLiteral("xxxx")).isEmpty());
}
TEST_F(EndlessFault, ListingOfEmptyLines) {
    ExpectEnded(Work::List, "LIST", "\r\n");
}
TEST_F(EndlessFault, Download) {
    ExpectEnded(Work::Get, "RETR", "x");
}

}  // namespace
}  // namespace ftp
