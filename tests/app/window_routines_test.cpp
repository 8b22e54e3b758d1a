#include "app/shared/window_routines.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QGuiApplication>
#include <QScreen>
#include <QTest>
#include <QWindow>

namespace {

TEST(CentreOnScreen, PutsTheMiddleInTheMiddle) {
    QWidget window;
    window.resize(400, 301);
    app::CentreOnScreen(window);
    const QPoint off = window.frameGeometry().center() - window.screen()->availableGeometry().center();
    EXPECT_LE(off.manhattanLength(), 2);
}

TEST(SetOwner, KeepsTheDialogUsableAboveItsDisabledOwner) {
    QWidget owner;
    owner.show();
    QDialog dialog;
    app::SetOwner(dialog, owner);
    owner.setEnabled(false);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    EXPECT_EQ(dialog.windowHandle()->transientParent(), owner.windowHandle());
    EXPECT_TRUE(dialog.isEnabled());
    app::ClearOwner(dialog);
    EXPECT_EQ(dialog.windowHandle()->transientParent(), nullptr);
}

TEST(ClearOwner, OfADialogThatWasNeverShownIsHarmless) {
    QDialog dialog;
    app::ClearOwner(dialog);
    EXPECT_EQ(dialog.windowHandle(), nullptr);
}

TEST(SetHourglass, TwiceIsOnce) {
    app::SetHourglass(true);
    app::SetHourglass(true);
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    app::SetHourglass(false);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    app::SetHourglass(false);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

}  // namespace
