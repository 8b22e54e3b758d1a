#include "settings/profiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "tests/platform/scratch_folder.h"

namespace settings {
namespace {

class ProfilesTest : public testing::Test {
 protected:
    QString Get(const QString& section, const QString& key) const {
        return store_.GetSetting(kFtpApplication, section, key);
    }
    void SetCount(const QString& count) { store_.SaveSetting(kFtpApplication, "general", "antal", count); }
    void Add(const QString& name) {
        SaveNewProfile(store_, name, {name + ".se", name + "-u", name + "-p", name + "-a"});
    }
    // Deletes as the connection dialog does.
    void Delete(int n) {
        QStringList combo = LoadProfileNames(store_);
        LowerProfileCount(store_);
        combo.removeAt(n);
        MoveProfilesDown(store_, n, static_cast<int>(combo.size()));
    }
    // The five values of a section.
    QStringList Section(const QString& section) const {
        QStringList values;
        for (const char* key : {"namn", "user", "pass", "host", "acco"}) {
            values += Get(section, key);
        }
        return values;
    }
    static QStringList Values(const QString& name) {
        return {name, name + "-u", name + "-p", name + ".se", name + "-a"};
    }
    const QStringList kEmpty = QStringList(5, "");

    ScratchFolder folder_;
    Store store_{folder_.Path()};
};

TEST_F(ProfilesTest, AreNoneInAFreshStore) {
    EXPECT_EQ(LoadProfileNames(store_), QStringList());
    EXPECT_EQ(LoadProfile(store_, 0), Profile());
}

TEST_F(ProfilesTest, AreAppended) {
    Add("ett");
    Add("två");
    SaveNewProfile(store_, "", {});
    EXPECT_EQ(Get("general", "antal"), "3");
    EXPECT_EQ(LoadProfileNames(store_), (QStringList{"ett", "två", ""}));
    EXPECT_EQ(LoadProfile(store_, 1), (Profile{"två.se", "två-u", "två-p", "två-a"}));
    EXPECT_EQ(Section("1"), Values("två"));
}

TEST_F(ProfilesTest, LieOnTheDiskUnderTheirKeys) {
    SaveNewProfile(store_, "Mitt konto", {"ftp.x.se", "anna", " hemligt ", ""});
    store_.SaveSetting(kFtpApplication, "general", "visa", "1");
    const Store again(folder_.Path());
    EXPECT_EQ(again.GetSetting("Websmide's FTP program", "0", "namn"), "Mitt konto");
    EXPECT_EQ(again.GetSetting("Websmide's FTP program", "0", "host"), "ftp.x.se");
    EXPECT_EQ(again.GetSetting("Websmide's FTP program", "0", "user"), "anna");
    EXPECT_EQ(again.GetSetting("Websmide's FTP program", "0", "pass"), " hemligt ");
    EXPECT_EQ(again.GetSetting("Websmide's FTP program", "0", "acco"), "");
    EXPECT_EQ(again.GetSetting("Websmide's FTP program", "general", "antal"), "1");
    EXPECT_EQ(again.GetSetting("Websmide's FTP program", "general", "visa"), "1");
}

TEST_F(ProfilesTest, MoveDownWhenOneIsDeleted) {
    struct Row {
        QStringList before;
        int n;
        QStringList after;
    };
    const Row rows[] = {
        {{"a"}, 0, {}},
        {{"a", "b"}, 0, {"b"}},
        {{"a", "b"}, 1, {"a"}},
        {{"a", "b", "c"}, 0, {"b", "c"}},
        {{"a", "b", "c"}, 1, {"a", "c"}},
        {{"a", "b", "c"}, 2, {"a", "b"}},
        {{"a", "", "c"}, 0, {"", "c"}},
    };
    for (const Row& row : rows) {
        SetCount("0");
        for (const QString& name : row.before) {
            Add(name);
        }
        Delete(row.n);
        EXPECT_EQ(LoadProfileNames(store_), row.after);
        EXPECT_EQ(Get("general", "antal"), QString::number(row.after.size()));
        for (int i = 0; i < row.after.size(); ++i) {
            EXPECT_EQ(Section(QString::number(i)), Values(row.after[i]));
        }
        EXPECT_EQ(Section(QString::number(row.after.size())), kEmpty);
    }
}

TEST_F(ProfilesTest, ReadAndEmptyOneSectionPastTheLast) {
    Add("a");
    Add("b");
    store_.SaveSetting(kFtpApplication, "2", "host", "kvar.se");
    store_.SaveSetting(kFtpApplication, "3", "host", "orörd.se");
    Delete(0);
    EXPECT_EQ(Section("0"), Values("b"));
    EXPECT_EQ(Section("1"), (QStringList{"", "", "", "kvar.se", ""}));
    EXPECT_EQ(Section("2"), kEmpty);
    EXPECT_EQ(Get("3", "host"), "orörd.se");
}

TEST_F(ProfilesTest, CountAsTheLeadingNumber) {
    struct Row {
        QString stored;
        qsizetype names;
    };
    const Row rows[] = {
        {"", 0},
        {"x", 0},
        {"3", 3},
        {" 3 ", 3},
        {"1 2", 12},
        {"3x", 3},
        {"+2", 2},
        {"03", 3},
        {"-1", 0},
        {"-99999999999", 0},
        {"2.9", 2},
        {"x3", 0},
        {"+-3", 0},
        {"--3", 0},
        {"9999", 9999},
        {"10001", 10000},
        {"999999999", 10000},
        {"99999999999999999999", 10000},
    };
    for (const Row& row : rows) {
        SetCount(row.stored);
        EXPECT_EQ(LoadProfileNames(store_).size(), row.names) << row.stored.toStdString();
    }
}

TEST_F(ProfilesTest, OfARuinedCountAreSavedFromTheStart) {
    SetCount("skräp");
    Add("a");
    EXPECT_EQ(Get("general", "antal"), "1");
    EXPECT_EQ(LoadProfileNames(store_), QStringList("a"));
    SetCount("-5");
    LowerProfileCount(store_);
    EXPECT_EQ(Get("general", "antal"), "0");
}

TEST_F(ProfilesTest, OfTwoRunningProgramsDoNotOverwriteEachOther) {
    Store other(folder_.Path());
    Add("vår");
    SaveNewProfile(other, "deras", {});
    Add("vår andra");
    EXPECT_EQ(LoadProfileNames(other), (QStringList{"vår", "deras", "vår andra"}));
}

TEST_F(ProfilesTest, RememberedFoldersComeBackInOrder) {
    SaveDirectoryHistory(store_, {"C:\\a", "C:\\B å", "D:\\"});
    EXPECT_EQ(Get("dir", "0dir"), "C:\\a");
    EXPECT_EQ(Get("dir", "2dir"), "D:\\");
    EXPECT_EQ(Get("dir", "3dir"), "");
    EXPECT_EQ(LoadDirectoryHistory(store_), (QStringList{"C:\\a", "C:\\B å", "D:\\"}));
    store_.SaveSetting(kFtpApplication, "dir", "1dir", "");
    store_.SaveSetting(kFtpApplication, "dir", "100dir", "C:\\sist");
    EXPECT_EQ(LoadDirectoryHistory(store_), (QStringList{"C:\\a", "D:\\", "C:\\sist"}));
}

TEST_F(ProfilesTest, RememberedFoldersAreAlwaysAHundredAndOneKeys) {
    const auto keys = [&] {
        std::ifstream file((folder_.Path() + "/Websmide's FTP program.conf").toStdString());
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        return std::ranges::count(text, '=');
    };
    SaveDirectoryHistory(store_, {});
    EXPECT_EQ(keys(), 101);
    QStringList many;
    for (int i = 0; i < 150; ++i) {
        many += "C:\\" + QString::number(i);
    }
    SaveDirectoryHistory(store_, many);
    EXPECT_EQ(keys(), 101);
    EXPECT_EQ(LoadDirectoryHistory(store_), many.first(101));
    EXPECT_EQ(Get("dir", "100dir"), "C:\\100");
    EXPECT_EQ(Get("dir", "101dir"), "");
    SaveDirectoryHistory(store_, {"C:\\"});
    EXPECT_EQ(LoadDirectoryHistory(store_), QStringList("C:\\"));
}

}  // namespace
}  // namespace settings
