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

}  // namespace

bool IsPlainName(std::string_view name) {
    return !name.empty() && name.size() <= kMaxName && name != "." && name != ".." &&
           !BeginsWithDrive(name) && std::ranges::none_of(name, IsSeparatorOrControl);
}

}  // namespace ftp
