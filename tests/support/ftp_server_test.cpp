// The test servers themselves: that each make runs, obeys its options and goes with its object.

#include "tests/support/ftp_server.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <system_error>

#include "tests/support/line_client.h"

namespace ftp_test {
namespace {

std::uint16_t PassivePort(LineClient& control) {
    const std::string reply = control.Ask("EPSV");  // "229 Anything (|||40001|)"
    const std::size_t bars = reply.find("|||");
    EXPECT_NE(bars, std::string::npos) << reply;
    return bars == std::string::npos ? std::uint16_t{0}
                                     : static_cast<std::uint16_t>(std::stoi(reply.substr(bars + 3)));
}

void LogIn(LineClient& control) {
    ASSERT_EQ(control.Reply().substr(0, 3), "220");
    ASSERT_EQ(control.Ask("USER demo").substr(0, 3), "331");
    ASSERT_EQ(control.Ask("PASS demo").substr(0, 3), "230");
    ASSERT_EQ(control.Ask("TYPE I").substr(0, 3), "200");
}

std::string Download(const Server& server, LineClient& control, const std::string& command) {
    LineClient data(server.Address(), PassivePort(control));
    EXPECT_EQ(control.Ask(command).substr(0, 1), "1");
    std::string bytes = data.Rest();
    EXPECT_EQ(control.Reply().substr(0, 3), "226");
    return bytes;
}

std::string Upload(const Server& server, LineClient& control, const std::string& name,
                   const std::string& bytes) {
    std::string reply;
    {
        LineClient data(server.Address(), PassivePort(control));
        reply = control.Ask("STOR " + name);
        if (reply.substr(0, 1) != "1") return reply;
        data.Send(bytes);
    }
    return control.Reply();
}

class FtpServer : public testing::TestWithParam<Make> {
 protected:
    void SetUp() override {
        if (const auto reason = WhyMissing(GetParam())) GTEST_SKIP() << *reason;
    }
};
INSTANTIATE_TEST_SUITE_P(Every, FtpServer, testing::ValuesIn(AllServers()),
                         [](const auto& server) { return Name(server.param); });

TEST_P(FtpServer, TransfersBothWays) {
    Server server(GetParam());
    server.WriteFile("ner.txt", "hej\n");
    LineClient control(server.Address(), server.Port());
    LogIn(control);
    EXPECT_EQ(Download(server, control, "RETR ner.txt"), "hej\n");
    EXPECT_EQ(Upload(server, control, "upp.txt", "tack").substr(0, 3), "226");
    EXPECT_EQ(server.ReadFile("upp.txt"), "tack");
    EXPECT_EQ(server.ReadFile("saknas.txt"), std::nullopt);
}

TEST_P(FtpServer, ServesIpv6) {
    Server server(GetParam(), {.address = "::1"});
    server.WriteFile("a", "1");
    LineClient control("::1", server.Port());
    LogIn(control);
    EXPECT_EQ(Download(server, control, "RETR a"), "1");
}

TEST_P(FtpServer, RefusesAWrongPassword) {
    Server server(GetParam());
    LineClient control(server.Address(), server.Port());
    control.Reply();
    control.Ask("USER demo");
    EXPECT_EQ(control.Ask("PASS fel").substr(0, 3), "530");
}

TEST_P(FtpServer, KeepsToThePassivePorts) {
    Server server(GetParam(), {.passive_ports = {{21990, 21999}}});
    LineClient control(server.Address(), server.Port());
    LogIn(control);
    const std::uint16_t port = PassivePort(control);
    EXPECT_GE(port, 21990);
    EXPECT_LE(port, 21999);
}

TEST_P(FtpServer, LimitsTheClients) {
    Server server(GetParam(), {.max_clients = 1});
    LineClient first(server.Address(), server.Port());
    LogIn(first);
    LineClient second(server.Address(), server.Port());
    std::string reply = second.Reply();
    for (const char* command : {"USER demo", "PASS demo"})  // proftpd counts after the login
        if (reply[0] < '4') reply = second.Ask(command);
    EXPECT_TRUE(reply.substr(0, 3) == "421" || reply.substr(0, 3) == "530") << reply;
}

TEST_P(FtpServer, ProtectsAFolder) {
    Server server(GetParam());
    server.MakeFolder("stängd");
    server.ProtectFolder("stängd");
    LineClient control(server.Address(), server.Port());
    LogIn(control);
    EXPECT_EQ(Upload(server, control, "stängd/ny.txt", "x").substr(0, 1), "5");
    EXPECT_EQ(server.ReadFile("stängd/ny.txt"), std::nullopt);
    server.ProtectFolder("");
    EXPECT_EQ(control.Ask("MKD ny").substr(0, 1), "5");
}

TEST_P(FtpServer, HasAFullDiskWhereAsked) {
    if (getuid() != 0) GTEST_SKIP() << "mounting a disk needs root";
    if (GetParam() == Make::PyFtpdLib) return;  // says nothing more when its disk is full
    Server server(GetParam(), {.home_bytes = 64 * 1024});
    LineClient control(server.Address(), server.Port());
    LogIn(control);
    EXPECT_EQ(Upload(server, control, "liten", "x").substr(0, 3), "226");
    EXPECT_EQ(server.ReadFile("liten"), "x");
    const std::string reply = Upload(server, control, "stor", std::string(1 << 20, 'x'));
    EXPECT_TRUE(reply.empty() || reply[0] >= '4') << reply;
}

TEST_P(FtpServer, GoesWithItsObject) {
    auto server = std::make_unique<Server>(GetParam());
    const std::uint16_t port = server->Port();
    const std::filesystem::path home = server->Home();
    LineClient control(server->Address(), port);
    LogIn(control);
    server.reset();
    EXPECT_EQ(control.Rest(), "");  // the session's process is gone, too
    EXPECT_THROW(LineClient("127.0.0.1", port), std::system_error);
    EXPECT_FALSE(std::filesystem::exists(home));
}

TEST_P(FtpServer, GoesWithItsProcess) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::string litter =
        testing::TempDir() + "websmide-litter-XXXXXX";  // a killed process leaves its folder behind
    ASSERT_NE(mkdtemp(litter.data()), nullptr);
    std::filesystem::permissions(litter, std::filesystem::perms(0755));
    const pid_t child = fork();
    if (child == 0) {
        setenv("TMPDIR", litter.c_str(), 1);
        Server server(GetParam());
        const std::uint16_t port = server.Port();
        (void)!write(ends[1], &port, sizeof port);
        kill(getpid(), SIGKILL);
    }
    std::uint16_t port = 0;
    ASSERT_EQ(read(ends[0], &port, sizeof port), static_cast<ssize_t>(sizeof port));
    waitpid(child, nullptr, 0);
    const auto listens = [port] {
        try {
            LineClient probe("127.0.0.1", port);
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    };
    for (int i = 0; i < 1000 && listens(); ++i) usleep(10'000);
    EXPECT_FALSE(listens());
    std::filesystem::remove_all(litter);
    close(ends[0]);
    close(ends[1]);
}

TEST_P(FtpServer, KeepsNamesAsBytesWithoutUtf8) {
    Server server(GetParam(), {.utf8 = false});
    server.WriteFile("r\xE4v.txt", "x");
    LineClient control(server.Address(), server.Port());
    LogIn(control);
    const bool always_says_utf8 = GetParam() == Make::PureFtpd;
    EXPECT_EQ(control.Ask("FEAT").find("UTF8") != std::string::npos, always_says_utf8);
    EXPECT_NE(Download(server, control, "LIST").find("r\xE4v.txt"), std::string::npos);
    EXPECT_EQ(Download(server, control, "RETR r\xE4v.txt"), "x");
}

}  // namespace
}  // namespace ftp_test
