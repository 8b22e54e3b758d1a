#pragma once
// Command lines as the desktop's menu entries write them, and programs started for themselves. For the inside
// of platform/ only; GLib's part of the work.

#include <QByteArray>
#include <QList>
#include <optional>

namespace platform {

/// What a command line is completed with, as native bytes.
struct CommandSubject {
    QByteArray file;   // full path
    QByteArray name;   // of the program, as shown to the user
    QByteArray entry;  // path of the menu entry's file
};

/// The arguments of an Exec line (Desktop Entry standard of freedesktop.org), the program first. The file's
/// path stands where its field code does, as a path also for the codes that ask for an address; last when
/// there is none. Nothing for a line that cannot be understood, nor for one that might execute the file: with
/// the path as the program, right after "-c", or in the middle of a longer text, where a shell might read it
/// as a command.
std::optional<QList<QByteArray>> ExpandCommand(const QByteArray& exec, const CommandSubject& subject);

bool IsInstalled(const QByteArray& program);

/// Starts a program, found by PATH, with "/" as current folder. False when it cannot be started.
bool StartProgram(const QList<QByteArray>& arguments);

/// For the child process, just before it becomes the program: makes it independent of our session and
/// terminal, in the folder `folder` (const char*), or where it is when null.
void LeaveSession(void* folder);

}  // namespace platform
