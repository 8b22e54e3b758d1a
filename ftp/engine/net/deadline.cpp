#include "ftp/engine/net/deadline.h"

#include <asio/steady_timer.hpp>

namespace ftp {

using Clock = std::chrono::steady_clock;

struct Deadline::State : std::enable_shared_from_this<State> {
    State(const asio::any_io_executor& executor, std::chrono::milliseconds span, std::function<void()> action)
        : timer(executor), limit(span), expire(std::move(action)), last_movement(Clock::now()) {}

    void Wait() {
        timer.expires_at(last_movement + limit);
        timer.async_wait([self = shared_from_this()](const asio::error_code& error) {
            if (error || !self->armed) return;
            if (Clock::now() < self->last_movement + self->limit) return self->Wait();  // restarted meanwhile
            self->expired = true;
            self->expire();
        });
    }

    asio::steady_timer timer;
    std::chrono::milliseconds limit;
    std::function<void()> expire;
    Clock::time_point last_movement;
    bool armed = true;
    bool expired = false;
};

Deadline::Deadline(const asio::any_io_executor& executor, std::chrono::milliseconds limit,
                   std::function<void()> expire)
    : state_(std::make_shared<State>(executor, limit, std::move(expire))) {
    state_->Wait();
}

Deadline::~Deadline() {
    state_->armed = false;
    state_->timer.cancel();
}

void Deadline::Restart() {
    state_->last_movement = Clock::now();
}

bool Deadline::Expired() const {
    return state_->expired;
}

}  // namespace ftp
