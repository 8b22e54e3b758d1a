// The row of buttons along the top.

#include "app/shared/ftpglob.h"
#include "app/shared/window_routines.h"
#include "forms/connection/connection_form.h"
#include "forms/main/main_form.h"

namespace forms {

void MainForm::cmdConnection_Click() {
    connection_ = std::make_unique<frmConnection>(
        ConnectionHost{*this, *Ftp1, store_, *cmdConnection, *Command9, *Command14, *Command16, *Command21,
                       *Command23, [this] { ClearServerLists(); }, [this] { BuildServerList(); }});
    connection_->Form_Load();
}

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

}  // namespace forms
