#include "toolkit/file_controls.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/drive_path.h"

namespace toolkit {
namespace {

class FileControlsTest : public testing::Test {
 protected:
    void MakeFile(const QString& name, qint64 size = 0) {
        QFile file(files_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(size)) << qUtf8Printable(name);
    }

    void MakeFolder(const QString& name) { ASSERT_TRUE(QDir(files_.path()).mkpath(name)); }

    QString Path(const QString& name = {}) const {
        const QString base = platform::FromNative(QFile::encodeName(files_.path()));
        return name.isEmpty() ? base : platform::Join(base, name);
    }

    QTemporaryDir files_;
};

class DirListBoxTest : public FileControlsTest {
 protected:
    void SetUp() override {
        for (const char* name : {"bilder/stora", "Arkiv", "ljud"}) MakeFolder(QString::fromLatin1(name));
        MakeFile(QStringLiteral("fil.txt"));
        QObject::connect(&box_, &DirListBox::Change, [this] { ++changes_; });
    }

    QStringList Rows() const {
        QStringList rows;
        for (int row = 0; row < box_.ListCount(); ++row) rows.append(box_.List(row));
        return rows;
    }

    int RowOf(const QString& path) const { return static_cast<int>(Rows().indexOf(path)); }

    void Show() {
        box_.resize(240, 300);
        box_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&box_));
        box_.setFocus();
    }

    void DoubleClick(const QString& path) {
        const QModelIndex index = box_.model()->index(RowOf(path), 0);
        ASSERT_TRUE(index.isValid()) << qUtf8Printable(path);
        box_.scrollTo(index);
        QTest::mouseDClick(box_.viewport(), Qt::LeftButton, {}, box_.visualRect(index).center());
    }

    DirListBox box_;
    int changes_ = 0;
};

TEST_F(DirListBoxTest, StartsAtTheCurrentFolder) {
    EXPECT_EQ(box_.Path(), platform::CurrentFolder());
}

TEST_F(DirListBoxTest, ShowsTheWayDownAndTheSubfolders) {
    ASSERT_TRUE(box_.SetPath(Path()));
    const QStringList rows = Rows();
    const qsizetype depth = rows.size() - 3;
    EXPECT_EQ(rows.first(), QStringLiteral("C:\\"));
    EXPECT_EQ(rows[depth - 1], Path());
    EXPECT_EQ(rows.mid(depth), (QStringList{Path(QStringLiteral("Arkiv")), Path(QStringLiteral("bilder")),
                                            Path(QStringLiteral("ljud"))}));
    EXPECT_EQ(box_.ListIndex(), depth - 1) << "the path itself is current";
    EXPECT_EQ(box_.model()->index(0, 0).data().toString(), QStringLiteral("C:\\"));
    EXPECT_EQ(box_.model()->index(static_cast<int>(depth), 0).data().toString(), QStringLiteral("Arkiv"));
    EXPECT_EQ(box_.List(-1), QString());
    EXPECT_EQ(box_.List(box_.ListCount()), QString());
}

TEST_F(DirListBoxTest, ChangeIsRaisedWhenThePathBecomesAnother) {
    EXPECT_TRUE(box_.SetPath(Path()));
    EXPECT_EQ(changes_, 1);
    EXPECT_TRUE(box_.SetPath(Path() + u'\\'));
    EXPECT_TRUE(box_.SetPath(files_.path())) << "native";
    EXPECT_EQ(changes_, 1);
    EXPECT_TRUE(box_.SetPath(Path(QStringLiteral("BILDER"))));
    EXPECT_EQ(box_.Path(), Path(QStringLiteral("bilder"))) << "case as on the disk";
    EXPECT_EQ(changes_, 2);
}

TEST_F(DirListBoxTest, WhatCannotBeReadIsRefused) {
    ASSERT_TRUE(box_.SetPath(Path()));
    const QStringList before = Rows();
    changes_ = 0;
    for (const QString& path :
         {QString(), QStringLiteral("bilder"), Path(QStringLiteral("saknas")),
          Path(QStringLiteral("fil.txt")), QStringLiteral("Ö:\\"), QStringLiteral("\\")})
        EXPECT_FALSE(box_.SetPath(path)) << qUtf8Printable(path);
    EXPECT_EQ(box_.Path(), Path());
    EXPECT_EQ(Rows(), before);
    EXPECT_EQ(changes_, 0);
}

