#pragma once
// How long a window has been left without a turn of its event loop.

#include <QAbstractEventDispatcher>
#include <QObject>
#include <algorithm>
#include <ctime>

namespace toolkit_test {

/// What the window's thread has worked without a turn of the event loop, at most: its own time, so that other
/// programs do not count.
class LongestWork : public QObject {
 public:
    LongestWork() {
        auto* loop = QAbstractEventDispatcher::instance();
        connect(loop, &QAbstractEventDispatcher::awake, this, &LongestWork::Turn);
        connect(loop, &QAbstractEventDispatcher::aboutToBlock, this, &LongestWork::Turn);
        Turn();
        longest_ = 0;
    }
    double Milliseconds() const { return longest_; }

 private:
    void Turn() {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        const double time = static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
        longest_ = std::max(longest_, time - last_);
        last_ = time;
    }

    double last_ = 0, longest_ = 0;
};

/// What is still no stall, milliseconds; 20 to 30 are seen without optimisation.
#ifdef __SANITIZE_ADDRESS__
inline constexpr double kLongestWork = 400;
#else
inline constexpr double kLongestWork = 100;
#endif

}  // namespace toolkit_test
