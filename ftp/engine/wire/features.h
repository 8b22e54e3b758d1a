#pragma once
// What a server says that it can do (RFC 2389 FEAT), and sizes that it states.

#include <cstdint>
#include <optional>
#include <string_view>

#include "ftp/engine/wire/reply.h"

namespace ftp {

struct Features {
    bool utf8 = false;
    bool size = false;
    bool epsv = false;
    bool rest_stream = false;
    bool mlst = false;
    bool auth_tls = false;
};

/// Reads a 211 reply to FEAT; names in any case, lines with or without a leading blank, unknown ones skipped.
Features ParseFeatures(const Reply& reply);

/// The size of a "213 size" reply (RFC 3659 section 4), or nothing when it is no plain decimal number
/// up to 2^63-1.
std::optional<std::int64_t> ParseSizeReply(const Reply& reply);

/// The size in a 125 or 150 reply, "... (12345 bytes)" as most servers word it, or nothing. Only a group that
/// ends the text counts (a full stop may follow), since the file name before it may hold anything. Digits may
/// be grouped by thousands: "12,345", "12.345", "12'345", "12 345".
std::optional<std::int64_t> ParseTransferSize(const Reply& reply);

}  // namespace ftp
