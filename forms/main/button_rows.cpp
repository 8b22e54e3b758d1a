#include "forms/main/button_rows.h"

#include <QEvent>
#include <QPushButton>
#include <algorithm>

namespace forms {
namespace {

constexpr int kGap = 4;

int NaturalWidth(const QList<QWidget*>& row) {
    int width = kGap * static_cast<int>(row.size() - 1);
    for (const QWidget* button : row) width += button->sizeHint().width();
    return width;
}

int RowHeight(const QList<QWidget*>& buttons) {
    int height = 0;
    for (const QWidget* button : buttons) height = std::max(height, button->sizeHint().height());
    return height;
}

QList<QWidget*> ShownButtons(const QWidget& rows) {
    QList<QWidget*> shown;
    for (QWidget* button : rows.findChildren<QPushButton*>(Qt::FindDirectChildrenOnly))
        if (!button->isHidden()) shown.append(button);
    return shown;
}

}  // namespace

ButtonRows::ButtonRows(QWidget* parent) : QWidget(parent) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

QSize ButtonRows::sizeHint() const {
    const Row all = ShownButtons(*this);
    return {NaturalWidth(all), RowHeight(all)};
}

QSize ButtonRows::minimumSizeHint() const {
    const Row all = ShownButtons(*this);
    int widest = 0;
    for (const QWidget* button : all) widest = std::max(widest, button->sizeHint().width());
    return {widest, RowHeight(all)};
}

int ButtonRows::heightForWidth(int width) const {
    const int rows = static_cast<int>(RowsFor(width).size());
    return rows * RowHeight(ShownButtons(*this)) + (rows - 1) * kGap;
}

QList<ButtonRows::Row> ButtonRows::RowsFor(int width) const {
    QList<Row> rows{{}};
    for (QWidget* button : ShownButtons(*this)) {
        rows.last().append(button);
        if (rows.last().size() > 1 && NaturalWidth(rows.last()) > width) {
            rows.last().removeLast();
            rows.append({button});
        }
    }
    return rows;
}

void ButtonRows::Place() {
    const QList<Row> rows = RowsFor(width());
    const int height = RowHeight(ShownButtons(*this));
    int y = 0;
    for (const Row& row : rows) {
        int spare = rows.size() > 1 ? std::max(0, width() - NaturalWidth(row)) : 0;
        int x = 0;
        for (int left = static_cast<int>(row.size()); QWidget * button : row) {
            const int share = spare / left--;
            spare -= share;
            const int button_width = std::min(button->sizeHint().width() + share, width());
            button->setGeometry(x, y, button_width, height);
            x += button_width + kGap;
        }
        y += height + kGap;
    }
}

bool ButtonRows::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        updateGeometry();
        Place();
    }
    return QWidget::event(event);
}

void ButtonRows::resizeEvent(QResizeEvent*) {
    Place();
}

}  // namespace forms
