#include "tools/demo/pictures.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QStyle>

#include "tools/demo/look.h"

namespace demo {
namespace {

constexpr int kDisc = 24;  // pixels
constexpr int kNumber = 14;
const QColor kDiscColour(0xb4, 0x23, 0x18);

QRect OnScreen(const QWidget& widget) {
    return {widget.mapToGlobal(QPoint(0, 0)), widget.size()};
}

void PaintMark(QPainter& painter, const Mark& mark, int number, const QRect& frame) {
    const QRect control = OnScreen(Control(kMain, mark.control));
    QRect disc = QStyle::alignedRect(Qt::LeftToRight, mark.at, QSize(kDisc, kDisc), control);
    disc.translate(mark.shift - frame.topLeft());
    painter.setBrush(kDiscColour);
    painter.setPen(QPen(Qt::white, 2));
    painter.drawEllipse(QRectF(disc).adjusted(1, 1, -1, -1));
    painter.drawText(disc, Qt::AlignCenter, QString::number(number));
}

}  // namespace

QImage Screen() {
    return QGuiApplication::primaryScreen()->grabWindow(0).toImage();
}

QImage Framed(const QImage& screen, const QRect& frame, const std::vector<Mark>& marks) {
    QImage picture = screen.copy(QRectF(QPointF(frame.topLeft()) * screen.devicePixelRatio(),
                                        QSizeF(frame.size()) * screen.devicePixelRatio())
                                     .toRect());
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = QGuiApplication::font();
    font.setPixelSize(kNumber);
    font.setBold(true);
    painter.setFont(font);
    int number = 0;
    for (const Mark& mark : marks) PaintMark(painter, mark, ++number, frame);
    return picture;
}

}  // namespace demo
