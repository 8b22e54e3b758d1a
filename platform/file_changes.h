#pragma once
// Changing the local file system, in the drive-letter notation. Nothing is thrown. Any thread.

#include <QString>

#include "platform/file_result.h"

namespace platform {

/// The folder above must exist. An entry that is equal but for case stands in the way too.
FileResult MakeFolder(const QString& path);

/// Never replaces another entry, not even one that is equal but for case; changing only the case of a name
/// works.
FileResult RenameFile(const QString& from, const QString& to);

/// Removes a file or a link, never a folder.
FileResult DeleteFile(const QString& path);

/// Where files for a moment's use are kept: "temp" in the program's folder where that can be written, else a
/// folder of the user's own. Made when missing.
QString TemporaryFolder();

}  // namespace platform
