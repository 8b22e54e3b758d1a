// The host field, and the ports inside 227 and 229 replies.

#include <algorithm>
#include <string>

#include "ftp/engine/wire/address.h"
#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Require;

std::string_view SchemeOf(ftp::Security security) {
    switch (security) {
        case ftp::Security::Explicit:
            return "ftpes://";
        case ftp::Security::Implicit:
            return "ftps://";
        case ftp::Security::None:
            return "ftp://";
        case ftp::Security::IfOffered:
            break;
    }
    return "";
}

void CheckHostField(std::string_view field) {
    const auto parsed = ftp::ParseHostField(field);
    if (!parsed) {
        Require(parsed.error().kind == ftp::FailureKind::BadArgument, "a bad field is a bad argument");
        Require(parsed.error().detail.find('@') == std::string::npos, "a login is not told");
        return;
    }
    const auto& [host, port] = parsed->where;
    Require(!host.empty() && port != 0, "host and port are there");
    Require(std::ranges::none_of(
                host, [](char c) { return static_cast<unsigned char>(c) <= ' ' || c == '/' || c == '@'; }),
            "a host has no blanks, controls, slashes and logins");
    const bool colons = host.find(':') != std::string::npos;
    const std::string_view scheme = SchemeOf(parsed->security);
    const std::string written =
        std::string(scheme) + (colons ? '[' + host + ']' : host) + ':' + std::to_string(port);
    const auto again = ftp::ParseHostField(" " + written + "\t");
    Require(again.has_value() && *again == *parsed, "a field written out is read back");
}

ftp::Reply ReplyWith(int code, std::string_view text) {
    return {code, {std::to_string(code) + ' ' + std::string(text)}};
}

/// Whatever a server says before a well-formed group, its port is found unless another one stands before.
void CheckPorts(std::string_view text) {
    const auto pasv = ftp::ParsePasv(ReplyWith(227, text));
    const auto epsv = ftp::ParseEpsv(ReplyWith(229, text));
    Require(pasv.value_or(1) != 0 && epsv.value_or(1) != 0, "a port is not 0");
    Require(!ftp::ParsePasv(ReplyWith(229, text)) && !ftp::ParseEpsv(ReplyWith(227, text)),
            "the code decides");

    constexpr std::uint16_t kPort = 50'000;
    const std::string before = std::string(text) + " (";
    if (!pasv)
        Require(ftp::ParsePasv(ReplyWith(227, before + ftp::PortArgument("10.0.0.1", kPort) + ").")) == kPort,
                "the PASV group is found");
    if (!epsv && text.find('|') == text.npos && text.find('(') == text.npos)
        Require(ftp::ParseEpsv(ReplyWith(229, before + "|||50000|)")) == kPort, "the EPSV group is found");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::AsText(data, size);
    CheckHostField(text);
    CheckPorts(text);
    return 0;
}
