#pragma once
// What the main functions of the tests that show windows have in common.

#include <QApplication>

namespace toolkit_test {

/// Waits until the window manager shows windows, and runs the tests: in the program's colours, and with a
/// BoxWatcher. Returns the status of the process. GoogleTest has been initialised.
int RunDisplayTests(QApplication& application);

}  // namespace toolkit_test
