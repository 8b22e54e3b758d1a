#include "settings/favourites.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QFile>

#include "platform/folder.h"
#include "tests/platform/scratch_folder.h"
#include "tests/settings/settings_text.h"

namespace settings {
namespace {

class FavouritesTest : public testing::Test {
 protected:
    QString Get(const QString& key) const { return store_.GetSetting("Websmide", "Favvisar", key); }
    void Set(const QString& key, const QString& value) {
        store_.SaveSetting("Websmide", "Favvisar", key, value);
    }
    // Entries 0 to n - 1 as "a", "C:\a", "b", "C:\b" ...
    void Plant(int n) {
        const Store::Batch batch(store_);
        for (int i = 0; i < n; ++i) {
            Set("favvis_namn" + QString::number(i), Letter(i));
            Set("favvis_dir" + QString::number(i), "C:\\" + Letter(i));
        }
    }
    static QString Letter(int i) { return QString(QChar('a' + i)); }
    QString File() const { return folder_.FilePath("Websmide.conf"); }
    QByteArray Content() const {
        QFile file(File());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "?";
    }
    ino_t Inode() const {
        struct stat status {};
        stat(QFile::encodeName(File()).constData(), &status);
        return status.st_ino;
    }

    ScratchFolder folder_;
    Store store_{folder_.Path()};
    const QString program_ = platform::ProgramFolder();
    const QStringList default_names_{"Websmide's katalog", "Websmide's mallar", "Websmide's projekt"};
    const QStringList default_folders_{program_, program_ + "\\mallar", program_ + "\\program"};
};

TEST_F(FavouritesTest, AreTheProgramsOwnFoldersAtFirst) {
    const Favourites favourites = LoadFavourites(store_);
    EXPECT_EQ(favourites.names, default_names_);
    EXPECT_EQ(favourites.folders, default_folders_);
    EXPECT_EQ(favourites.count, 3);
    // The file escapes a backslash.
    const QByteArray program = program_.toUtf8().replace("\\", "\\\\");
    EXPECT_EQ(Content(), WholeFile("[Favvisar]\n"
                                   "Antal=3\n"
                                   "favvis_dir0=" +
                                   program +
                                   "\n"
                                   "favvis_dir1=" +
                                   program +
                                   "\\\\mallar\n"
                                   "favvis_dir2=" +
                                   program +
                                   "\\\\program\n"
                                   "favvis_namn0=Websmide's katalog\n"
                                   "favvis_namn1=Websmide's mallar\n"
                                   "favvis_namn2=Websmide's projekt\n"));
}

TEST_F(FavouritesTest, AreStoredAsTheyAreGiven) {
    SaveFavourites(store_, {"Hemma", " åäö = [x] "}, {"C:\\home\\anna", "D:\\"});
    EXPECT_EQ(Content(), WholeFile("[Favvisar]\n"
                                   "Antal=2\n"
                                   "favvis_dir0=C:\\\\home\\\\anna\n"
                                   "favvis_dir1=D:\\\\\n"
                                   "favvis_namn0=Hemma\n"
                                   "favvis_namn1=\\u0020åäö = [x]\\u0020\n"));
    Store again(folder_.Path());
    const Favourites favourites = LoadFavourites(again);
    EXPECT_EQ(favourites.names, (QStringList{"Hemma", " åäö = [x] "}));
    EXPECT_EQ(favourites.folders, (QStringList{"C:\\home\\anna", "D:\\"}));
}

TEST_F(FavouritesTest, KeepWhatALongerListHasLeft) {
    Set("Antal", "3");
    Plant(3);
    SaveFavourites(store_, {"c"}, {"C:\\c"});
    EXPECT_EQ(Content(), WholeFile("[Favvisar]\n"
                                   "Antal=1\n"
                                   "favvis_dir0=C:\\\\c\n"
                                   "favvis_dir1=C:\\\\b\n"
                                   "favvis_dir2=C:\\\\c\n"
                                   "favvis_namn0=c\n"
                                   "favvis_namn1=b\n"
                                   "favvis_namn2=c\n"));
    EXPECT_EQ(LoadFavourites(store_).names, QStringList("c"));
}

TEST_F(FavouritesTest, AreNumberedWithoutLeadingZeros) {
    QStringList names, folders;
    for (int i = 0; i < 12; ++i) {
        names += Letter(i);
        folders += "C:\\" + Letter(i);
    }
    SaveFavourites(store_, names, folders);
    EXPECT_EQ(Get("Antal"), "12");
    EXPECT_EQ(Get("favvis_namn9"), "j");
    EXPECT_EQ(Get("favvis_namn10"), "k");
    EXPECT_EQ(Get("favvis_dir11"), "C:\\l");
    EXPECT_EQ(LoadFavourites(store_).folders, folders);
}

TEST_F(FavouritesTest, SavedEmptyComeBackAsTheProgramsOwn) {
    Set("Antal", "1");
    Plant(1);
    SaveFavourites(store_, {}, {});
    EXPECT_EQ(Content(), WholeFile("[Favvisar]\n"
                                   "Antal=stopp!\n"
                                   "favvis_dir0=C:\\\\a\n"
                                   "favvis_namn0=a\n"));
    const Favourites favourites = LoadFavourites(store_);
    EXPECT_EQ(favourites.names, default_names_);
    EXPECT_EQ(favourites.folders, default_folders_);
    EXPECT_EQ(Get("Antal"), "3");
}

TEST_F(FavouritesTest, CountAsTheLeadingNumber) {
    struct Row {
        QString stored;
        int count;
        qsizetype names;
    };
    const Row rows[] = {
        {"0", 0, 0},
        {"2", 2, 2},
        {" 2 ", 2, 2},
        {"+2", 2, 2},
        {"02", 2, 2},
        {"2x", 2, 2},
        {"3.7", 3, 3},
        {"9", 9, 4},
        {"-5", -5, 0},
        {"abc", 0, 0},
        {"STOPP!", 0, 0},
        {"stopp! ", 0, 0},
        {" ", 0, 0},
        {"32767", 32767, 4},
        {"32768", 32767, 4},
        {"99999999999", 32767, 4},
        {"-99999999999", -32768, 0},
    };
    Plant(4);
    for (const Row& row : rows) {
        Set("Antal", row.stored);
        const Favourites favourites = LoadFavourites(store_);
        EXPECT_EQ(favourites.count, row.count) << row.stored.toStdString();
        EXPECT_EQ(favourites.names.size(), row.names) << row.stored.toStdString();
        EXPECT_EQ(favourites.folders.size(), row.names) << row.stored.toStdString();
        EXPECT_EQ(Get("Antal"), row.stored);  // reading changes nothing
    }
}

TEST_F(FavouritesTest, LeaveOutWhatIsMissingOnEachSide) {
    Set("Antal", "4");
    Plant(4);
    Set("favvis_namn1", "");
    Set("favvis_dir2", "");
    Set("favvis_dir3", "");
    const Favourites favourites = LoadFavourites(store_);
    EXPECT_EQ(favourites.names, (QStringList{"a", "c", "d"}));
    EXPECT_EQ(favourites.folders, (QStringList{"C:\\a", "C:\\b"}));
    EXPECT_EQ(favourites.count, 4);
}

TEST_F(FavouritesTest, WithoutAFolderAreStoredSo) {
    SaveFavourites(store_, {"a", "b"}, {"C:\\a"});
    EXPECT_EQ(
        Content(),
        WholeFile(
            "[Favvisar]\nAntal=2\nfavvis_dir0=C:\\\\a\nfavvis_dir1=\nfavvis_namn0=a\nfavvis_namn1=b\n"));
}

// Each attempt to write a file that cannot be there is reported.
TEST_F(FavouritesTest, AreSavedInOneChangeOfTheFile) {
    ASSERT_TRUE(QFile(File()).open(QIODevice::WriteOnly));
    Store store(File() + "/below");
    store.SaveSetting("Websmide", "Favvisar", "Antal", "");
    int attempts = 0;
    store.OnProblem([&](int, const QString&) { ++attempts; });
    attempts = 0;  // what came before
    SaveFavourites(store, {"a", "b"}, {"C:\\a", "C:\\b"});
    EXPECT_EQ(attempts, 1);
    AppendFavourite(store, "c", "C:\\c");
    EXPECT_EQ(attempts, 2);
    EXPECT_EQ(LoadFavourites(store).names, (QStringList{"a", "b", "c"}));
    EXPECT_EQ(attempts, 2);
}

TEST_F(FavouritesTest, ThatHaveNotChangedDoNotTouchTheFile) {
    LoadFavourites(store_);
    const ino_t inode = Inode();
    SaveFavourites(store_, default_names_, default_folders_);
    EXPECT_EQ(Inode(), inode);
}

TEST_F(FavouritesTest, AreAppendedAfterWhatIsThere) {
    struct Row {
        const char* what;
        QString stored;
        QStringList names, folders;
    };
    const Row rows[] = {
        {"nothing stored", "", QStringList(default_names_) << "ny",
         QStringList(default_folders_) << "C:\\ny"},
        {"saved empty", "stopp!", {"ny"}, {"C:\\ny"}},
        {"two", "2", {"a", "b", "ny"}, {"C:\\a", "C:\\b", "C:\\ny"}},
        {"a count beyond all", "99999999999", {"a", "b", "c", "ny"}, {"C:\\a", "C:\\b", "C:\\c", "C:\\ny"}},
        {"none", "0", {"ny"}, {"C:\\ny"}},
        {"a count below none", "-5", {"a", "b", "c", "ny"}, {"C:\\a", "C:\\b", "C:\\c", "C:\\ny"}},
        {"no count", "abc", {"a", "b", "c", "ny"}, {"C:\\a", "C:\\b", "C:\\c", "C:\\ny"}},
        {"a blank count", " ", {"a", "b", "c", "ny"}, {"C:\\a", "C:\\b", "C:\\c", "C:\\ny"}},
    };
    for (const Row& row : rows) {
        Plant(5);
        Set("favvis_namn3", "");  // a list of three, and one left by a longer list
        Set("favvis_dir3", "");
        Set("favvis_namn4", "");
        Set("Antal", row.stored);
        AppendFavourite(store_, "ny", "C:\\ny");
        EXPECT_EQ(Get("Antal"), QString::number(row.names.size())) << row.what;
        const Favourites favourites = LoadFavourites(store_);
        EXPECT_EQ(favourites.names, row.names) << row.what;
        EXPECT_EQ(favourites.folders, row.folders) << row.what;
    }
}

TEST_F(FavouritesTest, KeepTheirFoldersWhenOneIsAppended) {
    struct Row {
        QStringList missing;
        QString count;
        QStringList names;
    };
    const Row rows[] = {
        {{"favvis_dir1"}, "3", {"a", "c", "ny"}},
        {{"favvis_namn1"}, "3", {"a", "c", "ny"}},
        {{"favvis_namn0", "favvis_dir2"}, "3", {"b", "ny"}},
        {{"favvis_namn1", "favvis_dir1"}, "3", {"a", "c", "ny"}},
        {{"favvis_namn0", "favvis_dir1", "favvis_dir2"}, "3", {"ny"}},
        {{"favvis_dir1"}, "abc", {"a", "c", "ny"}},
        {{"favvis_namn1"}, "-5", {"a", "c", "ny"}},
        {{"favvis_namn1", "favvis_dir1"}, "abc", {"a", "ny"}},  // ends where nothing is
    };
    for (const Row& row : rows) {
        Plant(3);
        Set("favvis_namn3", "");
        Set("favvis_dir3", "");
        Set("Antal", row.count);
        QStringList folders;
        for (const QString& key : row.missing) Set(key, "");
        for (const QString& name : row.names) folders += "C:\\" + name;
        AppendFavourite(store_, "ny", "C:\\ny");
        const Favourites favourites = LoadFavourites(store_);
        const std::string what = row.count.toStdString() + ' ' + row.missing.join(' ').toStdString();
        EXPECT_EQ(favourites.names, row.names) << what;
        EXPECT_EQ(favourites.folders, folders) << what;
        EXPECT_EQ(favourites.count, row.names.size()) << what;
    }
}

TEST_F(FavouritesTest, WithoutANameOrAFolderAreNotAppended) {
    AppendFavourite(store_, "", "C:\\ny");
    AppendFavourite(store_, "ny", "");
    EXPECT_EQ(Content(), "?");
}

TEST_F(FavouritesTest, OfTwoRunningProgramsAreSeen) {
    Store other(folder_.Path());
    AppendFavourite(store_, "vår", "C:\\v");
    AppendFavourite(other, "deras", "C:\\d");
    EXPECT_EQ(LoadFavourites(store_).names, QStringList(default_names_) << "vår"
                                                                        << "deras");
}

}  // namespace
}  // namespace settings
