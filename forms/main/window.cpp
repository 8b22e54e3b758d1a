// Start-up, shutdown, and what other forms ask of the window.

#include <QCloseEvent>

#include "app/shared/window_routines.h"
#include "forms/about/about_form.h"
#include "forms/about/help_panel_form.h"
#include "forms/connection/connection_form.h"
#include "forms/favourites/favourites_form.h"
#include "forms/filter/filter_form.h"
#include "forms/folderupload/folder_upload_form.h"
#include "forms/main/main_form.h"
#include "forms/transfer/transfer_form.h"
#include "forms/viewer/viewer_form.h"
#include "ftp/trace_translator.h"
#include "platform/drive_path.h"
#include "platform/folder.h"
#include "platform/shell.h"
#include "settings/profiles.h"
#include "toolkit/message_box.h"

namespace forms {
namespace {

const QString kWindowApplication = QStringLiteral("Websmide's FTP program, fönster");
const QString kWindowSection = QStringLiteral("MainForm");

void SetBold(QPushButton& button, bool bold) {
    QFont font = button.font();
    font.setBold(bold);
    button.setFont(font);
}

}  // namespace

MainForm::MainForm(settings::Store& store, ftp::Deadlines deadlines)
    : store_(store),
      Ftp1(new ftp::Component(this, deadlines)),
      server_lines_(new ServerLinesModel(this)),
      local_files_(new LocalFilesModel(this)),
      tabd(new QMenu(this)) {
    setupUi(this);
    Ftp1->setObjectName(QStringLiteral("Ftp1"));
    Ftp1->ResolveLocalPath = &platform::Resolve;
    PrepareEncryption();
    PrepareWatch();
    tabd->setObjectName(QStringLiteral("tabd"));
    store_.OnProblem([this](int number, const QString& text) { Trace(ftp::ErrorLine(number, text)); });
    PrepareLayout();
    Dir1->SetPath(platform::CurrentFolder());
    Drive1->SetDrive(Dir1->Path().left(3));
    Wire();
    MDIForm_Load();
}

MainForm::~MainForm() {
    watch_.Leave();
    Ftp1->Shutdown();
    store_.OnProblem(nullptr);
}

void MainForm::MDIForm_Load() {
    tabd->hide();
    lk->addItems(settings::LoadDirectoryHistory(store_));
    lk->setCurrentIndex(-1);
    Ftp1->SessionMode = 0;
    Dir1_Change();
    app::CentreOnScreen(*this);
    Text1->addItems({QStringLiteral("*.*"), QStringLiteral("*.exe"), QStringLiteral("*.htm*"),
                     QStringLiteral("*.txt"), QStringLiteral("*.zip")});
    for (QPushButton* button : {Command9, Command14, Command21, Command10, Command11, Command12, Command13})
        button->setEnabled(false);
    RestorePlace();
}

void MainForm::MDIForm_QueryUnload() {
    const settings::Store::Batch one_replacement(store_);
    QStringList folders;
    for (int i = 0; i < lk->count(); ++i) folders.append(lk->itemText(i));
    settings::SaveDirectoryHistory(store_, folders);
    SavePlace();
}

// The operation that may be running ends first: a window that belongs to it then has nothing left to ask
// about.
void MainForm::closeEvent(QCloseEvent* event) {
    MDIForm_QueryUnload();
    watch_.Leave();
    Ftp1->Shutdown();
    UnloadSecondaryWindows();
    event->accept();
}

void MainForm::UnloadSecondaryWindows() {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window != this && window->isVisible()) window->close();
}

void MainForm::SavePlace() {
    const auto save = [this](const QString& key, const QByteArray& state) {
        store_.SaveSetting(kWindowApplication, kWindowSection, key, QString::fromLatin1(state.toBase64()));
    };
    save(objectName(), saveGeometry());
    for (const QSplitter* splitter : {workspace, panels, local_lists})
        save(splitter->objectName(), splitter->saveState());
}

// Every closing leaves the place behind.
bool MainForm::HasBeenOpenBefore() const {
    return !store_.GetSetting(kWindowApplication, kWindowSection, objectName()).isEmpty();
}

// A state that is missing or garbage is refused by Qt itself; the window then keeps the place it has.
void MainForm::RestorePlace() {
    const auto saved = [this](const QString& key) {
        return QByteArray::fromBase64(store_.GetSetting(kWindowApplication, kWindowSection, key).toLatin1());
    };
    restoreGeometry(saved(objectName()));
    for (QSplitter* splitter : {workspace, panels, local_lists})
        splitter->restoreState(saved(splitter->objectName()));
}

std::int16_t MainForm::ExecuteCommand(std::int16_t code) {
    try {
        Ftp1->SetAction(code);
        return 0;
    } catch (const ftp::UnknownAction& error) {
        toolkit::MsgBox(this, error.Description(), toolkit::Buttons::Ok, toolkit::Icon::None);
        return static_cast<std::int16_t>(error.Number());
    }
}

void MainForm::LoadForm(QWidget& form, QPushButton& button) {
    if (&form == current_child_) return;
    form.move(0, 0);
    form.show();
    if (current_child_) current_child_->hide();
    if (current_button_) SetBold(*current_button_, false);
    SetBold(button, true);
    current_child_ = &form;
    current_button_ = &button;
}

std::int32_t MainForm::StartDoc(const QString& path) {
    return TellShellResult(platform::OpenDocument(path), path);
}

// Where no editor is installed, the program shows the text itself.
void MainForm::ShowText(const QString& path) {
    const int result = platform::OpenTextEditor(path);
    if (result != platform::kShellNoAssociation) {
        TellShellResult(result, path);
        return;
    }
    if (!viewer_) viewer_ = std::make_unique<TextViewer>(*this);
    viewer_->ShowFile(path);
}

int MainForm::TellShellResult(int result, const QString& path) {
    if (result == platform::kShellNotFound)
        Trace(ftp::ErrorLine(result, QStringLiteral("Filen finns inte: ") + path));
    if (result == platform::kShellNoAssociation)
        Trace(ftp::ErrorLine(result, QStringLiteral("Inget program är valt för filtypen: ") + path));
    return result;
}

}  // namespace forms
