#include <gtest/gtest.h>

#include "app/shared/swedish_texts.h"
#include "app/shared/unhandled_error.h"
#include "tests/support/box_answerer.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    app::Application application(argc, argv);
    application.installTranslator(new app::SwedishTexts(&application));
    toolkit_test::BoxWatcher watcher;
    return RUN_ALL_TESTS();
}
