#pragma once
// The question whether a server's certificate is to be trusted. UI thread only.

#include <QDialog>

#include "forms/certificate/certificate_words.h"
#include "ui_certificate_form.h"

namespace forms {

/// Modal. Whatever is not one of the two buttons that trust is a refusal: Escape, Enter at once, its close
/// box, the end of the parent or of the program while it is open. All that the certificate says is shown as
/// plain text.
class frmCertificate : public QDialog, private Ui::frmCertificate {
    Q_OBJECT
 public:
    /// Shows the dialog above the parent's window, which may be disabled, with the plain mouse pointer, and
    /// returns the answer; runs an event loop of its own. It takes input also while an operation of the
    /// component runs.
    static ftp::CertificateAnswer Ask(QWidget* parent, const ftp::CertificateQuestion& question);

 private:
    frmCertificate(QWidget* parent, const ftp::CertificateQuestion& question);

    void Wire();
    void cmdAlways_Click();
    void cmdNow_Click();

    void ShowProblems(const QStringList& problems);
    void ShowFacts(const QList<CertificateFact>& facts);
    void FitFacts();

    ftp::CertificateAnswer answer_ = ftp::CertificateAnswer::Refuse;
};

}  // namespace forms
