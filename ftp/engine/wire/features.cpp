#include "ftp/engine/wire/features.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <vector>

namespace ftp {
namespace {

constexpr auto kNowhere = std::string_view::npos;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::string Upper(std::string_view text) {
    std::string upper(text);
    for (char& c : upper)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return upper;
}

/// The words of a line of FEAT, upper case. Parameters are set apart by blanks or, as in "AUTH TLS;SSL;",
/// semicolons.
std::vector<std::string> WordsOf(std::string_view line) {
    // Some servers put the code before every line.
    if (line.starts_with("211-") || line.starts_with("211 ")) line.remove_prefix(4);
    std::vector<std::string> words;
    while (true) {
        line.remove_prefix(std::min(line.find_first_not_of(" \t;"), line.size()));
        if (line.empty()) return words;
        const std::size_t length = std::min(line.find_first_of(" \t;"), line.size());
        words.push_back(Upper(line.substr(0, length)));
        line.remove_prefix(length);
    }
}

std::optional<std::int64_t> ParseDecimal(std::string_view digits) {
    if (digits.empty() || !IsDigit(digits.front())) return std::nullopt;
    std::int64_t value = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return value;
}

/// Reads "12345" or, grouped by one and the same mark, "1,234,567".
std::optional<std::int64_t> ParseGrouped(std::string_view text) {
    const std::size_t first = text.find_first_of(",.' ");
    if (first == kNowhere) return ParseDecimal(text);
    if (first == 0 || first > 3) return std::nullopt;
    std::string digits(text.substr(0, first));
    for (std::size_t mark = first; mark < text.size(); mark += 4) {
        const std::string_view group = text.substr(mark + 1, 3);
        if (text[mark] != text[first] || group.size() != 3) return std::nullopt;
        digits += group;
    }
    return ParseDecimal(digits);
}

/// What stands before " bytes" in the brackets that end `text`, or nothing.
std::optional<std::string_view> ByteCountAtEnd(std::string_view text) {
    const std::size_t close = text.find_last_of(')');
    if (close == kNowhere || std::ranges::any_of(text.substr(close), IsLetter)) return std::nullopt;
    const std::size_t open = text.find_last_of('(', close);
    if (open == kNowhere) return std::nullopt;
    const std::string_view group = text.substr(open + 1, close - open - 1);
    for (const std::string_view unit : {" BYTES", " BYTE"})
        if (Upper(group).ends_with(unit)) return group.substr(0, group.size() - unit.size());
    return std::nullopt;
}

}  // namespace

Features ParseFeatures(const Reply& reply) {
    Features features;
    if (reply.code != 211) return features;
    for (const std::string& line : reply.lines) {
        const std::vector<std::string> words = WordsOf(line);
        const auto has = [&words](std::string_view word) {
            return std::ranges::find(words, word) != words.end();
        };
        if (words.empty()) continue;
        const std::string& name = words.front();
        features.utf8 |= name == "UTF8";
        features.size |= name == "SIZE";
        features.epsv |= name == "EPSV";
        features.rest_stream |= name == "REST" && has("STREAM");
        features.mlst |= name == "MLST";
        features.auth_tls |= name == "AUTH" && has("TLS");
    }
    return features;
}

std::optional<std::int64_t> ParseSizeReply(const Reply& reply) {
    if (reply.code != 213) return std::nullopt;
    std::string_view text = reply.Text();
    while (text.starts_with(' ')) text.remove_prefix(1);
    while (text.ends_with(' ')) text.remove_suffix(1);
    return ParseDecimal(text);
}

std::optional<std::int64_t> ParseTransferSize(const Reply& reply) {
    if (reply.code != 125 && reply.code != 150) return std::nullopt;
    const auto count = ByteCountAtEnd(reply.Text());
    return count ? ParseGrouped(*count) : std::nullopt;
}

}  // namespace ftp
