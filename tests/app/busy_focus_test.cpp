#include "app/shared/busy_focus.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <optional>

#include "ftp/operation_gate.h"

namespace {

// Five fields; the second and the fourth may be used while an operation runs.
class BusyFocusTest : public testing::Test {
 protected:
    BusyFocusTest() {
        new app::BusyFocus(window_);
        auto* rows = new QVBoxLayout(&window_);
        for (QLineEdit& field : fields_) rows->addWidget(&field);
        for (const int allowed : {1, 3}) ftp::OperationGate::AllowWhileBusy(&fields_[allowed]);
        window_.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
        fields_[0].setFocus();
    }
    /// Comes in as from the system; which field has the focus then.
    int Press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window_.windowHandle(), key, modifiers);
        return static_cast<int>(
            std::ranges::find_if(fields_, [](const QLineEdit& field) { return field.hasFocus(); }) - fields_);
    }

    QWidget window_;
    QLineEdit fields_[5];
    std::optional<ftp::OperationGate> gate_;
};

TEST_F(BusyFocusTest, TabGoesToWhatMayBeUsed) {
    gate_.emplace();
    EXPECT_EQ(Press(Qt::Key_Tab), 1);
    EXPECT_EQ(Press(Qt::Key_Tab), 3);
    EXPECT_EQ(Press(Qt::Key_Tab), 1);
    EXPECT_EQ(Press(Qt::Key_Backtab, Qt::ShiftModifier), 3);
    EXPECT_EQ(Press(Qt::Key_Tab, Qt::ShiftModifier), 1);
}

TEST_F(BusyFocusTest, WhatIsHiddenOrDisabledIsPassedOver) {
    fields_[1].hide();
    fields_[3].setEnabled(false);
    gate_.emplace();
    EXPECT_EQ(Press(Qt::Key_Tab), 0);
    fields_[3].setEnabled(true);
    EXPECT_EQ(Press(Qt::Key_Tab), 3);
}

TEST_F(BusyFocusTest, OtherKeysAreStillKeptAway) {
    gate_.emplace();
    Press(Qt::Key_A);
    EXPECT_EQ(Press(Qt::Key_Tab, Qt::ControlModifier), 0);
    EXPECT_EQ(fields_[0].text(), "");
}

TEST_F(BusyFocusTest, WithoutAnOperationTabGoesEverywhere) {
    EXPECT_EQ(Press(Qt::Key_Tab), 1);
    EXPECT_EQ(Press(Qt::Key_Tab), 2);
}

}  // namespace
