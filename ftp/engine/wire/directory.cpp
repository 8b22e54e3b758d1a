#include "ftp/engine/wire/directory.h"

#include <algorithm>

namespace ftp {
namespace {

constexpr int kPathCreated = 257;

}  // namespace

std::optional<std::string> ParseDirectory(const Reply& reply) {
    if (reply.code != kPathCreated) return std::nullopt;
    const std::string_view text = reply.Text();
    if (std::ranges::count(text, '"') != 2) return std::nullopt;
    const auto opening = text.find('"');
    const std::string_view name = text.substr(opening + 1, text.rfind('"') - opening - 1);
    return name.starts_with('/') ? std::optional<std::string>(name) : std::nullopt;
}

std::string Below(std::string_view directory, std::string_view name) {
    if (name.starts_with('/')) return std::string(name);
    std::string absolute(directory);
    if (!absolute.ends_with('/')) absolute += '/';
    return absolute.append(name);
}

}  // namespace ftp
