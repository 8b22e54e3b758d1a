#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QTimer>

#include "forms/main/lock_label.h"
#include "settings/known_servers.h"
#include "tests/forms/main/main_window.h"
#include "toolkit/wrapped_label.h"

namespace forms {
namespace {

using ftp::CertificateAnswer;

const QString kServer = QStringLiteral("ftp.exempel.se:21");

class Encryption : public MainWindow {
 protected:
    ftp::Component& Ftp1() { return *window_->findChild<ftp::Component*>(QStringLiteral("Ftp1")); }

    static QDialog* Window(const char* name) {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->objectName() == QString::fromLatin1(name))
                return qobject_cast<QDialog*>(window);
        return nullptr;
    }

    /// Has the component ask; `act`, in the dialog's own event loop, has to end it.
    CertificateAnswer Ask(std::function<void(QDialog& dialog)> act) {
        QTimer::singleShot(0, window_.get(), [act = std::move(act)] {
            const auto ready = [] {
                return Window("frmCertificate") && QApplication::activeWindow() == Window("frmCertificate");
            };
            EXPECT_TRUE(QTest::qWaitFor(ready));
            if (QDialog* dialog = Window("frmCertificate")) act(*dialog);
        });
        ftp::CertificateQuestion question;
        question.server = kServer;
        question.certificate.unknown_issuer = true;
        return Ftp1().AskAboutCertificate(question);
    }

    QString LockSays() {
        const auto& lock = Get<QLabel>("imgLock");
        if (!lock.isVisible()) return QStringLiteral("none");
        EXPECT_FALSE(lock.pixmap().isNull());
        EXPECT_EQ(lock.toolTip(), toolkit::PlainToolTip(lock.accessibleName()));
        return lock.accessibleName();
    }
};

const QByteArray kFingerprint = QByteArray(":0F").repeated(32).mid(1);

using KnownServers = Encryption;

TEST_F(KnownServers, AreKeptInTheSettings) {
    Open();
    EXPECT_EQ(Ftp1().FindServer(kServer), ftp::KnownServer());
    Ftp1().KeepServer(kServer, {true, kFingerprint});
    EXPECT_EQ(settings::LoadKnownServer(store_, kServer),
              (settings::KnownServer{true, QString::fromLatin1(kFingerprint)}));
    Close();
    Open();
    EXPECT_EQ(Ftp1().FindServer(kServer), (ftp::KnownServer{true, kFingerprint}));
    EXPECT_EQ(Ftp1().FindServer(QStringLiteral("ftp.exempel.se:2121")), ftp::KnownServer());
}

TEST_F(KnownServers, ARuinedFingerprintIsNone) {
    store_.SaveSetting(settings::kServersApplication, kServer, "tls", "1");
    store_.SaveSetting(settings::kServersApplication, kServer, "certificate", "0F:0F");
    Open();
    EXPECT_EQ(Ftp1().FindServer(kServer), (ftp::KnownServer{true, {}}));
}

using CertificateQuestion = Encryption;

TEST_F(CertificateQuestion, StandsOverTheWindow) {
    Open();
    EXPECT_EQ(Ask([this](QDialog& dialog) {
                  EXPECT_EQ(dialog.parentWidget(), window_.get());
                  EXPECT_TRUE(dialog.findChild<QLabel*>("lblHeading")->text().contains(kServer));
                  QTest::mouseClick(dialog.findChild<QPushButton*>("cmdAlways"), Qt::LeftButton);
              }),
              CertificateAnswer::TrustAlways);
    EXPECT_EQ(Ask([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); }),
              CertificateAnswer::Refuse);
}

