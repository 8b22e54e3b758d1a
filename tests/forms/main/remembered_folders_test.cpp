#include <QLineEdit>

#include "platform/folder.h"
#include "settings/profiles.h"
#include "tests/forms/main/main_window.h"

namespace forms {
namespace {

class RememberedFolders : public MainWindow {
 protected:
    void Type(const QString& folder) {
        QLineEdit& field = *Get<QComboBox>("lk").lineEdit();
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, folder);
        QTest::keyClick(&field, Qt::Key_Return);
    }

    void Choose(const char* item) {
        ClickOn("Command22");
        auto& menu = Get<QMenu>("tabd");
        ASSERT_TRUE(QTest::qWaitFor([&] { return menu.isVisible(); }));
        QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(&Get<QAction>(item)).center());
    }

    template <class Object>
    Object& Get(const char* name) {
        Object* found = window_->findChild<Object*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }

    QStringList Entries() {
        QStringList entries;
        for (int i = 0; i < Get<QComboBox>("lk").count(); ++i)
            entries.append(Get<QComboBox>("lk").itemText(i));
        return entries;
    }

    QString Path() { return Get<toolkit::DirListBox>("Dir1").Path(); }
};

TEST_F(RememberedFolders, StartEmptyAndAreSavedAsAHundredAndOneKeys) {
    Open();
    EXPECT_EQ(Entries(), QStringList());
    EXPECT_EQ(Get<QComboBox>("lk").currentText(), QString());
    Close();
    QFile saved(QDir(settings_.path()).entryInfoList(QDir::Files).value(0).filePath());
    for (const QFileInfo& file : QDir(settings_.path()).entryInfoList(QDir::Files))
        if (!file.fileName().contains(QStringLiteral("fönster"))) saved.setFileName(file.filePath());
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(saved.readAll());
    for (int i = 0; i <= 100; ++i)
        EXPECT_TRUE(text.contains(QString::number(i) + QStringLiteral("dir"))) << i;
    EXPECT_FALSE(text.contains(QStringLiteral("101dir")));
}

TEST_F(RememberedFolders, AreReadInTheirOrderAndWrittenBack) {
    const QStringList folders{QStringLiteral("C:\\b"), QStringLiteral("C:\\a"), QStringLiteral("C:\\Åsa")};
    settings::SaveDirectoryHistory(store_, folders);
    Open();
    EXPECT_EQ(Entries(), folders);
    Close();
    EXPECT_EQ(settings::LoadDirectoryHistory(store_), folders);
}

TEST_F(RememberedFolders, ATypedFolderIsOpenedAndRemembered) {
    ASSERT_TRUE(QDir(files_.path()).mkdir(QStringLiteral("webb")));
    MakeFile(QStringLiteral("webb/sida.htm"), 1);
    Open();
    const QString folder = Folder() + QStringLiteral("\\webb");
    Type(folder);
    EXPECT_EQ(Path(), folder);
    EXPECT_EQ(Names(), QStringList{QStringLiteral("sida.htm")});
    EXPECT_EQ(Entries(), QStringList{folder});
    Type(folder);
    EXPECT_EQ(Entries(), QStringList{folder}) << "an entry that is there is not added again";
    Type(folder.toUpper());
    EXPECT_EQ(Entries().size(), 2) << "the comparison is exact";
}

TEST_F(RememberedFolders, AFolderThatDoesNotExistLeavesTheListAsItIs) {
    MakeFile(QStringLiteral("kvar.txt"), 1);
    Open();
    Type(QStringLiteral("C:\\finns inte alls"));
    EXPECT_EQ(Path(), Folder());
    EXPECT_EQ(Names(), QStringList{QStringLiteral("kvar.txt")});
}

TEST_F(RememberedFolders, ChoosingAnEntryOpensIt) {
    ASSERT_TRUE(QDir(files_.path()).mkdir(QStringLiteral("ett")));
    ASSERT_TRUE(QDir(files_.path()).mkdir(QStringLiteral("två")));
    const QStringList folders{Folder() + QStringLiteral("\\ett"), Folder() + QStringLiteral("\\två")};
    settings::SaveDirectoryHistory(store_, folders);
    Open();
    auto& box = Get<QComboBox>("lk");
    box.setFocus();
    QTest::keyClick(&box, Qt::Key_Down);
    EXPECT_EQ(Path(), folders[0]);
    QTest::keyClick(&box, Qt::Key_Down);
    EXPECT_EQ(Path(), folders[1]);

    Choose("tabort2");
    EXPECT_EQ(Entries(), QStringList{folders[0]});
    EXPECT_EQ(box.currentIndex(), 0);
    EXPECT_EQ(Path(), folders[0]);

    Choose("tabort3");
    EXPECT_EQ(Entries(), QStringList{platform::ProgramFolder()});
    EXPECT_EQ(box.currentIndex(), 0);

    Choose("tabort2");
    EXPECT_EQ(Entries(), QStringList());
}

TEST_F(RememberedFolders, TheMenuSaysWhatItRemoves) {
    Open();
    EXPECT_FALSE(Get<QMenu>("tabd").isVisible());
    EXPECT_EQ(Get<QAction>("tabort2").text(), QStringLiteral("Ta bort aktuell katalog"));
    EXPECT_EQ(Get<QAction>("tabort3").text(), QStringLiteral("Ta bort alla kataloger"));
}

}  // namespace
}  // namespace forms
