#include "platform/folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>
#include <filesystem>

#include "platform/drive_path.h"
#include "tests/platform/as_nobody.h"
#include "tests/platform/scratch_folder.h"

namespace platform {
namespace {

class FolderTest : public testing::Test {
 protected:
    QByteArray Native(const QByteArray& name) const { return folder_.Native(name); }
    QString Path() const { return FromNative(folder_.Native()); }
    QString Path(const QString& name) const { return Join(Path(), name); }
    void Write(const QByteArray& name, int size, time_t modified = 0) const {
        const int file = open(Native(name).constData(), O_WRONLY | O_CREAT | O_EXCL, 0600);
        ASSERT_GE(file, 0) << name.toStdString();
        EXPECT_EQ(write(file, QByteArray(size, 'x').constData(), static_cast<size_t>(size)), size);
        const timespec times[2] = {{modified, 0}, {modified, 0}};
        futimens(file, times);
        close(file);
    }
    void MakeDir(const QByteArray& name) const { ASSERT_EQ(mkdir(Native(name).constData(), 0700), 0); }
    QStringList Names() const {
        QStringList names;
        const auto entries = ReadFolder(Path());
        for (const FolderEntry& entry : *entries) {
            names += entry.name;
        }
        return names;
    }
    ScratchFolder folder_;
};

TEST_F(FolderTest, TellsSizeTimeAndKind) {
    Write("Fil.txt", 1234, 923'402'590);
    MakeDir("Mapp");
    ASSERT_EQ(symlink("Mapp", Native("till mapp").constData()), 0);
    ASSERT_EQ(symlink("Fil.txt", Native("till fil").constData()), 0);
    ASSERT_EQ(symlink("borta", Native("till inget").constData()), 0);
    const auto entries = ReadFolder(Path());
    ASSERT_TRUE(entries);
    ASSERT_EQ(entries->size(), 5u);
    const auto expect = [&](size_t i, const char* name, bool folder) {
        EXPECT_EQ((*entries)[i].name, name);
        EXPECT_EQ((*entries)[i].folder, folder) << name;
    };
    expect(0, "Fil.txt", false);
    expect(1, "Mapp", true);
    expect(2, "till fil", false);
    expect(3, "till inget", false);
    expect(4, "till mapp", true);
    EXPECT_EQ((*entries)[0].size, 1234);
    EXPECT_EQ((*entries)[0].modified, 923'402'590);
    EXPECT_EQ((*entries)[2].size, 1234);
    EXPECT_EQ((*entries)[3].size, 0);
    EXPECT_EQ((*entries)[3].modified, 0);
    EXPECT_EQ(ReadSubfolders(Path()), (QStringList{"Mapp", "till mapp"}));
}

TEST_F(FolderTest, KnowsAPlainFile) {
    Write("a", 1);
    MakeDir("b");
    ASSERT_EQ(mkfifo(Native("c").constData(), 0600), 0);
    ASSERT_EQ(symlink("a", Native("d").constData()), 0);
    ASSERT_EQ(symlink("b", Native("e").constData()), 0);
    ASSERT_EQ(symlink("c", Native("f").constData()), 0);
    ASSERT_EQ(symlink("borta", Native("g").constData()), 0);
    const auto entries = ReadFolder(Path());
    ASSERT_TRUE(entries);
    QString plain;
    for (const FolderEntry& entry : *entries) {
        if (entry.plain) {
            plain += entry.name;
        }
    }
    EXPECT_EQ(plain, "ad");
}

TEST_F(FolderTest, AFolderIsTheSameByEveryPath) {
    MakeDir("a");
    MakeDir("b");
    Write("fil", 1);
    ASSERT_EQ(symlink("a", Native("till a").constData()), 0);
    ASSERT_EQ(symlink("..", Native("a/upp").constData()), 0);
    const auto a = IdentityOf(Path("a"));
    ASSERT_TRUE(a);
    EXPECT_EQ(IdentityOf(Path("A\\")), a);
    EXPECT_EQ(IdentityOf(Path("till a")), a);
    EXPECT_EQ(IdentityOf(Path("a\\upp\\a")), a);
    EXPECT_NE(IdentityOf(Path("b")), a);
    EXPECT_NE(IdentityOf(Path("a\\upp")), a);
    for (const char* none : {"fil", "saknas", "a\\saknas"}) {
        EXPECT_EQ(IdentityOf(Path(none)), std::nullopt) << none;
    }
}

TEST_F(FolderTest, SortsWithoutRegardToCaseAndShowsHiddenNames) {
    for (const char* name : {"b", "A", "a", "B", ".dold", "\303\226", "\303\244", "c\\d", "\345"}) {
        Write(name, 0);
    }
    EXPECT_EQ(Names(), (QStringList{".dold", "A", "a", "B", "b", QStringLiteral("c") + QChar(0xF05C) + "d",
                                    "ä", "Ö", QString(QChar(0xF0E5))}));
}

TEST_F(FolderTest, SubfoldersAreSortedToo) {
    for (const char* name : {"b", "A", "a", "C"}) {
        MakeDir(name);
    }
    Write("fil", 1);
    EXPECT_EQ(ReadSubfolders(Path()), (QStringList{"A", "a", "b", "C"}));
}

TEST_F(FolderTest, EveryNameShownLeadsBackToItsFile) {
    const QList<QByteArray> natives = {"a",
                                       "A",
                                       "a\\b",
                                       "\345\344\366",
                                       "\303\245",
                                       "a\342\200",
                                       "\357\201\234",
                                       "\357\203\245",
                                       "rad\nbrytning",
                                       " blank "};
    for (int i = 0; i < natives.size(); ++i) {
        Write(natives[i], i + 1);
    }
    const auto entries = ReadFolder(Path());
    ASSERT_EQ(entries->size(), size_t(natives.size()));
    for (const FolderEntry& entry : *entries) {
        EXPECT_EQ(FileLength(Path(entry.name)), entry.size);
        EXPECT_EQ(natives.indexOf(NameToNative(entry.name)), entry.size - 1);
    }
}

TEST_F(FolderTest, AnswersForAnyWayToWriteThePath) {
    MakeDir("Mapp");
    Write("Mapp/Fil.txt", 7);
    for (const QString& path : {Path("Mapp"), Path("mapp\\"), Path("MAPP\\\\"), folder_.Path() + "/mapp/"}) {
        EXPECT_TRUE(FolderExists(path)) << path.toStdString();
        EXPECT_EQ(ReadFolder(path)->size(), 1u) << path.toStdString();
        EXPECT_EQ(FileLength(path + "\\fil.TXT").value_or(-1), path.startsWith('/') ? -1 : 7)
            << path.toStdString();
    }
    EXPECT_EQ(FileLength(Path("Mapp")), std::nullopt);
    EXPECT_EQ(FileLength(Path("saknas")), std::nullopt);
    EXPECT_FALSE(FolderExists(Path("Mapp\\Fil.txt")));
    EXPECT_FALSE(FolderExists("Mapp"));
    EXPECT_FALSE(FolderExists(""));
}

TEST_F(FolderTest, TheRootIsAFolderHoweverItIsWritten) {
    const auto entries = ReadFolder("C:\\");
    ASSERT_TRUE(entries);
    EXPECT_FALSE(entries->empty());
    for (const char* root : {"C:", "c:\\", "C:\\\\", "C:/", "/"}) {
        EXPECT_TRUE(FolderExists(root)) << root;
        EXPECT_EQ(ReadSubfolders(root), ReadSubfolders("C:\\")) << root;
    }
    EXPECT_TRUE(FolderExists("C:\\\\proc"));
    EXPECT_TRUE(FileLength("C:\\\\proc\\version"));
}

TEST_F(FolderTest, HasNothingToSayOfWhatCannotBeRead) {
    Write("fil", 1);
    MakeDir("stängd");
    EXPECT_EQ(ReadFolder(Path("saknas")), std::nullopt);
    EXPECT_EQ(ReadFolder(Path("fil")), std::nullopt);
    EXPECT_EQ(ReadFolder("relativ"), std::nullopt);
    EXPECT_EQ(ReadSubfolders(Path("saknas")), std::nullopt);
    ASSERT_EQ(chmod(Native("stängd").constData(), 0), 0);
    ASSERT_EQ(chmod(folder_.Native().constData(), 0755), 0);
    EXPECT_TRUE(AsNobody([&] { return FolderExists(Path("stängd")) && !ReadFolder(Path("stängd")); }));
}

TEST_F(FolderTest, ReadsAHundredThousandEntriesWellUnderASecond) {
    constexpr int kEntries = 100'000;
    const int folder = open(folder_.Native().constData(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < kEntries; ++i) {
        const QByteArray name = "Fil " + QByteArray::number(i * 7919 % kEntries) + ".HTM";
        ASSERT_EQ(mknodat(folder, name.constData(), S_IFREG | 0600, 0), 0);
    }
    close(folder);
    QElapsedTimer timer;
    timer.start();
    const auto entries = ReadFolder(Path());
    const qint64 elapsed = timer.elapsed();
    ASSERT_EQ(entries->size(), size_t(kEntries));
    EXPECT_TRUE(
        std::ranges::is_sorted(*entries, {}, [](const FolderEntry& entry) { return entry.name.toLower(); }));
    RecordProperty("milliseconds", static_cast<int>(elapsed));
    EXPECT_LT(elapsed, 5000);  // loose: unoptimised builds and sanitizers run this too
}

TEST(Folders, OfTheProgramAndTheProcess) {
    std::error_code error;
    const std::string program = std::filesystem::read_symlink("/proc/self/exe", error).parent_path().native();
    EXPECT_EQ(ProgramFolder(), FromNative(QByteArray::fromStdString(program)));
    EXPECT_TRUE(FolderExists(ProgramFolder()));
    EXPECT_EQ(CurrentFolder(),
              FromNative(QByteArray::fromStdString(std::filesystem::current_path().native())));
}

}  // namespace
}  // namespace platform
