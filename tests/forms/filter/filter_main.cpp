// The main function: the program's own application object, which shows errors that no handler catches.

#include <gtest/gtest.h>

#include <QTest>
#include <iostream>

#include "app/shared/unhandled_error.h"
#include "tests/support/box_answerer.h"
#include "toolkit/theme.h"

namespace {

// A window that is shown while the window manager starts may stay hidden for good.
bool WindowManagerShowsWindows() {
    QWidget probe;
    probe.show();
    return QTest::qWaitForWindowActive(&probe, 500);
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    app::Application application(argc, argv);
    app::Application::setQuitOnLastWindowClosed(false);  // the tests close windows as they like
    toolkit::ApplyTheme(application);
    if (!QTest::qWaitFor(WindowManagerShowsWindows, 20'000))
        std::cerr << "No window manager; tests of focus and activation may fail.\n";
    const toolkit_test::BoxWatcher watcher;
    return RUN_ALL_TESTS();
}
