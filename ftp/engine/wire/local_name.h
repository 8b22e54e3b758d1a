#pragma once
// Names that come from a server and are to become local names.

#include <string_view>

namespace ftp {

/// Whether `name` is a plain name: not empty, not "." or "..", without '/', '\\', NUL or other control
/// characters, not a drive ("c:"), at most 255 bytes. Anything else is refused for local use.
bool IsPlainName(std::string_view name);

}  // namespace ftp
