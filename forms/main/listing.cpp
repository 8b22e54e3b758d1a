// The server lists: raw lines come in, rows with icons come out.

#include "app/shared/ftpglob.h"
#include "forms/main/main_form.h"
#include "ftp/listing_rows.h"
#include "ftp/trace_translator.h"

namespace forms {
namespace {

// The rows are not yet published while lines arrive: the newest line needs no selecting.
struct ListingLines {
    toolkit::LineModel& model;

    int Count() const { return model.Count(); }
    void RemoveFirst() { model.RemoveFirst(); }
    void Add(const QString& line) { model.Add(line); }
    void SelectLast() {}
};

}  // namespace

void MainForm::Ftp1_DirItem(const QString& line) {
    if (!ftp::IsSummaryLine(line)) {
        ListingLines lines{*server_lines_};
        ftp::AppendTraceText(lines, line);
    }
}

void MainForm::ClearServerLists() {
    server_lines_->Clear();
    server_lines_->Hold();
    app::Globals().ServerSelectionText.clear();
}

// The first row becomes the current one for the keyboard, and no row is selected: what is selected was
// chosen.
void MainForm::BuildServerList() {
    server_lines_->Publish();
    listdir2->selectionModel()->setCurrentIndex(server_lines_->index(0), QItemSelectionModel::NoUpdate);
}

QString MainForm::SelectedServerName() const {
    return ftp::NameOfListingLine(listdir2->SelectedItemText());
}

}  // namespace forms
