#include "ftp/engine/wire/command.h"

namespace ftp {
namespace {

constexpr std::size_t kMaxArgument = 8 * 1024;
constexpr std::size_t kMaxDetail = 255;
constexpr char kIac = '\xFF';

bool IsSecret(std::string_view verb) {
    return verb == "PASS" || verb == "ACCT";
}

bool CanBeSent(std::string_view argument) {
    return argument.size() <= kMaxArgument &&
           argument.find_first_of(std::string_view("\r\n\0", 3)) == argument.npos;
}

/// The control connection is a Telnet stream, in which a single 0xFF would begin a command.
std::string WithDoubledIac(std::string_view argument) {
    std::string result;
    result.reserve(argument.size());
    for (const char c : argument) result.append(c == kIac ? 2 : 1, c);
    return result;
}

}  // namespace

Result<Command> MakeCommand(std::string_view verb, std::string_view argument) {
    const bool secret = IsSecret(verb);
    if (!CanBeSent(argument))
        return Fail(FailureKind::BadArgument, std::string(secret ? "" : argument.substr(0, kMaxDetail)));
    Command command{std::string(verb), std::string(verb)};
    if (!argument.empty()) {
        command.line += ' ' + WithDoubledIac(argument);
        command.trace += ' ' + std::string(secret ? "****" : argument);
    }
    command.line += "\r\n";
    return command;
}

}  // namespace ftp
