// Every reply of a whole session in turn, spoiled in every way.

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <set>

#include "tests/ftp/faults/stage.h"
#include "tests/support/certificates.h"
#include "tests/support/scripted_manners.h"

namespace ftp {
namespace {

using namespace ftp_test;
using namespace std::chrono_literals;

/// A reply in a session: what the user does, at which command of it, which of its replies.
struct Place {
    Work work;
    const char* command;
    int reply = 1;
};

const std::vector<Place> kPlaces = {
    {Work::Connect, "(connect)"}, {Work::Connect, "AUTH"}, {Work::Connect, "USER"}, {Work::Connect, "PASS"},
    {Work::Connect, "FEAT"},      {Work::Connect, "OPTS"}, {Work::Connect, "TYPE"}, {Work::List, "EPSV"},
    {Work::List, "LIST", 1},      {Work::List, "LIST", 2}, {Work::Enter, "CWD"},    {Work::Enter, "PWD"},
    {Work::Get, "SIZE"},          {Work::Get, "EPSV"},     {Work::Get, "RETR", 1},  {Work::Get, "RETR", 2},
    {Work::Put, "EPSV"},          {Work::Put, "STOR", 1},  {Work::Put, "STOR", 2},  {Work::Put, "SIZE"},
    {Work::Rename, "RNFR"},       {Work::Rename, "RNTO"},  {Work::Delete, "DELE"},  {Work::Make, "MKD"},
    {Work::Remove, "RMD"},        {Work::Leave, "CWD"},    {Work::Leave, "PWD"},    {Work::Quit, "QUIT"},
};

enum class Costs {
    Nothing,       // the user does not notice
    OneOperation,  // one operation fails at most
    MoreIfItLies,  // replies that are no truth: operations may fail as long as the session lasts
};

struct Fault {
    const char* name;
    Manner manner;
    Costs costs;
    Deadlines deadlines = kPatient;
};

const std::vector<Fault> kFaults = {
    {"Late", Late(30ms), Costs::Nothing},
    {"SplitAtEveryByte", ByteByByte(), Costs::Nothing},
    {"WithNul", Decorated({" \0.", 3}), Costs::Nothing},
    {"WithLoneCr", Decorated(" \r."), Costs::Nothing},
    {"WithEscapes", Decorated(" \x1b[2J\x1b]0;x\x07\x9b"), Costs::Nothing},
    {"WithDirectionMarks", Decorated(" \xE2\x80\xAEhtm.exe"), Costs::Nothing},
    {"WithThePassword", Decorated(" hemligt-ord"), Costs::Nothing},
    {"AfterAHundredLines", AfterLines(100), Costs::Nothing},
    {"Lost", Lost(), Costs::OneOperation, kImpatient},
    {"Unterminated", Unterminated(), Costs::OneOperation, kImpatient},
    {"TooLate", Late(400ms), Costs::OneOperation, kImpatient},
    {"Doubled", Doubled(), Costs::OneOperation, kImpatient},
    {"OneMegabyteLine", OfLength(1 << 20), Costs::OneOperation, kImpatient},
    {"OneMegabyteOfLines", AfterLines((1 << 20) / 62), Costs::OneOperation, kImpatient},
    {"Endless", Endless(), Costs::OneOperation, kImpatient},
    {"ClosedBefore", ClosedBefore(), Costs::OneOperation},
    {"ClosedAfter", ClosedAfter(), Costs::OneOperation},
    {"ResetBefore", ResetBefore(), Costs::OneOperation},
    {"ResetAfter", ResetAfter(), Costs::OneOperation},
    {"NoReplyAtAll", InPlaceOf("Hello there\r\n"), Costs::OneOperation, kImpatient},
    {"EmptyLine", InPlaceOf("\r\n"), Costs::OneOperation, kImpatient},
    {"CodeBeyondAll", InPlaceOf("999 Done.\r\n"), Costs::OneOperation, kImpatient},
    {"Code421", InPlaceOf("421 Closing.\r\n"), Costs::MoreIfItLies, kImpatient},
    {"Code450", InPlaceOf("450 Not now.\r\n"), Costs::MoreIfItLies, kImpatient},
    {"Code500", InPlaceOf("500 What?\r\n"), Costs::MoreIfItLies, kImpatient},
    {"Code550", InPlaceOf("550 No.\r\n"), Costs::MoreIfItLies, kImpatient},
    {"Code150", InPlaceOf("150 Wait.\r\n"), Costs::MoreIfItLies, kImpatient},
    {"Code200", InPlaceOf("200 Done.\r\n"), Costs::MoreIfItLies, kImpatient},
    {"Code350", InPlaceOf("350 Go on.\r\n"), Costs::MoreIfItLies, kImpatient},
};

using Case = std::tuple<const Fault*, const Place*>;

std::string NameOfCase(const testing::TestParamInfo<Case>& info) {
    const auto& [fault, place] = info.param;
    std::string command = place->command;
    std::erase_if(command, [](char c) { return c == '(' || c == ')'; });
    return std::string(fault->name) + "_at_" + command + std::to_string(place->reply) + "_of_" +
           NameOf(place->work);
}

template <class T>
std::vector<const T*> PointersTo(const std::vector<T>& all) {
    std::vector<const T*> pointers;
    for (const T& each : all) pointers.push_back(&each);
    return pointers;
}

class ReplyFault : public FaultStage, public testing::WithParamInterface<Case> {
 protected:
    const Fault& TheFault() const { return *std::get<0>(GetParam()); }
    const Place& ThePlace() const { return *std::get<1>(GetParam()); }
    /// A session in which it strikes once.
    void PlayOnce() {
        int failed = 0;
        const auto go = [&](Work work) {
            if (work == ThePlace().work) StrikeNext(ThePlace().command, Orders());
            failed += work == Work::Connect || work == Work::Quit ? !Do(work) : !DoInSession(work);
        };
        go(Work::Connect);
        const bool in_the_middle = ThePlace().work != Work::Connect && ThePlace().work != Work::Quit;
        if (in_the_middle) go(ThePlace().work);
        for (const Work work : {Work::List, Work::Get, Work::Enter, Work::Quit})
            if (work == Work::Quit || work != ThePlace().work) go(work);
        EXPECT_EQ(Struck(), 1);
        if (TheFault().costs == Costs::Nothing) {
            EXPECT_EQ(failed, 0);
        }
        if (TheFault().costs == Costs::OneOperation) {
            EXPECT_LE(failed, 1);
        }

        lies = false;
        EXPECT_TRUE(Do(Work::Connect)) << "all is well again" << Told();
        EXPECT_TRUE(Do(Work::Get)) << Told();
    }
    Script Orders() const { return {Replies(TheFault().manner, ThePlace().reply), Proper()}; }

