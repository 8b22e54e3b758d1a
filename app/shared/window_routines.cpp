#include "app/shared/window_routines.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

namespace app {

void CentreOnScreen(QWidget& window) {
    const QRect area = window.screen()->availableGeometry();
    window.move(area.center() - QRect({}, window.frameSize()).center());
}

// A dialog is no child of its owner: the owner is disabled while the dialog is open, and a child would be so
// too.
void SetOwner(QWidget& dialog, QWidget& owner) {
    dialog.winId();  // both need their native windows
    owner.winId();
    dialog.windowHandle()->setTransientParent(owner.windowHandle());
}

void ClearOwner(QWidget& dialog) {
    if (dialog.windowHandle()) dialog.windowHandle()->setTransientParent(nullptr);
}

void SetHourglass(bool on) {
    const bool shown = QGuiApplication::overrideCursor() != nullptr;
    if (on && !shown) QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    if (!on && shown) QGuiApplication::restoreOverrideCursor();
}

}  // namespace app
