#include "forms/connection/connection_form.h"

#include <QAction>
#include <algorithm>

#include "app/shared/ftpglob.h"
#include "app/shared/window_routines.h"
#include "ftp/operation_gate.h"
#include "toolkit/accessible.h"
#include "toolkit/fonts.h"
#include "toolkit/message_box.h"

// The pictures lie in a static library, where nothing else refers to them.
static void RegisterPictures() {
    Q_INIT_RESOURCE(connection);
}

namespace forms {

using toolkit::Answer;
using toolkit::Buttons;
using toolkit::Icon;
using toolkit::MsgBox;

frmConnection::frmConnection(const ConnectionHost& main)
    : OwnedDialog(main.window), main_(main), Timer1(new QTimer(this)), reveal_(new QAction(this)) {
    RegisterPictures();
    setupUi(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    for (QWidget* field : QList<QWidget*>{txtHost, txtusername, txtPassword, txtAccount})
        field->setFont(toolkit::FixedPitchFont());
    txtusername->setCompleter(nullptr);  // a name that begins like the entry of the list is not that entry
    PreparePassword();
    toolkit::NameInnerParts(*this);
    ftp::OperationGate::AllowWhileBusy(cmdDisconnect);
    Wire();
    adjustSize();
}

void frmConnection::Wire() {
    connect(Combo1, &QComboBox::activated, this, &frmConnection::Combo1_Click);
    connect(Command1, &QPushButton::clicked, this, &frmConnection::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &frmConnection::Command2_Click);
    connect(Command3, &QPushButton::clicked, this, &frmConnection::Command3_Click);
    connect(Command4, &QPushButton::clicked, this, &frmConnection::Command4_Click);
    connect(Command5, &QPushButton::clicked, this, &frmConnection::Command5_Click);
    connect(Command6, &QPushButton::clicked, this, &frmConnection::Command6_Click);
    connect(cmdConnect, &QPushButton::clicked, this, &frmConnection::cmdConnect_Click);
    connect(cmdDisconnect, &QPushButton::clicked, this, &frmConnection::cmdDisconnect_Click);
    connect(cmdReinit, &QPushButton::clicked, this, &frmConnection::cmdReinit_Click);
    connect(Timer1, &QTimer::timeout, this, &frmConnection::Timer1_Timer);
}

void frmConnection::PreparePassword() {
    reveal_->setObjectName(QStringLiteral("reveal"));
    reveal_->setCheckable(true);
    reveal_->setShortcut(Qt::ALT | Qt::Key_V);
    const auto show = [this](bool readable) {
        txtPassword->setEchoMode(readable ? QLineEdit::Normal : QLineEdit::Password);
        reveal_->setIcon(QIcon(readable ? QStringLiteral(":/connection/hide.svg")
                                        : QStringLiteral(":/connection/show.svg")));
        reveal_->setText(readable ? QStringLiteral("Dölj lösenordet") : QStringLiteral("Visa lösenordet"));
        reveal_->setToolTip(reveal_->text());
    };
    show(false);
    txtPassword->addAction(reveal_, QLineEdit::TrailingPosition);
    connect(reveal_, &QAction::toggled, this, show);
}

void frmConnection::HidePassword() {
    reveal_->setChecked(false);
}

void frmConnection::Form_Load() {
    OpenOverOwner();
    Combo1->addItems(settings::LoadProfileNames(main_.store));
    txtusername->addItem(QStringLiteral("anonymous"));
    SelectProfile(0);
}

// Who closes the dialog in the middle of a connect gives the connect up, also while a question about the
// server is open. The secrets go with the dialog, and so does what could be undone in their fields.
void frmConnection::done(int result) {
    if (connecting_ || main_.Ftp1.Busy()) cmdDisconnect_Click();
    for (QLineEdit* secret : {txtPassword, txtAccount}) secret->setText({});
    HidePassword();
    OwnedDialog::done(result);
}

void frmConnection::SelectProfile(int n) {
    Combo1->setCurrentIndex(n);
    Combo1_Click();
}

// Without a profile the position is -1, and the fields of that section are empty.
void frmConnection::Combo1_Click() {
    HidePassword();
    ShowFields(settings::LoadProfile(main_.store, Combo1->currentIndex()));
    Command1->setEnabled(!Combo1->currentText().isEmpty());
}

void frmConnection::ShowFields(const settings::Profile& profile) {
    txtHost->setText(profile.host);
    txtusername->setEditText(profile.user);
    txtPassword->setText(profile.password);
    txtAccount->setText(profile.account);
}

settings::Profile frmConnection::Fields() const {
    return {txtHost->text(), txtusername->currentText(), txtPassword->text(), txtAccount->text()};
}

void frmConnection::Command6_Click() {
    const QString name = AskForFreeName();
    if (name.isEmpty()) return;
    settings::SaveNewProfile(main_.store, name, Fields());
    Combo1->addItem(name);
    SelectProfile(Combo1->count() - 1);
}

QString frmConnection::AskForFreeName() {
    for (;;) {
        const QString name =
            toolkit::InputBox(this, QStringLiteral("Spara profil som "), QStringLiteral("Spara profil"));
        if (name.isEmpty() || !IsTaken(name)) return name;
        MsgBox(this,
               QStringLiteral("Tyvärr är profilen [") + name +
                   QStringLiteral("] redan upptagen, välj ett nytt namn!"),
               Buttons::Ok, Icon::Information, QStringLiteral("Fel vid spara"));
    }
}

bool frmConnection::IsTaken(const QString& name) const {
    for (int i = 0; i < Combo1->count(); ++i)
        if (Combo1->itemText(i).toUpper() == name.toUpper()) return true;
    return false;
}

void frmConnection::Command1_Click() {
    const QString question =
        QStringLiteral("Vill du ta bort [") + Combo1->currentText() + QStringLiteral("] ?");
    if (MsgBox(this, question, Buttons::YesNo, Icon::Information, QStringLiteral("Ta bort profil")) ==
        Answer::No)
        return;
    const int n = Combo1->currentIndex();
    settings::LowerProfileCount(main_.store);
    Combo1->removeItem(n);
    settings::MoveProfilesDown(main_.store, n, Combo1->count());
    SelectProfile(std::min(n, Combo1->count() - 1));
}

void frmConnection::Help(const QString& field, const QString& text) {
    MsgBox(this, text, Buttons::Ok, Icon::Information, field);
}

void frmConnection::Command2_Click() {
    Help(QStringLiteral("FTP-värd"),
         QStringLiteral("FTP-värd är den Server som du vill koppla upp dig mot, ex. ftp.example.com, "
                        "ftp.example.net, ftp.example.org, home.example.com, upload.example.net."));
}

void frmConnection::Command3_Click() {
    Help(QStringLiteral("Användarnamn"),
         QStringLiteral("Användarnamnet är ofta detsamma som E-postadressens 'förnamn', ex. om du har "
                        "E-posten anna.berg@example.com så är användarnamnet anna.berg, har du "
                        "kalle@example.net är användarnamnet kalle o.s.v Om du är osäker - kontakta din "
                        "Internetleverantör!"));
}

void frmConnection::Command4_Click() {
    Help(QStringLiteral("Lösenord"),
         QStringLiteral("Lösenordet är den hemliga kod som måste godkännas av FTP-servern varje gång du "
                        "'loggar in'. Om du är osäker kontakta din Internetleverantör!"));
}

void frmConnection::Command5_Click() {
    Help(QStringLiteral("Konto"),
         QStringLiteral("Konto-fältet behöver du vanligtvis inte bry dig om, men om du har ett speciellt "
                        "konto på en FTP-server så kan du behöva fylla i information även här, kontakta din "
                        "Internetleverantör om du är osäker!"));
}

void frmConnection::cmdConnect_Click() {
    app::SetHourglass(true);
    const settings::Profile login = Fields();
    if (login.password.isEmpty() || login.user.isEmpty() || login.host.isEmpty()) {
        app::SetHourglass(false);
        MsgBox(this, QStringLiteral("FTP-värd, lösenord och användarnamn måste vara ifyllt!"), Buttons::Ok,
               Icon::None);
        return;
    }
    connecting_ = true;
    OpenSession(login);
    connecting_ = false;
    main_.BuildServerList();
    app::SetHourglass(false);
    if (given_up_) return;
    accept();
    app::Globals().SessionOpen = true;
}

// A refused login does not end the sequence: the trace tells of it, and the session can be closed. A session
// that the user has dropped while it was being opened does: the main window stays without one.
void frmConnection::OpenSession(const settings::Profile& login) {
    given_up_ = false;
    LogIn(login);
    main_.ClearServerLists();
    if (given_up_) return;
    main_.Ftp1.SetSessionOption(1);
    main_.Ftp1.SessionMode = 1;
    app::Globals().ServerListBusy = true;
    main_.Ftp1.ListDirectory();
    app::Globals().ServerListBusy = false;
    if (given_up_) {
        main_.ClearServerLists();
        return;
    }
    Command1->setEnabled(false);
    Command2->setEnabled(false);
    for (QPushButton* button :
         {&main_.Command16, &main_.Command9, &main_.Command14, &main_.Command21, &main_.Command23})
        button->setEnabled(true);
    main_.cmdConnection.setEnabled(false);
}

void frmConnection::LogIn(const settings::Profile& login) {
    ftp::Component& Ftp1 = main_.Ftp1;
    Ftp1.ModeFlagB = true;
    Ftp1.ModeFlagA = true;
    Ftp1.HostName = login.host;
    Ftp1.UserName = login.user;
    Ftp1.Password = login.password;
    Ftp1.Account = login.account;
    Ftp1.Connect();
}

void frmConnection::GiveUp() {
    given_up_ = true;
    main_.Command16.setEnabled(false);
    app::Globals().SessionOpen = false;
}

void frmConnection::cmdDisconnect_Click() {
    given_up_ = true;
    main_.Command16.setEnabled(false);
    main_.Ftp1.SetAction(9);
    app::Globals().SessionOpen = false;
}

void frmConnection::cmdReinit_Click() {
    main_.Ftp1.SetAction(20);
}

void frmConnection::Timer1_Timer() {}

}  // namespace forms
