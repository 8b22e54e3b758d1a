// Every connection of the main window, one line each.

#include <QLineEdit>

#include "forms/main/main_form.h"

namespace forms {

void MainForm::Wire() {
    connect(cmdConnection, &QPushButton::clicked, this, &MainForm::cmdConnection_Click);
    connect(Command16, &QPushButton::clicked, this, &MainForm::Command16_Click);
    connect(Command1, &QPushButton::clicked, this, &MainForm::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &MainForm::Command2_Click);
    connect(avb, &QPushButton::clicked, this, &MainForm::avb_Click);
    WireComponent();
    WireServerPanel();
    WireLocalPanel();
}

void MainForm::WireComponent() {
    connect(Ftp1, &ftp::Component::Debug, this, &MainForm::Ftp1_Debug);
    connect(Ftp1, &ftp::Component::DirItem, this, &MainForm::Ftp1_DirItem);
    connect(Ftp1, &ftp::Component::Progress, this, &MainForm::Ftp1_Progress);
    connect(Ftp1, &ftp::Component::Error, this, &MainForm::Ftp1_Error);
    connect(Ftp1, &ftp::Component::CommandSent, this, &MainForm::Ftp1_CommandSent);
    connect(Ftp1, &ftp::Component::ConnectedChanged, this, &MainForm::Ftp1_ConnectedChanged);
}

void MainForm::WireServerPanel() {
    connect(Command9, &QPushButton::clicked, this, &MainForm::Command9_Click);
    connect(Command21, &QPushButton::clicked, this, &MainForm::Command21_Click);
    connect(listdir2, &toolkit::ListView::ItemClick, this, &MainForm::listdir2_ItemClick);
    connect(listdir2, &toolkit::ListView::Click, this, &MainForm::listdir2_Click);
    connect(listdir2, &toolkit::ListView::DblClick, this, &MainForm::listdir2_DblClick);
    connect(listdir2, &toolkit::ListView::LostFocus, this, &MainForm::listdir2_LostFocus);
    connect(listDir, &toolkit::ListBox::Click, this, &MainForm::listDir_Click);
    connect(listDir, &toolkit::ListBox::DblClick, this, &MainForm::listDir_DblClick);
    connect(listDir, &toolkit::ListBox::LostFocus, this, &MainForm::listDir_LostFocus);
}

void MainForm::WireLocalPanel() {
    connect(Drive1, &toolkit::DriveListBox::Change, this, &MainForm::Drive1_Change);
    connect(Dir1, &toolkit::DirListBox::Change, this, &MainForm::Dir1_Change);
    connect(list2, &toolkit::ListView::Click, this, &MainForm::list2_Click);
    connect(List1, &toolkit::ListBox::Click, this, &MainForm::List1_Click);
    connect(List1, &toolkit::ListBox::KeyUp, this, &MainForm::List1_KeyUp);
    connect(Text1, &QComboBox::activated, this, &MainForm::Text1_Click);
    connect(Text1->lineEdit(), &QLineEdit::returnPressed, this, [this] { Text1_KeyPress('\r'); });
    connect(Command7, &QPushButton::clicked, this, &MainForm::Command7_Click);
    connect(lk, &QComboBox::activated, this, &MainForm::lk_Click);
    connect(lk->lineEdit(), &QLineEdit::returnPressed, this, [this] { lk_KeyPress('\r'); });
    connect(Command22, &QPushButton::clicked, this, &MainForm::Command22_Click);
    connect(tabort2, &QAction::triggered, this, &MainForm::tabort2_Click);
    connect(tabort3, &QAction::triggered, this, &MainForm::tabort3_Click);
}

}  // namespace forms
