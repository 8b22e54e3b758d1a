#pragma once
// The connection dialog: connection profiles, login data, and the whole connect sequence. UI thread only.

#include <QPushButton>
#include <QTimer>
#include <functional>

#include "app/shared/owned_dialog.h"
#include "ftp/component.h"
#include "settings/profiles.h"
#include "ui_connection_form.h"

namespace forms {

/// What the dialog uses of the main window, under the names that it has there. All of it outlives the dialog.
struct ConnectionHost {
    QWidget& window;
    ftp::Component& Ftp1;
    settings::Store& store;
    QPushButton& cmdConnection;
    QPushButton& Command9;
    QPushButton& Command14;
    QPushButton& Command16;
    QPushButton& Command21;
    QPushButton& Command23;
    std::function<void()> ClearServerLists;
    std::function<void()> BuildServerList;
};

/// While it is open the main window is disabled; when it is closed, no field of it holds the password or
/// the account any more. It closes itself when the connect sequence is over, and must not be destroyed while
/// the sequence runs: an operation of the component holds an event loop.
class frmConnection : public app::OwnedDialog, private Ui::frmConnection {
    Q_OBJECT
 public:
    explicit frmConnection(const ConnectionHost& main);

    /// Opens the dialog, filled with the first profile. Returns at once.
    void Form_Load();

    /// The session that is being opened is not wanted any more: the sequence ends, the dialog stays open, and
    /// the main window claims no session.
    void GiveUp();

 protected:
    void done(int result) override;

 private:
    void Wire();
    void PreparePassword();
    void HidePassword();
    void Combo1_Click();
    void Command1_Click();
    void Command2_Click();
    void Command3_Click();
    void Command4_Click();
    void Command5_Click();
    void Command6_Click();
    void cmdConnect_Click();
    void cmdDisconnect_Click();
    void cmdReinit_Click();
    void Timer1_Timer();

    void SelectProfile(int n);
    void ShowFields(const settings::Profile& profile);
    settings::Profile Fields() const;
    QString AskForFreeName();  // for a new profile; empty when the user gives up
    bool IsTaken(const QString& name) const;
    void Help(const QString& field, const QString& text);
    void OpenSession(const settings::Profile& login);
    void LogIn(const settings::Profile& login);

    const ConnectionHost main_;
    QTimer* const Timer1;
    QAction* const reveal_;
    bool connecting_ = false;  // the sequence runs; the component is not busy all the time
    bool given_up_ = false;    // the session that the sequence is opening has been dropped by the user
};

}  // namespace forms
