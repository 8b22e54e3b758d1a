// What leaves for the server, and what is let in as a local name.

#include <string>

#include "ftp/engine/wire/command.h"
#include "ftp/engine/wire/local_name.h"
#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Require;

std::string WithSingleIac(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        result += text[i];
        if (text[i] != '\xFF') continue;
        Require(i + 1 < text.size() && text[i + 1] == '\xFF', "IAC is doubled");
        ++i;
    }
    return result;
}

void CheckCommand(std::string_view argument) {
    const auto command = ftp::MakeCommand("STOR", argument);
    const bool breaks_the_line = argument.find_first_of(std::string_view("\r\n\0", 3)) != argument.npos;
    Require(command.has_value() == (!breaks_the_line && argument.size() <= 8 * 1024),
            "only whole lines are sent");
    if (!command) return;
    const std::string expected = argument.empty() ? "STOR" : "STOR " + std::string(argument);
    Require(WithSingleIac(command->line) == expected + "\r\n", "the line holds the argument");
    Require(command->trace == expected, "the trace shows the argument");
}

void CheckSecret(std::string_view secret) {
    for (const std::string verb : {"PASS", "ACCT"}) {
        const auto command = ftp::MakeCommand(verb, secret);
        if (command)
            Require(command->trace == (secret.empty() ? verb : verb + " ****"), "the trace hides a secret");
        else
            Require(command.error().detail.empty(), "a failure hides a secret");
    }
}

void CheckName(std::string_view name) {
    if (!ftp::IsPlainName(name)) return;
    Require(!name.empty() && name != "." && name != "..", "a plain name is a name");
    for (const char c : name)
        Require(static_cast<unsigned char>(c) >= ' ' && c != '/' && c != '\\' && c != '\x7F',
                "a plain name has no separator and no control");
    Require(ftp::MakeCommand("RETR", name).has_value(), "a plain name can be sent");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::AsText(data, size);
    CheckCommand(text);
    CheckSecret(text);
    CheckName(text);
    return 0;
}
