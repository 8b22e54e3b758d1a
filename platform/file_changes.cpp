#include "platform/file_changes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QStandardPaths>
#include <cstdio>

#include "platform/drive_path.h"
#include "platform/folder.h"
#include "platform/whole_file.h"

namespace platform {
namespace {

FileResult Outcome(int returned) {
    return returned == 0 ? FileResult::Done : LastFileError();
}

bool SameEntry(const QByteArray& a, const QByteArray& b) {
    struct stat first, second;
    return lstat(a.constData(), &first) == 0 && lstat(b.constData(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool Exists(const QByteArray& native) {
    struct stat status;
    return lstat(native.constData(), &status) == 0;
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
    const auto source = Resolve(from);
    const auto standing = Resolve(to);
    const auto written = ToNative(to);
    if (!source || !standing || !written) {
        return FileResult::PathError;
    }
    if (Exists(*standing) && !SameEntry(*source, *standing)) {
        return FileResult::AlreadyExists;
    }
    const QByteArray target = standing->left(standing->lastIndexOf('/') + 1) + NameOf(*written);
    return Outcome(rename(source->constData(), target.constData()));
}

FileResult DeleteFile(const QString& path) {
    const auto native = Resolve(path);
    return native ? Outcome(unlink(native->constData())) : FileResult::PathError;
}

QString TemporaryFolder() {
    const QString beside = Join(ProgramFolder(), QStringLiteral("temp"));
    const auto native = Resolve(beside);
    if (native && MakePrivateFolder(*native) == FileResult::Done &&
        faccessat(AT_FDCWD, native->constData(), W_OK | X_OK, AT_EACCESS) == 0) {
        return beside;
    }
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const QByteArray own = QFile::encodeName(cache + QStringLiteral("/websmide/temp"));
    MakePrivateFolder(own);
    return FromNative(own);
}

}  // namespace platform
