#include "tests/forms/favourites/favourites_dialog.h"

namespace forms {
namespace {

class Choosing : public FavouritesDialog {
 protected:
    void SetUp() override {
        FavouritesDialog::SetUp();
        settings::SaveFavourites(store_, {"Ett", "Två"}, {one_, two_});
        start_ = dir_.Path();
    }

    const QString one_ = MakeFolder("ett"), two_ = MakeFolder("två");
    QString start_;
};

TEST_F(Choosing, MovesTheWindowToTheFolder) {
    Open();
    ClickRow(1);
    EXPECT_EQ(Path(), two_);
    EXPECT_TRUE(steps_.isEmpty());
    ClickOn("Command1");
    EXPECT_EQ(dir_.Path(), two_);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_TRUE(window_.isEnabled());
}

TEST_F(Choosing, CanBeDoneInManyWays) {
    const std::function<void()> ways[] = {
        [this] { QTest::mouseDClick(List().viewport(), Qt::LeftButton, Qt::NoModifier, Middle(1)); },
        [this] { Press(Qt::Key_Return); },
        [this] {
            Get("label1").setFocus();
            Press(Qt::Key_Enter);
        },
        [this] { QTest::keyClick(dialog_.windowHandle(), Qt::Key_V, Qt::AltModifier); },
    };
    for (const auto& choose : ways) {
        dir_.SetPath(one_);
        Open();
        Press(Qt::Key_Down);
        EXPECT_EQ(Path(), two_);
        choose();
        ASSERT_TRUE(QTest::qWaitFor([this] { return !dialog_.isVisible(); }));
        EXPECT_EQ(dir_.Path(), two_);
    }
}

// The drive first: the window shows the root of a new drive, and the folder last.
TEST_F(Choosing, SetsTheDriveBeforeTheFolder) {
    drive_.addItem("X:", "X:\\");
    drive_.setCurrentIndex(drive_.findData("X:\\"));  // one that has gone meanwhile
    steps_.clear();
    Open();
    ClickOn("Command1");
    EXPECT_EQ(steps_, QStringList({"drive", "dir"}));
    EXPECT_EQ(drive_.Drive(), "C:\\");
    EXPECT_EQ(dir_.Path(), one_);
}

TEST_F(Choosing, SavesTheListBeforeTheWindowMoves) {
    QString saved;
    QObject::connect(&dir_, &toolkit::DirListBox::Change, &window_, [&] { saved = Setting("favvis_namn0"); });
    Open();
    ClickOn("Command6");
    EXPECT_EQ(Setting("favvis_namn0"), "Ett");
    ClickOn("Command1");
    EXPECT_EQ(saved, "Två");
    EXPECT_EQ(Setting("favvis_dir0"), two_);
    EXPECT_EQ(Setting("favvis_namn1"), "Ett");
    EXPECT_EQ(Setting("favvis_dir1"), one_);
    EXPECT_EQ(dir_.Path(), one_);
}

TEST_F(Choosing, WhatIsNotThereLeavesTheWindowWhereItIs) {
    const QString drive = drive_.Drive();
    for (const QString& folder : {start_ + "\\finns inte", QString("Q:\\"), QString("skräp"), QString("ö"),
                                  QString("\\"), QString("<b>C:\\</b>\n")}) {
        settings::SaveFavourites(store_, {"Borta"}, {folder});
        Open();
        Press(Qt::Key_Return);
        EXPECT_FALSE(dialog_.isVisible()) << qUtf8Printable(folder);
        EXPECT_EQ(drive_.Drive(), drive);
        EXPECT_EQ(dir_.Path(), start_) << qUtf8Printable(folder);
    }
}

TEST_F(Choosing, AnEntryWithoutAFolderOnlySaves) {
    Set("favvis_dir1", "");
    Open();
    ClickRow(1);
    EXPECT_EQ(Path(), "");
    ClickOn("Command5");
    EXPECT_EQ(Items("List2"), QStringList({"", one_}));
    EXPECT_EQ(Path(), "");
    ClickOn("Command1");
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(Setting("favvis_namn0"), "Två");
    EXPECT_EQ(Setting("favvis_dir0"), "");
    EXPECT_EQ(Setting("favvis_dir1"), one_);
    EXPECT_TRUE(steps_.isEmpty());
}

TEST_F(Choosing, WithNothingSelectedOnlySaves) {
    Open();
    ClickOn("Command6");
    ClickRow(1, Qt::ControlModifier);  // takes the selection back
    EXPECT_EQ(Selected(), -1);
    EXPECT_EQ(Path(), "Sökväg");
    EXPECT_FALSE(Button("Command4").isEnabled() || Button("Command5").isEnabled() ||
                 Button("Command6").isEnabled());
    Press(Qt::Key_Return);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(Setting("favvis_namn0"), "Två");
    EXPECT_TRUE(steps_.isEmpty());
}

TEST_F(Choosing, AfterAllAreRemovedSavesTheEmptyList) {
    Open();
    ClickOn("Command4");
    ClickOn("Command4");
    EXPECT_EQ(Caption(), "0 kataloger");
    EXPECT_EQ(Path(), "Sökväg");
    ClickOn("Command1");
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(Setting("Antal"), "stopp!");
    EXPECT_EQ(Setting("favvis_namn0"), "Ett");
    EXPECT_TRUE(steps_.isEmpty());
    Open();
    EXPECT_EQ(Items("List1"), QStringList({"Websmide's katalog", "Websmide's mallar", "Websmide's projekt"}));
    EXPECT_EQ(Caption(), "3 kataloger");
    EXPECT_EQ(Setting("Antal"), "3");
}

}  // namespace
}  // namespace forms
