#include "tests/forms/favourites/favourites_dialog.h"

namespace forms {
namespace {

using FavouritesWindow = FavouritesDialog;

TEST_F(FavouritesWindow, HoldsTheWindowThatOpensIt) {
    Open();
    EXPECT_EQ(dialog_.objectName(), "favviskat");
    EXPECT_EQ(dialog_.windowTitle(), "Välj favoritkatalog");
    EXPECT_FALSE(window_.isEnabled());
    EXPECT_EQ(dialog_.windowHandle()->transientParent(), window_.windowHandle());
}

TEST_F(FavouritesWindow, NamesItsControls) {
    EXPECT_EQ(Caption(), "0 kataloger");
    EXPECT_EQ(Path(), "Sökväg");
    Open();
    EXPECT_EQ(Get<QLabel>("Label2").text(), "Kataloger");
    EXPECT_EQ(Button("Command1").text(), "&Välj katalog");
    EXPECT_EQ(Button("Command2").text(), "&Avbryt");
    EXPECT_EQ(Button("Command4").toolTip(), "Ta bort katalog");
    EXPECT_EQ(Button("Command5").toolTip(), "Flytta katalog uppåt i listan");
    EXPECT_EQ(Button("Command6").toolTip(), "Flytta katalog neråt i listan");
    for (const char* picture : {"Command4", "Command5", "Command6"}) {
        EXPECT_EQ(Button(picture).accessibleName(), Button(picture).toolTip());
        EXPECT_FALSE(Button(picture).icon().pixmap(16, 16).isNull());
    }
    EXPECT_TRUE(Button("Command1").isDefault());
    EXPECT_FALSE(List("List2").isVisible());
    EXPECT_TRUE(QFontInfo(List().font()).fixedPitch());
}

TEST_F(FavouritesWindow, NothingIsClipped) {
    Open();
    dialog_.resize(dialog_.minimumSizeHint());
    for (const QWidget* control : dialog_.findChildren<QWidget*>()) {
        if (!qobject_cast<const QLabel*>(control) && !qobject_cast<const QPushButton*>(control)) continue;
        EXPECT_GE(control->width(), control->sizeHint().width()) << qUtf8Printable(control->objectName());
        EXPECT_GE(control->height(), control->minimumSizeHint().height())
            << qUtf8Printable(control->objectName());
    }
}

TEST_F(FavouritesWindow, GivesItsRoomToTheList) {
    Open();
    const int height = List().height(), width = List().width();
    dialog_.resize(dialog_.size() + QSize(150, 100));
    ASSERT_TRUE(QTest::qWaitFor([&] { return List().height() == height + 100; }));
    EXPECT_EQ(List().width(), width + 150);
}

// What has been done to the list is thrown away.
TEST_F(FavouritesWindow, ClosedWithoutAChoiceSavesNothing) {
    settings::SaveFavourites(store_, {"a", "b", "c"}, {"C:\\a", "C:\\b", "C:\\c"});
    Open();
    EXPECT_EQ(Names(), "abc");
    ClickRow(2);
    ClickOn("Command5");
    ClickRow(0);
    ClickOn("Command4");
    EXPECT_EQ(Names(), "cb");
    ClickOn("Command2");
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(Setting("Antal"), "3");
    EXPECT_EQ(settings::LoadFavourites(store_).names, QStringList({"a", "b", "c"}));
    EXPECT_TRUE(steps_.isEmpty());
}

TEST_F(FavouritesWindow, TheKeyboardStartsInTheList) {
    Open();
    EXPECT_TRUE(List().hasFocus());
    ClickOn("Command2");
    Open();
    EXPECT_TRUE(List().hasFocus());
}

}  // namespace
}  // namespace forms