TEST_F(CertificateQuestion, StandsOverTheConnectionDialogWhileThatIsOpen) {
    Open();
    ClickOn("cmdConnection");
    QDialog* connection = Window("frmConnection");
    ASSERT_TRUE(connection && QTest::qWaitFor([=] { return QApplication::activeWindow() == connection; }));
    EXPECT_EQ(Ask([connection](QDialog& dialog) {
                  EXPECT_EQ(dialog.parentWidget(), connection);
                  QTest::mouseClick(dialog.findChild<QPushButton*>("cmdNow"), Qt::LeftButton);
              }),
              CertificateAnswer::TrustNow);
    EXPECT_TRUE(connection->isVisible());
    QTest::keyClick(connection, Qt::Key_Escape);
    EXPECT_EQ(Ask([this](QDialog& dialog) {
                  EXPECT_EQ(dialog.parentWidget(), window_.get());
                  dialog.close();
              }),
              CertificateAnswer::Refuse);
}

TEST_F(CertificateQuestion, EndsWithTheWindow) {
    Open();
    EXPECT_EQ(Ask([this](QDialog&) { window_->close(); }), CertificateAnswer::Refuse);
    EXPECT_FALSE(Window("frmCertificate"));
}

using Lock = Encryption;

TEST_F(Lock, IsThereWhileThereIsASession) {
    Open();
    EXPECT_EQ(LockSays(), "none");
    Q_EMIT Ftp1().ConnectedChanged(true);
    EXPECT_EQ(LockSays(), "Okrypterad förbindelse: lösenord och filer går i klartext");
    Q_EMIT Ftp1().ConnectedChanged(false);
    EXPECT_EQ(LockSays(), "none");
}

TEST_F(Lock, IsSaidBesideTheStateToo) {
    Open();
    const auto& state = Get<QLabel>("lblState");
    Ftp1().HostName = QStringLiteral("ftp.exempel.se");
    Q_EMIT Ftp1().ConnectedChanged(true);
    EXPECT_EQ(state.accessibleDescription(), LockSays());
    EXPECT_EQ(state.toolTip(), toolkit::PlainToolTip("Ansluten till ftp.exempel.se\n" + LockSays()));
    Q_EMIT Ftp1().ConnectedChanged(false);
    EXPECT_EQ(state.toolTip(), toolkit::PlainToolTip("Ej ansluten"));
    EXPECT_EQ(state.accessibleDescription(), "");
}

TEST_F(Lock, GoesByTheComponentAfterEachOperation) {
    Open();
    Q_EMIT Ftp1().ConnectedChanged(true);
    Q_EMIT Ftp1().BusyChanged(false);
    EXPECT_EQ(LockSays(), "none");  // the component has no session
}

TEST_F(Lock, IsClosedWhereTheSessionIsEncrypted) {
    Open();
    auto& lock = Get<LockLabel>("imgLock");
    lock.ShowSession({});
    const QImage open = lock.pixmap().toImage();
    lock.ShowSession("TLSv1.3");
    EXPECT_EQ(LockSays(), "Krypterad förbindelse (TLSv1.3)");
    EXPECT_NE(lock.pixmap().toImage(), open);
    lock.ShowSession("TLSv1.2");
    EXPECT_EQ(LockSays(), "Krypterad förbindelse (TLSv1.2)");
    lock.ShowSession({});
    EXPECT_EQ(lock.pixmap().toImage(), open);
    lock.ShowNone();
    EXPECT_EQ(LockSays(), "none");
}

TEST_F(Lock, StandsBetweenTheWordAndTheState) {
    Open();
    Ftp1().HostName = QStringLiteral("ftp.exempel.se");
    Q_EMIT Ftp1().ConnectedChanged(true);
    QApplication::sendPostedEvents();
    EXPECT_GT(Get("imgLock").x(), Get("Label5").geometry().right());
    EXPECT_LT(Get("imgLock").geometry().right(), Get("lblState").x());
    EXPECT_GE(Get("imgLock").width(), Get("imgLock").sizeHint().width());
    EXPECT_EQ(Get<QLabel>("lblState").text(), "Ansluten till ftp.exempel.se");
}

}  // namespace
}  // namespace forms
