#include "app/shared/long_work.h"

#include <QCoreApplication>

namespace app {
namespace {

constexpr qint64 kLongestStep = 20;  // milliseconds

}  // namespace

void LongWork::Yield() {
    if (since_yield_.elapsed() < kLongestStep) return;
    QCoreApplication::processEvents();
    since_yield_.start();
}

}  // namespace app
