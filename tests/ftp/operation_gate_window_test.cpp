// The gate in a real window, with events that come in as from the system.

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>
#include <optional>

#include "ftp/operation_gate.h"

namespace ftp {
namespace {

class GateInWindow : public testing::Test {
 protected:
    GateInWindow() {
        auto* const layout = new QVBoxLayout(&window);
        for (QWidget* child :
             {static_cast<QWidget*>(&field), static_cast<QWidget*>(&start), static_cast<QWidget*>(&abort)}) {
            layout->addWidget(child);
        }
        OperationGate::AllowWhileBusy(&abort);
        QObject::connect(&start, &QPushButton::clicked, [this] { ++started; });
        QObject::connect(&abort, &QPushButton::clicked, [this] { ++aborted; });
        window.show();
        window.activateWindow();
        field.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    void Click(const QWidget& target) {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {},
                          target.mapTo(&window, target.rect().center()));
    }
    void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }

    QWidget window;
    QLineEdit field;
    QPushButton start{QStringLiteral("&Starta")};
    QPushButton abort{QStringLiteral("&Avbryt")};
    int started = 0, aborted = 0;
};

TEST_F(GateInWindow, LetsTheMouseReachAllowedButtonsOnly) {
    {
        const OperationGate gate;
        Click(start);
        EXPECT_EQ(started, 0);
        Click(abort);
        EXPECT_EQ(aborted, 1);
    }
    EXPECT_EQ(started, 0) << "swallowed, not queued";
    Click(start);
    EXPECT_EQ(started, 1);
}

TEST_F(GateInWindow, LetsKeysReachAllowedButtonsOnly) {
    field.setFocus();
    {
        const OperationGate gate;
        Press(Qt::Key_X);
        Press(Qt::Key_S, Qt::AltModifier);
        Press(Qt::Key_A, Qt::AltModifier);
        EXPECT_TRUE(
            QTest::qWaitFor([this] { return aborted == 1; }));  // a button clicks some time after its key
        EXPECT_EQ(started, 0);
        EXPECT_EQ(field.text(), QString());
    }
    field.setFocus();
    Press(Qt::Key_X);
    EXPECT_EQ(field.text(), QStringLiteral("x"));
    Press(Qt::Key_S, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return started == 1; }));
}

TEST_F(GateInWindow, LetsTheWindowBeMovedAndClosed) {
    const OperationGate gate;
    window.resize(window.width() + 40, window.height() + 40);
    window.repaint();
    EXPECT_TRUE(window.close());
    EXPECT_FALSE(window.isVisible());
}

}  // namespace
}  // namespace ftp
