#include "toolkit/row_selection.h"

#include <QApplication>
#include <algorithm>
#include <numeric>

#include "toolkit/lists.h"

namespace toolkit {
namespace {

using Range = QItemSelectionRange;
using Flags = QItemSelectionModel::SelectionFlags;

/// On its way from an assistive program to the list.
class ChoiceKey : public QKeyEvent {
 public:
    ChoiceKey(const QItemSelection& rows, Flags command)
        : QKeyEvent(KeyPress, Qt::Key_unknown, Qt::NoModifier), rows_(rows), command_(command) {}

    void MakeIn(QItemSelectionModel& selection) const {
        selection.setCurrentIndex(rows_.first().topLeft(), QItemSelectionModel::NoUpdate);
        selection.QItemSelectionModel::select(rows_, command_);
    }

 private:
    const QItemSelection rows_;
    const Flags command_;
};

// A dialog keeps the keys of the screen away from all but itself; what comes from a program does not meet it.
bool IsBehindDialog(const QWidget& widget) {
    const QWidget* const dialog = QApplication::activeModalWidget();
    return dialog && !dialog->isAncestorOf(&widget);
}

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

RowSelection::RowSelection(QAbstractItemView& view)
    : QItemSelectionModel(view.selectionModel()->model(), &view), view_(view) {}

void RowSelection::GiveTo(QAbstractItemView& view) {
    QItemSelectionModel* const made = view.selectionModel();
    if (dynamic_cast<RowSelection*>(made)) return;
    view.setSelectionModel(new RowSelection(view));
    delete made;
}

void RowSelection::select(const QItemSelection& rows, SelectionFlags command) {
    const bool by_assistive = command == (Select | Rows) || command == (Deselect | Rows);
    if (!by_assistive || rows.isEmpty() || watches_ > 0) return QItemSelectionModel::select(rows, command);
    if (IsBehindDialog(view_)) return;
    ChoiceKey choice(rows, command);
    QCoreApplication::sendEvent(&view_, &choice);
}

bool TakeChoice(QAbstractItemView& view, const QKeyEvent& event) {
    const auto* const choice = dynamic_cast<const ChoiceKey*>(&event);
    if (choice) choice->MakeIn(*view.selectionModel());
    return choice != nullptr;
}

SelectionWatch::SelectionWatch(const QAbstractItemView& view)
    : selection_(dynamic_cast<RowSelection*>(view.selectionModel())) {
    if (selection_) ++selection_->watches_;
    const auto note = [this] { moved_ = true; };
    const QItemSelectionModel* selection = view.selectionModel();
    if (!selection) return;
    connect(selection, &QItemSelectionModel::selectionChanged, this, note);
    connect(selection, &QItemSelectionModel::currentChanged, this, note);
}

SelectionWatch::~SelectionWatch() {
    if (selection_) --selection_->watches_;
}

void ShareSelection(QAbstractItemView& view, QAbstractItemView& other) {
    view.setModel(other.model());
    QItemSelectionModel* own = view.selectionModel();
    view.setSelectionModel(other.selectionModel());
    view.setSelectionMode(other.selectionMode());
    delete own;
}

}  // namespace toolkit
