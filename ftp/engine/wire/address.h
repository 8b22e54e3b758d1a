#pragma once
// Host fields and the addresses inside EPSV/PASV replies and EPRT/PORT commands.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ftp/engine/wire/reply.h"

namespace ftp {

struct HostAndPort {
    std::string host;  // name or numeric address, no brackets
    std::uint16_t port = 21;

    bool operator==(const HostAndPort&) const = default;
};

/// How the control connection is to be protected (RFC 4217).
enum class Security {
    IfOffered,  // AUTH TLS; plain text where the server knows nothing of it
    Explicit,   // AUTH TLS, or no session
    Implicit,   // TLS before the first word
    None,       // plain text, as the user has said
};

struct ServerAddress {
    HostAndPort where;
    Security security = Security::IfOffered;

    bool operator==(const ServerAddress&) const = default;
};

/// Reads the host field: "name", "name:port", "1.2.3.4:port", "v6" (bare, two or more colons), "[v6]",
/// "[v6]:port"; in front of it "ftpes://" (Explicit), "ftps://" (Implicit, port 990 where none is said) or
/// "ftp://" (None), in any case, and then one slash at the end. Blanks around are ignored. Fails with
/// BadArgument for empty hosts, ports outside 1..65535, blanks, control characters, slashes elsewhere or
/// unbalanced brackets.
Result<ServerAddress> ParseHostField(std::string_view field);

/// The port of "229 ... (|||port|)" (RFC 2428), or nothing. The delimiter is any character 33..126 that is no
/// digit; a protocol and an address between the first three, which some servers fill in, are read past.
std::optional<std::uint16_t> ParseEpsv(const Reply& reply);

/// The port of "227 ... h1,h2,h3,h4,p1,p2" (RFC 959), with or without parentheses; each number 0..255,
/// port not 0. The address is read past and not used: data goes to the control connection's peer.
std::optional<std::uint16_t> ParsePasv(const Reply& reply);

/// The argument of PORT, "h1,h2,h3,h4,p1,p2", from a dotted IPv4 address.
std::string PortArgument(std::string_view ipv4, std::uint16_t port);
/// The argument of EPRT, "|1|address|port|" or "|2|address|port|" (RFC 2428). An IPv6 zone ("%eth0") is left
/// out: it means nothing to the other host.
std::string EprtArgument(std::string_view address, bool ipv6, std::uint16_t port);

}  // namespace ftp
