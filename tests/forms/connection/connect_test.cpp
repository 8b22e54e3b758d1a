#include "tests/forms/connection/connection_dialog.h"
#include "tests/support/ftp_server.h"
#include "tests/support/scripted_server.h"

using toolkit_test::ExpectBox;

namespace forms {
namespace {

/// Takes connections and never says a word.
class SilentServer : public ftp_test::ScriptedServer {
 public:
    SilentServer() { At(ftp_test::kConnect, {ftp_test::Stall()}); }
    QString Host() const { return QString::fromStdString(HostField()); }
};

class Connect : public ConnectionDialog {
 protected:
    void SetUp() override {
        ConnectionDialog::SetUp();
        Open();
        QObject::connect(&ftp1_, &ftp::Component::DirItem, &window_, [this] {
            EXPECT_TRUE(app::Globals().ServerListBusy);
            steps_.append(QStringLiteral("item"));
        });
        QObject::connect(&ftp1_, &ftp::Component::Error, &window_,
                         [this](int number) { errors_.append(number); });
    }

    void FillIn(const settings::Profile& login) {
        Type("txtHost", login.host);
        Type("txtusername", login.user);
        Type("txtPassword", login.password);
        Type("txtAccount", login.account);
    }

    /// Runs once, in the next operation of the component.
    void Meanwhile(std::function<void()> act) {
        QObject::connect(
            &ftp1_, &ftp::Component::BusyChanged, &window_,
            [this, act = std::move(act)] { QTimer::singleShot(0, &window_, act); }, Qt::SingleShotConnection);
    }

    bool PointerIsPlain() const { return QGuiApplication::overrideCursor() == nullptr; }

