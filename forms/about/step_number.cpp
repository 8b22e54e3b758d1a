#include "forms/about/step_number.h"

#include <QPainter>

namespace forms {
namespace {

constexpr double kDiscToLine = 2.0;   // the disc's diameter to the height of a line
constexpr double kDigitToText = 1.5;  // the digit's font to the label's

QFont Enlarged(QFont font) {
    font.setBold(true);
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * kDigitToText);
    else
        font.setPixelSize(qRound(font.pixelSize() * kDigitToText));
    return font;
}

}  // namespace

QSize StepNumber::sizeHint() const {
    const int diameter = qRound(fontMetrics().height() * kDiscToLine);
    return {diameter, diameter};
}

// The digit is white on the highlight colour in light and dark: as bare digits that colour is too faint on a
// dark window.
void StepNumber::paintEvent(QPaintEvent*) {
    const double diameter = sizeHint().width();
    const QRectF disc((width() - diameter) / 2, (height() - diameter) / 2, diameter, diameter);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().highlight());
    painter.drawEllipse(disc);
    painter.setFont(Enlarged(font()));
    painter.setPen(palette().color(QPalette::HighlightedText));
    painter.drawText(disc, Qt::AlignCenter, text());
}

}  // namespace forms
