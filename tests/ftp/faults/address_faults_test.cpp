// Foreign and absurd addresses in the replies that name a port.

#include <gtest/gtest.h>

#include "tests/ftp/faults/stage.h"

namespace ftp {
namespace {

using namespace ftp_test;

struct Fault {
    const char* name;
    std::string reply;  // to EPSV with 229, else to PASV; %p and %P stand for a port that is served
    bool usable;        // it leads to the server all the same
};

const std::vector<Fault> kFaults = {
    {"PasvForeign", "227 Entering passive mode (10,9,8,7,%P)", true},
    {"PasvNowhere", "227 Entering passive mode (0,0,0,0,%P)", true},
    {"PasvBroadcast", "227 Entering passive mode (255,255,255,255,%P)", true},
    {"PasvMulticast", "227 Entering passive mode (224,0,0,1,%P)", true},
    {"PasvPortZero", "227 Entering passive mode (127,0,0,1,0,0)", false},
    {"PasvNumbersTooLarge", "227 Entering passive mode (127,0,0,1,256,1)", false},
    {"PasvNumbersHuge", "227 Entering passive mode (127,0,0,1,99999999999999999999,1)", false},
    {"PasvNumbersNegative", "227 Entering passive mode (127,0,0,1,-1,-1)", false},
    {"PasvNumbersMissing", "227 Entering passive mode (127,0,0,1)", false},
    {"PasvNumbersTooMany", "227 Entering passive mode (1,2,3,4,5,6,7,8,9)", false},
    {"PasvNoNumbers", "227 Entering passive mode", false},
    {"PasvLongList", "227 (" + std::string(10'000, '1') + "," + std::string(5'000, ',') + ")", false},
    {"PasvIpv6", "227 Entering passive mode (::1,%P)", false},
    {"EpsvForeign", "229 Entering extended passive mode (|1|10.9.8.7|%p|)", true},
    {"EpsvForeignIpv6", "229 Entering extended passive mode (|2|2001:db8::7|%p|)", true},
    {"EpsvOtherDelimiter", "229 Entering extended passive mode (!!!%p!)", true},
    {"EpsvPortZero", "229 Entering extended passive mode (|||0|)", false},
    {"EpsvPortTooLarge", "229 Entering extended passive mode (|||65536|)", false},
    {"EpsvPortHuge", "229 Entering extended passive mode (|||99999999999999999999|)", false},
    {"EpsvPortNegative", "229 Entering extended passive mode (|||-1|)", false},
    {"EpsvPortEmpty", "229 Entering extended passive mode (||||)", false},
    {"EpsvNoNumber", "229 Entering extended passive mode (|||%s%n|)", false},
    {"EpsvUnclosed", "229 Entering extended passive mode (|||4000", false},
    {"EpsvDigitsForDelimiters", "229 Entering extended passive mode (111400001)", false},
    {"EpsvNoAddress", "229 Entering extended passive mode", false},
    {"EpsvManyBrackets", "229 " + std::string(15'000, '('), false},
};

class AddressFault : public FaultStage, public testing::WithParamInterface<Fault> {
 protected:
    explicit AddressFault(const std::string& address = "127.0.0.1") : FaultStage(address) {}

    bool IsEpsv() const { return GetParam().reply.starts_with("229"); }

    /// Everything that has a data connection, and what follows it.
    void ExpectTransfers() {
        EXPECT_TRUE(Do(Work::Connect)) << Told();
        for (const Work work : {Work::Get, Work::List, Work::Put, Work::Enter, Work::Quit})
            EXPECT_TRUE(Do(work)) << Told();
        EXPECT_GE(Struck(), 1);
    }
    int CountOf(const std::string& prefix) const {
        int count = 0;
        for (const std::string& command : server.Commands()) count += command.starts_with(prefix);
        return count;
    }
};

/// Where the address leads to nobody but this server it is used, else another way is found: nobody else is
/// ever connected to, and the transfers come about.
TEST_P(AddressFault, LeadsNowhereElse) {
    if (!IsEpsv()) server.At("EPSV", {Say("500 What?")});
    StrikeEach(IsEpsv() ? "EPSV" : "PASV", {ListenData(), Say(GetParam().reply)});
    ExpectTransfers();
    const std::string next_way = IsEpsv() ? "PASV" : "EPRT";
    EXPECT_EQ(CountOf(next_way) == 0, GetParam().usable);
}

INSTANTIATE_TEST_SUITE_P(All, AddressFault, testing::ValuesIn(kFaults),
                         [](const auto& fault) { return std::string(fault.param.name); });

class AddressFaultOnIpv6 : public AddressFault {
 protected:
    AddressFaultOnIpv6() : AddressFault("::1") {}
};

TEST_P(AddressFaultOnIpv6, LeadsNowhereElse) {
    if (!IsEpsv()) server.At("EPSV", {Say("500 What?")});
    StrikeEach(IsEpsv() ? "EPSV" : "PASV", {ListenData(), Say(GetParam().reply)});
    ExpectTransfers();
}

INSTANTIATE_TEST_SUITE_P(All, AddressFaultOnIpv6, testing::ValuesIn(kFaults),
                         [](const auto& fault) { return std::string(fault.param.name); });

/// The port of the session itself: what stands there is no file.
TEST_F(FaultStage, AddressOfTheControlPort) {
    UseDeadlines(kImpatient);
    EXPECT_TRUE(Do(Work::Connect));
    StrikeEach("EPSV", {ListenData(), Say("229 (|||" + std::to_string(server.Port()) + "|)")});
    StrikeEach("RETR", {Say("150 Opening."), Stall()});
    EXPECT_FALSE(Do(Work::Get)) << Told();
    EXPECT_GE(Struck(), 2);
    server.At("EPSV", {Proper()});
    server.At("RETR", {Proper()});
    EXPECT_TRUE(DoInSession(Work::Get)) << Told();
}

}  // namespace
}  // namespace ftp
