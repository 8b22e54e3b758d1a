#pragma once
// The drive-letter notation that the program speaks, and its border to the native file system.
//
// "C:\" is the root of the file system, so /home/anna is C:\home\anna; further letters are the mounted
// removable and network volumes in order of mount point. Names that the notation cannot hold (a backslash,
// bytes that are not UTF-8, the private characters used for these) are mapped into U+F000..U+F0FF and back
// without loss.

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>

namespace platform {

/// "C:\home\anna" for "/home/anna"; the deepest further volume wins ("D:\bilder" for "/media/usb/bilder").
QString FromNative(const QByteArray& native);

/// The native path for a notation path ("/home/anna" for "C:\home\anna" or "c:\home\anna\"); a native
/// absolute path typed by the user is understood too. Names are taken literally, without a look at the disk.
/// Nothing for text that is neither (no drive, an unknown drive, relative).
std::optional<QByteArray> ToNative(const QString& path);

/// As ToNative, then each name is looked up as classic file systems do: the exact name wins, else the one
/// entry that is equal but for case; with none or several the name stays as written.
std::optional<QByteArray> Resolve(const QString& path);

/// The "file" URL of a path, as other programs exchange it; empty for text that is no path.
QUrl ToUrl(const QString& path);
/// The path of a file on this computer, or nothing for any other URL.
std::optional<QString> FromUrl(const QUrl& url);

/// One name between the notation and the disk.
QString NameFromNative(const QByteArray& name);
QByteArray NameToNative(const QString& name);

struct Drive {
    QString root;       // "C:\"
    QByteArray native;  // "/"
    QString label;      // volume name or mount point's last name; may be empty
};
/// C: first, then the others by letter. Reads the mount table each time.
QList<Drive> Drives();

/// `path` + "\" + `name`, without doubling the separator.
QString Join(const QString& path, const QString& name);

}  // namespace platform
