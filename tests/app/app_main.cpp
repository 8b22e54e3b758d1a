// The main function over the program's own application object, which shows errors that no handler catches.

#include <gtest/gtest.h>

#include "app/shared/swedish_texts.h"
#include "app/shared/unhandled_error.h"
#include "tests/support/display_tests.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    app::Application application(argc, argv);
    application.installTranslator(new app::SwedishTexts(&application));
    return toolkit_test::RunDisplayTests(application);
}
