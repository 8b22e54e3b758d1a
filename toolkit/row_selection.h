#pragma once
// What the list controls have in common: their selection, counted in rows. UI thread only.

#include <QAbstractItemView>
#include <QKeyEvent>

namespace toolkit {

int CurrentRow(const QAbstractItemView& view);               // -1 without one
bool IsRowSelected(const QAbstractItemView& view, int row);  // false outside the list
int CountSelectedRows(const QAbstractItemView& view);        // by ranges, not by rows
QList<int> SelectedRowsOf(const QAbstractItemView& view);    // ascending

/// Whether the key is Enter and the current row is selected, which then stands for a double click on it.
bool IsEnterOnRow(const QAbstractItemView& view, const QKeyEvent& event);

/// Tells whether the selection or the current row of a view has moved since it was made.
class SelectionWatch : public QObject {
 public:
    explicit SelectionWatch(const QAbstractItemView& view);
    bool Moved() const { return moved_; }

 private:
    bool moved_ = false;
};

}  // namespace toolkit
