#pragma once
// Small files that are read and replaced as a whole. Paths are native. Any thread.

#include <QByteArray>
#include <cstdint>
#include <optional>

#include "platform/file_result.h"

namespace platform {

/// Tells one state of a file from another; links are followed.
struct FileStamp {
    std::uint64_t device = 0, inode = 0;
    std::int64_t size = 0, modified = 0, changed = 0;  // bytes; nanoseconds since 1970
    bool operator==(const FileStamp&) const = default;
};
std::optional<FileStamp> StampOf(const QByteArray& path);

struct FileContent {
    FileResult result = FileResult::Done;
    QByteArray bytes;
};
/// At most `limit` bytes of a plain file; anything else in its place is PathError.
FileContent ReadWholeFile(const QByteArray& path, qsizetype limit);

/// Replaces or creates the file, readable by its owner only. Whatever happens, the file is either as it was
/// or as asked for, and on the disk. A link stays, and the file that it names is replaced.
FileResult ReplaceWholeFile(const QByteArray& path, const QByteArray& bytes);

/// Gives the file the name `path` + `suffix` + a number that no file has yet; `aside` is that name.
FileResult SetFileAside(const QByteArray& path, const QByteArray& suffix, QByteArray& aside);

/// Makes the folder and those above it where missing, open to their owner only.
FileResult MakePrivateFolder(const QByteArray& path);

/// Holds other programs that lock the same folder off until destroyed. Where the file system knows no locks
/// it does nothing.
class FolderLock {
 public:
    explicit FolderLock(const QByteArray& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

 private:
    int descriptor_;
};

}  // namespace platform
