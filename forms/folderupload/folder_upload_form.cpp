#include "forms/folderupload/folder_upload_form.h"

#include <QCloseEvent>
#include <QLineEdit>
#include <algorithm>

#include "app/shared/ftpglob.h"
#include "ftp/operation_gate.h"
#include "toolkit/accessible.h"
#include "toolkit/fonts.h"

namespace forms {

fmRekurs::fmRekurs(const FolderUploadHost& main) : OwnedDialog(main.window), main_(main) {
    setupUi(this);
    List1->setModel(&jobs_.Lines());
    Command29->setIcon(main_.favourites_picture);
    toolkit::MakeHeading(*Label5);
    toolkit::NameInnerParts(*this);
    // The figures grow while a scan runs, and the window stays as it is.
    const QFontMetrics font = fontMetrics();
    l4->setMinimumWidth(std::max(font.horizontalAdvance(QStringLiteral("1234 567 890 KB")),
                                 font.horizontalAdvance(QStringLiteral("1000 tim. 00 min."))));
    FileMask_ = Combo1->currentText();
    ftp::OperationGate::AllowWhileBusy(Command2);  // ends a scan
    Wire();
}

void fmRekurs::Wire() {
    connect(Drive1, &toolkit::DriveListBox::Change, this, &fmRekurs::Drive1_Change);
    connect(Dir1, &toolkit::DirListBox::Change, this, &fmRekurs::Dir1_Change);
    connect(Dir2, &toolkit::DirListBox::Change, this, &fmRekurs::Dir2_Change);
    connect(Check1, &QCheckBox::toggled, this, &fmRekurs::Check1_Click);
    connect(c2, &QCheckBox::toggled, this, &fmRekurs::c2_Click);
    connect(Combo1, &QComboBox::activated, this, &fmRekurs::Combo1_Click);
    connect(Combo1->lineEdit(), &QLineEdit::textEdited, this, &fmRekurs::Combo1_KeyUp);
    connect(kor, &QPushButton::clicked, this, &fmRekurs::kor_Click);
    connect(Command1, &QPushButton::clicked, this, &fmRekurs::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &fmRekurs::Command2_Click);
    connect(Command3, &QPushButton::clicked, this, &fmRekurs::Command3_Click);
    connect(Command29, &QPushButton::clicked, this, &fmRekurs::Command29_Click);
}

void fmRekurs::Form_Load() {
    ResetStatistics();
    ChosenFolder_ = platform::ProgramFolder().toLower().left(kLengthOfRoot);
    Drive1->SetDrive(ChosenFolder_.left(1));
    Dir2->SetPath(ChosenFolder_);
    StopScan_ = 1;
    Dir2->setFocus();
    OpenOverOwner();
}

// A run that is under way ends by itself, in good order.
void fmRekurs::done(int result) {
    StopScan_ = 1;
    if (sending_) main_.Ftp1.AbortTransfer();
    OwnedDialog::done(result);
}

// The program may close the dialog at any time. The user is asked before a run is ended, and cannot close it
// below the favourites.
void fmRekurs::closeEvent(QCloseEvent* event) {
    const bool by_user = event->spontaneous();
    const bool covered = !isEnabled() && !app::Globals().FolderUploadRunning;
    if (by_user && (covered || (sending_ && !main_.UserWantsToAbort(*this))))
        event->ignore();
    else
        OwnedDialog::closeEvent(event);
}

bool fmRekurs::IsFolderChosen() const {
    return ChosenFolder_.size() > kLengthOfRoot;
}

void fmRekurs::ShowStatistics() {
    l1->setText(statistics_.folders);
    l2->setText(statistics_.files);
    l3->setText(statistics_.size);
    l4->setText(statistics_.time);
}

void fmRekurs::ResetStatistics() {
    statistics_ = {};
    ShowStatistics();
}

// A drive that cannot be read leaves what is shown, and with that what is chosen.
void fmRekurs::Drive1_Change() {
    if (Dir2->SetPath(Drive1->Drive().left(1) + QStringLiteral(":\\")))
        ChosenFolder_ = Dir2->Path().toLower();
}

void fmRekurs::Dir2_Change() {
    QString folder = Dir2->List(Dir2->ListIndex());
    ChosenFolder_ = folder;
    if (IsFolderChosen()) ChosenFolder_ += u'\\';
    if (!c2->isChecked() || !IsFolderChosen()) return ResetStatistics();
    Label6->setText(QStringLiteral("Mappen [") + FolderNameOf(folder) +
                    QStringLiteral("] kommer att skapas i den katalog som du nu står i på FTP-servern!"));
    kor_Click();
}

void fmRekurs::Check1_Click() {
    IsFolderChosen() ? kor_Click() : ResetStatistics();
}

void fmRekurs::c2_Click() {
    c2->isChecked() && IsFolderChosen() ? kor_Click() : ResetStatistics();
}

void fmRekurs::Combo1_Click() {
    FileMask_ = Combo1->currentText();
}

void fmRekurs::Combo1_KeyUp() {
    FileMask_ = Combo1->currentText();
}

void fmRekurs::Command2_Click() {
    close();
}

void fmRekurs::Command29_Click() {
    main_.OpenFavourites(*this, *Drive1, *Dir2);
}

}  // namespace forms
