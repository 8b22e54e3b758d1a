#pragma once
// Files that know whether they are whole: each carries its version, its size and its checksum.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace soak {

/// So many bytes at least; no two versions are alike.
std::string Contents(std::uint64_t version, std::size_t size);
/// The version of a whole file; nothing where any byte is missing, strange or too many.
std::optional<std::uint64_t> VersionOf(const std::string& bytes);
/// The same of a file on the disk; nothing, too, when there is none.
std::optional<std::uint64_t> VersionOfFile(const std::filesystem::path& path);

}  // namespace soak
