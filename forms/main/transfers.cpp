// Uploads and downloads, and the progress strip.

#include "app/shared/ftpglob.h"
#include "forms/folderupload/folder_upload_form.h"
#include "forms/main/live_tip.h"
#include "forms/main/main_form.h"
#include "forms/transfer/transfer_form.h"
#include "ftp/progress_arithmetic.h"
#include "ftp/visible_text.h"
#include "platform/drive_path.h"
#include "platform/folder.h"
#include "toolkit/message_box.h"

namespace forms {
namespace {

constexpr const char* kActivationToken = "XDG_ACTIVATION_TOKEN";

std::int64_t NumberIn(const std::optional<QString>& text) {
    return text ? text->trimmed().toLongLong() : 0;
}

}  // namespace

// The pace is of interest above all while another window, as that of the queue, is the active one.
void MainForm::PrepareWatch() {
    auto* tip = new LiveTip(*Picture3);
    connect(&watch_, &app::TransferWatch::WordsChanged, tip, [this, tip](const QString& words) {
        setAttribute(Qt::WA_AlwaysShowToolTips, watch_.Running());
        tip->SetText(words);
        p1->setAccessibleDescription(words);
    });
    connect(&watch_, &app::TransferWatch::NoticeChosen, this, &MainForm::ComeToFront);
}

// A Wayland desktop lets a window come to the front that shows it the token; Qt looks for it in the
// environment.
void MainForm::ComeToFront(const QString& activation_token) {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    QWidget& front = FrontWindow();
    front.raise();
    if (activation_token.isEmpty()) return front.activateWindow();
    qputenv(kActivationToken, activation_token.toUtf8());
    front.activateWindow();
    qunsetenv(kActivationToken);
}

void MainForm::Command1_Click() {
    QList<int> marked = List1->SelectedRows();
    if (marked.isEmpty()) marked = {List1->ListIndex()};
    std::vector<Upload> uploads;
    for (const int row : marked)
        uploads.push_back({LocalPathOfRow(row), List1->List(row), local_files_->At(row).size});
    Send(uploads, Dir1->Path());
}

void MainForm::Send(const std::vector<Upload>& uploads, const QString& folder) {
    HoldServerPanel();
    Ftp1->ModeFlagA = true;
    Ftp1->ModeFlagB = true;
    RememberFolder(folder);
    app::Globals().UploadRunning = 1;
    ResetStrip();
    uploads.size() >= 2 ? ShowTransferWindow(uploads) : SendOne(uploads.front());
    Command9_Click();
    ReleaseServerPanel();
}

void MainForm::SendOne(const Upload& file) {
    avb->setEnabled(true);
    Ftp1->SourceFileName = file.path;
    Ftp1->DestinationFileName = file.name;
    Watched(ftp::VisibleText(file.name), platform::FileLength(file.path), &ftp::Component::PutFile);
    app::Globals().UploadRunning = 0;
    avb->setEnabled(false);
}

void MainForm::Command2_Click() {
    const bool batch = listDir->SelCount() >= 2;
    const QString file = app::Globals().SelectedServerFile;
    QString name;
    if (!batch) {
        name = toolkit::InputBox(this, QStringLiteral("Spara ") + file + QStringLiteral("(?)som"),
                                 QStringLiteral("Ladda hem fil från Server"), file);
        if (name.isEmpty()) return;
    }
    HoldServerPanel();
    app::Globals().DownloadRunning = 1;
    ResetStrip();
    if (batch) {
        ShowTransferWindow({});
    } else {
        Fetch(file, platform::Join(Dir1->Path(), name));
        app::Globals().DownloadRunning = 0;
    }
    Command23->setEnabled(true);
    Command7_Click();
    ReleaseServerPanel();
}

void MainForm::Fetch(const QString& file, const QString& local_path) {
    avb->setEnabled(true);
    Ftp1->SourceFileName = file;
    Ftp1->DestinationFileName = local_path;
    Watched(file, NumberIn(ftp::SizeColumn(listdir2->SelectedItemText())), &ftp::Component::GetFile);
    avb->setEnabled(false);
}

// A single file; its name is as it can be shown.
void MainForm::Watched(const QString& name, std::optional<std::int64_t> size,
                       void (ftp::Component::*transfer)()) {
    const app::WatchedBatch batch(&watch_, size);
    const int failures = failures_;
    watch_.BeginFile(name, size);
    (Ftp1->*transfer)();
    if (failures_ != failures) watch_.Fail();
}

// Who has pressed a button that is disabled now goes on in the list that it belongs to.
void MainForm::HoldServerPanel() {
    QWidget* const focus = focusWidget();
    focus_after_ = Frame2->isAncestorOf(focus) || focus == Command2 ? listdir2
                   : Picture1->isAncestorOf(focus)                  ? list2
                                                                    : focus;
    for (QPushButton* button : {Command23, Command2, Command1, Command21, Command14, Command9, Command10,
                                Command11, Command12, Command13})
        button->setEnabled(false);
    listdir2->setEnabled(false);
}

// After a single transfer as after a batch. The buttons of a row come back when a row is clicked.
void MainForm::ReleaseServerPanel() {
    listdir2->setEnabled(true);
    for (QPushButton* button : {Command21, Command14, Command9}) button->setEnabled(true);
    if (focus_after_) focus_after_->setFocus();
}

void MainForm::ResetStrip() {
    ShowProgress({.bar_width = 0, .percent = QStringLiteral("0 %"), .counter = {}});
}

void MainForm::RememberFolder(const QString& folder) {
    if (lk->findText(folder, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0) lk->addItem(folder);
}

void MainForm::ShowTransferWindow(const std::vector<Upload>& uploads) {
    transfer_ = std::make_unique<Form1>(
        TransferHost{*this, *Ftp1, *listDir, *listdir2, *Dir1, *avb, *antal, *label7, *p2, uploads, &watch_});
    transfer_->Form_Load();
}

// The button is still enabled afterwards: who has come by its letter has somewhere to come back to.
void MainForm::Command23_Click() {
    Command23->setFocus();
    folder_upload_ = std::make_unique<fmRekurs>(FolderUploadHost{
        .window = *this,
        .Ftp1 = *Ftp1,
        .Command1 = *Command1,
        .Command2 = *Command2,
        .Command10 = *Command10,
        .Command11 = *Command11,
        .Command12 = *Command12,
        .Command13 = *Command13,
        .label7 = *label7,
        .antal = *antal,
        .p2 = *p2,
        .favourites_picture = Command29->icon(),
        .ClearServerLists = [this] { ClearServerLists(); },
        .BuildServerList = [this] { BuildServerList(); },
        .Trace = [this](const QString& line) { Trace(line); },
        .UserWantsToAbort = &UserWantsToAbort,
        .OpenFavourites = [this](
                              QWidget& window, toolkit::DriveListBox& drive,
                              toolkit::DirListBox& folders) { OpenFavourites(window, drive, folders, {}); },
        .watch = &watch_,
    });
    folder_upload_->Form_Load();
}

void MainForm::avb_Click() {
    if (!UserWantsToAbort(*this)) return;
    ++failures_;  // what was fetched is not wanted any more, also where it has come meanwhile
    watch_.AbortFile();
    Ftp1->AbortTransfer();
    antal->setText(QStringLiteral("0 %"));
    p2->SetWidth(kAbortedBarWidth);
}

void MainForm::Ftp1_Progress(std::int64_t bytes) {
    app::ftpglob& globals = app::Globals();
    if (const auto stated = Ftp1->StatedSize(); stated && globals.DownloadRunning == 1)
        watch_.SetSize(*stated);
    watch_.Report(bytes);
    if (globals.FolderUploadRunning) {
        const std::int64_t done = label7->property("tag").toLongLong() + bytes;
        label7->setText(QString::number(done));
        globals.FileSizeText = QString::number(globals.FolderUploadTotal);
        ShowProgress(ftp::FolderProgress(done, globals.FolderUploadTotal, p1->Width()));
        return;
    }
    label7->setText(QString::number(bytes));
    if (globals.UploadRunning != 1 && globals.DownloadRunning != 1) return;
    const std::optional<QString> size = globals.UploadRunning == 1 ? SizeOfUpload() : SizeOfDownload();
    globals.FileSizeText = size.value_or(globals.FileSizeText);
    ShowProgress(ftp::FileProgress(bytes, globals.FileSizeText, p1->Width()));
}

std::optional<QString> MainForm::SizeOfUpload() const {
    const std::optional<std::int64_t> length = platform::FileLength(Ftp1->SourceFileName);
    return length ? std::optional(QString::number(*length)) : std::nullopt;
}

// The server's own word goes before the size column, whose place differs from server to server.
std::optional<QString> MainForm::SizeOfDownload() const {
    if (const std::optional<std::int64_t> stated = Ftp1->StatedSize()) return QString::number(*stated);
    return ftp::SizeColumn(listDir->SelCount() >= 2 ? transfer_->CurrentEntry()
                                                    : listdir2->SelectedItemText());
}

void MainForm::ShowProgress(const ftp::StripChange& change) {
    if (change.bar_width) p2->SetWidth(*change.bar_width);
    antal->setText(change.percent);
    antal2->setText(change.percent);
    if (change.counter) label7->setText(*change.counter);
}

}  // namespace forms
