// Data connections that do not come about, do not move, break or are not what the replies say.

#include <gtest/gtest.h>

#include "tests/ftp/faults/stage.h"
#include "tests/support/scripted_manners.h"

namespace ftp {
namespace {

using namespace ftp_test;

enum class Must { Succeed, Fail, DoEither };

struct Fault {
    const char* name;
    Work work;
    const char* command;
    Script script;
    Must must;  // where it strikes each time
    Deadlines deadlines = kPatient;
};

const std::string kOpening = "150 Opening.", kDone = "226 Done.";
constexpr std::size_t kPiece = 1000;  // less than each of the files

/// What breaks a download or a listing.
Script Sending(std::vector<Step> steps) {
    steps.insert(steps.begin(), Say(kOpening));
    return steps;
}

const std::vector<Fault> kFaults = {
    // Downloads
    {"GetFromAPortWhereNobodyListens",
     Work::Get,
     "EPSV",
     {RefuseData(), Say("229 (|||%p|)")},
     Must::Fail,
     kImpatient},
    {"GetNeverAccepted", Work::Get, "EPSV", {BlockData(), Say("229 (|||%p|)")}, Must::Fail, kImpatient},
    {"GetAcceptedAndSilent", Work::Get, "RETR", Sending({OpenData(), Stall()}), Must::Fail, kImpatient},
    {"GetStalling", Work::Get, "RETR", Sending({SendFile(kPiece), Stall()}), Must::Fail, kImpatient},
    {"GetCutShortWith226", Work::Get, "RETR", Sending({SendFile(kPiece), CloseData(), Say(kDone)}),
     Must::DoEither},
    {"GetResetWith226", Work::Get, "RETR", Sending({SendFile(kPiece), ResetData(), Say(kDone)}),
     Must::DoEither},
    {"GetNothingWith226", Work::Get, "RETR", Sending({OpenData(), CloseData(), Say(kDone)}), Must::Fail},
    {"Get226BeforeTheEnd", Work::Get, "RETR",
     Sending({SendFile(kPiece), Say(kDone), SendFile(), CloseData()}), Must::Succeed},
    {"Get226BeforeTheBytes",
     Work::Get,
     "RETR",
     {Say(kDone), SendFile(), CloseData()},
     Must::DoEither,
     kImpatient},
    {"Get226BeforeTheEndAndCut", Work::Get, "RETR", Sending({SendFile(kPiece), Say(kDone), CloseData()}),
     Must::DoEither},
    {"Get426", Work::Get, "RETR", Sending({SendFile(kPiece), CloseData(), Say("426 Broken.")}),
     Must::DoEither},
    {"Get451", Work::Get, "RETR", Sending({SendFile(kPiece), CloseData(), Say("451 Disk.")}), Must::DoEither},
    {"Get552", Work::Get, "RETR", Sending({SendFile(kPiece), CloseData(), Say("552 Full.")}), Must::DoEither},
    {"Get426WithReset", Work::Get, "RETR", Sending({SendFile(kPiece), ResetData(), Say("426 Broken.")}),
     Must::DoEither},
    {"Get426AfterAllBytes", Work::Get, "RETR", Sending({SendFile(), CloseData(), Say("426 Broken.")}),
     Must::DoEither},
    {"Get425", Work::Get, "RETR", {Say("425 No data connection.")}, Must::Fail},
    {"Get150Only", Work::Get, "RETR", Sending({SendFile(), CloseData(), Stall()}), Must::Fail, kImpatient},
    {"GetNeverClosed", Work::Get, "RETR", Sending({SendFile(), Say(kDone), Stall()}), Must::DoEither,
     kImpatient},
    {"GetSessionClosed", Work::Get, "RETR", Sending({SendFile(kPiece), Close()}), Must::DoEither},
    {"GetSessionReset", Work::Get, "RETR", Sending({SendFile(kPiece), ftp_test::Reset()}), Must::DoEither},
    {"GetSizeTooSmall", Work::Get, "SIZE", {Say("213 10")}, Must::DoEither},
    {"GetSizeTooLarge", Work::Get, "SIZE", {Say("213 3001")}, Must::Fail},
    {"GetSizeAbsurd", Work::Get, "SIZE", {Say("213 99999999999999999999999")}, Must::Succeed},
    {"GetSizeNegative", Work::Get, "SIZE", {Say("213 -1")}, Must::Succeed},
    {"GetSizeNoNumber", Work::Get, "SIZE", {Say("213 many")}, Must::Succeed},
    // Listings
    {"ListFromAPortWhereNobodyListens",
     Work::List,
     "EPSV",
     {RefuseData(), Say("229 (|||%p|)")},
     Must::Fail,
     kImpatient},
    {"ListNeverAccepted", Work::List, "EPSV", {BlockData(), Say("229 (|||%p|)")}, Must::Fail, kImpatient},
    {"ListAcceptedAndSilent", Work::List, "LIST", Sending({OpenData(), Stall()}), Must::Fail, kImpatient},
    {"ListStalling", Work::List, "LIST", Sending({SendData("-rw-r--r-- 1 a"), Stall()}), Must::Fail,
     kImpatient},
    {"ListReset", Work::List, "LIST", Sending({SendData("-rw-r--r-- 1 a"), ResetData(), Say("426 Broken.")}),
     Must::Fail},
    {"List451", Work::List, "LIST", Sending({SendData("-rw-r--r-- 1 a"), CloseData(), Say("451 Disk.")}),
     Must::Fail},
    {"List150Only", Work::List, "LIST", Sending({OpenData(), CloseData(), Stall()}), Must::Fail, kImpatient},
    {"ListSessionReset", Work::List, "LIST", Sending({SendData("-rw"), ftp_test::Reset()}), Must::DoEither},
    // Uploads
    {"PutToAPortWhereNobodyListens",
     Work::Put,
     "EPSV",
     {RefuseData(), Say("229 (|||%p|)")},
     Must::Fail,
     kImpatient},
    {"PutNeverAccepted", Work::Put, "EPSV", {BlockData(), Say("229 (|||%p|)")}, Must::Fail, kImpatient},
    {"PutNeverRead", Work::Put, "STOR", Sending({OpenData(), Stall()}), Must::Fail, kImpatient},
    {"PutStalling", Work::Put, "STOR", Sending({KeepData(kPiece), Stall()}), Must::DoEither, kImpatient},
    {"PutCutShortWith226", Work::Put, "STOR", Sending({KeepData(kPiece), CloseData(), Say(kDone)}),
     Must::DoEither},
    {"PutResetWith226", Work::Put, "STOR", Sending({KeepData(kPiece), ResetData(), Say(kDone)}),
     Must::DoEither},
    {"Put226BeforeTheEnd", Work::Put, "STOR",
     Sending({KeepData(kPiece), Say(kDone), KeepData(), CloseData()}), Must::DoEither},
    {"Put426", Work::Put, "STOR", Sending({KeepData(kPiece), CloseData(), Say("426 Broken.")}),
     Must::DoEither},
    {"Put451", Work::Put, "STOR", Sending({KeepData(kPiece), CloseData(), Say("451 Disk.")}), Must::DoEither},
    {"Put552", Work::Put, "STOR", Sending({KeepData(kPiece), CloseData(), Say("552 Full.")}), Must::Fail},
    {"Put552AtOnce", Work::Put, "STOR", {Say("552 Full.")}, Must::Fail},
    {"Put552AfterAllBytes", Work::Put, "STOR", Sending({KeepData(), CloseData(), Say("552 Full.")}),
     Must::Fail},
    {"Put150Only", Work::Put, "STOR", Sending({KeepData(), CloseData(), Stall()}), Must::DoEither,
     kImpatient},
    {"PutSessionClosed", Work::Put, "STOR", Sending({KeepData(kPiece), Close()}), Must::DoEither},
    {"PutSessionReset", Work::Put, "STOR", Sending({KeepData(kPiece), ftp_test::Reset()}), Must::DoEither},
};

class DataFault : public FaultStage, public testing::WithParamInterface<Fault> {
 protected:
    void SetUp() override {
        UseDeadlines(GetParam().deadlines);
        if (GetParam().work == Work::Put) source = Pattern(8'000'000);  // more than the kernel takes in
        EXPECT_TRUE(Do(Work::Connect)) << Told();
    }

