#pragma once
// The certificate dialog over a bare window, driven by real events.

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <functional>

#include "forms/certificate/certificate_form.h"

namespace forms {

class CertificateDialog : public ::testing::Test {
 protected:
    void SetUp() override {
        question_.server = QStringLiteral("ftp.exempel.se:21");
        ftp::Certificate& certificate = question_.certificate;
        for (int i = 0; i < 32; ++i) certificate.fingerprint += i == 0 ? "00" : i < 16 ? ":AB" : ":CD";
        certificate.names = {"ftp.exempel.se", "www.exempel.se"};
        certificate.subject = "CN=ftp.exempel.se";
        certificate.issuer = "CN=Exempel CA, O=Exempel";
        certificate.not_before = 1711026300;
        certificate.not_after = 1742562300;
        certificate.unknown_issuer = true;
        window_ = std::make_unique<QWidget>();
        window_->resize(400, 300);
        window_->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    }

    static QDialog* Dialog() {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->objectName() == QStringLiteral("frmCertificate"))
                return qobject_cast<QDialog*>(window);
        return nullptr;
    }

    /// Asks; what `act` does, in the dialog's own event loop, has to end it.
    ftp::CertificateAnswer Ask(std::function<void(QDialog& dialog)> act) {
        QTimer::singleShot(0, window_.get(), [act = std::move(act)] {
            EXPECT_TRUE(QTest::qWaitFor([] { return Dialog() && QApplication::activeWindow() == Dialog(); }));
            const QPointer<QDialog> dialog = Dialog();
            if (!dialog) return;
            act(*dialog);
            // A button that is pressed by its letter shows that for a moment.
            if (QTest::qWaitFor([&] { return !dialog || !dialog->isVisible(); })) return;
            ADD_FAILURE() << "still open";
            dialog->reject();
        });
        const ftp::CertificateAnswer answer = frmCertificate::Ask(window_.get(), question_);
        EXPECT_FALSE(Dialog());
        return answer;
    }

    template <class Widget>
    static Widget& Get(const QDialog& dialog, const char* name) {
        Widget* found = dialog.findChild<Widget*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }

    static void ClickOn(QDialog& dialog, const char* button) {
        QTest::mouseClick(&Get<QPushButton>(dialog, button), Qt::LeftButton);
    }

    /// What the label beside a fact's name says, as it can be copied.
    static QString Facts(const QDialog& dialog) { return Get<QTextEdit>(dialog, "txtFacts").toPlainText(); }

    ftp::CertificateQuestion question_;
    std::unique_ptr<QWidget> window_;
};

}  // namespace forms