TEST_F(DirListBoxTest, TheRootIsOneRowAndItsFolders) {
    ASSERT_TRUE(box_.SetPath(QStringLiteral("C:\\")));
    EXPECT_EQ(box_.Path(), QStringLiteral("C:\\"));
    EXPECT_EQ(box_.List(0), QStringLiteral("C:\\"));
    EXPECT_EQ(box_.ListIndex(), 0);
    EXPECT_GE(RowOf(QStringLiteral("C:\\usr")), 1);
}

TEST_F(DirListBoxTest, ADoubleClickOpensAFolder) {
    ASSERT_TRUE(box_.SetPath(Path()));
    Show();
    DoubleClick(Path(QStringLiteral("bilder")));
    EXPECT_EQ(box_.Path(), Path(QStringLiteral("bilder")));
    EXPECT_EQ(Rows().last(), Path(QStringLiteral("bilder\\stora")));
    DoubleClick(Path());
    EXPECT_EQ(box_.Path(), Path());
    EXPECT_EQ(changes_, 3);
}

TEST_F(DirListBoxTest, EnterOpensTheSelectedFolder) {
    ASSERT_TRUE(box_.SetPath(Path()));
    Show();
    QTest::keyClick(&box_, Qt::Key_Down);
    EXPECT_EQ(box_.Path(), Path()) << "moving opens nothing";
    QTest::keyClick(&box_, Qt::Key_Return);
    EXPECT_EQ(box_.Path(), Path(QStringLiteral("Arkiv")));
}

TEST_F(DirListBoxTest, AFolderThatIsGoneStaysClosed) {
    ASSERT_TRUE(box_.SetPath(Path()));
    Show();
    ASSERT_TRUE(QDir(files_.path()).rmdir(QStringLiteral("ljud")));
    DoubleClick(Path(QStringLiteral("ljud")));
    EXPECT_EQ(box_.Path(), Path());
}

TEST_F(DirListBoxTest, RefreshReadsTheFoldersAgainAndKeepsTheRow) {
    ASSERT_TRUE(box_.SetPath(Path()));
    box_.setCurrentIndex(box_.model()->index(RowOf(Path(QStringLiteral("ljud"))), 0));
    MakeFolder(QStringLiteral("css"));
    changes_ = 0;
    box_.Refresh();
    EXPECT_GE(RowOf(Path(QStringLiteral("css"))), 0);
    EXPECT_EQ(box_.List(box_.ListIndex()), Path(QStringLiteral("ljud")));
    ASSERT_TRUE(QDir(files_.path()).rmdir(QStringLiteral("ljud")));
    box_.Refresh();
    EXPECT_EQ(box_.List(box_.ListIndex()), Path());
    EXPECT_EQ(changes_, 0);
}

TEST_F(DirListBoxTest, RefreshOfAFolderThatIsGoneShowsTheWayToIt) {
    ASSERT_TRUE(box_.SetPath(Path(QStringLiteral("ljud"))));
    ASSERT_TRUE(QDir(files_.path()).rmdir(QStringLiteral("ljud")));
    box_.Refresh();
    EXPECT_EQ(Rows().last(), Path(QStringLiteral("ljud")));
    EXPECT_TRUE(box_.SetPath(Path()));
}

TEST_F(DirListBoxTest, SubfoldersOfADeepFolderAreInSight) {
    MakeFolder(QStringLiteral("a/b/c/d/e/f/g/h/under"));
    box_.resize(240, 100);
    box_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&box_));
    ASSERT_TRUE(box_.SetPath(Path(QStringLiteral("a\\b\\c\\d\\e\\f\\g\\h"))));
    const QRect seen = box_.viewport()->rect();
    EXPECT_TRUE(seen.intersects(box_.visualRect(box_.currentIndex())));
    EXPECT_TRUE(seen.intersects(box_.visualRect(box_.model()->index(box_.ListCount() - 1, 0))));
}

