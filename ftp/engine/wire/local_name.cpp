#include "ftp/engine/wire/local_name.h"

#include <algorithm>
#include <cstddef>

namespace ftp {
namespace {

constexpr std::size_t kMaxName = 255;

bool IsSeparatorOrControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return c == '/' || c == '\\' || byte < 0x20 || byte == 0x7F;
}

bool BeginsWithDrive(std::string_view name) {
    return name.size() >= 2 && name[1] == ':' &&
           ((name[0] >= 'A' && name[0] <= 'Z') || (name[0] >= 'a' && name[0] <= 'z'));
}

/// U+F05C is EF 81 9C in UTF-8, U+F080..U+F0FF are EF 82 80 to EF 83 BF.
bool HoldsStandInsForBytes(std::string_view name) {
    return name.find("\xEF\x81\x9C") != name.npos || name.find("\xEF\x82") != name.npos ||
           name.find("\xEF\x83") != name.npos;
}

}  // namespace

bool IsPlainName(std::string_view name) {
    return !name.empty() && name.size() <= kMaxName && name.back() != '.' && name.back() != ' ' &&
           !BeginsWithDrive(name) && !HoldsStandInsForBytes(name) &&
           std::ranges::none_of(name, IsSeparatorOrControl);
}

}  // namespace ftp
