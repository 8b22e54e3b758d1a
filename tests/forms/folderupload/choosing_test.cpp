#include <QCloseEvent>
#include <QComboBox>
#include <QLineEdit>
#include <QWindow>

#include "tests/forms/folderupload/folder_upload_dialog.h"

namespace forms {
namespace {

const QString kNoFolder = QStringLiteral(
    "Mappen [ingen vald mapp] kommer att skapas i den katalog som du nu står i på FTP-servern!");

class FolderUploadChoosing : public FolderUploadDialog {
 protected:
    void SetUp() override {
        FolderUploadDialog::SetUp();
        MakeFile("Webb/a.txt", std::string(10240, 'a'));
        MakeFile("Webb/Bilder/logo.gif");
        Open();
    }

    /// As the user does it, from the root down.
    void OpenByMouse(const QString& path) {
        const QStringList names = path.split('\\', Qt::SkipEmptyParts);
        QString opened = names.first();
        for (const QString& name : names.mid(1)) {
            opened += '\\' + name;
            int row = 0;
            while (row < Dir2().ListCount() && Dir2().List(row) != opened) ++row;
            const QModelIndex index = Dir2().model()->index(row, 0);
            Dir2().scrollTo(index);
            QTest::mouseDClick(Dir2().viewport(), Qt::LeftButton, {}, Dir2().visualRect(index).center());
            ASSERT_EQ(Dir2().Path(), opened);
        }
    }

    inline static const QString kScanned = QStringLiteral("2 st|2 st|  10 KB|00 tim. 01 min.");
};

TEST_F(FolderUploadChoosing, WithoutStatisticsChangesNothing) {
    OpenByMouse(Path("Webb"));
    EXPECT_EQ(Text("Label6"), kNoFolder);
    EXPECT_EQ(Statistics(), kNothing);
    EXPECT_EQ(Lines(), QStringList());
}

TEST_F(FolderUploadChoosing, ShowsTheStatisticsAtOnce) {
    ClickOn("c2");
    OpenByMouse(Path("Webb"));
    EXPECT_EQ(Text("Label6"),
              "Mappen [webb] kommer att skapas i den katalog som du nu står i på FTP-servern!");
    EXPECT_EQ(Statistics(), "1 st|1 st|  10 KB|00 tim. 01 min.");
    EXPECT_EQ(Lines(), QStringList({"Skapa webb", "Fil Webb\\a.txt"}));
}

TEST_F(FolderUploadChoosing, TheBoxesScanAnew) {
    OpenByMouse(Path("Webb"));
    ClickOn("c2");
    EXPECT_EQ(Statistics(), "1 st|1 st|  10 KB|00 tim. 01 min.");
    EXPECT_EQ(Text("Label6"), kNoFolder);  // it names a folder that was opened with the box checked
    ClickOn("Check1");
    EXPECT_EQ(Statistics(), kScanned);
    ClickOn("c2");
    EXPECT_EQ(Statistics(), kNothing);
    ClickOn("Check1");
    EXPECT_EQ(Statistics(), kNothing);
    EXPECT_EQ(Lines().size(), 2);  // scanned all the same
}

TEST_F(FolderUploadChoosing, ADrivesRootIsNoChoice) {
    Choose("Webb");
    ASSERT_EQ(Statistics(), kScanned);
    const QStringList lines = Lines();
    ASSERT_TRUE(Dir2().SetPath("C:\\"));
    EXPECT_EQ(Statistics(), kNothing);
    ClickOn("Check1");
    ClickOn("c2");
    ClickOn("c2");
    EXPECT_EQ(Statistics(), kNothing);
    EXPECT_EQ(Lines(), lines);
}

TEST_F(FolderUploadChoosing, AnotherFolderStartsFromScratch) {
    Choose("Webb");
    ASSERT_TRUE(Dir2().SetPath(Path("Webb/Bilder")));
    EXPECT_EQ(Lines(), QStringList({"Skapa bilder", "Fil Webb\\Bilder\\logo.gif"}));
    EXPECT_EQ(Statistics(), "1 st|1 st|0 KB|00 tim. 01 min.");
}

// The same folder again, with what has come meanwhile.
TEST_F(FolderUploadChoosing, EveryScanReadsTheDisk) {
    Choose("Webb/Bilder");
    EXPECT_EQ(Lines().size(), 2);
    MakeFile("Webb/Bilder/ny/b.txt");
    Scan();
    EXPECT_EQ(Lines(), QStringList({"Skapa bilder", "Fil Webb\\Bilder\\logo.gif", "Skapa ny",
                                    "Fil Webb\\Bilder\\ny\\b.txt"}));
}

TEST_F(FolderUploadChoosing, AnotherDriveShowsItsRoot) {
    Choose("Webb");
    auto& drive = Get<toolkit::DriveListBox>("Drive1");
    drive.addItem("X:", "X:\\");
    drive.setCurrentIndex(drive.findData("X:\\"));  // cannot be read
    EXPECT_EQ(Dir2().Path(), Path("Webb"));
    EXPECT_EQ(Statistics(), kScanned);
    drive.SetDrive("C");
    EXPECT_EQ(Dir2().Path(), "C:\\");
    EXPECT_EQ(Statistics(), kNothing);
}

// After a drive that could not be read, what is shown is still what is chosen.
TEST_F(FolderUploadChoosing, AnUnreadableDriveLeavesTheChoice) {
    Choose("Webb");
    auto& drive = Get<toolkit::DriveListBox>("Drive1");
    drive.addItem("X:", "X:\\");
    drive.setCurrentIndex(drive.findData("X:\\"));
    Scan();
    EXPECT_EQ(Lines().value(0), "Skapa webb");
    EXPECT_EQ(Statistics(), kScanned);
}

TEST_F(FolderUploadChoosing, TheMaskChoosesTheFiles) {
    MakeFile("Webb/b.HTM");
    auto& mask = Get<QComboBox>("Combo1");
    mask.setEditText("*.htm");
    Choose("Webb");
    EXPECT_EQ(Lines().size(), 4 + 1);  // only what the user types or picks counts
    mask.clearEditText();
    QTest::keyClicks(mask.lineEdit(), "*.htm");
    Scan();
    EXPECT_EQ(Lines(), QStringList({"Skapa webb", "Fil Webb\\b.htm", "Skapa bilder"}));
    mask.setCurrentIndex(0);
    mask.setEditText("*.*");
    Q_EMIT mask.activated(0);
    Scan();
    EXPECT_EQ(Lines().size(), 5);
}

TEST_F(FolderUploadChoosing, TheFavouritesOpenOverTheDialog) {
    ClickOn("Command29");
    EXPECT_EQ(steps_, QStringList("favourites over fmRekurs"));
}

// The close box of a window that lies under another one.
TEST_F(FolderUploadChoosing, IsNotClosedByTheUserWhileCovered) {
    dialog_->setEnabled(false);
    QCloseEvent close;
    QApplication::sendEvent(dialog_->windowHandle(), &close);
    EXPECT_TRUE(dialog_->isVisible());
    dialog_->close();  // the program
    EXPECT_FALSE(dialog_->isVisible());
}

}  // namespace
}  // namespace forms
