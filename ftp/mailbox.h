#pragma once
// Hands values from one thread to another, in order, without a lock.

#include <atomic>
#include <deque>
#include <utility>

namespace ftp {

/// Put may be called from any thread; TakeAll and the destructor belong to the one thread that takes.
template <class T>
class Mailbox {
 public:
    Mailbox() = default;
    Mailbox(const Mailbox&) = delete;
    Mailbox& operator=(const Mailbox&) = delete;
    ~Mailbox() {
        std::deque<T> unread;
        TakeAll(unread);
    }

    /// Returns whether the box was empty: then, and only then, the taker has to be woken.
    bool Put(T value) {
        auto* letter = new Letter{std::move(value), nullptr};
        Letter* older = newest_.load(std::memory_order_relaxed);
        do {
            letter->older = older;
        } while (!newest_.compare_exchange_weak(older, letter, std::memory_order_release,
                                                std::memory_order_relaxed));
        return !older;
    }

    /// Moves everything to the end of `values`, oldest first.
    void TakeAll(std::deque<T>& values) {
        Letter* oldest = nullptr;
        for (Letter* letter = newest_.exchange(nullptr, std::memory_order_acquire); letter;) {
            Letter* const next = std::exchange(letter->older, oldest);
            oldest = std::exchange(letter, next);
        }
        while (oldest) {
            values.push_back(std::move(oldest->value));
            delete std::exchange(oldest, oldest->older);
        }
    }

 private:
    struct Letter {
        T value;
        Letter* older;
    };
    std::atomic<Letter*> newest_ = nullptr;
};

}  // namespace ftp
