#include "forms/main/live_tip.h"

#include <QHelpEvent>
#include <QToolTip>

namespace forms {

LiveTip::LiveTip(QWidget& area) : QObject(&area), area_(area) {
    area.installEventFilter(this);
}

void LiveTip::SetText(const QString& text) {
    const bool shown =
        QToolTip::isVisible() && !area_.toolTip().isEmpty() && QToolTip::text() == area_.toolTip();
    area_.setToolTip(text);
    if (shown) QToolTip::showText(place_, text, &area_);
}

// What is in the area hands its own on to it.
bool LiveTip::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ToolTip) place_ = static_cast<QHelpEvent*>(event)->globalPos();
    return QObject::eventFilter(watched, event);
}

}  // namespace forms
