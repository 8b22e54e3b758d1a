#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QToolTip>
#include <algorithm>
#include <utility>

#include "toolkit/line_width.h"
#include "toolkit/lists.h"
#include "toolkit/row_selection.h"

namespace toolkit {

ListView::ListView(QWidget* parent) : QTreeView(parent), width_(new LineWidth(*this)) {
    width_->setParent(this);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(ExtendedSelection);
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollMode(ScrollPerPixel);
    header()->setStretchLastSection(false);
    header()->setHighlightSections(false);
    header()->setSectionsMovable(false);
    connect(header(), &QHeaderView::sectionResized, this, [this](int section) {
        if (section != header()->count() - 1) FitLastColumn();
    });
}

void ListView::setModel(QAbstractItemModel* model) {
    QTreeView::setModel(model);
    RowSelection::GiveTo(*this);
}

int ListView::ListIndex() const {
    return CurrentRow(*this);
}

bool ListView::Selected(int row) const {
    return IsRowSelected(*this, row);
}

int ListView::SelCount() const {
    return CountSelectedRows(*this);
}

QList<int> ListView::SelectedRows() const {
    return SelectedRowsOf(*this);
}

QString ListView::SelectedItemText() const {
    if (SelCount() == 0) return {};
    const int row = Selected(ListIndex()) ? ListIndex() : SelectedRows().first();
    return model()->index(row, 0).data().toString();
}

void ListView::doItemsLayout() {
    FitLastColumn();
    QTreeView::doItemsLayout();
}

void ListView::FitLastColumn() {
    const int last = header()->count() - 1;
    if (last < 0) return;
    const int others = header()->length() - header()->sectionSize(last);
    header()->resizeSection(last, std::max(viewport()->width() - others, WidestItem(last)));
}

int ListView::WidestItem(int column) const {
    const QModelIndex top = model()->index(0, column);
    if (!top.isValid()) return 0;
    const int around_text = sizeHintForIndex(top).width() - width_->Advance(top.data().toString());
    return around_text + width_->Widest(column);
}

void ListView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_F1 && event->modifiers() == Qt::ControlModifier) return ShowTip();
    QToolTip::hideText();
    if (IsEnterOnRow(*this, *event)) {
        Q_EMIT DblClick();
        return;
    }
    const SelectionWatch watch(*this);
    if (!TakeChoice(*this, *event)) QTreeView::keyPressEvent(event);
    if (!watch.Moved()) return;
    // Ctrl+A selects also where no row has been current yet.
    if (ListIndex() < 0)
        selectionModel()->setCurrentIndex(model()->index(0, 0), QItemSelectionModel::NoUpdate);
    Q_EMIT ItemClick(ListIndex());
    Q_EMIT Click();
}

// The same that the mouse gets.
void ListView::ShowTip() {
    if (!currentIndex().isValid()) return;
    scrollTo(currentIndex());
    const QPoint place(viewport()->rect().center().x(), visualRect(currentIndex()).center().y());
    QHelpEvent wish(QEvent::ToolTip, place, viewport()->mapToGlobal(place));
    QApplication::sendEvent(viewport(), &wish);
}

void ListView::mousePressEvent(QMouseEvent* event) {
    press_ = indexAt(event->position().toPoint()).isValid() ? Press::OnRow : Press::BesideRows;
    mouse_.emplace(*this);
    QTreeView::mousePressEvent(event);
}

void ListView::mouseReleaseEvent(QMouseEvent* event) {
    QTreeView::mouseReleaseEvent(event);
    EndPress();
}

void ListView::EndPress() {
    mouse_.reset();
    const Press press = std::exchange(press_, Press::None);
    if (press == Press::OnRow && ListIndex() >= 0) Q_EMIT ItemClick(ListIndex());
    if (press != Press::None) Q_EMIT Click();
}

// The view does not hear of the mouse button's release after a drag: what is dragged is chosen now.
void ListView::startDrag(Qt::DropActions actions) {
    EndPress();
    QTreeView::startDrag(actions);
    Q_EMIT DragEnded();
}

void ListView::mouseDoubleClickEvent(QMouseEvent* event) {
    press_ = Press::None;
    mouse_.reset();
    QTreeView::mouseDoubleClickEvent(event);
    const bool on_row = indexAt(event->position().toPoint()).isValid();
    if (on_row && event->button() == Qt::LeftButton) Q_EMIT DblClick();
}

void ListView::focusOutEvent(QFocusEvent* event) {
    QTreeView::focusOutEvent(event);
    mouse_.reset();  // a menu takes the button's release
    const Qt::FocusReason reason = event->reason();
    if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason) Q_EMIT LostFocus();
}

void ListView::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    FitLastColumn();
}

}  // namespace toolkit
