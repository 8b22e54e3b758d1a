#include "platform/file_changes.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>

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

TEST_F(FileChangesTest, RenamesWithoutReplacing) {
    Write("A.txt", "a");
    Write("B.txt", "b");
    EXPECT_EQ(RenameFile(Path("a.TXT"), Path("B.txt")), FileResult::AlreadyExists);
    EXPECT_EQ(RenameFile(Path("A.txt"), Path("b.TXT")), FileResult::AlreadyExists);
    EXPECT_EQ(RenameFile(Path("saknas"), Path("C")), FileResult::NotFound);
    EXPECT_EQ(RenameFile(Path("A.txt"), Path("saknas\\A.txt")), FileResult::NotFound);
    EXPECT_EQ(RenameFile(Path("A.txt"), "C"), FileResult::PathError);
    EXPECT_EQ(Names(), (QStringList{"A.txt", "B.txt"}));
    EXPECT_EQ(RenameFile(Path("a.txt"), Path("Ny å.htm")), FileResult::Done);
    EXPECT_EQ(Content("Ny å.htm"), "a");
    EXPECT_EQ(Content("B.txt"), "b");
}

TEST_F(FileChangesTest, RenamesToAnotherCase) {
    Write("index.HTM", "a");
    EXPECT_EQ(RenameFile(Path("index.htm"), Path("INDEX.htm")), FileResult::Done);
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
    EXPECT_EQ(DeleteFile(Path("B")), FileResult::Done);
    EXPECT_EQ(DeleteFile(Path("pekare")), FileResult::Done);
    EXPECT_NE(DeleteFile(Path("mapp")), FileResult::Done);
    EXPECT_EQ(DeleteFile(Path("saknas")), FileResult::NotFound);
    EXPECT_EQ(DeleteFile(""), FileResult::PathError);
    EXPECT_EQ(Names(), (QStringList{"A", "mapp"}));
}

TEST_F(FileChangesTest, LeavesAloneWhatItCannotTellApart) {
    Write("fil", "1");
    Write("FIL", "2");
    EXPECT_EQ(DeleteFile(Path("Fil")), FileResult::NotFound);
    EXPECT_EQ(RenameFile(Path("Fil"), Path("ny")), FileResult::NotFound);
    EXPECT_EQ(Names().size(), 2);
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

TEST_F(FileChangesTest, TheTemporaryFolderIsBesideTheProgramOrTheUsersOwn) {
    qputenv("XDG_CACHE_HOME", folder_.Native());
    ASSERT_EQ(chmod(folder_.Native().constData(), 0777), 0);
    const QString beside = Join(ProgramFolder(), "temp");
    EXPECT_EQ(TemporaryFolder(), beside);
    EXPECT_TRUE(FolderExists(beside));
    const auto native = *ToNative(beside);
    ASSERT_EQ(chmod(native.constData(), 0500), 0);
    EXPECT_TRUE(AsNobody([&] {
        return TemporaryFolder() == Path("websmide\\temp") &&
               MakeFolder(Path("websmide\\temp\\x")) == FileResult::Done;
    }));
    ASSERT_EQ(chmod(native.constData(), 0700), 0);
    ASSERT_TRUE(QDir(QFile::decodeName(native)).removeRecursively());
}

}  // namespace
}  // namespace platform
