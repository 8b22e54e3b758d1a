#include "platform/mount_table.h"

#include <algorithm>
#include <array>

namespace platform {
namespace {

constexpr int kFurtherLetters = 'Z' - 'C';

bool IsBelow(const QByteArray& path, const QByteArray& folder) {
    return path.startsWith(folder + '/');
}

// Blanks, tabs, line feeds and backslashes stand as three octal digits after a backslash.
QByteArray Unescape(const QByteArray& field) {
    QByteArray text;
    for (qsizetype i = 0; i < field.size(); ++i) {
        bool octal = false;
        const uint code = field[i] == '\\' ? field.sliced(i + 1).left(3).toUInt(&octal, 8) : 0;
        if (octal && code <= 0xFF && i + 3 < field.size()) {
            text += static_cast<char>(code);
            i += 3;
        } else {
            text += field[i];
        }
    }
    return text;
}

bool IsVolume(const QByteArray& mount_point, const QByteArray& type) {
    static const std::array folders = {QByteArray("/media"), QByteArray("/run/media"), QByteArray("/mnt")};
    static const std::array types = {QByteArray("cifs"),  QByteArray("smb3"),       QByteArray("nfs"),
                                     QByteArray("nfs4"),  QByteArray("fuse.sshfs"), QByteArray("davfs"),
                                     QByteArray("vfat"),  QByteArray("exfat"),      QByteArray("ntfs"),
                                     QByteArray("ntfs3"), QByteArray("fuseblk"),    QByteArray("iso9660"),
                                     QByteArray("udf")};
    // The firmware's own partition is vfat too, but nobody's removable volume.
    const bool firmware = mount_point == "/boot" || IsBelow(mount_point, "/boot") || mount_point == "/efi";
    if (mount_point == "/" || firmware || type == "autofs") {
        return false;
    }
    return std::ranges::count(types, type) > 0 || std::ranges::any_of(folders, [&](const QByteArray& folder) {
               return IsBelow(mount_point, folder);
           });
}

Drive MakeDrive(int letter, const QByteArray& native) {
    return {QChar(letter) + QStringLiteral(":\\"), native,
            NameFromNative(native.sliced(native.lastIndexOf('/') + 1))};
}

// The native path of `names` below `root`; "." and ".." are resolved by name alone, never above the root.
QByteArray Below(const QByteArray& root, const QList<QByteArray>& names) {
    QList<QByteArray> path;
    for (const QByteArray& name : names) {
        if (name == "..") {
            path.erase(path.isEmpty() ? path.end() : path.end() - 1, path.end());
        } else if (!name.isEmpty() && name != ".") {
            path += name;
        }
    }
    const QByteArray base = root == "/" ? QByteArray() : root;
    return path.isEmpty() ? root : base + '/' + path.join('/');
}

}  // namespace

QList<QByteArray> VolumesIn(const QByteArray& mountinfo) {
    QList<QByteArray> volumes;
    for (const QByteArray& line : mountinfo.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype dash = fields.indexOf("-", 6);
        if (dash < 0 || dash + 1 >= fields.size()) {
            continue;
        }
        const QByteArray mount_point = Unescape(fields[4]);
        if (mount_point.startsWith('/') && IsVolume(mount_point, fields[dash + 1])) {
            volumes += mount_point;
        }
    }
    std::ranges::sort(volumes);
    volumes.erase(std::unique(volumes.begin(), volumes.end()), volumes.end());
    return volumes;
}

QList<Drive> DriveLetters::Assign(const QList<QByteArray>& mount_points) {
    for (const QByteArray& mount_point : mount_points) {
        if (!by_letter_.contains(mount_point) && by_letter_.size() < kFurtherLetters) {
            by_letter_ += mount_point;
        }
    }
    QList<Drive> drives = {MakeDrive('C', "/")};
    for (int i = 0; i < by_letter_.size(); ++i) {
        if (mount_points.contains(by_letter_[i])) {
            drives += MakeDrive('D' + i, by_letter_[i]);
        }
    }
    return drives;
}

QString FromNative(const QByteArray& native, const QList<Drive>& drives) {
    const QByteArray path = Below("/", native.split('/'));
    const Drive* deepest = &drives.first();
    for (const Drive& drive : drives) {
        const bool inside = path == drive.native || IsBelow(path, drive.native);
        if (inside && drive.native.size() > deepest->native.size()) {
            deepest = &drive;
        }
    }
    QStringList names;
    const QByteArray rest = path == deepest->native ? QByteArray() : path.sliced(deepest->native.size());
    for (const QByteArray& name : rest.split('/')) {
        if (!name.isEmpty()) {
            names += NameFromNative(name);
        }
    }
    return deepest->root + names.join(u'\\');
}

std::optional<QByteArray> ToNative(const QString& path, const QList<Drive>& drives) {
    if (path.contains(QChar::Null)) {
        return std::nullopt;
    }
    if (path.startsWith(u'/')) {
        return Below("/", NameToNative(path).split('/'));
    }
    const bool rooted = path.size() == 2 || (path.size() > 2 && (path[2] == u'\\' || path[2] == u'/'));
    const QString root = path.left(2).toUpper() + u'\\';
    const auto drive = std::ranges::find(drives, root, &Drive::root);
    if (!rooted || drive == drives.end()) {
        return std::nullopt;
    }
    QList<QByteArray> names;
    for (const QString& name : path.sliced(2).replace(u'/', u'\\').split(u'\\')) {
        names += NameToNative(name);
    }
    return Below(drive->native, names);
}

}  // namespace platform
