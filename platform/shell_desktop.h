#pragma once
// What the desktop knows of programs and types of documents. For the inside of platform/ only. UI thread
// only.

#include <QByteArray>
#include <optional>

namespace platform {

/// A program's entry in the desktop's menu, as native bytes.
struct DesktopProgram {
    QByteArray command;  // its Exec line
    QByteArray name;     // as shown to the user
    QByteArray entry;    // path of the entry's file
    bool needs_terminal = false;
};

/// The desktop's program for a MIME type.
std::optional<DesktopProgram> ProgramForType(const char* type);

/// Starts the desktop's program for a file or a folder. False when there is none, it cannot be started, or
/// the desktop does not answer within some seconds; when it answers later nothing is started any more.
bool OpenWithDesktop(const QByteArray& native);

}  // namespace platform
