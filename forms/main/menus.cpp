// Context menus, and keys beside the letters of the buttons. Whatever a button does is done by the button, so
// that it is possible here when it is possible there.

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>

#include "app/shared/ftpglob.h"
#include "forms/main/main_form.h"
#include "ftp/operation_gate.h"
#include "platform/drive_path.h"
#include "platform/folder.h"
#include "platform/whole_file.h"
#include "toolkit/message_box.h"

namespace forms {
namespace {

// A command begins when its menu is gone: it may hold an event loop of its own. An operation that has begun
// meanwhile keeps it away, as it does all input.
template <class Act>
void BeginLater(QAction& action, QObject* receiver, Act act) {
    const auto unless_busy = [receiver, act] {
        if (!ftp::OperationGate::IsUp() || ftp::OperationGate::IsAllowed(receiver)) act();
    };
    QObject::connect(&action, &QAction::triggered, receiver, unless_busy, Qt::QueuedConnection);
}

QAction* Add(QMenu& menu, const QString& name, const QString& text, bool possible) {
    QAction* const action = menu.addAction(text);
    action->setObjectName(name);
    action->setEnabled(possible);
    return action;
}

// The key stands to the right, as in any menu.
void AddButton(QMenu& menu, QPushButton& button, const char* key = "") {
    QAction* const action =
        Add(menu, button.objectName(), button.text() + u'\t' + QString::fromUtf8(key), button.isEnabled());
    action->setIcon(button.icon());
    BeginLater(*action, &button, [&button] { button.click(); });
}

template <class Act>
void AddAction(QMenu& menu, const char* name, const char* text, Act act, bool possible = true) {
    QAction* const action = Add(menu, QString::fromUtf8(name), QString::fromUtf8(text), possible);
    BeginLater(*action, menu.parent(), act);
}

void PopUp(QMenu& menu, const QAbstractItemView& list, QPoint place) {
    menu.setAttribute(Qt::WA_DeleteOnClose);
    menu.popup(list.viewport()->mapToGlobal(place));
}

// Qt knows the menu key only, which many keyboards do not have.
bool AskForMenu(QWidget& list) {
    const QPoint place = list.inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
    QContextMenuEvent wish(QContextMenuEvent::Keyboard, place, list.mapToGlobal(place));
    return QApplication::sendEvent(&list, &wish);
}

// A key that is held starts, removes or renames once.
bool ActsOnMarkedRows(int key) {
    return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Delete || key == Qt::Key_F2;
}

}  // namespace

void MainForm::PrepareMenus() {
    const auto menu = [this](QAbstractItemView* list, void (MainForm::*handler)(QPoint)) {
        list->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(list, &QWidget::customContextMenuRequested, this, handler);
        list->installEventFilter(this);
    };
    menu(list2, &MainForm::ShowLocalMenu);
    menu(Dir1, &MainForm::ShowFolderMenu);
    menu(listdir2, &MainForm::ShowServerMenu);
    menu(listTrace, &MainForm::ShowTraceMenu);
}

void MainForm::ShowLocalMenu(QPoint place) {
    list2_Click();  // the mouse button is still down: the click that chose the row is yet to come
    auto& menu = *new QMenu(list2);
    AddButton(menu, *Command5, "Enter");
    AddButton(menu, *Command4);
    AddButton(menu, *Command6, "F2");
    AddButton(menu, List1->SelCount() > 1 ? *fleratabort2 : *Command8, "Delete");
    menu.addSeparator();
    AddButton(menu, *Command1);
    menu.addSeparator();
    AddButton(menu, *Command3);
    AddButton(menu, *Command7, "F5");
    PopUp(menu, *list2, place);
}

void MainForm::ShowFolderMenu(QPoint place) {
    const QString folder = Dir1->List(Dir1->ListIndex());
    auto& menu = *new QMenu(Dir1);
    AddAction(menu, "open", "&Öppna\tEnter", [this, folder] { Dir1->SetPath(folder); });
    AddAction(menu, "parent", "Katalogen &ovanför\tBackspace", [this] { OpenParentFolder(); });
    menu.addSeparator();
    AddAction(menu, "favourite", "&Lägg till i favoriter...", [this, folder] { AddToFavourites(folder); });
    AddAction(menu, "favourites", "&Välj favoritkatalog...", [this] { Command29->click(); });
    menu.addSeparator();
    AddButton(menu, *Command3);
    AddButton(menu, *Command7, "F5");
    PopUp(menu, *Dir1, place);
}

void MainForm::ShowServerMenu(QPoint place) {
    if (listdir2->SelCount() > 0) listDir_Click();
    listdir2_Click();
    auto& menu = *new QMenu(listdir2);
    AddButton(menu, *Command11, "Enter");
    AddButton(menu, *Command12);
    AddButton(menu, *Command10, "F2");
    AddButton(menu, *Command13, "Delete");
    menu.addSeparator();
    AddButton(menu, *Command2);
    menu.addSeparator();
    AddButton(menu, *Command21, "Backspace");
    AddButton(menu, *Command14);
    AddButton(menu, *Command9, "F5");
    PopUp(menu, *listdir2, place);
}

void MainForm::ShowTraceMenu(QPoint place) {
    const bool lines = listTrace->ListCount() > 0;
    auto& menu = *new QMenu(listTrace);
    AddAction(
        menu, "copy", "&Kopiera\tCtrl+C", [this] { listTrace->CopySelectedLines(); },
        listTrace->SelCount() > 0);
    AddAction(
        menu, "all", "&Markera allt\tCtrl+A", [this] { listTrace->selectAll(); }, lines);
    menu.addSeparator();
    AddAction(
        menu, "save", "&Spara som...", [this] { SaveTrace(); }, lines);
    AddAction(
        menu, "clear", "&Töm", [this] { listTrace->Clear(); }, lines);
    PopUp(menu, *listTrace, place);
}

void MainForm::OpenParentFolder() {
    const QString path = Dir1->Path();
    Dir1->SetPath(path.left(path.lastIndexOf(u'\\') + 1));
}

// The name may be a path of its own; without one it is a file of the folder that is shown.
void MainForm::SaveTrace() {
    const QString title = QStringLiteral("Spara händelserna");
    const QString name = toolkit::InputBox(this, QStringLiteral("Spara händelserna som"), title,
                                           platform::Join(Dir1->Path(), QStringLiteral("ftp-händelser.txt")));
    if (name.isEmpty()) return;
    const QString path = platform::ToNative(name) ? name : platform::Join(Dir1->Path(), name);
    if (platform::FileLength(path) &&
        toolkit::MsgBox(this, QStringLiteral("Vill du skriva över [") + path + QStringLiteral("] ?"),
                        toolkit::Buttons::YesNo, toolkit::Icon::Information, title) == toolkit::Answer::No)
        return;
    QStringList lines;
    for (int row = 0; row < listTrace->ListCount(); ++row) lines.append(listTrace->List(row));
    const QByteArray text = (lines.join(u'\n') + u'\n').toUtf8();
    const std::optional<QByteArray> native = platform::Resolve(path);
    Tell(native ? platform::ReplaceWholeFile(*native, text) : platform::FileResult::PathError, path);
    if (!ftp::OperationGate::IsUp()) Command7_Click();
}

bool MainForm::HandleListKey(const QObject* list, const QKeyEvent& event) {
    if (event.key() == Qt::Key_F10 && event.modifiers() == Qt::ShiftModifier)
        return AskForMenu(*findChild<QWidget*>(list->objectName()));
    if (event.modifiers() & ~Qt::KeypadModifier) return false;
    if (event.isAutoRepeat() && ActsOnMarkedRows(event.key())) return true;
    if (list == list2) return HandleLocalKey(event.key());
    if (list == listdir2) return HandleServerKey(event.key());
    if (list != Dir1 || event.key() != Qt::Key_Backspace) return false;
    OpenParentFolder();
    return true;
}

// Several marked files can be removed, but not renamed: then the handler says so.
bool MainForm::HandleLocalKey(int key) {
    const bool several = List1->SelCount() > 1;
    switch (key) {
        case Qt::Key_Delete:
            several ? fleratabort2->click() : Command8->click();
            return true;
        case Qt::Key_F2:
            several ? Command6_Click() : Command6->click();
            return true;
        case Qt::Key_Backspace:
            OpenParentFolder();
            return true;
        default:
            return false;
    }
}

bool MainForm::HandleServerKey(int key) {
    switch (key) {
        case Qt::Key_Delete:
            Command13->click();
            return true;
        case Qt::Key_F2:
            listDir->SelCount() > 1 ? Command10_Click() : Command10->click();
            return true;
        case Qt::Key_Backspace:
            Command21->click();
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (app::Globals().SelectedServerFile.isEmpty()) return false;  // a directory is entered
            Command11->click();
            return true;
        default:
            return false;
    }
}

}  // namespace forms
