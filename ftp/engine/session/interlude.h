#pragma once
#include <functional>
#include <utility>

#include "ftp/engine/session/session.h"

namespace ftp {

/// A time in which no transfer runs, but one is to follow: while it lives, AbortTransfer and Drop call `end`,
/// which is to end what is waited for.
class Interlude {
 public:
    Interlude(Session& session, std::function<void()> end)
        : session_(session), outer_(std::exchange(session.call_off, std::move(end))) {}
    ~Interlude() { session_.call_off = std::move(outer_); }
    Interlude(const Interlude&) = delete;
    Interlude& operator=(const Interlude&) = delete;

    bool CalledOff() const { return session_.called_off || session_.dropped; }

 private:
    Session& session_;
    std::function<void()> outer_;
};

}  // namespace ftp
