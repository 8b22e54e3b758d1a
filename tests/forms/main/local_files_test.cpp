#include <QAccessible>
#include <QToolTip>

#include "ftp/operation_gate.h"
#include "tests/forms/main/main_window.h"
#include "tests/support/box_answerer.h"

using toolkit_test::ExpectBox;

namespace forms {
namespace {

constexpr int kPatience = 20'000;  // milliseconds, for the window manager
const QString kMakeFolder = QStringLiteral("Skapa katalog");
const QString kRename = QStringLiteral("Döp om fil");
const QString kDelete = QStringLiteral("Ta bort fil");
const QString kDeleteSeveral = QStringLiteral("Ta bort filer");
const QString kSeveralQuestion = QStringLiteral("Vill du ta bort alla markerade filer ?");

class LocalFiles : public MainWindow {
 protected:
    /// What is in the folder, as on the disk.
    QStringList OnDisk() const {
        return QDir(files_.path())
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
    }

    QStringList Errors() {
        const auto& trace = Get<toolkit::ListBox>("listTrace");
        QStringList lines;
        for (int row = 0; row < trace.ListCount(); ++row) lines.append(trace.List(row));
        return lines.filter("Fel nummer:");
    }

    void ClickFile(const QString& name, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        ClickRow("list2", static_cast<int>(Names().indexOf(name)), keys);
    }
};

TEST_F(LocalFiles, AFolderIsMadeUnderTheNameThatIsAskedFor) {
    Open();
    const QString prompt = QStringLiteral("Namn på ny katalog i ") + Folder();
    for (const auto& [press, typed] : {std::pair("cmdCancel", "Ny"), std::pair("cmdOk", "")}) {
        ExpectBox box(kMakeFolder, prompt, press, typed);
        ClickOn("Command3");
    }
    EXPECT_EQ(OnDisk(), QStringList());
    auto& folders = Get<toolkit::DirListBox>("Dir1");
    const int before = folders.ListCount();
    ExpectBox box(kMakeFolder, prompt, "cmdOk", "Nya Bilder");
    ClickOn("Command3");
    EXPECT_EQ(OnDisk(), QStringList("Nya Bilder"));
    EXPECT_EQ(folders.ListCount(), before + 1);
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(LocalFiles, AFolderThatIsThereIsToldOfAndTheListIsReadAgain) {
    ASSERT_TRUE(QDir(files_.path()).mkdir("mapp"));
    Open();
    MakeFile("ny.txt", 1);
    ExpectBox box(kMakeFolder, QStringLiteral("Namn på ny katalog i ") + Folder(), "cmdOk", "mapp");
    ClickOn("Command3");
    ASSERT_EQ(Errors().size(), 1);
    EXPECT_TRUE(Errors().first().contains(Folder() + "\\mapp")) << qPrintable(Errors().first());
    EXPECT_EQ(Names(), QStringList("ny.txt"));
}

TEST_F(LocalFiles, RenamingAsksForTheNewName) {
    MakeFile("Gammal.TXT", 7);
    Open();
    ClickFile("gammal.txt");
    for (const auto& [press, typed] : {std::pair("cmdCancel", "ny.txt"), std::pair("cmdOk", "")}) {
        ExpectBox box(kRename, "Nytt namn på [gammal.txt]", press, typed);
        ClickOn("Command6");
    }
    EXPECT_EQ(OnDisk(), QStringList("Gammal.TXT"));
    ExpectBox box(kRename, "Nytt namn på [gammal.txt]", "cmdOk", "Ny År.txt");
    ClickOn("Command6");
    EXPECT_EQ(OnDisk(), QStringList(QStringLiteral("Ny År.txt")));
    EXPECT_EQ(Names(), QStringList(QStringLiteral("ny år.txt")));
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(LocalFiles, RenamingNeverReplacesAnotherFile) {
    MakeFile("a.txt", 1);
    MakeFile("b.txt", 2);
    Open();
    for (const char* taken : {"b.txt", "B.TXT"}) {
        ClickFile("a.txt");
        ExpectBox box(kRename, "Nytt namn på [a.txt]", "cmdOk", taken);
        ClickOn("Command6");
    }
    EXPECT_EQ(OnDisk(), QStringList({"a.txt", "b.txt"}));
    EXPECT_EQ(QFileInfo(files_.filePath("b.txt")).size(), 2);
    ASSERT_EQ(Errors().size(), 2);
    EXPECT_TRUE(Errors().first().contains(Folder() + "\\b.txt")) << qPrintable(Errors().first());
}

TEST_F(LocalFiles, SeveralFilesAreNotRenamed) {
    MakeFile("a.txt", 1);
    MakeFile("b.txt", 1);
    Open();
    ClickFile("a.txt");
    ClickFile("b.txt", Qt::ControlModifier);
    ExpectBox box("OBS!", "Det går tyvärr inte att ta döpa om fler än en fil i taget.", "cmdOk");
    QTest::keyClick(&Get("list2"), Qt::Key_F2);
    EXPECT_TRUE(box.HasCome());
    EXPECT_EQ(OnDisk(), QStringList({"a.txt", "b.txt"}));
}

TEST_F(LocalFiles, DeletingAsksFirst) {
    MakeFile("Ett.txt", 1);
    Open();
    const QString question = QStringLiteral("Vill du ta bort [") + Folder() + QStringLiteral("\\ett.txt] ?");
    ClickFile("ett.txt");
    for (const QString& press : {QStringLiteral("cmdNo"), ExpectBox::kEscape}) {
        ExpectBox box(kDelete, question, press);
        ClickOn("Command8");
        EXPECT_EQ(OnDisk(), QStringList("Ett.txt"));
        ClickFile("ett.txt");  // the list has been read again
    }
    ExpectBox box(kDelete, question, "cmdYes");
    ClickOn("Command8");
    EXPECT_EQ(OnDisk(), QStringList());
    EXPECT_EQ(Names(), QStringList());
    EXPECT_EQ(Errors(), QStringList());
}

// Names that differ only by case are different files, and each row acts on its own.
TEST_F(LocalFiles, OfTwinsTheRowsOwnFileIsDeletedAndRenamed) {
    for (const char* name : {"TVILLING.txt", "Tvilling.txt", "tvilling.txt"}) MakeFile(name, 1);
    Open();
    ASSERT_EQ(Names().size(), 3);
    const QString own = window_->LocalPathOfRow(1);
    const QString name = own.mid(own.lastIndexOf('\\') + 1);
    QStringList left = OnDisk();
    left.removeOne(name);
    ClickRow("list2", 1);
    {
        ExpectBox box(kDelete, QStringLiteral("Vill du ta bort [") + Folder() + "\\tvilling.txt] ?",
                      "cmdYes");
        ClickOn("Command8");
    }
    EXPECT_EQ(OnDisk(), left);

    const QString other = window_->LocalPathOfRow(0);
    ClickRow("list2", 0);
    ExpectBox box(kRename, "Nytt namn på [tvilling.txt]", "cmdOk", "ensam.txt");
    ClickOn("Command6");
    EXPECT_EQ(Errors(), QStringList());
    EXPECT_FALSE(OnDisk().contains(other.mid(other.lastIndexOf('\\') + 1)));
    EXPECT_TRUE(OnDisk().contains("ensam.txt"));
    EXPECT_EQ(OnDisk().size(), 2);
}

TEST_F(LocalFiles, AFileThatHasVanishedIsToldOfAndItsTwinIsLeftAlone) {
    MakeFile("tvilling.txt", 1);
    MakeFile("Tvilling.txt", 1);
    Open();
    const QString own = window_->LocalPathOfRow(0);
    ASSERT_TRUE(QFile::remove(files_.filePath(own.mid(own.lastIndexOf('\\') + 1))));
    ClickRow("list2", 0);
    ExpectBox box(kDelete, QStringLiteral("Vill du ta bort [") + Folder() + "\\tvilling.txt] ?", "cmdYes");
    ClickOn("Command8");
    EXPECT_EQ(OnDisk().size(), 1);
    EXPECT_EQ(Names().size(), 1);
    EXPECT_EQ(Errors().size(), 1);
}

TEST_F(LocalFiles, SeveralAreDeletedAfterOneQuestion) {
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) MakeFile(name, 1);
    Open();
    ClickFile("a.txt");
    ClickFile("c.txt", Qt::ControlModifier);
    EXPECT_FALSE(Button("Command8").isEnabled());
    {
        ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdNo");
        ClickOn("fleratabort2");
    }
    EXPECT_EQ(OnDisk().size(), 3);
    EXPECT_EQ(Get<toolkit::ListBox>("List1").SelCount(), 2) << "nothing is read again";
    ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
    ClickOn("fleratabort2");
    EXPECT_EQ(OnDisk(), QStringList("b.txt"));
    EXPECT_EQ(Names(), QStringList("b.txt"));
    EXPECT_FALSE(Button("fleratabort2").isVisible());
}

// Two buttons share one place: the caption stays where it is, and what it does follows the selection.
TEST_F(LocalFiles, TheDeleteButtonFollowsTheSelection) {
    for (const char* name : {"a.txt", "b.txt"}) MakeFile(name, 1);
    Open();
    const QRect place = Button("Command8").geometry();
    ClickFile("a.txt");
    EXPECT_TRUE(Button("Command8").isVisible());
    ClickFile("b.txt", Qt::ControlModifier);
    EXPECT_FALSE(Button("Command8").isVisible());
    EXPECT_TRUE(Button("fleratabort2").isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return Button("fleratabort2").geometry() == place; }));
    EXPECT_EQ(Button("fleratabort2").text(), Button("Command8").text());
    {
        ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdNo");
        QTest::keyClick(&Get("list2"), Qt::Key_T, Qt::AltModifier);
        EXPECT_TRUE(QTest::qWaitFor([&] { return box.HasCome(); }));  // the button is pressed for a moment
    }
    ClickFile("b.txt");
    EXPECT_TRUE(Button("Command8").isVisible());
    EXPECT_FALSE(Button("fleratabort2").isVisible());
}

TEST_F(LocalFiles, ARowThatAnAssistiveProgramChoosesIsTheOneThatTheButtonsActOn) {
    for (const char* name : {"a.txt", "b.txt"}) MakeFile(name, 1);
    Open();
    ClickFile("a.txt");
    QAccessibleTableInterface& table =
        *QAccessible::queryAccessibleInterface(&Get("list2"))->tableInterface();
    table.selectRow(1);
    EXPECT_TRUE(Button("fleratabort2").isVisible());
    {
        const ftp::OperationGate gate;
        table.unselectRow(1);
    }
    EXPECT_EQ(Get<toolkit::ListBox>("List1").SelCount(), 2) << "as no key is let through";
    table.unselectRow(0);
    EXPECT_TRUE(Button("Command8").isEnabled());
    ExpectBox box(kDelete, QStringLiteral("Vill du ta bort [") + Folder() + "\\b.txt] ?", "cmdYes");
    ClickOn("Command8");
    EXPECT_EQ(OnDisk(), QStringList("a.txt"));
}

TEST_F(LocalFiles, AKeyShowsTheTipOfTheCurrentRow) {
    for (const QString& name : {QStringLiteral("<b>a.txt"), QStringLiteral("b.txt")}) MakeFile(name, 7);
    Open();
    auto& list = Get<QAbstractItemView>("list2");
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_F1, Qt::ControlModifier);
    EXPECT_TRUE(QToolTip::isVisible());
    EXPECT_TRUE(QToolTip::text().contains("&lt;b&gt;a.txt\n7")) << qPrintable(QToolTip::text());
    QTest::keyClick(&list, Qt::Key_Down);
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
    QTest::keyClick(&list, Qt::Key_F1, Qt::ControlModifier);
    EXPECT_TRUE(QToolTip::text().contains("b.txt\n7")) << qPrintable(QToolTip::text());
}

