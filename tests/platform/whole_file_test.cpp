#include "platform/whole_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <csignal>

#include "tests/platform/as_nobody.h"
#include "tests/platform/scratch_folder.h"

namespace platform {
namespace {

constexpr qsizetype kLimit = 1000;

class WholeFileTest : public testing::Test {
 protected:
    QByteArray Path(const QByteArray& name) const { return folder_.Native(name); }
    QByteArray Content(const QByteArray& name) const { return ReadWholeFile(Path(name), kLimit).bytes; }
    QStringList Names() const {
        return QDir(folder_.Path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    mode_t Mode(const QByteArray& name) const {
        struct stat status {};
        stat(Path(name).constData(), &status);
        return status.st_mode & 0777;
    }
    ScratchFolder folder_;
};

TEST_F(WholeFileTest, ComesBackAsItWasWritten) {
    const QByteArray bytes("a\0\r\n\xFF", 5);
    ASSERT_EQ(ReplaceWholeFile(Path("fil"), bytes), FileResult::Done);
    EXPECT_EQ(ReadWholeFile(Path("fil"), kLimit).result, FileResult::Done);
    EXPECT_EQ(Content("fil"), bytes);
    EXPECT_EQ(ReadWholeFile(Path("fil"), 2).bytes, bytes.first(2));
    EXPECT_EQ(Mode("fil"), 0600u);
    ASSERT_EQ(ReplaceWholeFile(Path("fil"), ""), FileResult::Done);
    EXPECT_EQ(Content("fil"), "");
    EXPECT_EQ(Names(), QStringList("fil"));
}

TEST_F(WholeFileTest, IsReadableByItsOwnerOnlyWhateverItWas) {
    ASSERT_EQ(ReplaceWholeFile(Path("fil"), "gammal"), FileResult::Done);
    ASSERT_EQ(chmod(Path("fil").constData(), 0644), 0);
    ASSERT_EQ(ReplaceWholeFile(Path("fil"), "ny"), FileResult::Done);
    EXPECT_EQ(Mode("fil"), 0600u);
}

TEST_F(WholeFileTest, KeepsLinks) {
    ASSERT_EQ(mkdir(Path("annan").constData(), 0700), 0);
    ASSERT_EQ(symlink("annan/mål", Path("mellan").constData()), 0);
    ASSERT_EQ(symlink(Path("mellan").constData(), Path("fil").constData()), 0);
    for (const char* bytes : {"ett", "två"}) {  // first the link leads nowhere
        ASSERT_EQ(ReplaceWholeFile(Path("fil"), bytes), FileResult::Done);
        EXPECT_EQ(Content("annan/mål"), bytes);
    }
    EXPECT_EQ(Names(), (QStringList{"annan", "fil", "mellan"}));
    EXPECT_TRUE(QFileInfo(folder_.FilePath("fil")).isSymLink());
}

TEST_F(WholeFileTest, RefusesWhatIsNotAFile) {
    ASSERT_EQ(mkdir(Path("mapp").constData(), 0700), 0);
    ASSERT_EQ(mkfifo(Path("rör").constData(), 0600), 0);
    ASSERT_EQ(symlink("runt", Path("runt").constData()), 0);
    EXPECT_EQ(ReadWholeFile(Path("saknas"), kLimit).result, FileResult::NotFound);
    EXPECT_EQ(ReadWholeFile(Path("mapp"), kLimit).result, FileResult::PathError);
    EXPECT_EQ(ReadWholeFile(Path("rör"), kLimit).result, FileResult::PathError);
    EXPECT_EQ(ReadWholeFile(Path("runt"), kLimit).result, FileResult::PathError);
    EXPECT_EQ(ReplaceWholeFile(Path("mapp"), "x"), FileResult::PathError);
    EXPECT_EQ(ReplaceWholeFile(Path("saknas/fil"), "x"), FileResult::NotFound);
    EXPECT_EQ(ReplaceWholeFile(Path(QByteArray(300, 'n')), "x"), FileResult::PathError);
    EXPECT_EQ(Names(), (QStringList{"mapp", "runt", "rör"}));
}

TEST_F(WholeFileTest, LeavesTheOldFileWhenTheNewOneCannotBeWritten) {
    ASSERT_EQ(ReplaceWholeFile(Path("fil"), "gammal"), FileResult::Done);
    ASSERT_EQ(chmod(folder_.Native().constData(), 0777), 0);
    EXPECT_TRUE(AsNobody([&] {  // a child process, for the limit's sake
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{100, 100};
        setrlimit(RLIMIT_FSIZE, &limit);
        return ReplaceWholeFile(Path("fil"), QByteArray(200, 'x')) == FileResult::DiskFull;
    }));
    EXPECT_EQ(Content("fil"), "gammal");
    EXPECT_EQ(Names(), QStringList("fil"));
}

TEST_F(WholeFileTest, TellsDenied) {
    ASSERT_EQ(ReplaceWholeFile(Path("fil"), "gammal"), FileResult::Done);
    ASSERT_EQ(chmod(Path("fil").constData(), 0), 0);
    ASSERT_EQ(chmod(folder_.Native().constData(), 0555), 0);
    EXPECT_TRUE(AsNobody([&] {
        QByteArray aside;
        return ReadWholeFile(Path("fil"), kLimit).result == FileResult::Denied &&
               ReplaceWholeFile(Path("fil"), "x") == FileResult::Denied &&
               SetFileAside(Path("fil"), ".trasig-", aside) == FileResult::Denied &&
               MakePrivateFolder(Path("ny/under")) == FileResult::Denied;
    }));
    ASSERT_EQ(chmod(folder_.Native().constData(), 0700), 0);
    EXPECT_EQ(Names(), QStringList("fil"));
}

TEST_F(WholeFileTest, SetsAsideUnderAFreeName) {
    for (const char* name : {"fil.trasig-1", "fil.trasig-3"}) {
        ASSERT_EQ(ReplaceWholeFile(Path(name), name), FileResult::Done);
    }
    for (const char* expected : {"fil.trasig-2", "fil.trasig-4"}) {
        ASSERT_EQ(ReplaceWholeFile(Path("fil"), expected), FileResult::Done);
        QByteArray aside;
        ASSERT_EQ(SetFileAside(Path("fil"), ".trasig-", aside), FileResult::Done);
        EXPECT_EQ(aside, Path(expected));
    }
    QByteArray aside;
    EXPECT_EQ(SetFileAside(Path("fil"), ".trasig-", aside), FileResult::NotFound);
    for (const QString& name : Names()) {
        EXPECT_EQ(Content(name.toUtf8()), name.toUtf8());
    }
    EXPECT_EQ(Names().size(), 4);
}

TEST_F(WholeFileTest, StampsTellStatesApart) {
    EXPECT_EQ(StampOf(Path("fil")), std::nullopt);
    ASSERT_EQ(ReplaceWholeFile(Path("fil"), "a"), FileResult::Done);
    const auto first = StampOf(Path("fil"));
    EXPECT_EQ(first, StampOf(Path("fil")));
    ASSERT_EQ(ReplaceWholeFile(Path("fil"), "b"), FileResult::Done);
    EXPECT_NE(first, StampOf(Path("fil")));
}

TEST_F(WholeFileTest, MakesFoldersForTheOwnerOnly) {
    EXPECT_EQ(MakePrivateFolder(Path("a/b/c")), FileResult::Done);
    EXPECT_EQ(MakePrivateFolder(Path("a/b/c")), FileResult::Done);
    EXPECT_EQ(Mode("a"), 0700u);
    EXPECT_EQ(Mode("a/b/c"), 0700u);
    ASSERT_EQ(ReplaceWholeFile(Path("fil"), ""), FileResult::Done);
    EXPECT_EQ(MakePrivateFolder(Path("fil")), FileResult::PathError);
    EXPECT_EQ(MakePrivateFolder(Path("fil/under")), FileResult::PathError);
}

TEST_F(WholeFileTest, LocksKeepOthersOutUntilReleased) {
    int entered[2];
    ASSERT_EQ(pipe(entered), 0);
    const QByteArray folder = folder_.Native();
    ReplaceWholeFile(Path("ordning"), "");
    pid_t child = 0;
    {
        const FolderLock lock(folder);
        child = fork();
        if (child == 0) {
            write(entered[1], "1", 1);  // about to ask for the lock
            const FolderLock mine(folder);
            _exit(Content("ordning") == "klar" ? 0 : 1);
        }
        char byte;
        ASSERT_EQ(read(entered[0], &byte, 1), 1);
        ReplaceWholeFile(Path("ordning"), "klar");
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    const FolderLock nothing_to_lock(folder + "/saknas");
}

}  // namespace
}  // namespace platform
