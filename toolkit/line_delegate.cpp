#include "toolkit/line_delegate.h"

namespace toolkit {
namespace {

constexpr int kPixelsPerLevel = 12;

}  // namespace

LineDelegate::LineDelegate(QAbstractItemView* view) : QStyledItemDelegate(view), width_(*view) {}

QSize LineDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.rwidth() += width_.Widest(index.column()) - width_.Advance(index.data().toString());
    size.rwidth() += deepest_level_ * kPixelsPerLevel;
    return size;
}

void LineDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    QStyleOptionViewItem indented = option;
    indented.rect.adjust(index.data(kIndentLevel).toInt() * kPixelsPerLevel, 0, 0, 0);
    QStyledItemDelegate::paint(painter, indented, index);
}

}  // namespace toolkit
