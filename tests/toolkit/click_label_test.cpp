#include "toolkit/click_label.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

namespace toolkit {
namespace {

TEST(ClickLabel, IsPressedByMouseAndKeys) {
    ClickLabel label;
    label.setText(QStringLiteral("Klicka här för att ändra!"));
    label.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&label));
    QSignalSpy clicks(&label, &ClickLabel::Click);
    QTest::mouseClick(&label, Qt::LeftButton);
    EXPECT_EQ(clicks.count(), 1);
    label.setFocus();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) QTest::keyClick(&label, key);
    EXPECT_EQ(clicks.count(), 4);

    QTest::mouseClick(&label, Qt::LeftButton);
    QTest::mouseDClick(&label, Qt::LeftButton);
    QTest::mouseRelease(&label, Qt::LeftButton);
    EXPECT_EQ(clicks.count(), 5);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Space, {}, QStringLiteral(" "), true);
    QApplication::sendEvent(&label, &held);
    EXPECT_EQ(clicks.count(), 5);

    QTest::mouseClick(&label, Qt::RightButton);
    QTest::keyClick(&label, Qt::Key_A);
    QTest::mousePress(&label, Qt::LeftButton);
    QTest::mouseRelease(&label, Qt::LeftButton, {}, QPoint(-5, -5));  // thought better of it
    EXPECT_EQ(clicks.count(), 5);
}

TEST(ClickLabel, IsReachedByTab) {
    QWidget window;
    QWidget first(&window);
    first.setFocusPolicy(Qt::StrongFocus);
    ClickLabel label(&window);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    first.setFocus();
    QTest::keyClick(&first, Qt::Key_Tab);
    EXPECT_TRUE(label.hasFocus());
}

}  // namespace
}  // namespace toolkit
