#include "toolkit/row_selection.h"

#include <QItemSelectionModel>
#include <algorithm>
#include <numeric>

#include "toolkit/lists.h"

namespace toolkit {
namespace {

using Range = QItemSelectionRange;

// One range for each run of rows. A row counts by its first column, so that it counts once.
QList<Range> RowRanges(const QAbstractItemView& view) {
    if (!view.selectionModel()) return {};
    QList<Range> ranges = view.selectionModel()->selection();
    ranges.removeIf([](const Range& range) { return !range.isValid() || range.left() > 0; });
    std::ranges::sort(ranges, {}, &Range::top);
    return ranges;
}

}  // namespace

int CurrentRow(const QAbstractItemView& view) {
    return view.currentIndex().row();
}

bool IsRowSelected(const QAbstractItemView& view, int row) {
    const QAbstractItemModel* model = view.model();
    return model && model->hasIndex(row, 0) && view.selectionModel()->isSelected(model->index(row, 0));
}

int CountSelectedRows(const QAbstractItemView& view) {
    const QList<Range> ranges = RowRanges(view);
    return std::accumulate(ranges.begin(), ranges.end(), 0,
                           [](int sum, const Range& range) { return sum + range.height(); });
}

QList<int> SelectedRowsOf(const QAbstractItemView& view) {
    QList<int> rows;
    for (const Range& range : RowRanges(view)) {
        for (int row = range.top(); row <= range.bottom(); ++row) rows.append(row);
    }
    return rows;
}

bool IsEnterOnRow(const QAbstractItemView& view, const QKeyEvent& event) {
    const bool enter = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    return enter && IsRowSelected(view, CurrentRow(view));
}

SelectionWatch::SelectionWatch(const QAbstractItemView& view) {
    const auto note = [this] { moved_ = true; };
    const QItemSelectionModel* selection = view.selectionModel();
    if (!selection) return;
    connect(selection, &QItemSelectionModel::selectionChanged, this, note);
    connect(selection, &QItemSelectionModel::currentChanged, this, note);
}

void ShareSelection(QAbstractItemView& view, QAbstractItemView& other) {
    view.setModel(other.model());
    QItemSelectionModel* own = view.selectionModel();
    view.setSelectionModel(other.selectionModel());
    view.setSelectionMode(other.selectionMode());
    delete own;
}

}  // namespace toolkit
