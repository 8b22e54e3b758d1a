#include "forms/main/button_rows.h"

#include <QEvent>
#include <QPushButton>
#include <algorithm>

namespace forms {
namespace {

constexpr int kGap = 4;
constexpr int kBesideCaption = 20;

// The style's own width has a lower limit that short captions need not have.
int NaturalWidth(const QPushButton& button) {
    const int picture = button.icon().isNull() ? 0 : button.iconSize().width() + kGap;
    return button.fontMetrics().size(Qt::TextShowMnemonic, button.text()).width() + picture + kBesideCaption;
}

int NaturalWidth(const QList<QPushButton*>& row) {
    int width = kGap * static_cast<int>(row.size() - 1);
    for (const QPushButton* button : row) width += NaturalWidth(*button);
    return width;
}

int RowHeight(const QList<QPushButton*>& buttons) {
    int height = 0;
    for (const QPushButton* button : buttons) height = std::max(height, button->sizeHint().height());
    return height;
}

QList<QPushButton*> ShownButtons(const QWidget& rows) {
    QList<QPushButton*> shown;
    for (QPushButton* button : rows.findChildren<QPushButton*>(Qt::FindDirectChildrenOnly))
        if (!button->isHidden()) shown.append(button);
    return shown;
}

QList<QList<QPushButton*>> BreakAt(int width, const QList<QPushButton*>& buttons) {
    QList<QList<QPushButton*>> rows{{}};
    for (QPushButton* button : buttons) {
        rows.last().append(button);
        if (rows.last().size() > 1 && NaturalWidth(rows.last()) > width) {
            rows.last().removeLast();
            rows.append({button});
        }
    }
    return rows;
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
    for (const QPushButton* button : all) widest = std::max(widest, NaturalWidth(*button));
    return {widest, RowHeight(all)};
}

int ButtonRows::heightForWidth(int width) const {
    const int rows = static_cast<int>(RowsFor(width).size());
    return rows * RowHeight(ShownButtons(*this)) + (rows - 1) * kGap;
}

// As few rows as the width allows, and these as even as they can be.
QList<ButtonRows::Row> ButtonRows::RowsFor(int width) const {
    const Row all = ShownButtons(*this);
    QList<Row> rows = BreakAt(width, all);
    for (int narrower = width - kGap; rows.size() > 1 && narrower > width / 2; narrower -= kGap) {
        QList<Row> evener = BreakAt(narrower, all);
        if (evener.size() > rows.size()) break;
        rows = std::move(evener);
    }
    return rows;
}

void ButtonRows::Place() {
    const QList<Row> rows = RowsFor(width());
    const int height = RowHeight(ShownButtons(*this));
    int y = 0;
    for (const Row& row : rows) {
        int spare = rows.size() > 1 ? std::max(0, width() - NaturalWidth(row)) : 0;
        int left = static_cast<int>(row.size());
        int x = 0;
        for (QPushButton* button : row) {
            const int share = spare / left--;
            spare -= share;
            const int button_width = std::min(NaturalWidth(*button) + share, width());
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
