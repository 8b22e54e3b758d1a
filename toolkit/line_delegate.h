#pragma once
// Draws the lines of a list box. UI thread only.

#include <QStyledItemDelegate>

#include "toolkit/line_width.h"

namespace toolkit {

/// Every line gets the size of the widest one, so that the list is laid out without asking each line and can
/// be scrolled to the end of the longest. A line is indented by its kIndentLevel.
class LineDelegate : public QStyledItemDelegate {
 public:
    static constexpr int kIndentLevel = Qt::UserRole + 100;  // the item's role: int, 0 when it has none

    explicit LineDelegate(QAbstractItemView* view);

    void SetDeepestLevel(int level) { deepest_level_ = level; }
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

 private:
    mutable LineWidth width_;  // remembers what it has measured
    int deepest_level_ = 0;
};

}  // namespace toolkit
