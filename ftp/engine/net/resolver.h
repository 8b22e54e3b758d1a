#pragma once
// Host names to addresses.

#include <asio/ip/tcp.hpp>
#include <functional>
#include <vector>

#include "ftp/engine/net/task.h"
#include "ftp/engine/wire/address.h"

namespace ftp {

/// The addresses of a host, IPv6 and IPv4 taking turns, the system's first choice first (RFC 8305 section 4).
/// HostNotFound when there are none. Numeric addresses are not looked up.
/// A look-up cannot be cancelled and may take a minute; it runs on a thread of its own that nobody waits for,
/// so that closing the program does not wait for it either. While the caller waits, `cancel` holds a function
/// that ends the wait as Cancelled; otherwise it is empty.
Task<std::vector<asio::ip::tcp::endpoint>> LookUp(HostAndPort where, std::function<void()>& cancel);

}  // namespace ftp
