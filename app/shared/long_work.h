#pragma once
// Keeps the window alive during a long loop on the UI thread.

#include <QElapsedTimer>

#include "ftp/operation_gate.h"

namespace app {

/// Lives as long as the loop. Meanwhile input reaches only what may be used while an operation runs, and the
/// window may be closed: a loop whose window is gone should end.
class LongWork {
 public:
    LongWork() { since_yield_.start(); }

    /// Call after each step: lets events through when some milliseconds have passed since it last did.
    void Yield();

    /// Milliseconds; tests that act in the middle of a loop set it to 0.
    static inline int longest_step = 20;

 private:
    const ftp::OperationGate gate_;
    QElapsedTimer since_yield_;
};

}  // namespace app
