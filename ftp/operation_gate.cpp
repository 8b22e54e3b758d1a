#include "ftp/operation_gate.h"

#include <QCoreApplication>
#include <QEvent>
#include <QVariant>

namespace ftp {
namespace {

constexpr const char* kAllowed = "allowWhileBusy";

int living = 0;  // one inside the other, on the UI thread

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

// What would be taken as promised if it were accepted: the key of an allowed button's shortcut would be the
// focused object's own, and a source that moves what it has dropped would remove it.
bool IsOffer(QEvent::Type type) {
    return type == QEvent::ShortcutOverride || type == QEvent::DragEnter || type == QEvent::DragMove ||
           type == QEvent::Drop;
}

}  // namespace

OperationGate::OperationGate() {
    QCoreApplication::instance()->installEventFilter(this);
    ++living;
}

OperationGate::~OperationGate() {
    --living;
}

bool OperationGate::IsUp() {
    return living > 0;
}

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
    event->setAccepted(!IsOffer(event->type()));
    return true;
}

}  // namespace ftp
