#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>

#include "toolkit/line_delegate.h"
#include "toolkit/lists.h"
#include "toolkit/row_selection.h"

namespace toolkit {

ListBox::ListBox(QWidget* parent) : QListView(parent), own_lines_(new LineModel(this)) {
    setItemDelegate(new LineDelegate(this));
    setUniformItemSizes(true);
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollMode(ScrollPerPixel);
    setModel(own_lines_);
}

void ListBox::setModel(QAbstractItemModel* model) {
    QListView::setModel(model);
    RowSelection::GiveTo(*this);
}

LineModel* ListBox::Lines() const {
    return model() == own_lines_ ? own_lines_ : nullptr;
}

int ListBox::ListCount() const {
    return model() ? model()->rowCount() : 0;
}

QString ListBox::List(int row) const {
    return model() ? model()->index(row, 0).data().toString() : QString();
}

void ListBox::AddItem(const QString& text) {
    own_lines_->Add(text);
}

void ListBox::RemoveItem(int row) {
    own_lines_->Remove(row);
}

void ListBox::Clear() {
    own_lines_->Clear();
}

int ListBox::ListIndex() const {
    return CurrentRow(*this);
}

void ListBox::SetListIndex(int row) {
    if (!model()) return;
    const bool selects = selectionMode() == SingleSelection;
    const QModelIndex index = model()->index(row, 0);
    using Selection = QItemSelectionModel;
    selectionModel()->setCurrentIndex(
        index, selects ? Selection::ClearAndSelect | Selection::Rows : Selection::NoUpdate);
    if (index.isValid()) scrollTo(index);
}

QString ListBox::Text() const {
    return List(ListIndex());
}

bool ListBox::Selected(int row) const {
    return IsRowSelected(*this, row);
}

void ListBox::SetSelected(int row, bool selected) {
    if (!model() || !model()->hasIndex(row, 0)) return;
    using Selection = QItemSelectionModel;
    const QModelIndex index = model()->index(row, 0);
    // Past RowSelection, which would take it for a user's choice.
    selectionModel()->Selection::select(
        QItemSelection(index, index), Selection::Rows | (selected ? Selection::Select : Selection::Deselect));
}

int ListBox::SelCount() const {
    return CountSelectedRows(*this);
}

QList<int> ListBox::SelectedRows() const {
    return SelectedRowsOf(*this);
}

void ListBox::CopySelectedLines() const {
    QStringList lines;
    for (int row : SelectedRows()) lines.append(List(row));
    if (!lines.isEmpty()) QGuiApplication::clipboard()->setText(lines.join(u'\n'));
}

void ListBox::keyPressEvent(QKeyEvent* event) {
    if (IsEnterOnRow(*this, *event)) {
        Q_EMIT DblClick();
        return;
    }
    if (event->matches(QKeySequence::Copy)) {
        CopySelectedLines();
        return;
    }
    const SelectionWatch watch(*this);
    if (!TakeChoice(*this, *event)) QListView::keyPressEvent(event);
    if (watch.Moved()) Q_EMIT Click();
}

void ListBox::keyReleaseEvent(QKeyEvent* event) {
    QListView::keyReleaseEvent(event);
    Q_EMIT KeyUp(event->key());
}

void ListBox::mousePressEvent(QMouseEvent* event) {
    pressed_ = indexAt(event->position().toPoint()).isValid();
    mouse_.emplace(*this);
    QListView::mousePressEvent(event);
}

void ListBox::mouseReleaseEvent(QMouseEvent* event) {
    QListView::mouseReleaseEvent(event);
    mouse_.reset();
    if (std::exchange(pressed_, false)) Q_EMIT Click();
}

void ListBox::mouseDoubleClickEvent(QMouseEvent* event) {
    pressed_ = false;
    mouse_.reset();
    QListView::mouseDoubleClickEvent(event);
    const bool on_row = indexAt(event->position().toPoint()).isValid();
    if (on_row && event->button() == Qt::LeftButton) Q_EMIT DblClick();
}

void ListBox::focusOutEvent(QFocusEvent* event) {
    QListView::focusOutEvent(event);
    mouse_.reset();  // a menu takes the button's release
    const Qt::FocusReason reason = event->reason();
    if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason) Q_EMIT LostFocus();
}

}  // namespace toolkit
