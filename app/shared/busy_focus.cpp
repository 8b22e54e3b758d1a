#include "app/shared/busy_focus.h"

#include <QKeyEvent>
#include <QWindow>

#include "ftp/operation_gate.h"

namespace app {
namespace {

bool TakesFocusNow(const QWidget& widget) {
    return widget.isVisible() && widget.isEnabled() && (widget.focusPolicy() & Qt::TabFocus) &&
           ftp::OperationGate::IsAllowed(&widget);
}

}  // namespace

BusyFocus::BusyFocus(QWidget& window) : QObject(&window), window_(window) {
    window.installEventFilter(this);
}

// The gate lets native windows have everything, so keys are met there; a window gets its native one when it
// is first shown.
bool BusyFocus::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &window_) {
        if (event->type() == QEvent::WinIdChange && window_.windowHandle())
            window_.windowHandle()->installEventFilter(this);
        return false;
    }
    if (event->type() != QEvent::KeyPress || !ftp::OperationGate::IsUp()) return false;
    const auto& key = *static_cast<QKeyEvent*>(event);
    if (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) return false;
    if (key.key() != Qt::Key_Tab && key.key() != Qt::Key_Backtab) return false;
    Move(key.key() == Qt::Key_Tab && !(key.modifiers() & Qt::ShiftModifier));
    return true;
}

void BusyFocus::Move(bool next) {
    const auto follow = [next](const QWidget& widget) {
        return next ? widget.nextInFocusChain() : widget.previousInFocusChain();
    };
    QWidget* const start = window_.focusWidget() ? window_.focusWidget() : &window_;
    for (QWidget* stop = follow(*start); stop != start; stop = follow(*stop))
        if (TakesFocusNow(*stop) && stop->window() == &window_)
            return stop->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
}

}  // namespace app
