#include "tests/forms/connection/connection_dialog.h"

using toolkit_test::ExpectBox;

namespace forms {
namespace {

using Window = ConnectionDialog;

TEST_F(Window, OpenItDisablesTheMainWindowAndStandsInTheMiddle) {
    Open();
    EXPECT_EQ(dialog_.objectName(), "frmConnection");
    EXPECT_EQ(dialog_.windowTitle(), "Kontakta FTP-Server");
    EXPECT_FALSE(window_.isEnabled());
    EXPECT_EQ(dialog_.windowHandle()->transientParent(), window_.windowHandle());
    const QPoint off = dialog_.frameGeometry().center() - dialog_.screen()->availableGeometry().center();
    EXPECT_LE(off.manhattanLength(), 40);  // the window manager's frame comes later
}

TEST_F(Window, EscapeClosesItAndEnablesTheMainWindow) {
    Open();
    QTest::keyClick(&dialog_, Qt::Key_Escape);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_FALSE(app::Globals().SessionOpen);
}

TEST_F(Window, ItsCloseBoxClosesIt) {
    Open();
    dialog_.close();
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_EQ(dialog_.windowHandle()->transientParent(), nullptr);
}

TEST_F(Window, NothingIsClipped) {
    Open();
    for (const QWidget* control : dialog_.findChildren<QWidget*>()) {
        if (!qobject_cast<const QLabel*>(control) && !qobject_cast<const QPushButton*>(control)) continue;
        const int needed = control->maximumWidth() < control->sizeHint().width()
                               ? control->maximumWidth()
                               : control->sizeHint().width();
        EXPECT_GE(control->width(), needed) << qUtf8Printable(control->objectName());
        EXPECT_GE(control->height(), control->minimumSizeHint().height())
            << qUtf8Printable(control->objectName());
    }
}

TEST_F(Window, ThePasswordIsHiddenUntilItIsAskedFor) {
    Open();
    const auto& password = Get<QLineEdit>("txtPassword");
    Type("txtPassword", "hemlig");
    EXPECT_EQ(password.displayText(), QString(6, password.displayText().front()));
    auto* eye = password.findChild<QAbstractButton*>();
    ASSERT_TRUE(eye);
    QTest::mouseClick(eye, Qt::LeftButton);
    EXPECT_EQ(password.displayText(), "hemlig");
    QTest::mouseClick(eye, Qt::LeftButton);
    EXPECT_NE(password.displayText(), "hemlig");
}

TEST_F(Window, ThePasswordIsHiddenAgainWhereAnotherIsChosen) {
    SaveProfile("Ett", {"ftp.example.com", "anna", "hemlig", ""});
    SaveProfile("Två", {"ftp.example.net", "kalle", "okänt", ""});
    Open();
    const auto& password = Get<QLineEdit>("txtPassword");
    auto* eye = password.findChild<QAbstractButton*>();
    ASSERT_TRUE(eye);
    QTest::mouseClick(eye, Qt::LeftButton);
    EXPECT_EQ(password.displayText(), "hemlig");
    auto& profiles = Get<QComboBox>("Combo1");
    profiles.setFocus();
    QTest::keyClick(&profiles, Qt::Key_Down);
    EXPECT_EQ(password.text(), "okänt");
    EXPECT_EQ(password.echoMode(), QLineEdit::Password);
    EXPECT_NE(password.displayText(), "okänt");
    QTest::mouseClick(eye, Qt::LeftButton);
    EXPECT_EQ(password.displayText(), "okänt");
}

class Closing : public ConnectionDialog, public ::testing::WithParamInterface<const char*> {
 protected:
    void CloseIt() {
        const std::string way = GetParam();
        if (way == "Escape") return QTest::keyClick(&dialog_, Qt::Key_Escape);
        if (way == "CloseBox") return void(dialog_.close());
        Type("txtHost", "127.0.0.1:1");  // nobody listens there
        Type("txtusername", "anna");
        ClickOn("cmdConnect");
    }
};

TEST_P(Closing, LeavesNoAccountBehind) {
    Open();
    auto& account = Get<QLineEdit>("txtAccount");
    Type("txtPassword", "hemlig");
    Type("txtAccount", "konto 7");
    CloseIt();
    ASSERT_FALSE(dialog_.isVisible());
    EXPECT_EQ(account.text(), "");
    account.undo();
    EXPECT_EQ(account.text(), "");
}

TEST_P(Closing, LeavesNoPasswordBehind) {
    Open();
    auto& password = Get<QLineEdit>("txtPassword");
    Type("txtPassword", "hemlig");
    QTest::mouseClick(password.findChild<QAbstractButton*>(), Qt::LeftButton);
    ASSERT_EQ(password.displayText(), "hemlig");
    ASSERT_TRUE(password.isUndoAvailable());
    CloseIt();
    ASSERT_FALSE(dialog_.isVisible());
    EXPECT_EQ(password.text(), "");
    EXPECT_FALSE(password.isUndoAvailable());
    EXPECT_FALSE(password.isRedoAvailable());
    password.undo();
    EXPECT_EQ(password.text(), "");
    for (const QLineEdit* field : dialog_.findChildren<QLineEdit*>())
        EXPECT_FALSE(field->text().contains("hemlig")) << qUtf8Printable(field->objectName());

    Open();
    Type("txtPassword", "annat");
    EXPECT_EQ(password.echoMode(), QLineEdit::Password);
    EXPECT_NE(password.displayText(), "annat");
}

INSTANTIATE_TEST_SUITE_P(Ways, Closing, ::testing::Values("Escape", "CloseBox", "Connecting"),
                         [](const auto& way) { return std::string(way.param); });

TEST_F(Window, TheHostFieldExplainsItsForms) {
    Open();
    const QStringList lines = Get("txtHost").toolTip().split(u'\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], "Bara namnet: kryptering när servern erbjuder det");
    EXPECT_EQ(lines[1], "ftpes:// framför: kryptering krävs");
    EXPECT_EQ(lines[2], "ftps:// framför: kryptering från början (port 990)");
    EXPECT_EQ(lines[3], "ftp:// framför: ingen kryptering");
}

struct HelpText {
    const char* button;
    QString title, text;
};

class Help : public ConnectionDialog, public ::testing::WithParamInterface<HelpText> {};

TEST_P(Help, StandsInABox) {
    Open();
    ExpectBox box(GetParam().title, GetParam().text, "cmdOk");
    ClickOn(GetParam().button);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, Help,
    ::testing::Values(
        HelpText{"Command2", "FTP-värd",
                 "FTP-värd är den Server som du vill koppla upp dig mot, ex. ftp.example.com, "
                 "ftp.example.net, ftp.example.org, home.example.com, upload.example.net."},
        HelpText{"Command3", "Användarnamn",
                 "Användarnamnet är ofta detsamma som E-postadressens 'förnamn', ex. om du har E-posten "
                 "anna.berg@example.com så är användarnamnet anna.berg, har du kalle@example.net är "
                 "användarnamnet kalle o.s.v Om du är osäker - kontakta din Internetleverantör!"},
        HelpText{"Command4", "Lösenord",
                 "Lösenordet är den hemliga kod som måste godkännas av FTP-servern varje gång du 'loggar "
                 "in'. Om du är osäker kontakta din Internetleverantör!"},
        HelpText{"Command5", "Konto",
                 "Konto-fältet behöver du vanligtvis inte bry dig om, men om du har ett speciellt konto på "
                 "en FTP-server så kan du behöva fylla i information även här, kontakta din "
                 "Internetleverantör om du är osäker!"}));

}  // namespace
}  // namespace forms
