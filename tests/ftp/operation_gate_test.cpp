#include "ftp/operation_gate.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEvent>
#include <QVariant>
#include <optional>

namespace ftp {
namespace {

class Receiver : public QObject {
 public:
    using QObject::QObject;
    int received = 0;

    bool event(QEvent*) override {
        ++received;
        return true;
    }
};

/// Whether the event passes the gate on its way to the object.
bool Passes(Receiver& receiver, QEvent::Type type) {
    QEvent event(type);
    receiver.received = 0;
    QCoreApplication::sendEvent(&receiver, &event);
    return receiver.received == 1;
}

class OperationGateTest : public testing::Test {
    int argc_ = 1;
    char name_[5] = "test";
    char* argv_[2] = {name_, nullptr};
    QCoreApplication application_{argc_, argv_};
};

constexpr QEvent::Type kInput[] = {
    QEvent::MouseButtonPress,
    QEvent::MouseButtonRelease,
    QEvent::MouseButtonDblClick,
    QEvent::MouseMove,
    QEvent::Wheel,
    QEvent::KeyPress,
    QEvent::KeyRelease,
    QEvent::Shortcut,
    QEvent::ShortcutOverride,
    QEvent::InputMethod,
    QEvent::ContextMenu,
    QEvent::DragEnter,
    QEvent::DragMove,
    QEvent::Drop,
    QEvent::TouchBegin,
    QEvent::TouchUpdate,
    QEvent::TouchEnd,
    QEvent::TabletPress,
};
constexpr QEvent::Type kOther[] = {
    QEvent::Paint, QEvent::UpdateRequest, QEvent::Move,          QEvent::Resize,   QEvent::Close,
    QEvent::Timer, QEvent::Show,          QEvent::EnabledChange, QEvent::FocusOut, QEvent::Quit,
};

TEST_F(OperationGateTest, SwallowsInputOnlyWhileItLives) {
    Receiver receiver;
    std::optional<OperationGate> gate(std::in_place);
    for (const auto type : kInput) EXPECT_FALSE(Passes(receiver, type)) << type;
    for (const auto type : kOther) EXPECT_TRUE(Passes(receiver, type)) << type;
    gate.reset();
    for (const auto type : kInput) EXPECT_TRUE(Passes(receiver, type)) << type;
}

TEST_F(OperationGateTest, SaysWhetherOneLives) {
    EXPECT_FALSE(OperationGate::IsUp());
    {
        const OperationGate outer;
        { const OperationGate inner; }
        EXPECT_TRUE(OperationGate::IsUp());
    }
    EXPECT_FALSE(OperationGate::IsUp());
}

TEST_F(OperationGateTest, TakesNothingThatIsDropped) {
    Receiver receiver;
    const OperationGate gate;
    for (const auto type : {QEvent::DragEnter, QEvent::DragMove, QEvent::Drop}) {
        QEvent event(type);
        event.accept();
        QCoreApplication::sendEvent(&receiver, &event);
        EXPECT_FALSE(event.isAccepted()) << type;
    }
}

TEST_F(OperationGateTest, LetsMarkedObjectsAndWhatTheyHoldBeUsed) {
    Receiver window;
    Receiver box(&window);
    Receiver button(&box);
    const OperationGate gate;
    OperationGate::AllowWhileBusy(&box);
    EXPECT_FALSE(Passes(window, QEvent::MouseButtonPress));
    EXPECT_TRUE(Passes(box, QEvent::KeyPress));
    EXPECT_TRUE(Passes(button, QEvent::MouseButtonPress));
    EXPECT_TRUE(OperationGate::IsAllowed(&button));
    EXPECT_FALSE(OperationGate::IsAllowed(&window));

    OperationGate::AllowWhileBusy(&box, false);
    EXPECT_FALSE(Passes(button, QEvent::MouseButtonPress));
    button.setProperty("allowWhileBusy", true);
    EXPECT_TRUE(Passes(button, QEvent::MouseButtonPress));
}

TEST_F(OperationGateTest, NeverTakesAKeyFromAnAllowedShortcut) {
    Receiver focused;
    const OperationGate gate;
    QEvent override_event(QEvent::ShortcutOverride);
    override_event.ignore();
    QCoreApplication::sendEvent(&focused, &override_event);
    EXPECT_FALSE(override_event.isAccepted());

    QEvent press(QEvent::KeyPress);
    press.ignore();
    QCoreApplication::sendEvent(&focused, &press);
    EXPECT_TRUE(press.isAccepted()) << "swallowed, not offered to somebody else";
}

}  // namespace
}  // namespace ftp
