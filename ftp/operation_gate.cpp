#include "ftp/operation_gate.h"

#include <QCoreApplication>
#include <QEvent>
#include <QVariant>

namespace ftp {
namespace {

constexpr const char* kAllowed = "allowWhileBusy";

bool IsInput(QEvent::Type type) {
    switch (type) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::Shortcut:
        case QEvent::ShortcutOverride:
        case QEvent::InputMethod:
        case QEvent::ContextMenu:
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::Drop:
        case QEvent::TabletPress:
        case QEvent::TabletMove:
        case QEvent::TabletRelease:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::NativeGesture:
            return true;
        default:
            return false;
    }
}

}  // namespace

OperationGate::OperationGate() {
    QCoreApplication::instance()->installEventFilter(this);
}

OperationGate::~OperationGate() = default;

void OperationGate::AllowWhileBusy(QObject* object, bool allow) {
    object->setProperty(kAllowed, allow ? QVariant(true) : QVariant());
}

bool OperationGate::IsAllowed(const QObject* object) {
    for (; object; object = object->parent()) {
        if (object->property(kAllowed).toBool()) return true;
    }
    return false;
}

bool OperationGate::eventFilter(QObject* watched, QEvent* event) {
    // A native window gets every event first and hands it on to the object that it is meant for.
    if (!IsInput(event->type()) || watched->isWindowType() || IsAllowed(watched)) return false;
    // Not accepted: the key of an allowed button's shortcut would be taken for the focused object's own.
    if (event->type() != QEvent::ShortcutOverride) event->accept();
    return true;
}

}  // namespace ftp
