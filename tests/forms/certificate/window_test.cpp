#include <QClipboard>
#include <QScrollBar>
#include <QTextBlock>

#include "tests/forms/certificate/certificate_dialog.h"

namespace forms {
namespace {

using ftp::CertificateAnswer;
using Window = CertificateDialog;

// Texts that fit, controls on the window, the window on the screen.
void ExpectWhole(const QDialog& dialog) {
    EXPECT_TRUE(dialog.screen()->availableGeometry().contains(dialog.frameGeometry()));
    EXPECT_LE(dialog.width(), 800);
    EXPECT_LE(dialog.height(), 550);
    for (const QWidget* control : dialog.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        const std::string name = control->objectName().toStdString();
        if (!control->isVisible()) continue;
        EXPECT_TRUE(dialog.rect().contains(control->geometry())) << name;
        EXPECT_GE(control->width(), control->minimumSizeHint().width()) << name;
        EXPECT_GE(control->height(), control->minimumSizeHint().height()) << name;
    }
}

TEST_F(Window, IsModalAndStandsOverItsParent) {
    Ask([this](QDialog& dialog) {
        EXPECT_EQ(dialog.windowModality(), Qt::ApplicationModal);
        EXPECT_EQ(dialog.windowHandle()->transientParent(), window_->windowHandle());
        EXPECT_EQ(dialog.windowTitle(), "Serverns certifikat");
        ClickOn(dialog, "cmdCancel");
    });
}

TEST_F(Window, SaysWhatIsWrong) {
    question_.certificate.wrong_host = true;
    Ask([](QDialog& dialog) {
        ExpectWhole(dialog);
        EXPECT_EQ(Get<QLabel>(dialog, "lblHeading").text(),
                  "Servern ftp.exempel.se:21 kan inte styrka vem den är.");
        EXPECT_EQ(Get<QLabel>(dialog, "lblProblems").text(),
                  u"\u2022 Ingen som din dator litar på går i god för certifikatet.\n"
                  u"\u2022 Certifikatet gäller för en annan server: ftp.exempel.se, www.exempel.se");
        EXPECT_FALSE(Get<QTextEdit>(dialog, "txtFacts").verticalScrollBar()->isVisible());
        ClickOn(dialog, "cmdCancel");
    });
}

TEST_F(Window, WarnsOfTheOneThatHasChanged) {
    question_.changed = true;
    QImage changed, unproven;
    const auto picture = [](QDialog& dialog) {
        const QImage image = Get<QLabel>(dialog, "lblPicture").pixmap().toImage();
        dialog.reject();
        return image;
    };
    Ask([&](QDialog& dialog) {
        ExpectWhole(dialog);
        EXPECT_TRUE(
            Get<QLabel>(dialog, "lblHeading").text().startsWith("Certifikatet för ftp.exempel.se:21 har"));
        EXPECT_TRUE(Get<QLabel>(dialog, "lblAdvice").text().startsWith("Någon kan ha ställt sig mellan"));
        changed = picture(dialog);
    });
    question_.changed = false;
    Ask([&](QDialog& dialog) { unproven = picture(dialog); });
    EXPECT_FALSE(changed.isNull());
    EXPECT_FALSE(unproven.isNull());
    EXPECT_NE(changed, unproven);
}

TEST_F(Window, ShowsTheFacts) {
    Ask([](QDialog& dialog) {
        const QStringList lines = Facts(dialog).split(u'\n');
        EXPECT_EQ(lines.size(), 9);
        EXPECT_EQ(lines.value(0), "Server:\tftp.exempel.se:21");
        EXPECT_EQ(lines.value(1),
                  "Fingeravtryck (SHA-256):\t00:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB:AB");
        EXPECT_EQ(lines.value(2), "CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD:CD");
        EXPECT_EQ(lines.value(4), "www.exempel.se");
        auto& facts = Get<QTextEdit>(dialog, "txtFacts");
        QTextCursor fingerprint = facts.document()->find("00:AB");
        EXPECT_TRUE(QFontInfo(fingerprint.charFormat().font()).fixedPitch());
        EXPECT_FALSE(QFontInfo(facts.document()->find("ftp.exempel.se").charFormat().font()).fixedPitch());
        // Half a fingerprint has room on a line, and both halves stand one below the other.
        EXPECT_EQ(facts.document()->find("00:AB").block().layout()->lineCount(), 2);
        ClickOn(dialog, "cmdCancel");
    });
}

TEST_F(Window, TheFactsCanBeCopiedAndNotChanged) {
    Ask([](QDialog& dialog) {
        auto& facts = Get<QTextEdit>(dialog, "txtFacts");
        const QString before = facts.toPlainText();
        const QRect word = facts.cursorRect(facts.document()->find("00:AB"));
        QTest::mouseDClick(facts.viewport(), Qt::LeftButton, {}, word.center() - QPoint(6, 0));
        EXPECT_TRUE(facts.textCursor().hasSelection());
        QTest::keyClick(&facts, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&facts, Qt::Key_C, Qt::ControlModifier);
        EXPECT_EQ(QGuiApplication::clipboard()->text(), before);
        QTest::keyClicks(&facts, "x");
        QTest::keyClick(&facts, Qt::Key_Delete);
        EXPECT_EQ(facts.toPlainText(), before);
        dialog.reject();
    });
}

TEST_F(Window, IsAsLargeAsEverWhateverTheCertificateSays) {
    QSize usual;
    Ask([&usual](QDialog& dialog) {
        usual = dialog.size();
        dialog.reject();
    });
    ftp::Certificate& certificate = question_.certificate;
    certificate.names.assign(200, std::string(4000, 'a'));
    certificate.subject = "CN=" + std::string(4000, 'b');
    certificate.issuer = certificate.other = std::string(100'000, 'c');
    certificate.self_signed = certificate.expired = certificate.not_yet_valid = certificate.wrong_host = true;
    question_.server = QString(4000, u'd') + ":21";
    Ask([&usual](QDialog& dialog) {
        ExpectWhole(dialog);
        EXPECT_EQ(dialog.width(), usual.width());
        auto& facts = Get<QTextEdit>(dialog, "txtFacts");
        EXPECT_TRUE(facts.verticalScrollBar()->isVisible());
        EXPECT_EQ(facts.horizontalScrollBar()->maximum(), 0);
        EXPECT_EQ(facts.verticalScrollBar()->value(), 0);
        EXPECT_GE(facts.height(), 8 * facts.fontMetrics().height());
        QTest::keyClick(&facts, Qt::Key_End, Qt::ControlModifier);
        EXPECT_TRUE(facts.document()->find("Giltigt till:").charFormat().isValid());
        EXPECT_TRUE(
            facts.viewport()->rect().contains(facts.cursorRect(facts.document()->find("Giltigt till:"))));
        ClickOn(dialog, "cmdCancel");
    });
}

TEST_F(Window, ShowsMarkupAsItIs) {
    question_.server = "<b>a</b>:21";
    question_.certificate.names = {"<img src='/x'>", "<h1>b</h1>"};
    question_.certificate.subject = "&lt;<u>c</u>";
    question_.certificate.wrong_host = true;
    Ask([](QDialog& dialog) {
        EXPECT_TRUE(Facts(dialog).contains("<img src='/x'>\n<h1>b</h1>"));
        EXPECT_TRUE(Facts(dialog).contains("&lt;<u>c</u>"));
        for (const char* name : {"lblHeading", "lblProblems", "lblAdvice"})
            EXPECT_EQ(Get<QLabel>(dialog, name).textFormat(), Qt::PlainText) << name;
        EXPECT_TRUE(Get<QLabel>(dialog, "lblHeading").text().contains("<b>a</b>:21"));
        dialog.reject();
    });
}

}  // namespace
}  // namespace forms
