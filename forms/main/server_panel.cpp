// The server panel: reading the listing, moving between directories, and what the selection allows.

#include "app/shared/ftpglob.h"
#include "app/shared/window_routines.h"
#include "forms/main/main_form.h"
#include "forms/main/selection_rules.h"
#include "toolkit/message_box.h"

namespace forms {
namespace {

void Apply(Change change, QPushButton& button) {
    if (change != Change::Leave) button.setEnabled(change == Change::Enable);
}

}  // namespace

void MainForm::Command9_Click() {
    app::Globals().ServerListBusy = true;
    for (QPushButton* button : {Command1, Command2, Command23}) button->setEnabled(false);
    Ftp1->ModeFlagA = true;
    Ftp1->ModeFlagB = true;
    app::SetHourglass(true);
    ClearServerLists();
    Ftp1->ListDirectory();
    const QWidget* const focused = focusWidget();
    for (QPushButton* button : {Command10, Command11, Command12, Command13}) button->setEnabled(false);
    KeepFocusIn(*listdir2, focused);
    for (QPushButton* button : {Command23, Command21, Command14}) button->setEnabled(true);
    BuildServerList();
    app::SetHourglass(false);
    app::Globals().ServerListBusy = false;
}

void MainForm::Command21_Click() {
    ClearServerLists();
    Ftp1->ChangeToParent();
    ClearServerLists();
    for (QPushButton* button : {Command2, Command10, Command11, Command12, Command13})
        button->setEnabled(false);
    Command9_Click();
}

// The row that counts is a selected one, so that no button ever acts on a row that is not marked.
void MainForm::listDir_Click() {
    const ServerRow row = ClassifyServerRow(listdir2->SelectedItemText(), SelectedServerName());
    app::ftpglob& globals = app::Globals();
    globals.SelectedServerFile = row.file;
    globals.SelectedServerDir = row.dir;
    const ServerButtons buttons = ButtonsForSelection(row, listDir->SelCount(), globals.ServerListBusy);
    Apply(buttons.Command2, *Command2);
    Apply(buttons.Command10, *Command10);
    Apply(buttons.Command11, *Command11);
    Apply(buttons.Command12, *Command12);
    Apply(buttons.Command13, *Command13);
}

void MainForm::listDir_DblClick() {
    const QString directory = app::Globals().SelectedServerDir;
    if (directory.isEmpty()) return;
    ClearServerLists();
    Ftp1->DirectoryName = directory;
    Ftp1->ChangeDirectory();
    Command9_Click();
}

void MainForm::listDir_LostFocus() {
    if (!app::Globals().ServerListBusy && listDir->Text().isEmpty()) Command2->setEnabled(false);
}

void MainForm::listdir2_Click() {
    setWindowTitle(toolkit::kDefaultTitle);
}

void MainForm::listdir2_DblClick() {
    listDir_DblClick();
}

// Both lists share one selection: what is marked in this one is marked in listDir.
void MainForm::listdir2_ItemClick(int) {
    listDir_Click();
}

void MainForm::listdir2_LostFocus() {
    if (!app::Globals().ServerListBusy && listdir2->SelectedItemText().isEmpty()) Command2->setEnabled(false);
}

}  // namespace forms
