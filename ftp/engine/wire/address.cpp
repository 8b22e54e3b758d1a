#include "ftp/engine/wire/address.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <vector>

namespace ftp {
namespace {

constexpr auto kNowhere = std::string_view::npos;

constexpr std::uint16_t kPort = 21;
constexpr std::uint16_t kImplicitPort = 990;

constexpr std::pair<std::string_view, Security> kSchemes[] = {
    {"ftpes://", Security::Explicit}, {"ftps://", Security::Implicit}, {"ftp://", Security::None}};

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == kNowhere) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// A port 1..65535, the whole of `text`.
std::optional<std::uint16_t> ParsePort(std::string_view text) {
    std::uint16_t port = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, port);
    if (error != std::errc{} || stop != end || port == 0) return std::nullopt;
    return port;
}

/// No blanks and controls, and nothing that belongs to URLs and paths.
bool FitsInHost(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte > ' ' && byte != 0x7F && c != '/' && c != '\\' && c != '[' && c != ']' && c != '@';
}

/// What stands before an '@' in a URL is a user name and often a password: that is not told.
auto NoHost(std::string_view field) {
    return Fail(FailureKind::BadArgument, std::string(field.substr(field.rfind('@') + 1)));
}

/// Splits "host" or "host:port"; more than one colon is an address of IPv6 without port.
struct Pieces {
    std::string_view host;
    std::optional<std::string_view> port;
};

std::optional<Pieces> Split(std::string_view field) {
    if (!field.starts_with('[')) {
        if (std::ranges::count(field, ':') != 1) return Pieces{field, {}};
        const std::size_t colon = field.find(':');
        return Pieces{field.substr(0, colon), field.substr(colon + 1)};
    }
    const std::size_t close = field.find(']');
    if (close == kNowhere) return std::nullopt;
    const std::string_view host = field.substr(1, close - 1);
    const std::string_view rest = field.substr(close + 1);
    if (rest.empty()) return Pieces{host, {}};
    if (rest.front() != ':') return std::nullopt;
    return Pieces{host, rest.substr(1)};
}

/// Cuts what a URL has around its host; nothing without a scheme.
Security TakeScheme(std::string_view& address) {
    for (const auto& [scheme, security] : kSchemes) {
        if (!std::ranges::equal(address.substr(0, scheme.size()), scheme, {}, Lower)) continue;
        address.remove_prefix(scheme.size());
        if (address.ends_with('/')) address.remove_suffix(1);
        return security;
    }
    return Security::IfOffered;
}

/// The numbers 0..255 of the comma list at the start of `text`, which is cut off; a larger number is an empty
/// place.
std::vector<std::optional<std::uint8_t>> TakeNumberList(std::string_view& text) {
    std::vector<std::optional<std::uint8_t>> numbers;
    while (!text.empty() && IsDigit(text.front())) {
        std::uint8_t number = 0;
        const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        numbers.push_back(error == std::errc{} ? std::optional(number) : std::nullopt);
        text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
        if (!text.starts_with(',')) break;
        text.remove_prefix(1);
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    }
    return numbers;
}

/// Reads "dPROTOCOLdADDRESSdPORTd", d being the first character.
std::optional<std::uint16_t> ParseExtended(std::string_view text) {
    if (text.empty() || text[0] < 33 || text[0] > 126 || IsDigit(text[0])) return std::nullopt;
    std::array<std::string_view, 3> fields;
    const char delimiter = text[0];
    for (std::string_view& field : fields) {
        text.remove_prefix(1);
        const std::size_t end = text.find(delimiter);
        if (end == kNowhere) return std::nullopt;
        field = text.substr(0, end);
        text.remove_prefix(end);
    }
    return ParsePort(fields[2]);
}

}  // namespace

Result<ServerAddress> ParseHostField(std::string_view field) {
    field = Trimmed(field);
    std::string_view address = field;
    const Security security = TakeScheme(address);
    const auto pieces = Split(address);
    if (!pieces || pieces->host.empty() || !std::ranges::all_of(pieces->host, FitsInHost))
        return NoHost(field);
    std::uint16_t port = security == Security::Implicit ? kImplicitPort : kPort;
    if (pieces->port) {
        const auto said = ParsePort(*pieces->port);
        if (!said) return NoHost(field);
        port = *said;
    }
    return ServerAddress{{std::string(pieces->host), port}, security};
}

std::optional<std::uint16_t> ParseEpsv(const Reply& reply) {
    if (reply.code != 229) return std::nullopt;
    const std::string_view text = reply.Text();
    for (std::size_t open = text.find('('); open != kNowhere; open = text.find('(', open + 1))
        if (const auto port = ParseExtended(text.substr(open + 1))) return port;
    return std::nullopt;
}

std::optional<std::uint16_t> ParsePasv(const Reply& reply) {
    if (reply.code != 227) return std::nullopt;
    std::string_view text = reply.Text();
    while (true) {
        text.remove_prefix(std::min(text.find_first_of("0123456789"), text.size()));
        if (text.empty()) return std::nullopt;
        const auto numbers = TakeNumberList(text);
        if (numbers.size() != 6 || !std::ranges::all_of(numbers, [](const auto& n) { return n.has_value(); }))
            continue;
        const int port = *numbers[4] * 256 + *numbers[5];
        if (port != 0) return static_cast<std::uint16_t>(port);
    }
}

std::string PortArgument(std::string_view ipv4, std::uint16_t port) {
    std::string argument(ipv4);
    std::ranges::replace(argument, '.', ',');
    return argument + ',' + std::to_string(port / 256) + ',' + std::to_string(port % 256);
}

std::string EprtArgument(std::string_view address, bool ipv6, std::uint16_t port) {
    const std::string host(address.substr(0, address.find('%')));
    return (ipv6 ? "|2|" : "|1|") + host + '|' + std::to_string(port) + '|';
}

}  // namespace ftp
