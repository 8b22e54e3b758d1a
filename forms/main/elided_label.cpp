#include "forms/main/elided_label.h"

#include <QPainter>

#include "toolkit/wrapped_label.h"

namespace forms {

void ElidedLabel::Show(const QString& text) {
    setText(text);
    setToolTip(toolkit::PlainToolTip(text));
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, width());
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
}

}  // namespace forms
