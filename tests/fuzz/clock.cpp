#include "tests/fuzz/clock.h"

#include <asio/steady_timer.hpp>

namespace {

std::chrono::steady_clock::duration since_start = std::chrono::hours(1);

}  // namespace

// Takes the place of the one in the C++ library, for this program alone: the engine and Asio know no other
// clock.
std::chrono::steady_clock::time_point std::chrono::steady_clock::now() noexcept {
    return time_point(since_start);
}

namespace fuzz {

void PassTime(asio::io_context& context, std::chrono::milliseconds time) {
    since_start += time;
    // The kernel wakes Asio by its own clock, for which the deadlines lie far ahead: a timer that is due
    // already makes it look at all of them.
    asio::steady_timer due(context, std::chrono::steady_clock::time_point::min());
    due.async_wait([](const asio::error_code&) {});
    context.restart();
    context.poll();
}

}  // namespace fuzz
