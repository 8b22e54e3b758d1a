// The row of buttons along the top.

#include <QAccessible>

#include "app/shared/ftpglob.h"
#include "app/shared/window_routines.h"
#include "forms/about/about_form.h"
#include "forms/about/help_panel_form.h"
#include "forms/connection/connection_form.h"
#include "forms/main/main_form.h"
#include "ftp/operation_gate.h"
#include "platform/folder.h"

namespace forms {
namespace {

/// Acts once, from the event loop, when the widget has been painted for the first time.
class AfterPainting : public QObject {
 public:
    AfterPainting(QWidget& widget, std::function<void()> act) : QObject(&widget), act_(std::move(act)) {
        widget.installEventFilter(this);
    }

 protected:
    bool eventFilter(QObject* widget, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            widget->removeEventFilter(this);
            QMetaObject::invokeMethod(
                this,
                [this] {
                    act_();
                    deleteLater();
                },
                Qt::QueuedConnection);
        }
        return false;
    }

 private:
    const std::function<void()> act_;
};

}  // namespace

void MainForm::cmdConnection_Click() {
    connection_ = std::make_unique<frmConnection>(
        ConnectionHost{*this, *Ftp1, store_, *cmdConnection, *Command9, *Command14, *Command16, *Command21,
                       *Command23, [this] { ClearServerLists(); }, [this] { BuildServerList(); }});
    connection_->Form_Load();
}

// Kept with its caption, without effect.
void MainForm::cmdDirectory_Click() {}

void MainForm::Command16_Click() {
    app::SetHourglass(true);
    Ftp1->CloseConnection();
    cmdConnection->setEnabled(true);
    cmdConnection->setFocus();
    for (QPushButton* button : {Command16, Command1, Command2, Command9, Command14, Command21, Command10,
                                Command11, Command12, Command13, Command23})
        button->setEnabled(false);
    server_lines_->Clear();
    app::SetHourglass(false);
    app::Globals().SessionOpen = false;
}

void MainForm::Command17_Click() {
    StartDoc(platform::ProgramFolder() + QStringLiteral("\\..\\hjälp\\helpftp.htm"));
}

void MainForm::Command18_Click() {
    about_ = std::make_unique<Form2>(*this);
    connect(about_.get(), &Form2::HelpWanted, this, &MainForm::Command17_Click);
    about_->Form_Load();
}

Form4& MainForm::HelpPanel() {
    if (!help_panel_) {
        help_panel_ = std::make_unique<Form4>(*this);
        help_panel_->Form_Load();
    }
    return *help_panel_;
}

void MainForm::Command19_Click() {
    const bool show = !HelpPanel().isVisible();
    HelpPanel().setVisible(show);
    store_.SaveSetting(settings::kFtpApplication, QStringLiteral("general"), QStringLiteral("visa"),
                       show ? QStringLiteral("1") : QStringLiteral("0"));
}

// Whether the panel is wanted is for the user to say: what is stored is that it has been shown. Once the
// window has been painted, its frame is known, which the panel takes its place from.
void MainForm::GreetNewUser() {
    if (HasBeenOpenBefore()) return;
    new AfterPainting(*this, [this] {
        if (!isVisible() || ftp::OperationGate::IsUp()) return;
        HelpPanel().show();
        QAccessibleEvent shown(&HelpPanel(), QAccessible::Alert);  // it has not taken the focus
        QAccessible::updateAccessibility(&shown);
        SavePlace();
    });
}

}  // namespace forms