TEST_F(LocalFiles, TheFocusStaysInTheLocalPanel) {
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) MakeFile(name, 1);
    Open();
    ClickFile("a.txt");
    {
        ExpectBox box(kDelete, QStringLiteral("Vill du ta bort [") + Folder() + "\\a.txt] ?", "cmdYes");
        ClickOn("Command8");
    }
    EXPECT_TRUE(QTest::qWaitFor([this] { return Get("list2").hasFocus(); }, kPatience))
        << "the window is active: " << window_->isActiveWindow();
    ClickFile("b.txt");
    ClickFile("c.txt", Qt::ControlModifier);
    ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
    ClickOn("fleratabort2");
    EXPECT_TRUE(QTest::qWaitFor([this] { return Get("list2").hasFocus(); }, kPatience))
        << "the window is active: " << window_->isActiveWindow();
}

// A row that is current without being marked counts, but for the first one.
TEST_F(LocalFiles, WithNothingMarkedTheFirstRowIsLeftAlone) {
    for (const char* name : {"a.txt", "b.txt"}) MakeFile(name, 1);
    Open();
    const auto rename = [this](const QString& file) {
        ClickFile(file);
        ClickFile(file, Qt::ControlModifier);
        EXPECT_EQ(Get<toolkit::ListBox>("List1").SelCount(), 0);
        ClickOn("Command6");
    };
    rename("a.txt");
    ExpectBox box(kRename, "Nytt namn på [b.txt]", "cmdCancel");
    rename("b.txt");
    EXPECT_TRUE(box.HasCome());
}

TEST_F(LocalFiles, WhatCannotBeDeletedIsToldOfAndTheOthersGo) {
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) MakeFile(name, 1);
    // A folder has taken the place of a file since the list was read.
    Open();
    ASSERT_TRUE(QFile::remove(files_.filePath("b.txt")) && QDir(files_.path()).mkdir("b.txt"));
    ClickFile("a.txt");
    QTest::keyClick(&Get("list2"), Qt::Key_A, Qt::ControlModifier);
    ExpectBox box(kDeleteSeveral, kSeveralQuestion, "cmdYes");
    ClickOn("fleratabort2");
    EXPECT_EQ(OnDisk(), QStringList("b.txt"));
    ASSERT_EQ(Errors().size(), 1);
    EXPECT_TRUE(Errors().first().contains(Folder() + "\\b.txt")) << qPrintable(Errors().first());
}

TEST_F(LocalFiles, AtTheRootThePromptNamesTheDrive) {
    Open();
    Get<toolkit::DirListBox>("Dir1").SetPath("C:\\");
    ExpectBox box(kMakeFolder, "Namn på ny katalog i C:\\", "cmdCancel");
    ClickOn("Command3");
    EXPECT_TRUE(box.HasCome());
}

}  // namespace
}  // namespace forms
