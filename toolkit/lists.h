#pragma once
// Classic list controls over Qt's model/view. UI thread only. Lists are models: 100,000 rows are nothing
// special.

#include <QAbstractListModel>
#include <QListView>
#include <QTreeView>
#include <deque>
#include <optional>

#include "toolkit/row_selection.h"

namespace toolkit {

class LineWidth;

/// Lines of text, oldest first, with cheap removal at the front.
class LineModel : public QAbstractListModel {
    Q_OBJECT
 public:
    using QAbstractListModel::QAbstractListModel;

    int Count() const { return static_cast<int>(lines_.size()); }  // also of lines not yet published
    QString At(int row) const;                                     // empty outside the list
    void Add(const QString& line);
    void Remove(int row);
    void RemoveFirst() { Remove(0); }
    void Clear();
    void SetLines(const QStringList& lines);

    /// Between Hold and Publish the views see an empty list, however many lines are added; Publish shows all
    /// of them at once.
    void Hold();
    void Publish();

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

 private:
    std::deque<QString> lines_;
    bool held_ = false;
};

/// A list box over any model (column 0). Own LineModel unless another is set. Single selection unless the
/// selection mode is set to another. Can be scrolled sideways to the end of the longest line.
class ListBox : public QListView {
    Q_OBJECT
 public:
    explicit ListBox(QWidget* parent = nullptr);
    void setModel(QAbstractItemModel* model) override;

    /// The own model; null after another model has been set.
    LineModel* Lines() const;

    int ListCount() const;
    QString List(int row) const;
    void AddItem(const QString& text);  // own model only, as RemoveItem and Clear
    void RemoveItem(int row);
    void Clear();
    int ListIndex() const;       // the current row, -1 without one
    void SetListIndex(int row);  // single selection: selects; multi: moves the current row only; scrolls
    QString Text() const;        // text of the current row, empty without one
    bool Selected(int row) const;
    void SetSelected(int row, bool selected);
    int SelCount() const;             // cheap also when 100,000 rows are selected in one range
    QList<int> SelectedRows() const;  // ascending
    void CopySelectedLines() const;   // to the clipboard, one per line; Ctrl+C does it

 Q_SIGNALS:
    void Click();  // a row was clicked, or the selection moved by keyboard; the selection has changed by then
    void DblClick();  // a row was double-clicked, or Enter pressed on it while selected
    void KeyUp(int key);
    void LostFocus();  // to another control, not to a menu or another window

 protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

 private:
    LineModel* const own_lines_;
    bool pressed_ = false;                 // the mouse, on a row, for a click
    std::optional<SelectionWatch> mouse_;  // as long as a button is down
};

/// A list view with column headers (report style) over any table model; whole rows are selected, Ctrl, Shift
/// and Ctrl+A work as users expect. Ctrl+F1 shows the current row's tool tip until the next key. Rows have
/// one height and are laid out on demand. The last column reaches the right edge, and further where a text in
/// it is longer.
class ListView : public QTreeView {
    Q_OBJECT
 public:
    explicit ListView(QWidget* parent = nullptr);
    void setModel(QAbstractItemModel* model) override;

    int ListIndex() const;
    bool Selected(int row) const;
    int SelCount() const;
    QList<int> SelectedRows() const;
    /// The text in column 0 of the current row if it is selected, else of the first selected row, else empty.
    QString SelectedItemText() const;

 Q_SIGNALS:
    void ItemClick(
        int row);      // raised before Click when a row was hit, and when the selection moves by keyboard
    void Click();      // a click anywhere in the rows' area, or the selection moved by keyboard
    void DblClick();   // a row was double-clicked, or Enter pressed on it while selected
    void LostFocus();  // to another control, not to a menu or another window
    void DragEnded();  // rows that were dragged have been dropped somewhere, or nowhere

 public Q_SLOTS:
    void doItemsLayout() override;

 protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void startDrag(Qt::DropActions actions) override;

 private:
    enum class Press { None, OnRow, BesideRows };
    void EndPress();  // raises the events of a click
    void ShowTip();
    void FitLastColumn();
    int WidestItem(int column) const;  // pixels

    LineWidth* const width_;
    Press press_ = Press::None;
    std::optional<SelectionWatch> mouse_;  // as long as a button is down
};

/// Gives `view` the model, the selection and the selection mode of `other`: two views of one model with one
/// selection. `other` has its model already and lives as long as `view`.
void ShareSelection(QAbstractItemView& view, QAbstractItemView& other);

}  // namespace toolkit
