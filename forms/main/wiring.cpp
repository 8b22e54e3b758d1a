// Every connection of the main window, one line each.

#include <QLineEdit>

#include "forms/main/main_form.h"

namespace forms {

void MainForm::Wire() {
    connect(cmdConnection, &QPushButton::clicked, this, &MainForm::cmdConnection_Click);
    connect(cmdDirectory, &QPushButton::clicked, this, &MainForm::cmdDirectory_Click);
    connect(Command16, &QPushButton::clicked, this, &MainForm::Command16_Click);
    connect(Command17, &QPushButton::clicked, this, &MainForm::Command17_Click);
    connect(Command18, &QPushButton::clicked, this, &MainForm::Command18_Click);
    connect(Command19, &QPushButton::clicked, this, &MainForm::Command19_Click);
    connect(Command1, &QPushButton::clicked, this, &MainForm::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &MainForm::Command2_Click);
    connect(Command23, &QPushButton::clicked, this, &MainForm::Command23_Click);
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
    connect(Ftp1, &ftp::Component::BusyChanged, this, [this] { ShowLock(Ftp1->Connected()); });
}

void MainForm::WireServerPanel() {
    connect(Command9, &QPushButton::clicked, this, &MainForm::Command9_Click);
    connect(Command21, &QPushButton::clicked, this, &MainForm::Command21_Click);
    connect(Command10, &QPushButton::clicked, this, &MainForm::Command10_Click);
    connect(Command11, &QPushButton::clicked, this, &MainForm::Command11_Click);
    connect(Command12, &QPushButton::clicked, this, &MainForm::Command12_Click);
    connect(Command13, &QPushButton::clicked, this, &MainForm::Command13_Click);
    connect(Command14, &QPushButton::clicked, this, &MainForm::Command14_Click);
    connect(fleratabort, &QPushButton::clicked, this, &MainForm::fleratabort_Click);
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
    connect(list2, &toolkit::ListView::DblClick, Command5, &QPushButton::click);
    connect(Command3, &QPushButton::clicked, this, &MainForm::Command3_Click);
    connect(Command4, &QPushButton::clicked, this, &MainForm::Command4_Click);
    connect(Command5, &QPushButton::clicked, this, &MainForm::Command5_Click);
    connect(Command6, &QPushButton::clicked, this, &MainForm::Command6_Click);
    connect(Command7, &QPushButton::clicked, this, &MainForm::Command7_Click);
    connect(Command8, &QPushButton::clicked, this, &MainForm::Command8_Click);
    connect(fleratabort2, &QPushButton::clicked, this, &MainForm::fleratabort2_Click);
    connect(Label2, &toolkit::ClickLabel::Click, this, &MainForm::Label2_Click);
    connect(Command29, &QPushButton::clicked, this, &MainForm::Command29_Click);
    connect(lk, &QComboBox::activated, this, &MainForm::lk_Click);
    connect(lk->lineEdit(), &QLineEdit::returnPressed, this, [this] { lk_KeyPress('\r'); });
    connect(Command22, &QPushButton::clicked, this, &MainForm::Command22_Click);
    connect(tabort2, &QAction::triggered, this, &MainForm::tabort2_Click);
    connect(tabort3, &QAction::triggered, this, &MainForm::tabort3_Click);
}

}  // namespace forms
