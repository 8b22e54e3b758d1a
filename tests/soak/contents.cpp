#include "tests/soak/contents.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string_view>

namespace soak {
namespace {

constexpr std::size_t kHeader = 64;

/// FNV-1a over words, and over the bytes that are left.
std::uint64_t Checksum(std::string_view bytes) {
    constexpr std::uint64_t kPrime = 1099511628211U;
    std::uint64_t sum = 14695981039346656037U;
    for (; bytes.size() >= sizeof(std::uint64_t); bytes.remove_prefix(sizeof(std::uint64_t))) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data(), sizeof(word));
        sum = (sum ^ word) * kPrime;
        sum ^= sum >> 29;
    }
    for (const char c : bytes) sum = (sum ^ static_cast<unsigned char>(c)) * kPrime;
    return sum;
}

std::string Header(std::uint64_t version, std::string_view body) {
    std::array<char, kHeader + 1> text{};
    std::snprintf(text.data(), text.size(), "version %016llx size %010zu sum %016llx\n",
                  static_cast<unsigned long long>(version), body.size(),
                  static_cast<unsigned long long>(Checksum(body)));
    return text.data();
}

}  // namespace

std::string Contents(std::uint64_t version, std::size_t size) {
    std::string body(size, '\0');
    std::mt19937_64 random(version);
    for (std::size_t at = 0; at < size; at += sizeof(std::uint64_t)) {
        const std::uint64_t word = random();
        std::memcpy(body.data() + at, &word, std::min(sizeof(word), size - at));
    }
    return Header(version, body) + body;
}

std::optional<std::uint64_t> VersionOf(const std::string& bytes) {
    unsigned long long version = 0;
    if (std::sscanf(bytes.c_str(), "version %16llx", &version) != 1) return std::nullopt;
    const auto line_end = bytes.find('\n');
    if (line_end == bytes.npos) return std::nullopt;
    const std::string_view body = std::string_view(bytes).substr(line_end + 1);
    if (Header(version, body) != bytes.substr(0, line_end + 1)) return std::nullopt;
    return version;
}

std::optional<std::uint64_t> VersionOfFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return VersionOf({std::istreambuf_iterator<char>(in), {}});
}

}  // namespace soak