    void ExpectInOrder() {
        for (const Work work : {Work::Enter, Work::List, Work::Get, Work::Put})
            EXPECT_TRUE(DoInSession(work)) << NameOf(work) << "\n" << Told();
        EXPECT_TRUE(Do(Work::Quit));
    }
};

/// It strikes once: a user may not notice it, since what is broken off is gone on with.
TEST_P(DataFault, Once) {
    StrikeNext(GetParam().command, GetParam().script);
    const bool succeeded = Do(GetParam().work);
    EXPECT_EQ(Struck(), 1);
    EXPECT_TRUE(succeeded || GetParam().must != Must::Succeed) << Told();
    ExpectInOrder();
}

TEST_P(DataFault, EachTime) {
    StrikeEach(GetParam().command, GetParam().script);
    const bool succeeded = Do(GetParam().work);
    EXPECT_GE(Struck(), 1);
    if (GetParam().must != Must::DoEither) {
        EXPECT_EQ(succeeded, GetParam().must == Must::Succeed) << Told();
    }
    server.At(GetParam().command, {Proper()});
    ExpectInOrder();
}

INSTANTIATE_TEST_SUITE_P(All, DataFault, testing::ValuesIn(kFaults),
                         [](const auto& fault) { return std::string(fault.param.name); });

// --- going on with what was broken off ---

struct Continuation {
    const char* name;
    Work work;
    const char* command;
    Script script;
};

const std::vector<Continuation> kContinuations = {
    {"GetRestRefused", Work::Get, "REST", {Say("502 No.")}},
    {"GetRestIgnored", Work::Get, "REST", {Say("350 From there.")}},
    {"GetRestTakenForDone", Work::Get, "REST", {Say("200 Done.")}},
    {"GetRestAndAway", Work::Get, "REST", {Close()}},
    {"GetSizeRefused", Work::Get, "SIZE", {Say("550 No.")}},
    {"PutAppendRefused", Work::Put, "APPE", {Say("502 No.")}},
    {"PutAppendAndAway", Work::Put, "APPE", {ftp_test::Reset()}},
    {"PutRestRefused", Work::Put, "REST", {Say("502 No.")}},
    {"PutSizeRefused", Work::Put, "SIZE", {Say("550 No.")}},
    {"PutSizeTooSmall", Work::Put, "SIZE", {Say("213 10")}},
    {"PutSizeTooLarge", Work::Put, "SIZE", {Say("213 99999999999")}},
};

/// A transfer breaks once, and what is needed to go on with it is not what it should be.
class ContinuationFault : public FaultStage, public testing::WithParamInterface<Continuation> {};

TEST_P(ContinuationFault, DamagesNothing) {
    server.At("FEAT", {Raw("211-Features:\r\n UTF8\r\n EPSV\r\n SIZE\r\n REST STREAM\r\n211 End\r\n")});
    if (GetParam().work == Work::Put) source = Pattern(8'000'000);
    EXPECT_TRUE(Do(Work::Connect)) << Told();
    StrikeNext("RETR", Sending({SendFile(kPiece), ResetData(), Say("426 Broken.")}));
    StrikeNext("STOR", Sending({KeepData(kPiece), ResetData(), Say("426 Broken.")}));
    server.At(GetParam().command, GetParam().script);
    Do(GetParam().work);
    EXPECT_GE(Struck(), 1);
    for (const char* command : {"RETR", "STOR", GetParam().command}) server.At(command, {Proper()});
    for (const Work work : {Work::Enter, Work::List, Work::Get, Work::Put})
        EXPECT_TRUE(DoInSession(work)) << NameOf(work) << "\n" << Told();
}

INSTANTIATE_TEST_SUITE_P(All, ContinuationFault, testing::ValuesIn(kContinuations),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace ftp
