// The remembered local folders and their menu.

#include <QCursor>

#include "forms/main/main_form.h"
#include "platform/folder.h"

namespace forms {

void MainForm::lk_Click() {
    const QString folder = lk->currentText();
    if (Dir1->Path() != folder) {
        Drive1->SetDrive(folder.left(3));
        Dir1->SetPath(folder);
    }
    if (lk->findText(folder, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0) lk->addItem(folder);
}

void MainForm::lk_KeyPress(int key_ascii) {
    if (key_ascii == '\r') lk_Click();
}

void MainForm::Command22_Click() {
    tabd->popup(QCursor::pos());
}

void MainForm::tabort2_Click() {
    lk->removeItem(lk->findText(lk->currentText(), Qt::MatchExactly | Qt::MatchCaseSensitive));
    SelectFirstRemembered();
}

void MainForm::tabort3_Click() {
    lk->clear();
    lk->addItem(platform::ProgramFolder());
    SelectFirstRemembered();
}

// Choosing an entry opens its folder, whoever chooses it.
void MainForm::SelectFirstRemembered() {
    if (lk->count() == 0) return;
    lk->setCurrentIndex(0);
    lk_Click();
}

}  // namespace forms
