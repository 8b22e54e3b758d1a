#include "app/shared/long_work.h"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace {

TEST(LongWork, LetsEventsThroughButNoInput) {
    QPushButton button;
    button.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&button));
    int ticks = 0, presses = 0;
    QObject::connect(&button, &QPushButton::clicked, [&] { ++presses; });
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        ++ticks;
        QTest::mouseClick(&button, Qt::LeftButton);
    });
    timer.start(0);
    {
        app::LongWork work;
        while (ticks < 3) work.Yield();
    }
    EXPECT_EQ(presses, 0);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(presses, 1);
}

}  // namespace
