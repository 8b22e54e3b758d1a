#include "platform/file_changes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QStandardPaths>
#include <cerrno>
#include <cstdio>

#include "platform/drive_path.h"
#include "platform/folder.h"
#include "platform/whole_file.h"

namespace platform {
namespace {

FileResult Outcome(int returned) {
    return returned == 0 ? FileResult::Done : LastFileError();
}

// One entry, perhaps under two spellings where the file system itself ignores case. Two names of one file are
// two entries.
bool SameEntry(const QByteArray& a, const QByteArray& b) {
    struct stat first, second;
    return a == b || (lstat(a.constData(), &first) == 0 && lstat(b.constData(), &second) == 0 &&
                      first.st_dev == second.st_dev && first.st_ino == second.st_ino &&
                      (S_ISDIR(first.st_mode) || first.st_nlink == 1));
}

bool Exists(const QByteArray& native) {
    struct stat status;
    return lstat(native.constData(), &status) == 0;
}

// To a name that nothing has, also when something gets it at this moment.
int RenameToNew(const QByteArray& from, const QByteArray& to) {
    const int returned = renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE);
    const bool unknown = returned != 0 && (errno == EINVAL || errno == ENOSYS);  // to the file system
    return unknown ? rename(from.constData(), to.constData()) : returned;
}

// A folder that others could change is not ours: what lies there would not be what we put there.
bool IsOwn(int folder) {
    struct stat status;
    return fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0 &&
           faccessat(folder, ".", R_OK | W_OK | X_OK, AT_EACCESS) == 0;
}

bool IsClosedToOthers(int folder) {
    struct stat status;
    return fstat(folder, &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

// Makes the folder when it is missing, and closes it to others when it is ours; not through a link. Some file
// systems take a mode and do not keep it.
bool MakeOwnFolder(const QByteArray& native) {
    mkdir(native.constData(), S_IRWXU);
    const int folder = open(native.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) {
        return false;
    }
    const bool closed = IsOwn(folder) && (IsClosedToOthers(folder) ||
                                          (fchmod(folder, S_IRWXU) == 0 && IsClosedToOthers(folder)));
    close(folder);
    return closed;
}

QByteArray NameOf(const QByteArray& native) {
    return native.sliced(native.lastIndexOf('/') + 1);
}

}  // namespace

FileResult MakeFolder(const QString& path) {
    const auto native = Resolve(path);
    return native ? Outcome(mkdir(native->constData(), 0777)) : FileResult::PathError;
}

FileResult RenameFile(const QString& from, const QString& to) {
    const auto source = ToNative(from);
    const auto standing = Resolve(to);
    const auto written = ToNative(to);
    if (!source || !standing || !written) {
        return FileResult::PathError;
    }
    if (!Exists(*source)) {
        return LastFileError();
    }
    const QByteArray target = standing->left(standing->lastIndexOf('/') + 1) + NameOf(*written);
    if (!Exists(*standing)) {
        return Outcome(RenameToNew(*source, target));
    }
    return SameEntry(*source, *standing) ? Outcome(rename(source->constData(), target.constData()))
                                         : FileResult::AlreadyExists;
}

FileResult DeleteFile(const QString& path) {
    const auto native = ToNative(path);
    return native ? Outcome(unlink(native->constData())) : FileResult::PathError;
}

QString TemporaryFolder() {
    const QString beside = Join(ProgramFolder(), QStringLiteral("temp"));
    const auto native = ToNative(beside);
    if (native && MakeOwnFolder(*native)) {
        return beside;
    }
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const QByteArray own = QFile::encodeName(cache) + "/websmide";
    MakePrivateFolder(QFile::encodeName(cache));
    return MakeOwnFolder(own) && MakeOwnFolder(own + "/temp") ? FromNative(own + "/temp") : QString();
}

}  // namespace platform
