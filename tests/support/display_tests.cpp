#include "tests/support/display_tests.h"

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QTest>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string_view>

#include "tests/support/box_answerer.h"
#include "toolkit/theme.h"

namespace toolkit_test {
namespace {

template <class Reply>
std::unique_ptr<Reply, decltype(&std::free)> Owned(Reply* reply) {
    return {reply, &std::free};
}

// The property that a window manager leaves on the root window once it is at work.
bool WindowManagerIsThere(xcb_connection_t* x) {
    constexpr std::string_view kName = "_NET_SUPPORTING_WM_CHECK";
    const auto atom =
        Owned(xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, kName.size(), kName.data()), nullptr));
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
    if (!atom) return false;
    const auto asked = xcb_get_property(x, 0, root, atom->atom, XCB_ATOM_WINDOW, 0, 1);
    const auto value = Owned(xcb_get_property_reply(x, asked, nullptr));
    return value && value->value_len > 0;
}

// A window that is shown while the window manager starts may stay hidden for good.
bool WindowManagerShowsWindows() {
    QWidget probe;
    probe.show();
    return QTest::qWaitForWindowActive(&probe, 500);
}

void WaitForWindowManager() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11) return;
    const auto ready = [x11] {
        return WindowManagerIsThere(x11->connection()) && WindowManagerShowsWindows();
    };
    if (!QTest::qWaitFor(ready, 20'000))
        std::cerr << "No window manager; tests of focus and activation may fail.\n";
}

}  // namespace

int RunDisplayTests(QApplication& application) {
    QApplication::setQuitOnLastWindowClosed(false);  // the tests close windows as they like
    toolkit::ApplyTheme(application);
    WaitForWindowManager();
    const BoxWatcher watcher;
    return RUN_ALL_TESTS();
}

}  // namespace toolkit_test
