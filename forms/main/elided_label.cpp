#include "forms/main/elided_label.h"

#include <QPainter>

#include "toolkit/accessible.h"
#include "toolkit/wrapped_label.h"

namespace forms {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    toolkit::SetAccessibleRole(*this, QAccessible::StaticText);
}

void ElidedLabel::Show(const QString& text, const QString& note) {
    setText(text);
    setToolTip(toolkit::PlainToolTip(note.isEmpty() ? text : text + u'\n' + note));
    setAccessibleDescription(note);
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, width());
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
}

}  // namespace forms
