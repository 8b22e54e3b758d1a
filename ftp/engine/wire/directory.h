#pragma once
// The names of server directories. Names are bytes as the server knows them.

#include <optional>
#include <string>
#include <string_view>

#include "ftp/engine/wire/reply.h"

namespace ftp {

/// The absolute name between the quotation marks of a 257 reply to PWD (RFC 959 appendix II). Nothing when it
/// does not begin with a slash, since what other notations mean is for their server to know; and nothing when
/// there are more quotation marks: not every server doubles those inside a name.
std::optional<std::string> ParseDirectory(const Reply& reply);

/// The absolute name of `name` as seen from `directory`; a name that is absolute stays what it is.
std::string Below(std::string_view directory, std::string_view name);

}  // namespace ftp
