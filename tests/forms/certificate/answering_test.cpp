#include <optional>

#include "ftp/operation_gate.h"
#include "tests/forms/certificate/certificate_dialog.h"

namespace forms {
namespace {

using ftp::CertificateAnswer;
using Answering = CertificateDialog;

void Press(QDialog& dialog, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(dialog.windowHandle(), key, modifiers);
}

TEST_F(Answering, GoesByTheButton) {
    EXPECT_EQ(Ask([](QDialog& dialog) { ClickOn(dialog, "cmdAlways"); }), CertificateAnswer::TrustAlways);
    EXPECT_EQ(Ask([](QDialog& dialog) { ClickOn(dialog, "cmdNow"); }), CertificateAnswer::TrustNow);
    EXPECT_EQ(Ask([](QDialog& dialog) { ClickOn(dialog, "cmdCancel"); }), CertificateAnswer::Refuse);
}

TEST_F(Answering, GoesByTheKeyboard) {
    EXPECT_EQ(Ask([](QDialog& dialog) { Press(dialog, Qt::Key_L, Qt::AltModifier); }),
              CertificateAnswer::TrustAlways);
    EXPECT_EQ(Ask([](QDialog& dialog) { Press(dialog, Qt::Key_N, Qt::AltModifier); }),
              CertificateAnswer::TrustNow);
    EXPECT_EQ(Ask([](QDialog& dialog) { Press(dialog, Qt::Key_A, Qt::AltModifier); }),
              CertificateAnswer::Refuse);
}

// Who goes on typing, or presses what is to be pressed at once, trusts nobody.
TEST_F(Answering, WithoutAChoiceIsARefusal) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_Escape})
        EXPECT_EQ(Ask([key](QDialog& dialog) { Press(dialog, key); }), CertificateAnswer::Refuse) << key;
}

TEST_F(Answering, ByItsCloseBoxIsARefusal) {
    EXPECT_EQ(Ask([](QDialog& dialog) { dialog.close(); }), CertificateAnswer::Refuse);
}

TEST_F(Answering, EndsWithTheWindow) {
    EXPECT_EQ(Ask([this](QDialog&) { window_.reset(); }), CertificateAnswer::Refuse);
}

TEST_F(Answering, EndsWithTheProgram) {
    for (void (*const end)() : {&QCoreApplication::quit, +[] { QCoreApplication::exit(); }}) {
        std::optional<CertificateAnswer> answer;
        QTimer::singleShot(0, window_.get(), [this, end, &answer] {
            QTimer::singleShot(0, window_.get(), [end] {
                EXPECT_TRUE(QTest::qWaitFor([] { return Dialog() && Dialog()->isActiveWindow(); }));
                end();
            });
            answer = frmCertificate::Ask(window_.get(), question_);
        });
        QApplication::exec();
        EXPECT_EQ(answer, CertificateAnswer::Refuse);
    }
}

TEST_F(Answering, TabLeadsFromButtonToButton) {
    EXPECT_EQ(Ask([](QDialog& dialog) {
                  EXPECT_EQ(dialog.focusWidget()->objectName(), "cmdCancel");
                  QStringList visited;
                  for (int i = 0; i < 4; ++i) {
                      Press(dialog, Qt::Key_Tab);
                      visited.append(dialog.focusWidget()->objectName());
                  }
                  EXPECT_EQ(visited, QStringList({"txtFacts", "cmdAlways", "cmdNow", "cmdCancel"}));
                  Press(dialog, Qt::Key_Backtab, Qt::ShiftModifier);
                  Press(dialog, Qt::Key_Return);
              }),
              CertificateAnswer::TrustNow);
}

TEST_F(Answering, TakesInputWhileAnOperationRuns) {
    const ftp::OperationGate gate;
    EXPECT_EQ(Ask([](QDialog& dialog) { ClickOn(dialog, "cmdNow"); }), CertificateAnswer::TrustNow);
}

TEST_F(Answering, HasThePlainPointerAndGivesTheHourglassBack) {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    Ask([](QDialog& dialog) {
        EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::ArrowCursor);
        dialog.reject();
    });
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    QGuiApplication::restoreOverrideCursor();
}

}  // namespace
}  // namespace forms
