#include "tests/support/box_answerer.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "toolkit/message_box.h"

namespace toolkit_test {
namespace {

void AskNothing() {
    toolkit::MsgBox(nullptr, QStringLiteral("Text"), toolkit::Buttons::Ok, toolkit::Icon::None,
                    QStringLiteral("Titel"));
}

TEST(BoxAnswerer, FailsTheTestForAnUnexpectedBox) {
    EXPECT_NONFATAL_FAILURE(AskNothing(), "Unexpected box: Titel: Text");
}

TEST(BoxAnswerer, FailsTheTestForABoxThatDoesNotCome) {
    EXPECT_NONFATAL_FAILURE(
        ExpectBox(QStringLiteral("Titel"), QStringLiteral("Text"), QStringLiteral("cmdOk")),
        "No box came: Titel: Text");
}

TEST(BoxAnswerer, FailsTheTestForOtherWords) {
    ExpectBox title(QStringLiteral("Annan"), QStringLiteral("Text"), QStringLiteral("cmdOk"));
    EXPECT_NONFATAL_FAILURE(AskNothing(), "Annan");
    EXPECT_TRUE(title.HasCome());
    ExpectBox text(QStringLiteral("Titel"), QStringLiteral("text"), QStringLiteral("cmdOk"));
    EXPECT_NONFATAL_FAILURE(AskNothing(), "Text");
}

TEST(BoxAnswerer, FailsTheTestForAMissingButton) {
    ExpectBox box(QStringLiteral("Titel"), QStringLiteral("Text"), QStringLiteral("cmdYes"));
    EXPECT_NONFATAL_FAILURE(AskNothing(), "has no button cmdYes");
}

}  // namespace
}  // namespace toolkit_test
