#include "ftp/engine/wire/command.h"

#include <gtest/gtest.h>

namespace ftp {
namespace {

using namespace std::string_literals;

TEST(MakeCommand, BuildsTheLineAndItsTrace) {
    struct Row {
        std::string verb, argument, line, trace;
    };
    const Row rows[] = {
        {"QUIT", "", "QUIT\r\n", "QUIT"},
        {"USER", "anna", "USER anna\r\n", "USER anna"},
        {"CWD", "..", "CWD ..\r\n", "CWD .."},
        {"CWD", "min mapp", "CWD min mapp\r\n", "CWD min mapp"},
        {"CWD", " x ", "CWD  x \r\n", "CWD  x "},
        {"RETR", "-rf", "RETR -rf\r\n", "RETR -rf"},
        {"STOR", "b\xC3\xA5t.gif", "STOR b\xC3\xA5t.gif\r\n", "STOR b\xC3\xA5t.gif"},
        {"STOR", "\xFF", "STOR \xFF\xFF\r\n", "STOR \xFF"},
        {"STOR",
         "a\xFF\xFF"
         "b",
         "STOR a\xFF\xFF\xFF\xFF"
         "b\r\n",
         "STOR a\xFF\xFF"
         "b"},
        {"PASS", "hemligt", "PASS hemligt\r\n", "PASS ****"},
        {"PASS", "\xFF", "PASS \xFF\xFF\r\n", "PASS ****"},
        {"PASS", "", "PASS\r\n", "PASS"},
        {"ACCT", "konto", "ACCT konto\r\n", "ACCT ****"},
        {"DELE", "a\x1B[2Jb", "DELE a\x1B[2Jb\r\n", "DELE a\x1B[2Jb"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line);
        const auto command = MakeCommand(row.verb, row.argument);
        ASSERT_TRUE(command);
        EXPECT_EQ(command->line, row.line);
        EXPECT_EQ(command->trace, row.trace);
    }
}

TEST(MakeCommand, RefusesWhatWouldBreakTheLine) {
    for (const std::string& argument : {"a\rb"s, "a\nb"s, "a\r\nDELE b"s, "a\0b"s, "\r"s, "\n"s, "\0"s}) {
        SCOPED_TRACE(argument);
        const auto command = MakeCommand("DELE", argument);
        ASSERT_FALSE(command);
        EXPECT_EQ(command.error(), (Failure{FailureKind::BadArgument, 0, argument}));
    }
}

TEST(MakeCommand, NeverTellsASecretInItsFailure) {
    for (const char* verb : {"PASS", "ACCT"}) {
        const auto command = MakeCommand(verb, "hem\nligt");
        ASSERT_FALSE(command);
        EXPECT_EQ(command.error(), (Failure{FailureKind::BadArgument, 0, ""}));
    }
}

TEST(MakeCommand, BoundsTheArgument) {
    EXPECT_TRUE(MakeCommand("CWD", std::string(8 * 1024, 'x')));
    const auto refused = MakeCommand("CWD", std::string(8 * 1024 + 1, 'x'));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), (Failure{FailureKind::BadArgument, 0, std::string(255, 'x')}));
}

}  // namespace
}  // namespace ftp