TEST_F(FileControlsTest, FilesAreListedByPatternAndWithoutFolders) {
    for (const char* name : {"b.HTM", "a.html", "C.txt", "d.gif"}) MakeFile(QString::fromLatin1(name), 7);
    MakeFolder(QStringLiteral("mapp.htm"));
    FileListBox box;
    EXPECT_EQ(box.ListCount(), 0) << "no path yet";
    box.SetPath(Path());
    const auto names = [&box] {
        QStringList list;
        for (int row = 0; row < box.ListCount(); ++row) list.append(box.List(row));
        return list.join(u' ');
    };
    EXPECT_EQ(names(), QStringLiteral("a.html b.HTM C.txt d.gif"));
    const std::pair<const char*, const char*> cases[] = {
        {"*.htm*", "a.html b.HTM"},          {"*.txt;*.gif", "C.txt d.gif"},   {"*.exe", ""},
        {"*.*", "a.html b.HTM C.txt d.gif"}, {"", "a.html b.HTM C.txt d.gif"},
    };
    for (const auto& [pattern, expected] : cases) {
        box.SetPattern(QString::fromLatin1(pattern));
        EXPECT_EQ(names(), QString::fromLatin1(expected)) << pattern;
    }
    EXPECT_EQ(box.Files()[0].size, 7);
    EXPECT_EQ(box.List(-1), QString());
    EXPECT_EQ(box.List(4), QString());
}

TEST_F(FileControlsTest, FilesAreReadAgainByRefreshOnly) {
    FileListBox box;
    box.SetPath(Path());
    MakeFile(QStringLiteral("ny.txt"));
    box.SetPath(Path());
    EXPECT_EQ(box.ListCount(), 0);
    box.Refresh();
    EXPECT_EQ(box.ListCount(), 1);
    box.SetPath(Path(QStringLiteral("saknas")));
    EXPECT_EQ(box.ListCount(), 0);
}

class DriveListBoxTest : public testing::Test {
 protected:
    void SetUp() override {
        QObject::connect(&box_, &DriveListBox::Change, [this] { ++changes_; });
    }

    DriveListBox box_;
    int changes_ = 0;
};

TEST_F(DriveListBoxTest, OffersTheDrivesWithCFirst) {
    EXPECT_EQ(box_.Drive(), QStringLiteral("C:\\"));
    EXPECT_EQ(box_.count(), platform::Drives().size());
    EXPECT_TRUE(box_.itemText(0).startsWith(QStringLiteral("C:")));
}

TEST_F(DriveListBoxTest, TakesTheBeginningOfAPath) {
    // One that is not mounted now but was when it was chosen.
    box_.addItem(QStringLiteral("Q:"), QStringLiteral("Q:\\"));
    box_.setCurrentIndex(box_.count() - 1);
    ASSERT_EQ(changes_, 1);
    for (const char* path : {"q:\\", "Q:\\bilder"})
        EXPECT_TRUE(box_.SetDrive(QString::fromLatin1(path))) << path;
    EXPECT_EQ(changes_, 1) << "the same drive";
    EXPECT_TRUE(box_.SetDrive(QStringLiteral("c:\\webb")));
    EXPECT_EQ(box_.Drive(), QStringLiteral("C:\\"));
    EXPECT_EQ(changes_, 2);
    EXPECT_FALSE(box_.SetDrive(QStringLiteral("Q:\\"))) << "gone, and not chosen any more";
    for (const char* path : {"", "/home", "1:\\", "\\"})
        EXPECT_FALSE(box_.SetDrive(QString::fromLatin1(path))) << path;
    EXPECT_EQ(changes_, 2);
}

TEST_F(DriveListBoxTest, RefreshKeepsTheChoiceWithoutAWord) {
    box_.addItem(QStringLiteral("Q:"), QStringLiteral("Q:\\"));
    box_.setCurrentIndex(box_.count() - 1);
    changes_ = 0;
    box_.Refresh();
    EXPECT_EQ(box_.Drive(), QStringLiteral("Q:\\"));
    EXPECT_EQ(changes_, 0);
    box_.setCurrentIndex(0);
    EXPECT_EQ(changes_, 1);
    box_.Refresh();
    EXPECT_LT(box_.findText(QStringLiteral("Q:")), 0);
}

TEST_F(DriveListBoxTest, TheUserChoosesByKeyboard) {
    box_.addItem(QStringLiteral("Q:"), QStringLiteral("Q:\\"));
    box_.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&box_));
    QTest::keyClick(&box_, Qt::Key_End);
    EXPECT_EQ(box_.Drive(), QStringLiteral("Q:\\"));
    EXPECT_EQ(changes_, 1);
}

}  // namespace
}  // namespace toolkit
