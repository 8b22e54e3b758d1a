#include "ftp/engine/idling.h"

#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <chrono>
#include <exception>
#include <string>
#include <utility>

#include "ftp/engine/session/reopen.h"

namespace ftp {

using Clock = std::chrono::steady_clock;

Idling::Idling(Session& session, Ended ended)
    : session_(session),
      ended_(std::move(ended)),
      something_(session.transport.Executor()),
      over_(session.transport.Executor()) {}

void Idling::Begin(bool keep_awake) {
    keep_awake_ = keep_awake;
    wanted_ = running_ = true;
    asio::co_spawn(session_.transport.Executor(), Run(), asio::detached);
}

void Idling::End() {
    wanted_ = false;
    something_.cancel();
}

asio::awaitable<void> Idling::AwaitEnd() {
    End();
    asio::error_code woken;
    while (running_) {
        over_.expires_at(Clock::time_point::max());
        co_await over_.async_wait(asio::redirect_error(asio::use_awaitable, woken));
    }
}

/// What is thrown here is a fault of ours: it costs the session, and is told.
asio::awaitable<void> Idling::Run() {
    std::string fault;
    try {
        co_await LookAfterSession();
    } catch (const std::exception& thrown) {
        fault = thrown.what();
        if (session_.control) session_.control->Close();
    }
    ended_(wanted_, fault);
    running_ = false;
    over_.cancel();
}

asio::awaitable<void> Idling::LookAfterSession() {
    while (wanted_ && session_.Alive()) {
        const bool silent = co_await AwaitSilence();
        if (!wanted_ || !session_.Alive()) break;
        if (server_left_) session_.control->Close();
        if (silent && !server_left_) co_await session_.KeepAwake();
    }
    if (!session_.dropped && session_.control && !session_.control->Open()) co_await HearOut(session_);
}

/// Whether nothing has happened for so long that the server may mind.
asio::awaitable<bool> Idling::AwaitSilence() {
    server_left_ = false;
    const auto leave = [this] {
        server_left_ = true;
        something_.cancel();
    };
    const Control::Watch watch(
        *session_.control,
        [leave](const Reply& reply) {
            if (reply.code == 421) leave();
        },
        leave);
    if (server_left_) co_return false;
    asio::error_code woken;
    something_.expires_at(keep_awake_ ? Clock::now() + session_.deadlines.idle : Clock::time_point::max());
    co_await something_.async_wait(asio::redirect_error(asio::use_awaitable, woken));
    co_return !woken && !server_left_;
}

}  // namespace ftp
