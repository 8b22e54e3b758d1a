#include "platform/file_result.h"

#include <cerrno>

namespace platform {

FileResult LastFileError() {
    switch (errno) {
        case ENOENT:
            return FileResult::NotFound;
        case EEXIST:
            return FileResult::AlreadyExists;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return FileResult::DiskFull;
        case EACCES:
        case EPERM:
        case EROFS:
            return FileResult::Denied;
        default:
            return FileResult::PathError;
    }
}

}  // namespace platform
