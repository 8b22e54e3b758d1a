#include "toolkit/picture_bar.h"

#include <QEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

#include "toolkit/accessible.h"

namespace toolkit {
namespace {

constexpr double kTwipsPerPixel = 15;

double TwipsOf(const QWidget& widget) {
    return widget.width() * kTwipsPerPixel;
}

}  // namespace

PictureBox::PictureBox(QWidget* parent) : QWidget(parent) {}

void PictureBox::SetRole(Role role) {
    role_ = role;
    if (role == Role::Empty) return;
    parentWidget()->installEventFilter(this);
    if (auto* empty = qobject_cast<PictureBox*>(parentWidget())) {
        empty->filled_part_ = this;
        RenewPart(*empty);
    }
    SetWidth(0);
}

int PictureBox::Percent() const {
    return filled_part_ ? static_cast<int>(std::lround(100 * filled_part_->share_)) : 0;
}

void PictureBox::TellPercent() {
    if (std::exchange(told_percent_, Percent()) == Percent()) return;
    QAccessibleValueChangeEvent event(this, Percent());
    QAccessible::updateAccessibility(&event);
}

double PictureBox::Width() const {
    return role_ == Role::Filled ? twips_ : TwipsOf(*this);
}

void PictureBox::SetWidth(double twips) {
    if (role_ == Role::Empty) {
        resize(static_cast<int>(std::lround(twips / kTwipsPerPixel)), height());
        return;
    }
    const double full = TwipsOf(*parentWidget());
    twips_ = std::min(std::max(twips, 0.0), full);
    share_ = full > 0 ? twips_ / full : 0;
    Place();
    if (auto* empty = qobject_cast<PictureBox*>(parentWidget())) empty->TellPercent();
}

void PictureBox::Place() {
    setGeometry(0, 0, static_cast<int>(std::lround(twips_ / kTwipsPerPixel)), parentWidget()->height());
}

bool PictureBox::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget() && event->type() == QEvent::Resize) {
        twips_ = share_ * TwipsOf(*parentWidget());
        Place();
    }
    return QWidget::eventFilter(watched, event);
}

void PictureBox::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (role_ == Role::Filled) {
        painter.fillRect(rect(), palette().highlight());
        return;
    }
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().base());
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace toolkit
