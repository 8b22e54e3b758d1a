// What the form definition cannot say: pictures, fonts, shared selections, and what follows the window's
// size.

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScreen>
#include <QSplitterHandle>
#include <QStyledItemDelegate>
#include <algorithm>
#include <functional>

#include "app/shared/busy_focus.h"
#include "forms/about/help_panel_form.h"
#include "forms/main/main_form.h"
#include "ftp/operation_gate.h"
#include "toolkit/accessible.h"
#include "toolkit/fonts.h"
#include "toolkit/splitter.h"

namespace forms {
namespace {

// Pixels.
constexpr QSize kFirstSize(1000, 720);
constexpr int kPanelForListsSideBySide = 560;
constexpr int kBesideCells = 12;
constexpr int kBetweenLines = 5;
constexpr int kBesideCaption = 16;

// Rows of one height, with or without pictures.
class RoomyRows : public QStyledItemDelegate {
 public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QSize needed = QStyledItemDelegate::sizeHint(option, index);
        return needed.expandedTo({0, option.fontMetrics.height() + kBetweenLines});
    }
};

int CompactWidth(const QPushButton& button) {
    const int text = button.fontMetrics().horizontalAdvance(button.text());
    return kBesideCaption + (text > 0 ? text : button.iconSize().width());
}

void ShowPicture(QLabel& label, const QString& file) {
    const int extent = label.style()->pixelMetric(QStyle::PM_SmallIconSize);
    label.setPixmap(QIcon(file).pixmap(QSize(extent, extent), label.devicePixelRatioF()));
    toolkit::MakeDecorative(label);
}

// What the window and its panels are to those who hear them.
void TellRoles(QWidget& window, std::initializer_list<QWidget*> panels) {
    toolkit::SetAccessibleRole(window, QAccessible::Window);
    for (QWidget* panel : panels) toolkit::SetAccessibleRole(*panel, QAccessible::Grouping);
    toolkit::NameInnerParts(window);
}

}  // namespace

void MainForm::PrepareLayout() {
    resize(kFirstSize.boundedTo(screen()->availableSize()));
    TellRoles(*this, {Frame1, Frame2});
    ShowPicture(*lokal1, QStringLiteral(":/main/computer.svg"));
    ShowPicture(*server1, QStringLiteral(":/main/server.svg"));
    toolkit::MakeHeading(*local_caption);
    toolkit::MakeHeading(*server_caption);

    list2->setModel(local_files_);
    toolkit::ShareSelection(*List1, *list2);
    listdir2->setModel(server_lines_);
    toolkit::ShareSelection(*listDir, *listdir2);
    for (auto* list : std::initializer_list<QTreeView*>{list2, listdir2})
        list->setItemDelegate(new RoomyRows(list));
    for (QWidget* list : std::initializer_list<QWidget*>{listDir, listdir2, listTrace})
        list->setFont(toolkit::FixedPitchFont());
    listdir2->header()->setFont(QFont(font().family(), font().pointSize()));
    listTrace->setSelectionMode(QAbstractItemView::ExtendedSelection);
    for (QPushButton* button : {Command22, Command29}) button->setFixedWidth(CompactWidth(*button));
    panels->setSizes({1000, 1250});
    workspace->setSizes({1000, 220});

    tabd->addAction(tabort2);
    tabd->addAction(tabort3);
    p1->SetRole(toolkit::PictureBox::Role::Empty);
    p2->SetRole(toolkit::PictureBox::Role::Filled);
    p2->SetWidth(0);
    antal2->setForegroundRole(QPalette::HighlightedText);
    lblState->Show(QStringLiteral("Ej ansluten"));
    label7->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("1000000000")));
    p1->installEventFilter(this);
    Text1->lineEdit()->installEventFilter(this);
    for (QPushButton* button : findChildren<QPushButton*>()) button->installEventFilter(this);
    ftp::OperationGate::AllowWhileBusy(avb);
    ftp::OperationGate::AllowWhileBusy(listTrace);
    new app::BusyFocus(*this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (qobject_cast<QSplitterHandle*>(now)) return;  // on the way from one part to another
        if (Frame1->isAncestorOf(now) || Frame2->isAncestorOf(now))
            works_on_server_ = Frame2->isAncestorOf(now);
    });
    PrepareMenus();
    PrepareDrops();
}

