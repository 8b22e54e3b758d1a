#include "app/shared/unhandled_error.h"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QTest>
#include <stdexcept>

#include "tests/support/box_answerer.h"
#include "toolkit/message_box.h"

namespace {

TEST(UnhandledError, IsShownAndTheProgramGoesOn) {
    QPushButton button;
    QObject::connect(&button, &QPushButton::clicked, [] { throw std::runtime_error("Fel i datumet å ä ö"); });
    button.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&button));
    for (int press = 0; press < 2; ++press) {
        toolkit_test::ExpectBox box(toolkit::kDefaultTitle, QStringLiteral("Fel i datumet å ä ö"),
                                    QStringLiteral("cmdOk"));
        QTest::mouseClick(&button, Qt::LeftButton);
        EXPECT_TRUE(box.HasCome());
    }
}

TEST(UnhandledError, WithoutWordsHasSomeOfOurs) {
    QPushButton button;
    QObject::connect(&button, &QPushButton::clicked, [] { throw 5; });
    button.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&button));
    toolkit_test::ExpectBox box(toolkit::kDefaultTitle, QStringLiteral("Okänt fel."),
                                toolkit_test::ExpectBox::kEnter);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_TRUE(box.HasCome());
}

}  // namespace
