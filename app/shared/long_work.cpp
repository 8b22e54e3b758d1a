#include "app/shared/long_work.h"

#include <QCoreApplication>

namespace app {
void LongWork::Yield() {
    if (since_yield_.elapsed() < longest_step) return;
    QCoreApplication::processEvents();
    since_yield_.start();
}

}  // namespace app
