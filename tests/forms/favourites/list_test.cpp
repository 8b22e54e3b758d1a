#include <QClipboard>

#include "tests/forms/favourites/favourites_dialog.h"

namespace forms {
namespace {

using FavouritesList = FavouritesDialog;

TEST_F(FavouritesList, HoldsTheProgramsOwnFoldersAtFirst) {
    Open();
    const QString program = platform::ProgramFolder();
    EXPECT_EQ(Items("List1"), QStringList({"Websmide's katalog", "Websmide's mallar", "Websmide's projekt"}));
    EXPECT_EQ(Items("List2"), QStringList({program, program + "\\mallar", program + "\\program"}));
    EXPECT_EQ(Caption(), "3 kataloger");
    EXPECT_EQ(Setting("Antal"), "3");
}

TEST_F(FavouritesList, ShowsThePathOfWhatIsSelected) {
    OpenWith("abc");
    EXPECT_EQ(Selected(), 0);
    EXPECT_EQ(Path(), "C:\\inte här\\a");
    ClickRow(2);
    EXPECT_EQ(Path(), "C:\\inte här\\c");
    Press(Qt::Key_Up);
    EXPECT_EQ(Path(), "C:\\inte här\\b");
}

// From the empty part of the list onto a row, with the button held.
TEST_F(FavouritesList, ShowsThePathOfARowThatTheMouseIsDraggedTo) {
    OpenWith("abc");
    const QPoint below = Middle(2) + QPoint(0, 30);
    ASSERT_FALSE(List().indexAt(below).isValid());
    QTest::mousePress(List().viewport(), Qt::LeftButton, Qt::NoModifier, below);
    for (int row : {2, 1}) {
        QMouseEvent move(QEvent::MouseMove, Middle(row), List().viewport()->mapToGlobal(Middle(row)),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(List().viewport(), &move);
    }
    QTest::mouseRelease(List().viewport(), Qt::LeftButton, Qt::NoModifier, Middle(1));
    EXPECT_EQ(Path(), Selected() < 0 ? "Sökväg" : List("List2").List(Selected()));
    EXPECT_NE(Selected(), 0);
}

TEST_F(FavouritesList, ALongPathCanBeReadAndCopied) {
    const QString path = "C:\\" + QString("en lång väg\\").repeated(30) + "<b>slut</b>";
    settings::SaveFavourites(store_, {"lång"}, {path});
    Open();
    auto& label1 = Get<QLineEdit>("label1");
    EXPECT_EQ(label1.text(), path);
    EXPECT_EQ(label1.cursorPosition(), 0);
    EXPECT_TRUE(label1.toolTip().contains("&lt;b&gt;slut"));  // plain, no markup
    QTest::mouseClick(&label1, Qt::LeftButton);
    QTest::keyClick(&label1, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&label1, "x");
    QTest::keyClick(&label1, Qt::Key_Delete);
    EXPECT_EQ(label1.text(), path);
    EXPECT_EQ(Names(), "lång");
    QTest::keyClick(&label1, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), path);
}

struct Step {
    const char* what;
    int row;
    const char* button;
    Qt::Key key;
    Qt::KeyboardModifiers with;
    QString after;
    int selected;
};

class Steps : public FavouritesDialog, public ::testing::WithParamInterface<Step> {
 protected:
    void ExpectAfterwards(const Step& step) {
        EXPECT_EQ(Names(), step.after);
        EXPECT_EQ(Folders(), step.after);
        EXPECT_EQ(Selected(), step.selected);
        EXPECT_EQ(Path(), "C:\\inte här\\" + Names().mid(step.selected, 1));
        EXPECT_EQ(Caption(), QString::number(step.after.size()) + " kataloger");
        EXPECT_TRUE(Button("Command4").isEnabled());
        EXPECT_EQ(Button("Command5").isEnabled(), step.selected > 0);
        EXPECT_EQ(Button("Command6").isEnabled(), step.selected + 1 < step.after.size());
        EXPECT_EQ(Setting("Antal"), "4");  // not saved yet
        EXPECT_EQ(Setting("favvis_namn0"), "a");
    }
};

TEST_P(Steps, ByTheMouseKeepBothListsTogether) {
    OpenWith("abcd");
    ClickRow(GetParam().row);
    ClickOn(GetParam().button);
    ExpectAfterwards(GetParam());
}

TEST_P(Steps, ByTheKeysKeepBothListsTogether) {
    OpenWith("abcd");
    for (int i = 0; i < GetParam().row; ++i) Press(Qt::Key_Down);
    Press(GetParam().key, GetParam().with);
    ExpectAfterwards(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    All, Steps,
    ::testing::Values(Step{"RemoveFirst", 0, "Command4", Qt::Key_Delete, Qt::NoModifier, "bcd", 0},
                      Step{"RemoveMiddle", 2, "Command4", Qt::Key_Delete, Qt::NoModifier, "abd", 2},
                      Step{"RemoveLast", 3, "Command4", Qt::Key_Delete, Qt::NoModifier, "abc", 2},
                      Step{"UpToTheTop", 1, "Command5", Qt::Key_Up, Qt::AltModifier, "bacd", 0},
                      Step{"UpFromTheEnd", 3, "Command5", Qt::Key_Up, Qt::AltModifier, "abdc", 2},
                      Step{"UpFromTheTop", 0, "Command5", Qt::Key_Up, Qt::AltModifier, "abcd", 0},
                      Step{"DownFromTheTop", 0, "Command6", Qt::Key_Down, Qt::AltModifier, "bacd", 1},
                      Step{"DownToTheEnd", 2, "Command6", Qt::Key_Down, Qt::AltModifier, "abdc", 3},
                      Step{"DownFromTheEnd", 3, "Command6", Qt::Key_Down, Qt::AltModifier, "abcd", 3}),
    [](const auto& step) { return std::string(step.param.what); });

TEST_F(FavouritesList, AllCanBeRemoved) {
    OpenWith("ab");
    Press(Qt::Key_Delete);
    Press(Qt::Key_Delete);
    Press(Qt::Key_Delete);
    EXPECT_EQ(Names(), "");
    EXPECT_EQ(Folders(), "");
    EXPECT_EQ(Caption(), "0 kataloger");
    EXPECT_EQ(Path(), "Sökväg");
    EXPECT_EQ(Get("label1").toolTip(), "");
    EXPECT_FALSE(Button("Command4").isEnabled() || Button("Command5").isEnabled() ||
                 Button("Command6").isEnabled());
    EXPECT_TRUE(Button("Command1").isEnabled());
}

// A button that can do no more gives the keyboard to the list, not to its neighbour, which would undo it.
TEST_F(FavouritesList, TheKeyboardStaysOnAButtonWhileItCanAct) {
    OpenWith("abc");
    ClickRow(2);
    Button("Command5").setFocus();
    Press(Qt::Key_Space);
    EXPECT_TRUE(Button("Command5").hasFocus());
    Press(Qt::Key_Space);
    EXPECT_EQ(Names(), "cab");
    EXPECT_TRUE(List().hasFocus());
}

TEST_F(FavouritesList, WhatIsMovedStaysInSight) {
    OpenWith("abcdefghijklmnopqrstuvwxyz");
    for (int i = 0; i < 25; ++i) {
        Press(Qt::Key_Down, Qt::AltModifier);
        ASSERT_TRUE(List().viewport()->rect().contains(Middle(i + 1)));
    }
    EXPECT_EQ(Names(), "bcdefghijklmnopqrstuvwxyza");
    EXPECT_EQ(Folders(), Names());
}

struct Ruined {
    QString stored, caption, names;
};

class RuinedCount : public FavouritesDialog, public ::testing::WithParamInterface<Ruined> {};

TEST_P(RuinedCount, IsReadAsFarAsItGoes) {
    OpenWith("abc");
    ClickOn("Command2");
    Set("Antal", GetParam().stored);
    Open();
    EXPECT_EQ(Caption(), GetParam().caption);
    EXPECT_EQ(Names(), GetParam().names);
    EXPECT_EQ(Folders(), GetParam().names);
}

INSTANTIATE_TEST_SUITE_P(Counts, RuinedCount,
                         ::testing::Values(Ruined{"-5", "-5 kataloger", ""}, Ruined{"abc", "0 kataloger", ""},
                                           Ruined{"3.7", "3 kataloger", "abc"},
                                           Ruined{"2", "2 kataloger", "ab"},
                                           Ruined{"7", "7 kataloger", "abc"},
                                           Ruined{"99999999999", "32767 kataloger", "abc"}));

TEST_F(FavouritesList, MissingValuesBreakNothing) {
    for (const char* missing : {"favvis_dir0", "favvis_dir2", "favvis_namn0", "favvis_namn1"}) {
        OpenWith("abc");
        ClickOn("Command2");
        Set(missing, "");
        Open();
        ClickRow(1);
        ClickOn("Command6");
        ClickOn("Command5");
        ClickOn("Command5");
        while (Button("Command4").isEnabled()) ClickOn("Command4");
        EXPECT_EQ(Names(), "");
        ClickOn("Command1");
        EXPECT_EQ(Setting("Antal"), "stopp!");
    }
}

}  // namespace
}  // namespace forms
