#pragma once
// The volumes behind the drive letters, and the translation of paths by them. Plain functions of their input.

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

#include "platform/drive_path.h"

namespace platform {

/// Mount points of the removable and network volumes in a table of the form of /proc/self/mountinfo
/// (proc(5)), unescaped, each once, in byte order. Lines that do not have the form are passed over.
QList<QByteArray> VolumesIn(const QByteArray& mountinfo);

/// Hands out drive letters. A mount point keeps its letter for the life of the object, also while nothing is
/// mounted there, so that a path that was shown never comes to mean another volume.
class DriveLetters {
 public:
    /// C: and then those of `mount_points` that have a letter, by letter. New ones take the next free letters
    /// in the order given; when Z: is taken the rest go without.
    QList<Drive> Assign(const QList<QByteArray>& mount_points);

 private:
    QList<QByteArray> by_letter_;  // from D: onward
};

QString FromNative(const QByteArray& native, const QList<Drive>& drives);
std::optional<QByteArray> ToNative(const QString& path, const QList<Drive>& drives);

}  // namespace platform
