#pragma once
// The desktop's own programs. UI thread only.

#include <QString>

namespace platform {

enum ShellResult { kShellNotFound = 2, kShellNoAssociation = 31, kShellStarted = 33 };

/// Opens a document with the program that the desktop associates with it. `path` is in the drive-letter
/// notation. Returns a ShellResult: above 32 when a program was started.
int OpenDocument(const QString& path);

}  // namespace platform
