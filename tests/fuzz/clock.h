#pragma once
// The engine's clock, which stands still in this program until the target moves it: a minute's deadline takes
// no time to run out, and an input does the same thing however slow the machine is.

#include <asio/io_context.hpp>
#include <chrono>

namespace fuzz {

/// So much time has passed: what was due meanwhile has happened when this returns, and all that came of it at
/// once.
void PassTime(asio::io_context& context, std::chrono::milliseconds time);

}  // namespace fuzz
