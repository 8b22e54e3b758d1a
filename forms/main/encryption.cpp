// What the window has to do with encryption: what is known of servers, the question about a certificate, and
// the lock.

#include "forms/certificate/certificate_form.h"
#include "forms/connection/connection_form.h"
#include "forms/folderupload/folder_upload_form.h"
#include "forms/main/main_form.h"
#include "forms/transfer/transfer_form.h"
#include "settings/known_servers.h"

namespace forms {

void MainForm::PrepareEncryption() {
    Ftp1->FindServer = [this](const QString& server) {
        const settings::KnownServer known = settings::LoadKnownServer(store_, server);
        return ftp::KnownServer{known.had_tls, known.fingerprint.toLatin1()};
    };
    Ftp1->KeepServer = [this](const QString& server, const ftp::KnownServer& known) {
        settings::SaveKnownServer(store_, server, {known.had_tls, QString::fromLatin1(known.fingerprint)});
    };
    Ftp1->AskAboutCertificate = [this](const ftp::CertificateQuestion& question) {
        const ftp::CertificateAnswer answer = frmCertificate::Ask(&FrontWindow(), question);
        if (answer == ftp::CertificateAnswer::Refuse && connection_) connection_->GiveUp();
        return answer;
    };
}

// Also after each operation. What the lock says stands in the state's tool tip, too: the lock is small.
void MainForm::ShowLock(bool connected) {
    if (connected)
        imgLock->ShowSession(Ftp1->TlsVersion());
    else
        imgLock->ShowNone();
    lblState->Show(lblState->text(), imgLock->accessibleName());
}

// What a question of the component stands over: the dialog that is open, for this window is disabled then.
QWidget& MainForm::FrontWindow() {
    for (QWidget* dialog :
         std::initializer_list<QWidget*>{connection_.get(), transfer_.get(), folder_upload_.get()})
        if (dialog && dialog->isVisible()) return *dialog;
    return *this;
}

}  // namespace forms
