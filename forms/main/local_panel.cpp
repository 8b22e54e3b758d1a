// The user's own computer: drives, folders, files, and the selection that the transfers start from.

#include "app/shared/ftpglob.h"
#include "app/shared/window_routines.h"
#include "forms/main/local_rules.h"
#include "forms/main/main_form.h"
#include "platform/drive_path.h"

namespace forms {
namespace {

/// The filter, as one rebuild of the list uses it.
struct Filter {
    int mode;
    std::int64_t size;  // bytes
    QDateTime date, variant;
};

// The variant is in UTC, where no hour of any day is left out.
Filter CurrentFilter() {
    const app::ftpglob& globals = app::Globals();
    const QTime time = QTime::fromString(globals.FilterTimeValue);
    return {globals.FilterMode, globals.FilterSizeBytes, globals.FilterTime,
            QDateTime(globals.FilterTime.date(), time, Qt::UTC)};
}

FileStanding StandingOf(const MainForm& form, const platform::FolderEntry& file, const Filter& filter) {
    const QDateTime changed = QDateTime::fromSecsSinceEpoch(file.modified);
    return {file.size > filter.size, file.size < filter.size,
            form.kolladata1(changed, filter.date, changed, filter.variant),
            form.kolladata2(changed, filter.date, changed, filter.variant)};
}

}  // namespace

bool MainForm::kolladata1(const QDateTime& file_date, const QDateTime& filter_date,
                          const QDateTime& file_variant, const QDateTime& filter_variant) const {
    return IsLater(file_date.date(), filter_date.date(), file_variant.time(), filter_variant.time());
}

bool MainForm::kolladata2(const QDateTime& file_date, const QDateTime& filter_date,
                          const QDateTime& file_variant, const QDateTime& filter_variant) const {
    return IsEarlier(file_date.date(), filter_date.date(), file_variant.time(), filter_variant.time());
}

void MainForm::Dir1_Change() {
    // A changed pattern or path makes File1 read the folder by itself.
    const bool as_before = File1->Pattern() == Text1->currentText() && File1->Path() == Dir1->Path();
    File1->SetPattern(Text1->currentText());
    File1->SetPath(Dir1->Path());
    if (as_before) File1->Refresh();

    const Filter filter = CurrentFilter();
    std::vector<platform::FolderEntry> listed;
    for (const platform::FolderEntry& file : File1->Files())
        if (filter.mode == 0 || FilterLists(filter.mode, StandingOf(*this, file, filter)))
            listed.push_back(file);
    local_files_->SetFiles(File1->Path(), std::move(listed));

    const QWidget* const focused = focusWidget();
    for (QPushButton* button : {Command5, Command4, Command6, Command8, Command1}) button->setEnabled(false);
    ShowDeleteButton(false);
    KeepFocusIn(*list2, focused);
}

void MainForm::Drive1_Change() {
    Dir1->SetPath(Drive1->Drive());
}

void MainForm::Command7_Click() {
    app::SetHourglass(true);
    Dir1->Refresh();
    Dir1_Change();
    app::SetHourglass(false);
}

void MainForm::Text1_Click() {
    Dir1_Change();
}

void MainForm::Text1_KeyPress(int key_ascii) {
    if (key_ascii == '\r') Dir1_Change();
}

void MainForm::list2_Click() {
    List1_Click();
    app::ftpglob& globals = app::Globals();
    globals.SelectionKilobytes = 0;
    for (const int row : List1->SelectedRows())
        globals.SelectionKilobytes += Kilobytes(local_files_->At(row).size);
    setWindowTitle(SelectionTitle(globals.SelectionKilobytes));
}

void MainForm::List1_Click() {
    const int selected = List1->SelCount();
    ShowDeleteButton(selected > 1);
    if (!List1->Text().isEmpty() && selected < 2)
        for (QPushButton* button : {Command6, Command8, Command5, Command4}) button->setEnabled(true);
    if (selected > 1)
        for (QPushButton* button : {Command6, Command8, Command5, Command4}) button->setEnabled(false);
    List1_KeyUp();
}

// One place and one caption for both: the button for one file, or the one for all that are marked.
void MainForm::ShowDeleteButton(bool of_several) {
    Command8->setVisible(!of_several);
    fleratabort2->setVisible(of_several);
}

void MainForm::List1_KeyUp() {
    if (!List1->Text().isEmpty() && Command16->isEnabled()) Command1->setEnabled(true);
}

// The name as it is on the disk: it leads to this very file and needs no look through the folder.
QString MainForm::LocalPathOfRow(int row) const {
    return local_files_->PathOf(row);
}

}  // namespace forms
