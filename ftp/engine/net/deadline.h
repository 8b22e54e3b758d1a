#pragma once
// A time limit as a scope.

#include <asio/any_io_executor.hpp>
#include <chrono>
#include <functional>
#include <memory>

namespace ftp {

/// While it lives: when `limit` passes without Restart, `expire` is called once, on the executor. Typically
/// it closes the stream that the scope waits on, so that the wait ends; Expired() then tells why.
class Deadline {
 public:
    Deadline(const asio::any_io_executor& executor, std::chrono::milliseconds limit,
             std::function<void()> expire);
    ~Deadline();
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

    /// Something moved: the limit counts from now. Cheap enough to call for every buffer.
    void Restart();
    bool Expired() const;

 private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace ftp
