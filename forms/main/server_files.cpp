// What the server panel's buttons do with the selected file or directory of the server.

#include "app/shared/ftpglob.h"
#include "forms/main/main_form.h"
#include "ftp/listing_rows.h"
#include "ftp/trace_translator.h"
#include "platform/drive_path.h"
#include "platform/file_changes.h"
#include "toolkit/message_box.h"

namespace forms {

using toolkit::Answer;
using toolkit::Buttons;
using toolkit::Icon;
using toolkit::MsgBox;

void MainForm::Command10_Click() {
    if (listDir->SelCount() != 1) return RefuseToRenameSeveral();
    QString& file = app::Globals().SelectedServerFile;
    if (file.endsWith(u'\\')) file.chop(1);
    const QString name =
        toolkit::InputBox(this, QStringLiteral("Nytt namn på [") + file + u']', QStringLiteral("Döp om fil"));
    if (name.isEmpty()) return;
    Ftp1->SourceFileName = file;
    Ftp1->DestinationFileName = name;
    Ftp1->RenameFile();
    Command9_Click();
}

void MainForm::RefuseToRenameSeveral() {
    MsgBox(this, QStringLiteral("Det går tyvärr inte att ta döpa om fler än en fil i taget."), Buttons::Ok,
           Icon::Information, QStringLiteral("OBS!"));
}

void MainForm::Command13_Click() {
    if (listDir->SelCount() != 1) return fleratabort_Click();
    const QString file = app::Globals().SelectedServerFile;
    const QString directory = app::Globals().SelectedServerDir;
    const QString question =
        QStringLiteral("Vill du ta bort [") + (file.isEmpty() ? directory : file) + QStringLiteral("] ?");
    if (MsgBox(this, question, Buttons::YesNo, Icon::Information,
               QStringLiteral("Ta bort fil/katalog från server")) == Answer::No)
        return;
    if (!file.isEmpty()) {
        DeleteServerFile(file);
        Command9_Click();
    }
    if (!directory.isEmpty()) {
        Ftp1->DirectoryName = directory;
        Ftp1->RemoveDirectory();
        Command9_Click();
    }
}

void MainForm::DeleteServerFile(const QString& name) {
    Ftp1->SourceFileName = name;
    Ftp1->DestinationFileName = name;
    Ftp1->DeleteFile();
}

// Only files: a directory among the selected lines is refused by the server. A row whose name ends with a
// blank is left out: without it the name would be that of another file, which nobody has marked.
void MainForm::fleratabort_Click() {
    if (!UserWantsToDeleteMarked()) return;
    HoldServerPanel();
    QStringList lines;
    for (const int row : listDir->SelectedRows()) lines.append(listDir->List(row));
    l1->Lines()->SetLines(lines);
    for (int entry = 0; entry < l1->ListCount(); ++entry) {
        l1->SetListIndex(entry);
        const QString name = ftp::NameOfListingLine(l1->Text());
        if (name == name.trimmed())
            DeleteServerFile(name);
        else
            TellUnusable(name);
    }
    ReleaseServerPanel();
    Command9_Click();
}

void MainForm::TellUnusable(const QString& name) {
    constexpr int kInvalidArgument = 10022;
    Trace(ftp::ErrorLine(
        kInvalidArgument,
        QStringLiteral("Namnet kan inte användas, för det slutar med ett blanksteg: [") + name + u']'));
}

bool MainForm::UserWantsToDeleteMarked() {
    return MsgBox(this, QStringLiteral("Vill du ta bort alla markerade filer ?"), Buttons::YesNo,
                  Icon::Information, QStringLiteral("Ta bort filer")) == Answer::Yes;
}

void MainForm::Command14_Click() {
    const QString name =
        toolkit::InputBox(this, QStringLiteral("Namn på ny katalog"), QStringLiteral("Skapa katalog"));
    if (name.isEmpty()) return;
    Ftp1->ModeFlagA = true;
    Ftp1->ModeFlagB = true;
    Ftp1->DirectoryName = name;
    Ftp1->MakeDirectory();
    Command9_Click();
}

void MainForm::Command11_Click() {
    if (const std::optional<QString> copy = FetchIntoTemporaryFolder()) StartDoc(*copy);
}

void MainForm::Command12_Click() {
    if (const std::optional<QString> copy = FetchIntoTemporaryFolder()) ShowText(*copy);
}

// After a listing the first row is the current one without having been chosen, and the name is an old one.
//
// A copy that could not be fetched is not opened: what lies in the folder under its name is an older one, or
// something else altogether. The trace has said why.
std::optional<QString> MainForm::FetchIntoTemporaryFolder() {
    const QString file = app::Globals().SelectedServerFile;
    if (listDir->SelCount() == 0 || file.isEmpty()) return {};
    const QString folder = platform::TemporaryFolder();
    if (folder.isEmpty()) {
        Tell(platform::FileResult::PathError, QStringLiteral("temp"));
        return {};
    }
    const QString copy = platform::Join(folder, file);
    const int failures = failures_;
    ResetStrip();
    Fetch(file, copy);
    return failures == failures_ && isVisible() ? std::optional(copy) : std::nullopt;
}

}  // namespace forms
