#pragma once
// What came of touching a file, as the classic run-time number.

namespace platform {

enum class FileResult {
    Done = 0,
    NotFound = 53,
    AlreadyExists = 58,
    DiskFull = 61,
    Denied = 70,
    PathError = 75
};

/// The result for the calling thread's errno.
FileResult LastFileError();

}  // namespace platform
