#pragma once
// The session between two operations. Worker's thread.

#include <asio/steady_timer.hpp>
#include <functional>
#include <string>

#include "ftp/engine/session/session.h"

namespace ftp {

/// Sees it when the server ends an idle session, and keeps it from doing so where that is wanted.
class Idling {
 public:
    /// Called each time that somebody has looked after the session and does not any more; `wanted` says
    /// whether that ended by itself, because the session is gone, and not by End; `fault` what went wrong
    /// inside, or nothing. Throws nothing.
    using Ended = std::function<void(bool wanted, const std::string& fault)>;

    /// The object outlives what runs on the session's executor.
    Idling(Session& session, Ended ended);

    /// Looks after a session that is alive, until End or until it is gone.
    void Begin(bool keep_awake);
    /// Not wanted any more; a NOOP that has left is still under way afterwards.
    void End();
    /// End, and waits for the answer of such a NOOP: the next command must not meet it.
    asio::awaitable<void> AwaitEnd();
    bool Running() const { return running_; }

 private:
    asio::awaitable<void> Run();
    asio::awaitable<void> LookAfterSession();
    asio::awaitable<bool> AwaitSilence();

    Session& session_;
    const Ended ended_;
    asio::steady_timer something_;  // cancelled when something has happened to the session
    asio::steady_timer over_;       // cancelled when nobody looks after it any more
    bool keep_awake_ = false;
    bool wanted_ = false;  // nothing runs or waits
    bool running_ = false;
    bool server_left_ = false;
};

}  // namespace ftp
