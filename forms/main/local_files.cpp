// What the local panel's buttons do with the selected files of the user's own computer. Each acts on the very
// file that its row was made from; a failure is told in the trace.

#include "app/shared/file_errors.h"
#include "app/shared/long_work.h"
#include "forms/main/main_form.h"
#include "ftp/trace_translator.h"
#include "platform/drive_path.h"
#include "platform/file_changes.h"
#include "toolkit/message_box.h"

namespace forms {

using toolkit::Answer;

void MainForm::Tell(platform::FileResult result, const QString& path) {
    if (result != platform::FileResult::Done)
        Trace(ftp::ErrorLine(static_cast<int>(result), app::FileErrorText(result, path)));
}

// A row that alone is marked goes before the current one.
int MainForm::LocalRow() const {
    return List1->SelCount() == 1 ? List1->SelectedRows().first() : List1->ListIndex();
}

// The row that an operation on one file acts on, -1 without one. The first row is current without having been
// chosen.
int MainForm::SingleLocalRow() const {
    const int marked = List1->SelCount();
    return marked > 1 || (marked == 0 && LocalRow() == 0) ? -1 : LocalRow();
}

// At a drive's root the separator comes out doubled, which names the same folder.
void MainForm::Command3_Click() {
    const QString name = toolkit::InputBox(this, QStringLiteral("Namn på ny katalog i ") + Dir1->Path(),
                                           QStringLiteral("Skapa katalog"));
    if (name.isEmpty()) return;
    const QString path = Dir1->Path() + u'\\' + name;
    Tell(platform::MakeFolder(path), path);
    Command7_Click();
}

void MainForm::Command4_Click() {
    const int row = SingleLocalRow();
    if (row >= 0) ShowText(LocalPathOfRow(row));
}

void MainForm::Command5_Click() {
    const int row = SingleLocalRow();
    if (row >= 0) StartDoc(LocalPathOfRow(row));
}

void MainForm::Command6_Click() {
    if (List1->SelCount() > 1) return RefuseToRenameSeveral();
    const int row = SingleLocalRow();
    if (row < 0) return;
    const QString path = LocalPathOfRow(row);
    const QString name = toolkit::InputBox(this, QStringLiteral("Nytt namn på [") + List1->List(row) + u']',
                                           QStringLiteral("Döp om fil"));
    if (name.isEmpty()) return;
    const QString target = platform::Join(Dir1->Path(), name);
    const platform::FileResult result = platform::RenameFile(path, target);
    Tell(result, result == platform::FileResult::AlreadyExists ? target : path);
    Command7_Click();
}

void MainForm::Command8_Click() {
    if (List1->SelCount() > 1) return fleratabort2_Click();
    const int row = LocalRow();
    if (row < 0) return;
    const QString path = LocalPathOfRow(row);
    const QString question = QStringLiteral("Vill du ta bort [") +
                             platform::Join(Dir1->Path(), List1->List(row)) + QStringLiteral("] ?");
    if (toolkit::MsgBox(this, question, toolkit::Buttons::YesNo, toolkit::Icon::Information,
                        QStringLiteral("Ta bort fil")) != Answer::No)
        Tell(platform::DeleteFile(path), path);
    Command7_Click();
}

// The window may be closed meanwhile; what has not been deleted by then stays.
void MainForm::fleratabort2_Click() {
    if (!UserWantsToDeleteMarked()) return;
    QStringList paths;
    for (const int row : List1->SelectedRows()) paths.append(LocalPathOfRow(row));
    {
        app::LongWork work;
        for (const QString& path : paths) {
            Tell(platform::DeleteFile(path), path);
            work.Yield();
            if (!isVisible()) return;
        }
    }
    Command7_Click();
}

}  // namespace forms
