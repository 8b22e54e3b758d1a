#pragma once
// Changing the local file system, in the drive-letter notation. Nothing is thrown. Any thread.

#include <QString>

#include "platform/file_result.h"

namespace platform {

/// The folder above must exist. An entry that is equal but for case stands in the way too.
FileResult MakeFolder(const QString& path);

/// `from` is taken literally: the very entry of that name, or NotFound. Never replaces another entry, not
/// even one that is equal but for case; changing only the case of a name works.
FileResult RenameFile(const QString& from, const QString& to);

/// Removes a file or a link, never a folder. The name is taken literally: the very entry of that name, or
/// NotFound.
FileResult DeleteFile(const QString& path);

/// Where files for a moment's use are kept: "temp" in the program's folder, else a folder of the user's own
/// ($XDG_CACHE_HOME/websmide/temp). Made when missing, open to the user only. A place is used only if it is a
/// folder (no link) that belongs to the user, can be written, and cannot be written by anybody else; where
/// others may read it that is taken from them. Empty when neither place is so: then there is nowhere safe to
/// keep a file, and the caller does without.
QString TemporaryFolder();

}  // namespace platform
