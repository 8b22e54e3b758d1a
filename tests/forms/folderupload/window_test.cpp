#include <QComboBox>
#include <QGroupBox>
#include <QWindow>

#include "tests/forms/folderupload/folder_upload_dialog.h"

namespace forms {
namespace {

using FolderUploadWindow = FolderUploadDialog;

TEST_F(FolderUploadWindow, HoldsTheWindowThatOpensIt) {
    Open();
    EXPECT_EQ(dialog_->objectName(), "fmRekurs");
    EXPECT_EQ(dialog_->windowTitle(), "Skicka över mappar");
    EXPECT_FALSE(window_.isEnabled());
    EXPECT_EQ(dialog_->windowHandle()->transientParent(), window_.windowHandle());
    ClickOn("Command2");
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_TRUE(window_.isEnabled());
}

TEST_F(FolderUploadWindow, NamesItsControls) {
    Open();
    EXPECT_EQ(Get<QGroupBox>("Frame1").title(), "Välj mapp genom att dubbelklicka i listan!");
    const std::pair<const char*, const char*> labels[] = {
        {"Label6",
         "Mappen [ingen vald mapp] kommer att skapas i den katalog som du nu står i på FTP-servern!"},
        {"Label5", "INFO:"},
        {"Label2", "Antal mappar:"},
        {"Label3", "Antal filer:"},
        {"Label4", "Storlek på filer:"},
        {"Label1", "Beräknad tid: "},
    };
    for (const auto& [name, text] : labels) EXPECT_EQ(Text(name), text) << name;
    const std::pair<const char*, const char*> buttons[] = {
        {"Check1", "Inkludera underkataloger"},
        {"c2", "Visa information om mappstruktur"},
        {"Command3", "Skicka upp &mappar!"},
        {"Command2", "&Stäng"},
        {"kor", "&Starta sökning"},
        {"Command1", "&KÖR!!!!!"},
        {"Command29", ""},
    };
    for (const auto& [name, text] : buttons) EXPECT_EQ(Get<QAbstractButton>(name).text(), text) << name;
    EXPECT_EQ(Button("Command29").toolTip(), "Välj favoritkatalog");
    EXPECT_FALSE(Button("Command29").icon().pixmap(16, 16).isNull());
    EXPECT_TRUE(Button("Command3").isDefault());
    EXPECT_EQ(Get<QComboBox>("Combo1").currentText(), "*.*");
    for (const char* hidden : {"Dir1", "List1", "Combo1", "kor", "Command1"})
        EXPECT_FALSE(Get(hidden).isVisible()) << hidden;
}

TEST_F(FolderUploadWindow, BeginsAtTheRootWithNothingChosen) {
    Open();
    EXPECT_EQ(Dir2().Path(), "C:\\");
    EXPECT_EQ(Get<toolkit::DriveListBox>("Drive1").Drive(), "C:\\");
    EXPECT_EQ(Statistics(), kNothing);
    EXPECT_FALSE(Get<QCheckBox>("Check1").isChecked());
    EXPECT_FALSE(Get<QCheckBox>("c2").isChecked());
    EXPECT_TRUE(Dir2().hasFocus());
}

TEST_F(FolderUploadWindow, EveryControlIsReachedByTab) {
    Open();
    QStringList reached;
    for (int i = 0; i < 7; ++i) {
        reached.append(dialog_->focusWidget()->objectName());
        QTest::keyClick(dialog_->focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(reached, QStringList({"Dir2", "Check1", "c2", "Command3", "Command2", "Drive1", "Command29"}));
    EXPECT_TRUE(Dir2().hasFocus());
}

TEST_F(FolderUploadWindow, EscapeClosesIt) {
    Open();
    QTest::keyClick(dialog_->focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_TRUE(window_.isEnabled());
}

TEST_F(FolderUploadWindow, NothingIsClipped) {
    Open();
    dialog_->resize(1, 1);
    // A narrower label needs more lines, and the window more height.
    auto& label = Get("Label6");
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return dialog_->width() < 540 && label.height() >= label.minimumSizeHint().height(); }));
    for (const QWidget* control : dialog_->findChildren<QWidget*>()) {
        if (!qobject_cast<const QLabel*>(control) && !qobject_cast<const QAbstractButton*>(control)) continue;
        if (!control->isVisible()) continue;
        EXPECT_GE(control->width(), control->minimumSizeHint().width())
            << qUtf8Printable(control->objectName());
        EXPECT_GE(control->height(), control->minimumSizeHint().height())
            << qUtf8Printable(control->objectName());
        EXPECT_TRUE(dialog_->rect().contains(QRect(control->mapTo(dialog_.get(), QPoint()), control->size())))
            << qUtf8Printable(control->objectName());
    }
}

TEST_F(FolderUploadWindow, GivesItsRoomToTheFolders) {
    Open();
    const QSize before = Dir2().size();
    dialog_->resize(dialog_->size() + QSize(150, 100));
    ASSERT_TRUE(QTest::qWaitFor([&] { return Dir2().height() >= before.height() + 100; }));
    EXPECT_EQ(Dir2().width(), before.width() + 150);
}

// What grows while a scan runs has its room from the start; a name as long as names may be gets more lines.
TEST_F(FolderUploadWindow, StaysAsItIsWhileTextsGrow) {
    Open();
    const QSize size = dialog_->size();
    const int left = Get("l3").x();
    const std::string longest(255, 'w');
    MakeFolder(longest);
    Choose(longest);
    Get<QLabel>("l3").setText("1 234 567 KB");
    Get<QLabel>("l4").setText("999 tim. 59 min.");
    auto& label = Get("Label6");
    ASSERT_TRUE(QTest::qWaitFor([&] { return label.height() >= label.minimumSizeHint().height(); }));
    EXPECT_GT(label.height(), 3 * label.fontMetrics().height());
    EXPECT_EQ(dialog_->size(), size);
    EXPECT_EQ(Get("l3").x(), left);
    EXPECT_EQ(Text("l4"), "999 tim. 59 min.");
    EXPECT_TRUE(Text("Label6").contains(QString(255, 'w')));
    EXPECT_LE(Get("Command3").geometry().bottom(), Get("Frame1").height());
}

}  // namespace
}  // namespace forms
