#include "settings/settings_store.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <csignal>

#include "settings/settings_file.h"
#include "tests/platform/as_nobody.h"
#include "tests/platform/scratch_folder.h"
#include "tests/settings/settings_text.h"

namespace settings {
namespace {

const QString kApp = QStringLiteral("Prov's, åäö");
const QString kFileName = QStringLiteral("Prov's, åäö.conf");

class Problems {
 public:
    explicit Problems(Store& store) {
        store.OnProblem([this](int number, const QString& text) {
            numbers += number;
            texts += text;
        });
    }
    QList<int> numbers;
    QStringList texts;
};

class StoreTest : public testing::Test {
 protected:
    void TearDown() override { chmod(folder_.Native().constData(), 0700); }
    QString Folder() const { return folder_.FilePath("websmide"); }
    QString File() const { return Folder() + u'/' + kFileName; }
    QByteArray NativeFile() const { return QFile::encodeName(File()); }
    QByteArray Content(const QString& path) const {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "?";
    }
    QByteArray Content() const { return Content(File()); }
    void Plant(const QByteArray& bytes) const {
        QDir().mkpath(Folder());
        QFile file(File());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QStringList Names() const {
        return QDir(Folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                        QDir::NoDotAndDotDot);
    }
    static mode_t Mode(const QString& path) {
        struct stat status {};
        stat(QFile::encodeName(path).constData(), &status);
        return status.st_mode & 0777;
    }
    ino_t Inode() const {
        struct stat status {};
        stat(NativeFile().constData(), &status);
        return status.st_ino;
    }
    ScratchFolder folder_;
};

TEST_F(StoreTest, KeepsValuesFromRunToRun) {
    {
        Store store(Folder());
        EXPECT_EQ(store.GetSetting(kApp, "general", "antal"), "");
        EXPECT_FALSE(QDir(Folder()).exists());  // reading leaves no trace
        store.SaveSetting(kApp, "general", "antal", "1");
        EXPECT_EQ(store.GetSetting(kApp, "general", "antal"), "1");
        store.SaveSetting(kApp, "general", "antal", "2");
        store.SaveSetting(kApp, "0", "host", " ftp.å.se\n");
        store.SaveSetting("Websmide", "general", "antal", "9");
    }
    Store store(Folder() + "/");
    EXPECT_EQ(store.GetSetting(kApp, "general", "antal"), "2");
    EXPECT_EQ(store.GetSetting(kApp, "0", "host"), " ftp.å.se\n");
    EXPECT_EQ(store.GetSetting(kApp, "0", "antal"), "");
    EXPECT_EQ(store.GetSetting(kApp, "1", "host"), "");
    EXPECT_EQ(store.GetSetting("Websmide", "general", "antal"), "9");
    EXPECT_EQ(Names(), (QStringList{kFileName, "Websmide.conf"}));
}

TEST_F(StoreTest, IsForItsOwnerOnly) {
    Store(Folder()).SaveSetting(kApp, "s", "k", "v");
    EXPECT_EQ(Mode(Folder()), 0700u);
    EXPECT_EQ(Mode(File()), 0600u);
    chmod(NativeFile().constData(), 0644);
    Store(Folder()).SaveSetting(kApp, "s", "k", "w");
    EXPECT_EQ(Mode(File()), 0600u);
}

TEST_F(StoreTest, IsForItsOwnerOnlyWhateverIsUsual) {
    const mode_t usual = umask(0);
    Store(Folder()).SaveSetting(kApp, "s", "k", "v");
    Store(Folder()).SaveSetting(kApp, "s", "k", "w");
    umask(usual);
    EXPECT_EQ(Mode(Folder()), 0700u);
    EXPECT_EQ(Mode(File()), 0600u);
}

TEST_F(StoreTest, LiesInTheUsersConfigurationFolder) {
    qputenv("XDG_CONFIG_HOME", folder_.Native("inte/än"));
    Store().SaveSetting(kApp, "s", "k", "v");
    EXPECT_EQ(Content(folder_.FilePath("inte/än/websmide/") + kFileName), WholeFile("[s]\nk=v\n"));
    qunsetenv("XDG_CONFIG_HOME");
}

TEST_F(StoreTest, KeepsAnEmptyValueAsAKey) {
    Store(Folder()).SaveSetting(kApp, "s", "k", "");
    EXPECT_EQ(Content(), WholeFile("[s]\nk=\n"));
}

TEST_F(StoreTest, DoesNotTouchTheDiskForAnUnchangedValue) {
    Store store(Folder());
    store.SaveSetting(kApp, "s", "k", "v");
    const ino_t inode = Inode();
    store.SaveSetting(kApp, "s", "k", "v");
    EXPECT_EQ(Inode(), inode);
    { const Store::Batch batch(store); }
    EXPECT_EQ(Inode(), inode);
    store.SaveSetting(kApp, "s", "k", "w");
    EXPECT_NE(Inode(), inode);
}

TEST_F(StoreTest, WritesABatchAtOnce) {
    Store store(Folder());
    {
        const Store::Batch outer(store);
        {
            const Store::Batch inner(store);
            store.SaveSetting(kApp, "s", "a", "1");
        }
        store.SaveSetting("Websmide", "s", "b", "2");
        EXPECT_EQ(store.GetSetting(kApp, "s", "a"), "1");
        EXPECT_FALSE(QDir(Folder()).exists());
    }
    EXPECT_EQ(Content(), WholeFile("[s]\na=1\n"));
    EXPECT_EQ(Content(Folder() + "/Websmide.conf"), WholeFile("[s]\nb=2\n"));
}

TEST_F(StoreTest, KeepsALinkedFileWhereItIs) {
    ASSERT_TRUE(QDir().mkpath(Folder()));
    ASSERT_TRUE(QFile::link(folder_.FilePath("annan"), File()));
    Store(Folder()).SaveSetting(kApp, "s", "k", "v");
    EXPECT_TRUE(QFileInfo(File()).isSymLink());
    EXPECT_EQ(Content(folder_.FilePath("annan")), WholeFile("[s]\nk=v\n"));
}

TEST_F(StoreTest, SeesWhatAnotherProgramWrites) {
    Store ours(Folder()), theirs(Folder());
    ours.SaveSetting(kApp, "s", "a", "1");
    theirs.SaveSetting(kApp, "s", "b", "2");
    EXPECT_EQ(ours.GetSetting(kApp, "s", "b"), "2");
    {
        const Store::Batch batch(ours);
        ours.SaveSetting(kApp, "s", "a", "3");
        theirs.SaveSetting(kApp, "s", "a", "4");
        theirs.SaveSetting(kApp, "s", "c", "5");
        EXPECT_EQ(ours.GetSetting(kApp, "s", "a"), "3");
        EXPECT_EQ(ours.GetSetting(kApp, "s", "c"), "5");
    }
    EXPECT_EQ(Content(), WholeFile("[s]\na=3\nb=2\nc=5\n"));
}

TEST_F(StoreTest, RunningProgramsDoNotLoseEachOthersKeys) {
    constexpr int kPrograms = 4, kKeys = 25;
    QList<pid_t> children;
    for (int program = 0; program < kPrograms; ++program) {
        const pid_t child = fork();
        if (child == 0) {
            Store store(Folder());
            for (int key = 0; key < kKeys; ++key) {
                store.SaveSetting(kApp, QString::number(program), QString::number(key), "x");
            }
            _exit(0);
        }
        children += child;
    }
    for (const pid_t child : children) {
        waitpid(child, nullptr, 0);
    }
    const auto sections = Parse(Content());
    ASSERT_TRUE(sections);
    EXPECT_EQ(sections->size(), kPrograms);
    for (const auto& section : *sections) {
        EXPECT_EQ(section.size(), kKeys);
    }
    EXPECT_EQ(Names(), QStringList(kFileName));
}

TEST_F(StoreTest, SetsGarbageAsideAndGoesOn) {
    for (int n = 1; n <= 2; ++n) {
        const QByteArray garbage = "skräp " + QByteArray::number(n);
        Plant(garbage);
        Store store(Folder());
        Problems problems(store);
        EXPECT_EQ(store.GetSetting(kApp, "s", "k"), "");
        store.GetSetting(kApp, "s", "k");
        ASSERT_EQ(problems.numbers, QList<int>{321});
        const QString aside = kFileName + ".trasig-" + QString::number(n);
        EXPECT_TRUE(problems.texts[0].startsWith("Inställningarna i filen C:\\"))
            << problems.texts[0].toStdString();
        EXPECT_TRUE(problems.texts[0].endsWith(aside + '.')) << problems.texts[0].toStdString();
        EXPECT_EQ(Content(Folder() + '/' + aside), garbage);
        EXPECT_FALSE(QFile::exists(File()));
        store.SaveSetting(kApp, "s", "k", "v");
        EXPECT_EQ(Content(), WholeFile("[s]\nk=v\n"));
        EXPECT_EQ(problems.numbers.size(), 1);
    }
    EXPECT_EQ(Names().size(), 3);
}

TEST_F(StoreTest, SetsAFileAsideThatHasLostItsEnd) {
    Store(Folder()).SaveSetting(kApp, "0", "pass", "hemligt å");
    const QByteArray whole = Content();
    for (qsizetype length = 0; length < whole.size() - 1; ++length) {
        SCOPED_TRACE(length);
        Plant(whole.first(length));
        chmod(NativeFile().constData(), 0644);
        Store store(Folder());
        Problems problems(store);
        store.SaveSetting(kApp, "0", "host", "ny");
        ASSERT_EQ(problems.numbers, QList<int>{321});
        ASSERT_EQ(Content(File() + ".trasig-1"), whole.first(length));
        ASSERT_EQ(Mode(File() + ".trasig-1"), 0600u);
        ASSERT_EQ(Content(), WholeFile("[0]\nhost=ny\n"));
        ASSERT_TRUE(QFile::remove(File() + ".trasig-1"));
    }
}

TEST_F(StoreTest, KeepsTheBytesOfAFileWithFlippedBits) {
    Store(Folder()).SaveSetting(kApp, "0", "pass", "hemligt å\\");
    const QByteArray whole = Content();
    int refused = 0;
    for (qsizetype bit = 0; bit < whole.size() * 8; ++bit) {
        SCOPED_TRACE(bit);
        QByteArray flipped = whole;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
        Plant(flipped);
        Store store(Folder());
        Problems problems(store);
        store.GetSetting(kApp, "0", "pass");
        const bool understood = Parse(flipped).has_value();
        refused += understood ? 0 : 1;
        ASSERT_EQ(problems.numbers, understood ? QList<int>() : QList<int>{321});
        const QString place = understood ? File() : File() + ".trasig-1";
        ASSERT_EQ(Content(place), flipped);
        ASSERT_TRUE(QFile::remove(place));
    }
    EXPECT_GT(refused, whole.size()) << "every bit of the first and the last line, and many in between";
}

TEST_F(StoreTest, TakesAnOldFileOver) {
    Plant("[s]\nk=v\n");
    Store store(Folder());
    Problems problems(store);
    EXPECT_EQ(store.GetSetting(kApp, "s", "k"), "v");
    EXPECT_EQ(Content(), "[s]\nk=v\n");
    store.SaveSetting(kApp, "s", "l", "w");
    EXPECT_EQ(Content(), WholeFile("[s]\nk=v\nl=w\n"));
    EXPECT_TRUE(problems.numbers.isEmpty());
}

TEST_F(StoreTest, GoesOnAfterACrashInTheMiddleOfSaving) {
    Store(Folder()).SaveSetting(kApp, "s", "k", "v");
    const pid_t child = fork();
    if (child == 0) {
        umask(0);
        const rlimit no_core{0, 0}, limit{100, 100};
        setrlimit(RLIMIT_CORE, &no_core);
        setrlimit(RLIMIT_FSIZE, &limit);  // the signal of which ends the process
        Store(Folder()).SaveSetting(kApp, "s", "k", QString(200, u'x'));
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ) << status;
    ASSERT_EQ(Names().size(), 2);
    for (const QString& name : Names()) {
        EXPECT_EQ(Mode(Folder() + '/' + name), 0600u) << name.toStdString();
    }
    Store store(Folder());
    Problems problems(store);
    EXPECT_EQ(store.GetSetting(kApp, "s", "k"), "v");
    store.SaveSetting(kApp, "s", "k", "w");
    EXPECT_EQ(Content(), WholeFile("[s]\nk=w\n"));
    EXPECT_TRUE(problems.numbers.isEmpty());
}

TEST_F(StoreTest, SetsAFileAsideThatIsTooLarge) {
    Plant("[s]\nk=v\n");
    ASSERT_TRUE(QFile::resize(File(), kMaxFileSize * 4LL));
    Store store(Folder());
    Problems problems(store);
    EXPECT_EQ(store.GetSetting(kApp, "s", "k"), "");
    EXPECT_EQ(problems.numbers, QList<int>{321});
    EXPECT_EQ(QFileInfo(File() + ".trasig-1").size(), kMaxFileSize * 4LL);
}

TEST_F(StoreTest, NeverWritesAFileThatItWouldNotRead) {
    Store store(Folder());
    Problems problems(store);
    store.SaveSetting(kApp, "s", "k", "v");
    store.SaveSetting(kApp, "s", "stor", QString(kMaxFileSize, u'x'));
    EXPECT_EQ(problems.numbers, QList<int>{61});
    EXPECT_EQ(Content(), WholeFile("[s]\nk=v\n"));
}

TEST_F(StoreTest, BringsBackWhatARuinedOrRemovedFileHeld) {
    Store store(Folder());
    Problems problems(store);
    store.SaveSetting(kApp, "s", "a", "1");
    QFile::remove(File());
    EXPECT_EQ(store.GetSetting(kApp, "s", "a"), "1");
    store.SaveSetting(kApp, "s", "b", "2");
    EXPECT_EQ(Content(), WholeFile("[s]\na=1\nb=2\n"));
    EXPECT_TRUE(problems.numbers.isEmpty());
    Plant("skräp som någon annan skrev");
    store.SaveSetting(kApp, "s", "c", "3");
    EXPECT_EQ(Content(), WholeFile("[s]\na=1\nb=2\nc=3\n"));
    EXPECT_EQ(problems.numbers, QList<int>{321});
    EXPECT_EQ(Content(File() + ".trasig-1"), "skräp som någon annan skrev");
}

TEST_F(StoreTest, LeavesAFolderInTheFilesPlaceAlone) {
    ASSERT_TRUE(QDir().mkpath(File() + "/inre"));
    Store store(Folder());
    Problems problems(store);
    EXPECT_EQ(store.GetSetting(kApp, "s", "k"), "");
    EXPECT_EQ(store.GetSetting(kApp, "s", "l"), "");
    ASSERT_EQ(problems.numbers, QList<int>{75});
    EXPECT_TRUE(problems.texts[0].endsWith("gick inte att läsa: fel i sökvägen."))
        << problems.texts[0].toStdString();
    store.SaveSetting(kApp, "s", "k", "v");
    ASSERT_EQ(problems.numbers, (QList<int>{75, 75}));
    EXPECT_TRUE(problems.texts[1].startsWith("Inställningarna gick inte att spara i filen C:\\"));
    EXPECT_EQ(store.GetSetting(kApp, "s", "k"), "v");
    EXPECT_EQ(Names(), QStringList(kFileName));
    EXPECT_TRUE(QDir(File() + "/inre").exists());
    // Once the way is free, what was kept in memory is written with the next change.
    ASSERT_TRUE(QDir(File()).removeRecursively());
    store.SaveSetting(kApp, "s", "l", "w");
    EXPECT_EQ(Content(), WholeFile("[s]\nk=v\nl=w\n"));
    EXPECT_EQ(problems.numbers.size(), 2);
}

TEST_F(StoreTest, ReportsAFileThatIsClosedToIt) {
    Plant("[s]\nk=v\n");
    ASSERT_EQ(chmod(NativeFile().constData(), 0), 0);
    ASSERT_EQ(chmod(folder_.Native().constData(), 0755), 0);
    ASSERT_EQ(chmod(QFile::encodeName(Folder()).constData(), 0777), 0);
    EXPECT_TRUE(AsNobody([&] {
        Store store(Folder());
        Problems problems(store);
        const bool empty =
            store.GetSetting(kApp, "s", "k").isEmpty() && store.GetSetting(kApp, "s", "k").isEmpty();
        const bool reported_once = problems.numbers == QList<int>{70};
        store.SaveSetting(kApp, "s", "k", "w");
        return empty && reported_once && problems.numbers == QList<int>{70, 70} &&
               problems.texts[1].endsWith("åtkomst nekad.") && store.GetSetting(kApp, "s", "k") == "w";
    }));
    chmod(NativeFile().constData(), 0600);
    EXPECT_EQ(Content(), "[s]\nk=v\n");
    EXPECT_EQ(Names(), QStringList(kFileName));
}

TEST_F(StoreTest, ReportsAFolderThatCannotBeWritten) {
    Plant("skräp");
    ASSERT_EQ(chmod(NativeFile().constData(), 0644), 0);
    ASSERT_EQ(chmod(folder_.Native().constData(), 0755), 0);
    ASSERT_EQ(chmod(QFile::encodeName(Folder()).constData(), 0555), 0);
    EXPECT_TRUE(AsNobody([&] {
        Store store(Folder());
        Problems problems(store);
        store.GetSetting(kApp, "s", "k");
        store.GetSetting(kApp, "s", "k");
        const bool reported_once = problems.numbers == QList<int>{321};
        store.SaveSetting(kApp, "s", "k", "w");        // garbage that cannot be set aside is not overwritten
        store.SaveSetting("Websmide", "s", "k", "w");  // nor is a new file made
        return reported_once && problems.numbers == QList<int>{321, 70, 70} &&
               problems.texts[0].endsWith("åtkomst nekad.") && store.GetSetting(kApp, "s", "k") == "w";
    }));
    EXPECT_EQ(Content(), "skräp");
    EXPECT_EQ(Names(), QStringList(kFileName));
}

TEST_F(StoreTest, ReportsAFileInTheFoldersPlace) {
    Store(folder_.FilePath("x")).SaveSetting("y", "s", "k", "v");
    Store store(folder_.FilePath("x/y.conf"));
    Problems problems(store);
    store.SaveSetting(kApp, "s", "k", "v");
    EXPECT_EQ(problems.numbers, (QList<int>{75, 75}));
    EXPECT_EQ(Content(folder_.FilePath("x/y.conf")), WholeFile("[s]\nk=v\n"));
}

TEST_F(StoreTest, ReportsAFullDiskAndKeepsTheOldFile) {
    ASSERT_EQ(chmod(folder_.Native().constData(), 0777), 0);
    EXPECT_TRUE(AsNobody([&] {  // a child process, for the limit's sake
        Store store(Folder());
        Problems problems(store);
        store.SaveSetting(kApp, "s", "k", "v");
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{100, 100};
        setrlimit(RLIMIT_FSIZE, &limit);
        store.SaveSetting(kApp, "s", "lång", QString(200, u'x'));
        return problems.numbers == QList<int>{61} && problems.texts[0].endsWith("disken är full.") &&
               store.GetSetting(kApp, "s", "lång").size() == 200 && Content() == WholeFile("[s]\nk=v\n") &&
               Names() == QStringList(kFileName);
    }));
}

TEST_F(StoreTest, TellsEarlyProblemsWhenSomebodyListens) {
    Plant("skräp");
    Store store(Folder());
    store.GetSetting(kApp, "s", "k");
    Problems problems(store);
    EXPECT_EQ(problems.numbers, QList<int>{321});
    Problems others(store);
    EXPECT_TRUE(others.numbers.isEmpty());
}

TEST_F(StoreTest, MayBeUsedByTheProblemHandler) {
    Plant("skräp");
    Store store(Folder());
    int told = 0;
    store.OnProblem([&](int, const QString& text) {
        ++told;
        store.SaveSetting(kApp, "problem", QString::number(told), text);
    });
    store.GetSetting(kApp, "s", "k");
    EXPECT_EQ(told, 1);
    EXPECT_NE(store.GetSetting(kApp, "problem", "1"), "");
}

}  // namespace
}  // namespace settings