    void SetUp() override {
        UseDeadlines(TheFault().deadlines);
        lies = TheFault().costs == Costs::MoreIfItLies;
    }
};

TEST_P(ReplyFault, Once) {
    PlayOnce();
}

/// A server that does it each time: nothing need succeed, but all that must hold does.
class LastingReplyFault : public ReplyFault {};

TEST_P(LastingReplyFault, EachTime) {
    if (ThePlace().work != Work::Connect) {
        EXPECT_TRUE(Do(Work::Connect));
    }
    StrikeEach(ThePlace().command, Orders());
    for (const Work work : {ThePlace().work, Work::Get, Work::Quit}) {
        if (!component->Connected() && work != Work::Connect) Do(Work::Connect);
        const bool succeeded = Do(work);
        EXPECT_TRUE(succeeded || TheFault().costs != Costs::Nothing) << Told();
    }
    EXPECT_GE(Struck(), 1);
    server.At(ThePlace().command, {Proper()});

    lies = false;
    EXPECT_TRUE(Do(Work::Connect)) << "all is well again" << Told();
    EXPECT_TRUE(Do(Work::Get)) << Told();
}

INSTANTIATE_TEST_SUITE_P(All, ReplyFault,
                         testing::Combine(testing::ValuesIn(PointersTo(kFaults)),
                                          testing::ValuesIn(PointersTo(kPlaces))),
                         NameOfCase);

std::vector<const Fault*> FaultsNamed(const std::set<std::string>& names) {
    std::vector<const Fault*> faults = PointersTo(kFaults);
    std::erase_if(faults, [&](const Fault* fault) { return !names.contains(fault->name); });
    return faults;
}

const std::set<std::string> kLasting{"SplitAtEveryByte", "WithEscapes",     "WithThePassword", "Lost",
                                     "Doubled",          "OneMegabyteLine", "ClosedBefore",    "ResetAfter",
                                     "NoReplyAtAll",     "Code421",         "Code450",         "Code550",
                                     "Code200"};

INSTANTIATE_TEST_SUITE_P(All, LastingReplyFault,
                         testing::Combine(testing::ValuesIn(FaultsNamed(kLasting)),
                                          testing::ValuesIn(PointersTo(kPlaces))),
                         NameOfCase);

/// The same in an encrypted session.
class EncryptedReplyFault : public ReplyFault {
 protected:
    void SetUp() override {
        static const CertificateFiles files = Certificates(ServerCertificate::Valid);
        TrustTestAuthority();
        server.PutTls(files.certificate, files.key);
        ReplyFault::SetUp();
    }
};

TEST_P(EncryptedReplyFault, Once) {
    PlayOnce();
}

std::vector<const Place*> EncryptedPlaces() {
    static const Place more[] = {{Work::Connect, "PBSZ"}, {Work::Connect, "PROT"}};
    std::vector<const Place*> places = PointersTo(kPlaces);
    for (const Place& place : more) places.push_back(&place);
    return places;
}

const std::set<std::string> kEncrypted{"SplitAtEveryByte", "Lost",       "Doubled", "OneMegabyteLine",
                                       "ClosedBefore",     "ResetAfter", "Code450", "Code550"};

INSTANTIATE_TEST_SUITE_P(All, EncryptedReplyFault,
                         testing::Combine(testing::ValuesIn(FaultsNamed(kEncrypted)),
                                          testing::ValuesIn(EncryptedPlaces())),
                         NameOfCase);

/// The places are those of a session as it is: what it sends stands in the table.
TEST_F(FaultStage, EveryCommandOfASessionHasItsFaults) {
    for (const Work work : {Work::Connect, Work::List, Work::Enter, Work::Get, Work::Put, Work::Rename,
                            Work::Delete, Work::Make, Work::Remove, Work::Leave, Work::Quit}) {
        const std::size_t before = server.Commands().size();
        EXPECT_TRUE(Do(work)) << Told();
        const std::vector<std::string> sent = server.Commands();
        for (std::size_t i = before; i < sent.size(); ++i) {
            const bool known = std::ranges::any_of(kPlaces, [&](const Place& place) {
                return place.work == work && sent[i].starts_with(place.command);
            });
            EXPECT_TRUE(known) << NameOf(work) << " sends " << sent[i];
        }
    }
}

}  // namespace
}  // namespace ftp