void MainForm::resizeEvent(QResizeEvent*) {
    MDIForm_Resize();
}

// The smallest size is the window's own minimum, and the layouts share what there is. In a wide panel the
// folders stand beside the files and not above them.
void MainForm::MDIForm_Resize() {
    const bool wide = Frame1->width() >= kPanelForListsSideBySide;
    const Qt::Orientation orientation = wide ? Qt::Horizontal : Qt::Vertical;
    if (local_lists->orientation() == orientation) return;
    local_lists->setOrientation(orientation);
    local_lists->setSizes(wide ? QList{1000, 2000} : QList{1000, 1700});
}

// Size and time are as wide as they are; the name takes the rest, as long as there is one.
void MainForm::FitFileColumns() {
    const QFontMetrics font = list2->fontMetrics();
    const int size = font.horizontalAdvance(QStringLiteral("1000000000")) + kBesideCells;
    const int time = font.horizontalAdvance(QStringLiteral("2000-00-00 00:00:00")) + kBesideCells;
    list2->setColumnWidth(0, std::max(size, list2->viewport()->width() - size - time));
    list2->setColumnWidth(1, size);
}

// A button that is disabled or hidden leaves the focus to whatever comes next, which may be the other panel.
void MainForm::KeepFocusIn(QWidget& list, const QWidget* focused) {
    if (focused && !(focused->isEnabled() && focused->isVisible())) list.setFocus();
}

// The percentage stands in the middle of the bar twice, once in the colour of each of its parts; the filled
// part covers the one below it.
void MainForm::PlacePercentages() {
    antal->setGeometry(p1->rect());
    antal2->setGeometry(p1->rect());
}

void MainForm::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel) && help_panel_) help_panel_->close();
    if (event->key() == Qt::Key_F8) return toolkit::FocusNextHandle(*this);
    if (event->key() != Qt::Key_F5) return QWidget::keyPressEvent(event);
    (works_on_server_ ? Command9 : Command7)->click();
}

bool MainForm::eventFilter(QObject* watched, QEvent* event) {
    if (watched == list2->viewport() && event->type() == QEvent::Resize) FitFileColumns();
    if (watched == p1 && event->type() == QEvent::Resize) PlacePercentages();
    if (watched == Text1->lineEdit() && event->type() == QEvent::MouseButtonRelease) Text1_Click();
    switch (event->type()) {
        case QEvent::Shortcut:
            return PressByLetter(qobject_cast<QAbstractButton*>(watched));
        case QEvent::KeyPress:
            return HandleListKey(watched, *static_cast<QKeyEvent*>(event));
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::Drop:
            return HandleDrag(watched, *static_cast<QDropEvent*>(event));
        default:
            return QWidget::eventFilter(watched, event);
    }
}

// At once: Qt's own press comes by a timer, which may go off in the middle of an operation.
//
// A letter that the panel where the user works has is that panel's own, also where its button cannot be
// pressed now: the same letter beyond may delete something else. Of several that can be pressed each gets the
// focus in turn.
bool MainForm::PressByLetter(QAbstractButton* button) {
    if (!button) return false;
    const auto in_panel = [this](const QAbstractButton* candidate) {
        return works_on_server_ ? !Frame1->isAncestorOf(candidate) : Frame1->isAncestorOf(candidate);
    };
    QList<QAbstractButton*> owners;
    for (QAbstractButton* candidate : findChildren<QAbstractButton*>())
        if (candidate->shortcut() == button->shortcut()) owners.append(candidate);
    if (std::ranges::any_of(owners, in_panel)) owners.removeIf(std::not_fn(in_panel));
    owners.removeIf([](const QAbstractButton* owner) { return !owner->isEnabled() || !owner->isVisible(); });
    if (owners.size() == 1)
        owners.first()->click();
    else if (!owners.isEmpty())
        owners[(owners.indexOf(focusWidget()) + 1) % owners.size()]->setFocus(Qt::ShortcutFocusReason);
    return true;
}

}  // namespace forms
