#include "ftp/engine/session/tries.h"

#include <asio/redirect_error.hpp>
#include <asio/steady_timer.hpp>
#include <asio/use_awaitable.hpp>
#include <utility>

#include "ftp/engine/net/deadline.h"
#include "ftp/engine/session/interlude.h"
#include "ftp/engine/session/reopen.h"

namespace ftp {
namespace {

constexpr int kMostTries = 3;

}  // namespace

bool Tries::IsWorth(const Failure& failure, bool moved) {
    has_moved_ |= moved;
    if (!has_moved_ || !session_.access || session_.dropped) return false;
    switch (failure.kind) {
        case FailureKind::ConnectionLost:
        case FailureKind::TimedOut:
        case FailureKind::CutShort:
            return true;
        case FailureKind::Refused:
            return failure.code == 421 || failure.code == 425 || failure.code == 426 || failure.code == 451;
        default:
            return false;
    }
}

Task<> Tries::Next(Failure why) {
    if (session_.called_off || session_.dropped) co_return Fail(FailureKind::Cancelled);
    while (count_ < kMostTries) {
        const bool at_once = count_++ == 0;
        if (!at_once) {
            const auto waited = co_await Pause();
            if (!waited) co_return waited;
        }
        if (session_.Alive()) co_return Result<>{};
        if (!CanReopen(session_)) break;
        const auto reopened = co_await Reopen(session_);
        if (reopened) co_return Result<>{};
        const Failure& failure = reopened.error();
        const bool not_let_in = failure.kind == FailureKind::Refused && failure.code != 421;
        if (not_let_in || failure.kind == FailureKind::Cancelled) co_return reopened;
    }
    co_return Fail(std::move(why));
}

Task<> Tries::Pause() {
    asio::steady_timer timer(session_.transport.Executor(), session_.deadlines.pause);
    const Interlude interlude(session_, [&timer] { timer.cancel(); });
    asio::error_code woken;
    co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, woken));
    if (interlude.CalledOff()) co_return Fail(FailureKind::Cancelled);
    co_return Result<>{};
}

Task<Reply> Tries::AskSize(std::string remote) {
    Control& control = *session_.control;
    const Interlude interlude(session_, [&control] { control.Interrupt(); });
    auto reply = co_await session_.Ask("SIZE", remote);
    control.EndInterruption();
    if (!interlude.CalledOff()) co_return reply;
    const Deadline deadline(session_.transport.Executor(), session_.deadlines.abort,
                            [&control] { control.Close(); });
    while (control.Owes() && control.Open()) {
        const auto due = co_await control.Receive();
        if (!due) break;
    }
    co_return Fail(FailureKind::Cancelled);
}

}  // namespace ftp
