// The main function of the tests that bring none of their own: the linker takes this file only for those.

#include <gtest/gtest.h>

#include "tests/support/display_tests.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    return toolkit_test::RunDisplayTests(application);
}
