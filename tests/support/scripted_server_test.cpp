#include "tests/support/scripted_server.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <system_error>

#include "tests/support/line_client.h"
#include "tests/support/scripted_manners.h"
#include "tests/support/socket.h"

namespace ftp_test {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

/// The number between the last two bars, as in "229 ... (|||40001|)".
std::uint16_t EpsvPort(const std::string& reply) {
    const std::size_t at = reply.find("|||");
    return at == std::string::npos ? std::uint16_t{0}
                                   : static_cast<std::uint16_t>(std::stoi(reply.substr(at + 3)));
}

class Scripted : public testing::Test {
 protected:
    Scripted() { server.AddFile("a.txt", "hej"); }

    ScriptedServer server;
};

TEST_F(Scripted, BehavesWellWhenLeftAlone) {
    LineClient client("127.0.0.1", server.Port());
    EXPECT_EQ(client.Reply(), "220 Ready.\n");
    EXPECT_EQ(client.Ask("USER demo").substr(0, 3), "331");
    EXPECT_EQ(client.Ask("PASS demo").substr(0, 3), "230");
    EXPECT_EQ(client.Ask("FEAT"), "211-Features:\n UTF8\n EPSV\n SIZE\n211 End\n");
    EXPECT_EQ(client.Ask("SIZE a.txt"), "213 3\n");
    EXPECT_EQ(client.Ask("XYZ").substr(0, 3), "502");
    EXPECT_EQ(client.Ask("QUIT").substr(0, 3), "221");
    EXPECT_EQ(client.Rest(), "");
    EXPECT_FALSE(client.WasReset());
    EXPECT_EQ(server.Commands(), (Lines{"USER demo", "PASS demo", "FEAT", "SIZE a.txt", "XYZ", "QUIT"}));
}

TEST_F(Scripted, TransfersBothWays) {
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    LineClient down("127.0.0.1", EpsvPort(client.Ask("EPSV")));
    EXPECT_EQ(client.Ask("RETR a.txt").substr(0, 3), "150");
    EXPECT_EQ(down.Rest(), "hej");
    EXPECT_EQ(client.Reply().substr(0, 3), "226");
    {
        LineClient up("127.0.0.1", EpsvPort(client.Ask("EPSV")));
        EXPECT_EQ(client.Ask("STOR b.txt").substr(0, 3), "150");
        up.Send("tack");
    }
    EXPECT_EQ(client.Reply().substr(0, 3), "226");
    EXPECT_EQ(server.File("b.txt"), "tack");
    EXPECT_EQ(client.Ask("RETR saknas").substr(0, 3), "550");
}

TEST_F(Scripted, KeepsItsFiles) {
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    EXPECT_EQ(client.Ask("RNFR a.txt").substr(0, 3), "350");
    EXPECT_EQ(client.Ask("RNTO b.txt").substr(0, 3), "250");
    EXPECT_EQ(server.File("b.txt"), "hej");
    EXPECT_EQ(client.Ask("DELE b.txt").substr(0, 3), "250");
    EXPECT_EQ(client.Ask("DELE b.txt").substr(0, 3), "550");
    EXPECT_EQ(server.File("b.txt"), std::nullopt);
}

TEST_F(Scripted, DeviatesAtTheOccurrenceOnly) {
    server.At("TYPE", 2, {Say("500 Not now.")});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    EXPECT_EQ(client.Ask("TYPE I").substr(0, 3), "200");
    EXPECT_EQ(client.Ask("TYPE I"), "500 Not now.\n");
    EXPECT_EQ(client.Ask("TYPE I").substr(0, 3), "200");
}

TEST_F(Scripted, SplitsReplies) {
    server.At(kConnect, {Raw("220-He"), Pause(1ms), Raw("j\r\n22"), Pause(1ms), Raw("0 Klar\r\n")});
    EXPECT_EQ(LineClient("127.0.0.1", server.Port()).Reply(), "220-Hej\n220 Klar\n");
}

TEST_F(Scripted, ClosesAndResets) {
    server.At("NOOP", {Close()});
    server.At("TYPE", {Reset()});
    for (const bool reset : {false, true}) {
        LineClient client("127.0.0.1", server.Port());
        client.Reply();
        EXPECT_EQ(client.Ask(reset ? "TYPE I" : "NOOP"), "");
        EXPECT_EQ(client.WasReset(), reset);
    }
}

TEST_F(Scripted, BreaksADataConnection) {
    server.At("RETR", {Say("150 Here it comes."), SendData("he"), ResetData(), Say("426 Broken.")});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    LineClient data("127.0.0.1", EpsvPort(client.Ask("EPSV")));
    EXPECT_EQ(client.Ask("RETR a.txt").substr(0, 3), "150");
    data.Rest();
    EXPECT_TRUE(data.WasReset());
    EXPECT_EQ(client.Reply(), "426 Broken.\n");
}

TEST_F(Scripted, PutsItsPortIntoAnyReply) {
    server.At("PASV", {ListenData(), Say("227 Entering Passive Mode (10,9,8,7,%P)")});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    int high = 0, low = 0;
    ASSERT_EQ(
        std::sscanf(client.Ask("PASV").c_str(), "227 Entering Passive Mode (10,9,8,7,%d,%d)", &high, &low),
        2);
    EXPECT_NO_THROW(LineClient("127.0.0.1", static_cast<std::uint16_t>(high * 256 + low)));
}

TEST_F(Scripted, RefusesDataConnections) {
    server.At("EPSV", {RefuseData(), Say("229 (|||%p|)")});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    EXPECT_THROW(LineClient("127.0.0.1", EpsvPort(client.Ask("EPSV"))), std::system_error);
}

TEST_F(Scripted, BlocksDataConnections) {
    server.At("EPSV", {BlockData(), Say("229 (|||%p|)")});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    const Socket caller = Socket::Connecting(Endpoint("127.0.0.1", EpsvPort(client.Ask("EPSV"))));
    pollfd connected{caller.Get(), POLLOUT, 0};
    EXPECT_EQ(poll(&connected, 1, 50), 0);
}

TEST_F(Scripted, HoldsUntilReleased) {
    server.At("NOOP", {Hold(), Proper()});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    client.Send("NOOP\r\n");
    ASSERT_TRUE(server.WaitFor("NOOP"));
    server.Release();
    EXPECT_EQ(client.Reply().substr(0, 3), "200");
}

TEST_F(Scripted, AbortsAnEndlessTransfer) {
    server.At("LIST", {Say("150 Here it comes."), SendDataForever("-rw-r--r-- 1 a a 1 Jan 01 00:00 x\r\n")});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    LineClient data("127.0.0.1", EpsvPort(client.Ask("EPSV")));
    EXPECT_EQ(client.Ask("LIST").substr(0, 3), "150");
    client.Send(
        "\xFF\xF4\xFF\xF2"
        "ABOR\r\n");
    EXPECT_EQ(client.Reply().substr(0, 3), "426");
    EXPECT_EQ(client.Reply().substr(0, 3), "226");
    EXPECT_EQ(client.Ask("NOOP").substr(0, 3), "200");
    EXPECT_EQ(server.Commands().at(2), "ABOR");
}

TEST_F(Scripted, KnowsTelnetFromNames) {
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    client.Ask(
        "\xFF\xF4\xF2"
        "ABOR");
    client.Ask("DELE \xFF\xFF\xF2");
    EXPECT_EQ(server.Commands(), (Lines{"ABOR", "DELE \xFF\xF2"}));
}

TEST_F(Scripted, KeepsEarlyCommandsForLater) {
    server.At("RETR", {Say("150 Here it comes."), Hold(), SendData("hej"), CloseData(), Say("226 Done.")});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    LineClient data("127.0.0.1", EpsvPort(client.Ask("EPSV")));
    client.Send("RETR a.txt\r\nEPSV\r\n");
    EXPECT_EQ(client.Reply().substr(0, 3), "150");
    server.Release();
    EXPECT_EQ(data.Rest(), "hej");
    EXPECT_EQ(client.Reply().substr(0, 3), "226");
    EXPECT_EQ(client.Reply().substr(0, 3), "229");
}

TEST_F(Scripted, DeviatesOnceAtTheNextCommand) {
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    EXPECT_EQ(client.Ask("NOOP").substr(0, 3), "200");
    server.AtNext("NOOP", {Say("500 Not now.")});
    EXPECT_EQ(client.Ask("NOOP"), "500 Not now.\n");
    EXPECT_EQ(client.Ask("NOOP").substr(0, 3), "200");
}

TEST_F(Scripted, SendsRepliesInManyManners) {
    const struct {
        Manner manner;
        std::string bytes;
        bool ends = false;
    } rows[] = {
        {InPlaceOf("hello"), "hello"},
        {Late(1ms), "213 3\r\n"},
        {ByteByByte(), "213 3\r\n"},
        {Lost(), ""},
        {Doubled(), "213 3\r\n213 3\r\n"},
        {Decorated("\x1b"), "213 3\x1b\r\n"},
        {AfterLines(1), "213-" + std::string(56, 'x') + "\r\n213 3\r\n"},
        {OfLength(10), "213 xxxxxx\r\n"},
        {ClosedBefore(), "", true},
        {ClosedAfter(), "213 3\r\n", true},
        {ResetBefore(), "", true},
    };
    server.At("NOOP", {Close()});
    for (const auto& row : rows) {
        server.AtNext("SIZE", {Replies(row.manner), Proper()});
        LineClient client("127.0.0.1", server.Port());
        client.Reply();
        client.Send(row.ends ? "SIZE a.txt\r\n" : "SIZE a.txt\r\nNOOP\r\n");
        EXPECT_EQ(client.Rest(), row.bytes);
    }
}

TEST_F(Scripted, LeavesAReplyOpenUntilTheClientGoes) {
    server.At("SIZE", {Replies(Unterminated()), Proper()});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    client.Send("SIZE a.txt\r\n");
    ASSERT_TRUE(server.WaitFor("SIZE"));
    client.Send("QUIT\r\n");
    EXPECT_EQ(client.Rest().substr(0, 5), "213 3");
}

TEST_F(Scripted, SpoilsOneOfSeveralReplies) {
    server.At("RETR", {Replies(InPlaceOf("451 No.\r\n"), 2), Proper()});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    LineClient data("127.0.0.1", EpsvPort(client.Ask("EPSV")));
    EXPECT_EQ(client.Ask("RETR a.txt").substr(0, 3), "150");
    EXPECT_EQ(data.Rest(), "hej");
    EXPECT_EQ(client.Reply(), "451 No.\n");
}

TEST_F(Scripted, GoesOnWhereAFileWasBrokenOff) {
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    LineClient down("127.0.0.1", EpsvPort(client.Ask("EPSV")));
    EXPECT_EQ(client.Ask("REST 1").substr(0, 3), "350");
    EXPECT_EQ(client.Ask("RETR a.txt").substr(0, 3), "150");
    EXPECT_EQ(down.Rest(), "ej");
    EXPECT_EQ(client.Reply().substr(0, 3), "226");
    {
        LineClient up("127.0.0.1", EpsvPort(client.Ask("EPSV")));
        EXPECT_EQ(client.Ask("APPE a.txt").substr(0, 3), "150");
        up.Send("san");
    }
    EXPECT_EQ(client.Reply().substr(0, 3), "226");
    EXPECT_EQ(server.File("a.txt"), "hejsan");
}

TEST_F(Scripted, MovesFilesInPieces) {
    server.At("RETR",
              {Say("150 Here it comes."), SendFile(1), SendFile(1), CloseData(), Say("426 No more.")});
    server.At("STOR", {Say("150 Give it to me."), KeepData(1), KeepData(1), CloseData(), Say("451 Full.")});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    client.Ask("REST 1");
    LineClient down("127.0.0.1", EpsvPort(client.Ask("EPSV")));
    EXPECT_EQ(client.Ask("RETR a.txt").substr(0, 3), "150");
    EXPECT_EQ(down.Rest(), "ej");
    EXPECT_EQ(client.Reply().substr(0, 3), "426");
    client.Ask("REST 2");
    LineClient up("127.0.0.1", EpsvPort(client.Ask("EPSV")));
    EXPECT_EQ(client.Ask("STOR a.txt").substr(0, 3), "150");
    up.Send("xyz");
    EXPECT_EQ(client.Reply().substr(0, 3), "451");
    EXPECT_EQ(server.File("a.txt"), "hexy");
}

TEST_F(Scripted, EndsAnEndlessTransferWhenTheClientLeavesIt) {
    server.At("RETR", {Say("150 Here it comes."), SendDataForever("hej"), Say("426 Gone.")});
    LineClient client("127.0.0.1", server.Port());
    client.Reply();
    {
        const LineClient data("127.0.0.1", EpsvPort(client.Ask("EPSV")));
        EXPECT_EQ(client.Ask("RETR a.txt").substr(0, 3), "150");
    }
    EXPECT_EQ(client.Reply(), "426 Gone.\n");
}

TEST_F(Scripted, EndsWhileItStalls) {
    auto stalling = std::make_unique<ScriptedServer>();
    stalling->At(kConnect, {Stall()});
    LineClient client("127.0.0.1", stalling->Port());
    stalling.reset();
    EXPECT_EQ(client.Rest(), "");
}

TEST(ScriptedOnIpv6, Serves) {
    ScriptedServer server("::1");
    EXPECT_EQ(server.HostField(), "[::1]:" + std::to_string(server.Port()));
    LineClient client("::1", server.Port());
    EXPECT_EQ(client.Reply().substr(0, 3), "220");
    EXPECT_NO_THROW(LineClient("::1", EpsvPort(client.Ask("EPSV"))));
    EXPECT_EQ(client.Ask("PASV").substr(0, 3), "522");
}

}  // namespace
}  // namespace ftp_test
