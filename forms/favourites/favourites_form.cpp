#include "forms/favourites/favourites_form.h"

#include <QShortcut>
#include <algorithm>

#include "toolkit/fonts.h"
#include "toolkit/wrapped_label.h"

// The pictures lie in a static library, where nothing else refers to them.
static void RegisterPictures() {
    Q_INIT_RESOURCE(favourites);
}

namespace forms {
namespace {

const QString kNoFolder = QStringLiteral("Sökväg");  // while none is selected

QStringList Items(const toolkit::ListBox& list) {
    QStringList items;
    for (int row = 0; row < list.ListCount(); ++row) items.append(list.List(row));
    return items;
}

// An entry that is missing counts as empty, so that the other one leaves its place.
void Exchange(toolkit::ListBox& list, int a, int b) {
    QStringList items = Items(list);
    items.resize(std::max<qsizetype>(items.size(), std::max(a, b) + 1));
    items.swapItemsAt(a, b);
    list.Lines()->SetLines(items);
}

// Who works by the keyboard is not left on a button that has just gone.
void Enable(QPushButton& button, bool enabled, QWidget& instead) {
    if (!enabled && button.hasFocus()) instead.setFocus();
    button.setEnabled(enabled);
}

}  // namespace

favviskat::favviskat(const FavouritesHost& host) : OwnedDialog(host.window), host_(host) {
    RegisterPictures();
    setupUi(this);
    List1->setFont(toolkit::FixedPitchFont());
    QPalette read_only = label1->palette();
    read_only.setColor(QPalette::Base, read_only.color(QPalette::Window));
    label1->setPalette(read_only);
    Wire();
}

void favviskat::Wire() {
    // Not the click itself: the mouse can also be dragged onto a row from beside the rows.
    connect(List1->selectionModel(), &QItemSelectionModel::selectionChanged, this, &favviskat::List1_Click);
    connect(List1, &toolkit::ListBox::DblClick, this, &favviskat::Command1_Click);
    connect(Command1, &QPushButton::clicked, this, &favviskat::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &favviskat::Command2_Click);
    connect(Command4, &QPushButton::clicked, this, &favviskat::Command4_Click);
    connect(Command5, &QPushButton::clicked, this, &favviskat::Command5_Click);
    connect(Command6, &QPushButton::clicked, this, &favviskat::Command6_Click);
    const auto clicks = &QPushButton::click;
    new QShortcut(Qt::ALT | Qt::Key_Up, this, Command5, clicks);
    new QShortcut(Qt::ALT | Qt::Key_Down, this, Command6, clicks);
    auto* remove = new QShortcut(Qt::Key_Delete, List1, Command4, clicks, Qt::WidgetShortcut);
    remove->setAutoRepeat(false);
}

void favviskat::Form_Load() {
    const settings::Favourites favourites = settings::LoadFavourites(host_.store);
    List1->Lines()->SetLines(favourites.names);
    List2->Lines()->SetLines(favourites.folders);
    ShowCount(favourites.count);
    Select(0);
    List1->setFocus();
    OpenOverOwner();
}

void favviskat::ShowCount(int count) {
    Frame1->setTitle(QString::number(count) + QStringLiteral(" kataloger"));
}

int favviskat::SelectedRow() const {
    return List1->SelectedRows().value(0, -1);
}

void favviskat::Select(int row) {
    List1->SetListIndex(row);
    List1_Click();  // also where there is no such row
}

void favviskat::List1_Click() {
    const int row = SelectedRow();
    const QString folder = List2->List(row);
    label1->setText(row < 0 ? kNoFolder : folder);
    label1->setCursorPosition(0);
    label1->setToolTip(toolkit::PlainToolTip(folder));
    Enable(*Command4, row >= 0, *List1);
    Enable(*Command5, row > 0, *List1);
    Enable(*Command6, row >= 0 && row + 1 < List1->ListCount(), *List1);
}

// Without a choice, as after the last entry has been removed, the list is saved all the same. A drive or
// folder that is not there leaves the window's own as they are.
void favviskat::Command1_Click() {
    const QString folder = List2->List(SelectedRow());
    settings::SaveFavourites(host_.store, Items(*List1), Items(*List2));
    host_.Drive1.SetDrive(folder.left(1));
    host_.Dir.SetPath(folder);
    accept();
}

void favviskat::Command2_Click() {
    reject();
}

// The entry that takes the place is selected, or the last one.
void favviskat::Command4_Click() {
    const int row = SelectedRow();
    List1->RemoveItem(row);
    List2->RemoveItem(row);
    Select(std::min(row, List1->ListCount() - 1));
    ShowCount(List1->ListCount());
}

void favviskat::Command5_Click() {
    ExchangeSelected(SelectedRow() - 1);
}

void favviskat::Command6_Click() {
    ExchangeSelected(SelectedRow() + 1);
}

void favviskat::ExchangeSelected(int with) {
    const int row = SelectedRow();
    if (row < 0 || with < 0 || with >= List1->ListCount()) return;
    Exchange(*List1, row, with);
    Exchange(*List2, row, with);
    Select(with);
}

}  // namespace forms
