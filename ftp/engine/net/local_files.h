#pragma once
// The engine's view of the local disk: small enough that a full disk is a test and not a hope.
// Paths are native. Worker's thread; calls block for as long as the disk does.

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "ftp/engine/wire/failure.h"

namespace ftp {

/// A plain file open for reading, read from the start.
class SourceFile {
 public:
    virtual ~SourceFile() = default;
    /// Bytes when it was opened.
    virtual std::int64_t Size() const = 0;
    /// Where the next bytes are to come from, counted from the start.
    virtual Result<> Seek(std::int64_t offset) = 0;
    /// The next bytes, as many as fit; 0 at the end.
    virtual Result<std::size_t> Read(std::span<char> into) = 0;
    /// For sendfile; shares its position with Read. -1 where there is none.
    virtual int Handle() const { return -1; }
};

/// A file on its way to replace another. Destroyed without Commit it leaves no trace.
class TargetFile {
 public:
    virtual ~TargetFile() = default;
    virtual Result<> Append(std::span<const char> bytes) = 0;
    /// Puts the file in the target's place. An old file there keeps its permissions and is not lost by a
    /// power failure either: the new bytes are on the disk before the names change.
    virtual Result<> Commit() = 0;
};

class LocalFiles {
 public:
    virtual ~LocalFiles() = default;
    /// LocalNotFound, LocalDenied, LocalPath when it is no plain file.
    virtual Result<std::unique_ptr<SourceFile>> OpenSource(const std::string& path) = 0;
    /// Makes a temporary file in the target's folder. LocalDenied, LocalDiskFull, LocalPath when the folder
    /// does not exist or the target is something else than a plain file.
    virtual Result<std::unique_ptr<TargetFile>> CreateTarget(const std::string& path) = 0;
};

/// The real disk.
std::unique_ptr<LocalFiles> MakeLocalFiles();

}  // namespace ftp
