// The question about a server's certificate, from the connection dialog to the session.

#include <QDialog>
#include <QLabel>

#include "settings/known_servers.h"
#include "tests/forms/session/session.h"

namespace forms {
namespace {

using ftp_test::Make;
using ftp_test::ServerCertificate;
using ftp_test::Tls;

class Trust : public Session {
 protected:
    void SetUp() override {
        Session::SetUp();
        server_.WriteFile("a.txt", "hej");
        Open();
    }

    /// Opens the dialog, presses its button and does `act` with the question that comes. False where none
    /// has come.
    bool ConnectAnd(std::function<void(QDialog& question)> act) {
        bool asked = false;
        QWidget* dialog = OpenConnectionDialog(server_.HostField());
        When([] { return Window("frmCertificate") && Window("frmCertificate")->isActiveWindow(); },
             [&asked, act = std::move(act)] {
                 asked = true;
                 act(*qobject_cast<QDialog*>(Window("frmCertificate")));
             });
        QTest::mouseClick(dialog->findChild<QPushButton*>("cmdConnect"), Qt::LeftButton);
        return asked;
    }
    bool ConnectAndPress(const char* button) {
        return ConnectAnd([button](QDialog& question) {
            QTest::mouseClick(question.findChild<QPushButton*>(button), Qt::LeftButton);
        });
    }

    void ExpectSession() {
        EXPECT_FALSE(Window("frmConnection"));
        EXPECT_TRUE(app::Globals().SessionOpen);
        EXPECT_TRUE(Get<QLabel>("imgLock").isVisible());
        EXPECT_TRUE(Get<QLabel>("imgLock").accessibleName().startsWith("Krypterad förbindelse (TLSv1."));
        EXPECT_GE(ServerRowOf("a.txt"), 0);
    }

    void ExpectNoSession() {
        EXPECT_FALSE(app::Globals().SessionOpen);
        EXPECT_TRUE(Button("cmdConnection").isEnabledTo(window_.get()));
        for (const char* button : {"Command9", "Command14", "Command16", "Command21", "Command23"})
            EXPECT_FALSE(Button(button).isEnabledTo(window_.get())) << button;
        EXPECT_EQ(ServerLines().ListCount(), 0);
        EXPECT_EQ(Get<QLabel>("lblState").text(), "Ej ansluten");
        EXPECT_FALSE(Get<QLabel>("imgLock").isVisible());
        EXPECT_EQ(TraceLines().filter("Fel nummer:").size(), 1);
        EXPECT_EQ(TraceLines().filter("Fel nummer:12045 Serverns certifikat är inte betrott.").size(), 1);
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    }

    ftp_test::Server server_{Make::PyFtpdLib,
                             {.tls = Tls::Demanded, .certificate = ServerCertificate::SelfSigned}};
};

TEST_F(Trust, RefusedIsAConnectThatWasGivenUp) {
    ASSERT_TRUE(ConnectAndPress("cmdCancel"));
    ExpectNoSession();
    QWidget* dialog = Window("frmConnection");
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->findChild<QLineEdit*>("txtPassword")->text(), "demo");
    EXPECT_TRUE(QTest::qWaitFor([dialog] { return QApplication::activeWindow() == dialog; }));
    QTest::keyClick(dialog, Qt::Key_Escape);
    EXPECT_TRUE(window_->isEnabled());
}

TEST_F(Trust, ForNowOpensTheSessionAndIsAskedForAgain) {
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(ConnectAndPress("cmdNow"));
        ExpectSession();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
        ClickOn("Command16");
    }
    EXPECT_EQ(settings::LoadKnownServer(store_, QString::fromStdString(server_.HostField())),
              (settings::KnownServer{true, {}}));
}

TEST_F(Trust, ForGoodIsNotAskedForAgain) {
    ASSERT_TRUE(ConnectAndPress("cmdAlways"));
    ExpectSession();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    ClickOn("Command16");
    EXPECT_FALSE(ConnectAnd([](QDialog& question) { question.reject(); }));
    ExpectSession();
}

// No event of the user's can do that, for the question is modal; the end of a desktop session can.
TEST_F(Trust, ClosingTheDialogBelowTheQuestionGivesTheConnectUp) {
    ASSERT_TRUE(ConnectAnd([](QDialog& question) {
        Window("frmConnection")->close();
        EXPECT_FALSE(Window("frmConnection"));
        QTest::mouseClick(question.findChild<QPushButton*>("cmdAlways"), Qt::LeftButton);
    }));
    ExpectNoSession();
    EXPECT_FALSE(Window("frmConnection"));
    EXPECT_TRUE(window_->isEnabled());
    EXPECT_EQ(settings::LoadKnownServer(store_, QString::fromStdString(server_.HostField())),
              settings::KnownServer());
}

}  // namespace
}  // namespace forms