    QList<int> errors_;
};

class MissingField : public Connect, public ::testing::WithParamInterface<settings::Profile> {};

TEST_P(MissingField, IsToldAndChangesNothing) {
    FillIn(GetParam());
    ExpectBox box("Websmide's FTP-program 3.0", "FTP-värd, lösenord och användarnamn måste vara ifyllt!",
                  "cmdOk");
    ClickOn("cmdConnect");
    EXPECT_TRUE(PointerIsPlain());
    EXPECT_TRUE(dialog_.isVisible());
    EXPECT_FALSE(ClaimsSession());
    EXPECT_EQ(ftp1_.HostName, "");
    EXPECT_TRUE(steps_.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Fields, MissingField,
                         ::testing::Values(settings::Profile{"", "demo", "demo", "konto"},
                                           settings::Profile{"localhost", "", "demo", "konto"},
                                           settings::Profile{"localhost", "demo", "", "konto"},
                                           settings::Profile{}));

TEST_F(Connect, OpensTheSessionListsAndCloses) {
    ftp_test::Server server(ftp_test::Make::PyFtpdLib);
    server.WriteFile("a.txt", "abc");
    server.MakeFolder("pub");
    FillIn({QString::fromStdString(server.HostField()), "demo", "demo", ""});
    QStringList commands;
    QObject::connect(&ftp1_, &ftp::Component::CommandSent, &window_,
                     [&](const QString& line) { commands.append(line.section(' ', 0, 0)); });
    ClickOn("cmdConnect");

    EXPECT_EQ(steps_, QStringList({"clear", "item", "item", "build"}));
    EXPECT_LT(commands.indexOf("USER"), commands.indexOf("PASS"));
    EXPECT_LT(commands.indexOf("PASS"), commands.indexOf("LIST"));
    EXPECT_TRUE(ftp1_.ModeFlagA && ftp1_.ModeFlagB);
    EXPECT_EQ(ftp1_.SessionMode, 1);
    EXPECT_EQ(ftp1_.SessionOption(), 1);
    EXPECT_TRUE(command9_.isEnabled() && command14_.isEnabled() && command16_.isEnabled() &&
                command21_.isEnabled() && command23_.isEnabled());
    EXPECT_FALSE(cmd_connection_.isEnabled());
    EXPECT_TRUE(PointerIsPlain());
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_TRUE(app::Globals().SessionOpen);
    EXPECT_FALSE(app::Globals().ServerListBusy);
}

TEST_F(Connect, StartsByEnterInAnyField) {
    ftp_test::Server server(ftp_test::Make::PyFtpdLib);
    FillIn({QString::fromStdString(server.HostField()), "demo", "demo", ""});
    QTest::keyClick(Get<QComboBox>("txtusername").lineEdit(), Qt::Key_Return);
    EXPECT_TRUE(app::Globals().SessionOpen);
    EXPECT_TRUE(ftp1_.Connected());
}

// A password of blanks is one; what the server thinks of it is in the trace.
TEST_F(Connect, GoesOnToItsEndWhenTheLoginIsRefused) {
    ftp_test::Server server(ftp_test::Make::PyFtpdLib);
    FillIn({QString::fromStdString(server.HostField()), "demo", "  ", ""});
    ClickOn("cmdConnect");
    EXPECT_EQ(ftp1_.Password, "  ");
    ASSERT_FALSE(errors_.isEmpty());
    EXPECT_EQ(errors_.first(), 530);
    EXPECT_EQ(steps_, QStringList({"clear", "build"}));
    EXPECT_TRUE(ClaimsSession());
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(app::Globals().SessionOpen);
}

TEST_F(Connect, CanBeGivenUp) {
    const SilentServer silent;
    FillIn({silent.Host(), "demo", "demo", ""});
    app::Globals().SessionOpen = true;
    Meanwhile([this] {
        ClickOn("cmdReinit");  // swallowed, as all but the one button
        ClickOn("cmdDisconnect");
    });
    ClickOn("cmdConnect");
    EXPECT_TRUE(dialog_.isVisible());
    EXPECT_FALSE(window_.isEnabled());
    EXPECT_FALSE(ClaimsSession());
    EXPECT_FALSE(app::Globals().SessionOpen);
    EXPECT_FALSE(app::Globals().ServerListBusy);
    EXPECT_FALSE(ftp1_.Connected());
    EXPECT_TRUE(PointerIsPlain());
    EXPECT_EQ(ftp1_.HostName, silent.Host());

    ftp_test::Server server(ftp_test::Make::PyFtpdLib);
    Type("txtHost", QString::fromStdString(server.HostField()));
    ClickOn("cmdConnect");
    EXPECT_TRUE(ftp1_.Connected());
    EXPECT_TRUE(app::Globals().SessionOpen);
}

TEST_F(Connect, CanBeGivenUpByTheKeyboard) {
    const SilentServer silent;
    FillIn({silent.Host(), "demo", "demo", ""});
    Meanwhile([this] { QTest::keyClick(dialog_.windowHandle(), Qt::Key_A, Qt::AltModifier); });
    ClickOn("cmdConnect");
    EXPECT_TRUE(dialog_.isVisible());
    EXPECT_FALSE(ClaimsSession());
}

TEST_F(Connect, IsGivenUpWithTheDialog) {
    const SilentServer silent;
    FillIn({silent.Host(), "demo", "demo", ""});
    Meanwhile([this] { dialog_.close(); });
    ClickOn("cmdConnect");
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_FALSE(ClaimsSession());
    EXPECT_FALSE(app::Globals().SessionOpen);
    EXPECT_TRUE(PointerIsPlain());
}

TEST_F(Connect, EndsWithTheProgram) {
    const SilentServer silent;
    FillIn({silent.Host(), "demo", "demo", ""});
    Meanwhile([this] {
        ftp1_.Shutdown();
        dialog_.close();
        window_.close();
    });
    ClickOn("cmdConnect");
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(PointerIsPlain());
}

TEST_F(Connect, DroppingASessionThatIsNotThereShowsNothing) {
    command16_.setEnabled(true);
    app::Globals().SessionOpen = true;
    ClickOn("cmdDisconnect");
    EXPECT_EQ(ftp1_.Action(), 9);
    EXPECT_FALSE(command16_.isEnabled());
    EXPECT_FALSE(app::Globals().SessionOpen);
    EXPECT_TRUE(dialog_.isVisible());
    EXPECT_TRUE(errors_.isEmpty());
}

TEST_F(Connect, ReinitBringsTheComponentBackToItsStart) {
    ftp1_.HostName = QStringLiteral("ftp.example.com");
    ClickOn("cmdReinit");
    EXPECT_EQ(ftp1_.Action(), 20);
    EXPECT_EQ(ftp1_.HostName, "");
    EXPECT_TRUE(dialog_.isVisible());
}

}  // namespace
}  // namespace forms
