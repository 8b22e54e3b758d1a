#include "platform/file_changes.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <filesystem>

#include "platform/drive_path.h"
#include "platform/folder.h"
#include "tests/platform/as_nobody.h"
#include "tests/platform/scratch_folder.h"

namespace platform {
namespace {

class FileChangesTest : public testing::Test {
 protected:
    QString Path(const QString& name) const { return FromNative(folder_.Native()) + u'\\' + name; }
    void Write(const QString& name, const QByteArray& bytes) const {
        QFile file(folder_.FilePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray Content(const QString& name) const {
        QFile file(folder_.FilePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "?";
    }
    QStringList Names() const {
        return QDir(folder_.Path())
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }
    ScratchFolder folder_;
};

TEST_F(FileChangesTest, MakesFolders) {
    EXPECT_EQ(MakeFolder(Path("\\Ny mapp")), FileResult::Done);  // a doubled separator does no harm
    EXPECT_EQ(MakeFolder(Path("ny MAPP\\Under")), FileResult::Done);
    EXPECT_EQ(MakeFolder(Path("Ny mapp")), FileResult::AlreadyExists);
    EXPECT_EQ(MakeFolder(Path("ny mapp")), FileResult::AlreadyExists);
    EXPECT_EQ(MakeFolder(Path("saknas\\Under")), FileResult::NotFound);
    EXPECT_EQ(MakeFolder("Ny mapp"), FileResult::PathError);
    EXPECT_EQ(Names(), QStringList("Ny mapp"));
    EXPECT_TRUE(FolderExists(Path("Ny mapp\\Under")));
}

TEST_F(FileChangesTest, MakesTheSameFolderWhereSeparatorsAreDoubled) {
    EXPECT_EQ(ToNative("C:\\\\name"), "/name");  // the root folder, "\\" and a name
    EXPECT_EQ(ToNative("C:\\a\\\\b"), "/a/b");
    const QString inside = FromNative(folder_.Native()).sliced(3);
    EXPECT_EQ(MakeFolder("C:\\\\" + inside + "\\ett"), FileResult::Done);
    EXPECT_EQ(MakeFolder("C:\\" + inside + "\\\\två"), FileResult::Done);
    EXPECT_EQ(MakeFolder("C:\\\\" + inside + "\\\\två\\\\tre"), FileResult::Done);
    EXPECT_EQ(Names(), (QStringList{"ett", "två"}));
    EXPECT_TRUE(FolderExists(Path("två\\tre")));
}

TEST_F(FileChangesTest, RenamesWithoutReplacing) {
    Write("A.txt", "a");
    Write("B.txt", "b");
    EXPECT_EQ(RenameFile(Path("A.txt"), Path("B.txt")), FileResult::AlreadyExists);
    EXPECT_EQ(RenameFile(Path("A.txt"), Path("b.TXT")), FileResult::AlreadyExists);
    EXPECT_EQ(RenameFile(Path("saknas"), Path("C")), FileResult::NotFound);
    EXPECT_EQ(RenameFile(Path("A.txt"), Path("saknas\\A.txt")), FileResult::NotFound);
    EXPECT_EQ(RenameFile(Path("A.txt"), "C"), FileResult::PathError);
    EXPECT_EQ(Names(), (QStringList{"A.txt", "B.txt"}));
    EXPECT_EQ(RenameFile(Path("A.txt"), Path("Ny å.htm")), FileResult::Done);
    EXPECT_EQ(Content("Ny å.htm"), "a");
    EXPECT_EQ(Content("B.txt"), "b");
}

TEST_F(FileChangesTest, TakesTwoNamesOfOneFileForTwo) {
    Write("a", "1");
    for (const char* name : {"b", "A"}) {
        ASSERT_EQ(link(folder_.Native("a").constData(), folder_.Native(name).constData()), 0);
        EXPECT_EQ(RenameFile(Path("a"), Path(name)), FileResult::AlreadyExists);
    }
    EXPECT_EQ(RenameFile(Path("b"), Path("B")), FileResult::Done);
    EXPECT_EQ(Names(), (QStringList{"A", "B", "a"}));
}

TEST_F(FileChangesTest, RenamesToAnotherCase) {
    Write("index.HTM", "a");
    EXPECT_EQ(RenameFile(Path("index.HTM"), Path("INDEX.htm")), FileResult::Done);
    EXPECT_EQ(Names(), QStringList("INDEX.htm"));
    EXPECT_EQ(RenameFile(Path("INDEX.htm"), Path("INDEX.htm")), FileResult::Done);
    EXPECT_EQ(Names(), QStringList("INDEX.htm"));
}

TEST_F(FileChangesTest, DeletesTheVeryFile) {
    for (const char* name : {"a", "A", "b"}) {
        Write(name, name);
    }
    ASSERT_TRUE(QDir(folder_.Path()).mkdir("mapp"));
    ASSERT_TRUE(QFile::link("mapp", folder_.FilePath("pekare")));
    EXPECT_EQ(DeleteFile(Path("a")), FileResult::Done);
    EXPECT_EQ(DeleteFile(Path("b")), FileResult::Done);
    EXPECT_EQ(DeleteFile(Path("pekare")), FileResult::Done);
    EXPECT_NE(DeleteFile(Path("mapp")), FileResult::Done);
    EXPECT_EQ(DeleteFile(Path("saknas")), FileResult::NotFound);
    EXPECT_EQ(DeleteFile(""), FileResult::PathError);
    EXPECT_EQ(Names(), (QStringList{"A", "mapp"}));
}

// The file that was meant may have gone since its name was read: what is equal but for case is another file.
TEST_F(FileChangesTest, TouchesNothingInPlaceOfAFileThatHasGone) {
    Write("Fil", "1");
    ASSERT_TRUE(QDir(folder_.Path()).mkdir("Mapp"));
    Write("Mapp/fil", "2");
    for (const char* gone : {"fil", "FIL", "mapp\\fil", "Mapp\\Fil"}) {
        EXPECT_EQ(DeleteFile(Path(gone)), FileResult::NotFound) << gone;
        EXPECT_EQ(RenameFile(Path(gone), Path("ny")), FileResult::NotFound) << gone;
        EXPECT_EQ(RenameFile(Path(gone), Path("Fil")), FileResult::NotFound) << gone;
        EXPECT_EQ(RenameFile(Path(gone), Path("fil")), FileResult::NotFound) << gone;
    }
    EXPECT_EQ(Names(), (QStringList{"Fil", "Mapp"}));
    EXPECT_EQ(Content("Fil"), "1");
    EXPECT_EQ(Content("Mapp/fil"), "2");
}

TEST_F(FileChangesTest, RenamesTheVeryFileOfSeveral) {
    Write("fil", "1");
    Write("FIL", "2");
    EXPECT_EQ(RenameFile(Path("FIL"), Path("ny")), FileResult::Done);
    EXPECT_EQ(Content("ny"), "2");
    EXPECT_EQ(RenameFile(Path("ny"), Path("FIL")), FileResult::AlreadyExists);
    EXPECT_EQ(Names(), (QStringList{"fil", "ny"}));
}

TEST_F(FileChangesTest, TellsDenied) {
    Write("fil", "");
    ASSERT_EQ(chmod(folder_.Native().constData(), 0555), 0);
    EXPECT_TRUE(AsNobody([&] {
        return MakeFolder(Path("ny")) == FileResult::Denied &&
               DeleteFile(Path("fil")) == FileResult::Denied &&
               RenameFile(Path("fil"), Path("ny")) == FileResult::Denied;
    }));
    chmod(folder_.Native().constData(), 0700);
    EXPECT_EQ(Names(), QStringList("fil"));
}

// Beside the test's own program. A case that needs somebody else's files is for the superuser.
class TemporaryFolderTest : public FileChangesTest {
 protected:
    void SetUp() override {
        std::filesystem::remove_all(Beside().toStdString());
        qputenv("XDG_CACHE_HOME", folder_.Native());
    }
    void TearDown() override { std::filesystem::remove_all(Beside().toStdString()); }

    static QString BesideProgram() { return Join(ProgramFolder(), "temp"); }
    static QByteArray Beside() { return *ToNative(BesideProgram()); }
    QString Own() const { return Path("websmide\\temp"); }
    /// For AsNobody: whether the user's own folder is chosen, and can be used.
    auto UsesOwn() const {
        return [own = Own()] {
            const bool usable = TemporaryFolder() == own && MakeFolder(own + "\\x") == FileResult::Done;
            rmdir(ToNative(own + "\\x")->constData());
            return usable;
        };
    }
    QByteArray Native(const char* name) const { return folder_.Native(name); }

    static void Make(const QByteArray& folder, mode_t mode) {
        ASSERT_EQ(mkdir(folder.constData(), 0700), 0) << folder.toStdString();
        ASSERT_EQ(chmod(folder.constData(), mode), 0);  // whatever the umask
    }
    static void GiveAway(const QByteArray& folder) {
        ASSERT_EQ(lchown(folder.constData(), kNobody, kNobody), 0);
    }
    static mode_t Mode(const QByteArray& folder) {
        struct stat status {};
        stat(folder.constData(), &status);
        return status.st_mode & 07777;
    }
};

TEST_F(TemporaryFolderTest, IsBesideTheProgram) {
    const mode_t mask = umask(0);
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(TemporaryFolder(), BesideProgram());
        EXPECT_EQ(Mode(Beside()), 0700u);
    }
    umask(mask);
    EXPECT_EQ(Names(), QStringList());
}

TEST_F(TemporaryFolderTest, IsClosedToOthersWhereTheyMayReadIt) {
    for (const mode_t mode : {0755, 0750, 0705, 0711, 0701}) {
        Make(Beside(), mode);
        EXPECT_EQ(TemporaryFolder(), BesideProgram());
        EXPECT_EQ(Mode(Beside()), 0700u) << mode;
        rmdir(Beside().constData());
    }
    Make(Beside(), 0777);
    Make(Native("websmide"), 0755);
    Make(Native("websmide/temp"), 0755);
    EXPECT_EQ(TemporaryFolder(), Own());
    EXPECT_EQ(Mode(Native("websmide")), 0700u);
    EXPECT_EQ(Mode(Native("websmide/temp")), 0700u);
}

TEST_F(TemporaryFolderTest, IsTheUsersOwnWhereOthersMayWrite) {
    for (const mode_t mode : {0775, 0757, 01777}) {
        Make(Beside(), mode);
        EXPECT_EQ(TemporaryFolder(), Own());
        EXPECT_EQ(Mode(Beside()), mode);
        EXPECT_EQ(Mode(Native("websmide")), 0700u);
        EXPECT_EQ(Mode(Native("websmide/temp")), 0700u);
        rmdir(Beside().constData());
    }
}

TEST_F(TemporaryFolderTest, IsTheUsersOwnWhereALinkStands) {
    Make(Native("annan"), 0755);
    for (const QByteArray& target : {Native("annan"), Native("saknas")}) {
        ASSERT_EQ(symlink(target.constData(), Beside().constData()), 0);
        EXPECT_EQ(TemporaryFolder(), Own());
        unlink(Beside().constData());
    }
    EXPECT_EQ(Names(), (QStringList{"annan", "websmide"}));
    EXPECT_EQ(Mode(Native("annan")), 0755u);
    QFile file(QFile::decodeName(Beside()));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(TemporaryFolder(), Own());
    EXPECT_TRUE(file.remove());
}

TEST_F(TemporaryFolderTest, IsTheUsersOwnWhereItBelongsToSomebodyElse) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can give folders away";
    }
    Make(Beside(), 0755);
    GiveAway(Beside());
    EXPECT_EQ(TemporaryFolder(), Own());
    EXPECT_EQ(Mode(Beside()), 0755u);
}

TEST_F(TemporaryFolderTest, IsTheUsersOwnWhereItCannotBeWritten) {
    ASSERT_EQ(chmod(folder_.Native().constData(), 0777), 0);
    for (const mode_t mode : {0500, 0555}) {
        Make(Beside(), mode);
        if (geteuid() == 0) {
            GiveAway(Beside());  // nobody's own, so that nothing but the mode stands in the way
        }
        EXPECT_TRUE(AsNobody(UsesOwn())) << mode;
        EXPECT_EQ(Mode(Beside()), mode);
        rmdir(Beside().constData());
    }
    // The same folder with a mode that lets its owner write.
    Make(Beside(), 0700);
    if (geteuid() == 0) {
        GiveAway(Beside());
    }
    EXPECT_TRUE(AsNobody([] { return TemporaryFolder() == BesideProgram(); }));
}

// As after an installation: the program's folder is the system's.
TEST_F(TemporaryFolderTest, IsTheUsersOwnWhereTheProgramsFolderCannotBeWritten) {
    ASSERT_EQ(chmod(folder_.Native().constData(), 0777), 0);
    const QByteArray program = *ToNative(ProgramFolder());
    const mode_t mode = Mode(program);
    ASSERT_EQ(chmod(program.constData(), 0555), 0);
    const bool used = AsNobody(UsesOwn());
    chmod(program.constData(), mode);
    EXPECT_TRUE(used);
    EXPECT_FALSE(std::filesystem::exists(Beside().toStdString()));
}

TEST_F(TemporaryFolderTest, IsNowhereWhereTheUsersOwnIsNotSafeEither) {
    Make(Beside(), 0777);
    Make(Native("annan"), 0700);
    Make(Native("annan/temp"), 0700);
    ASSERT_EQ(symlink("annan", Native("websmide").constData()), 0);
    EXPECT_EQ(TemporaryFolder(), QString());
    unlink(Native("websmide").constData());
    Make(Native("websmide"), 0777);
    EXPECT_EQ(TemporaryFolder(), QString());
    ASSERT_EQ(chmod(Native("websmide").constData(), 0700), 0);
    ASSERT_EQ(symlink("../annan", Native("websmide/temp").constData()), 0);
    EXPECT_EQ(TemporaryFolder(), QString());
    unlink(Native("websmide/temp").constData());
    EXPECT_EQ(TemporaryFolder(), Own());
    ASSERT_EQ(chmod(Native("websmide/temp").constData(), 0770), 0);
    EXPECT_EQ(TemporaryFolder(), QString());
    qputenv("XDG_CACHE_HOME", "/dev/null/saknas");
    EXPECT_EQ(TemporaryFolder(), QString());
}

TEST_F(TemporaryFolderTest, IsNowhereWhereTheUsersOwnBelongsToSomebodyElse) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can give folders away";
    }
    Make(Beside(), 0777);
    EXPECT_EQ(TemporaryFolder(), Own());
    GiveAway(Native("websmide/temp"));
    EXPECT_EQ(TemporaryFolder(), QString());
    rmdir(Native("websmide/temp").constData());
    GiveAway(Native("websmide"));
    EXPECT_EQ(TemporaryFolder(), QString());
}

}  // namespace
}  // namespace platform
