#include "toolkit/click_label.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionFocusRect>
#include <QStylePainter>
#include <utility>

namespace toolkit {

ClickLabel::ClickLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setForegroundRole(QPalette::Link);
}

// A key that is held, and a double click, are one press.
void ClickLabel::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            if (!event->isAutoRepeat()) Q_EMIT Click();
            return;
        default:
            QLabel::keyPressEvent(event);
    }
}

void ClickLabel::mousePressEvent(QMouseEvent* event) {
    pressed_ = event->button() == Qt::LeftButton && event->type() == QEvent::MouseButtonPress;
}

void ClickLabel::mouseReleaseEvent(QMouseEvent* event) {
    const bool inside = rect().contains(event->position().toPoint());
    if (std::exchange(pressed_, false) && inside) Q_EMIT Click();
}

void ClickLabel::paintEvent(QPaintEvent* event) {
    QLabel::paintEvent(event);
    if (!hasFocus()) return;
    QStylePainter painter(this);
    QStyleOptionFocusRect frame;
    frame.initFrom(this);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, frame);
}

}  // namespace toolkit
