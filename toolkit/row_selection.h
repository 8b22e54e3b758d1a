#pragma once
// What the list controls have in common: their selection, counted in rows. UI thread only.

#include <QAbstractItemView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QPointer>

namespace toolkit {

int CurrentRow(const QAbstractItemView& view);               // -1 without one
bool IsRowSelected(const QAbstractItemView& view, int row);  // false outside the list
int CountSelectedRows(const QAbstractItemView& view);        // by ranges, not by rows
QList<int> SelectedRowsOf(const QAbstractItemView& view);    // ascending

/// Whether the key is Enter and the current row is selected, which then stands for a double click on it.
bool IsEnterOnRow(const QAbstractItemView& view, const QKeyEvent& event);

/// The selection of a list. What an assistive program selects or deselects goes straight to it; here it is
/// sent on to the list as a key, so that the list raises what a user's choice raises, and whatever keeps keys
/// away from the list keeps that away, too (but Qt clears a single selection before it makes another). It is
/// known by its command, `Select` or `Deselect` of whole rows outside any SelectionWatch: the program itself
/// selects by other commands, or through the list.
class RowSelection : public QItemSelectionModel {
 public:
    /// Takes the place of the selection that the view has made for its model.
    static void GiveTo(QAbstractItemView& view);

    using QItemSelectionModel::select;
    void select(const QItemSelection& rows, SelectionFlags command) override;

 private:
    friend class SelectionWatch;
    explicit RowSelection(QAbstractItemView& view);

    QAbstractItemView& view_;
    int watches_ = 0;
};

/// Does what an assistive program asked for, if the key is that: the row becomes the current one, too.
bool TakeChoice(QAbstractItemView& view, const QKeyEvent& event);

/// Around what a view itself does with a key or the mouse: tells whether the selection or the current row has
/// moved since it was made.
class SelectionWatch : public QObject {
 public:
    explicit SelectionWatch(const QAbstractItemView& view);
    ~SelectionWatch() override;
    bool Moved() const { return moved_; }

 private:
    const QPointer<RowSelection> selection_;
    bool moved_ = false;
};

}  // namespace toolkit
