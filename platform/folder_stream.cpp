#include "platform/folder_stream.h"

#include <cerrno>
#include <cstring>

namespace platform {

FolderStream::FolderStream(const QByteArray& native)
    : folder_(opendir(native.constData())), failed_(folder_ == nullptr) {}

const dirent* FolderStream::Next() {
    if (failed_) {
        return nullptr;
    }
    errno = 0;
    const dirent* entry = readdir(folder_.get());
    while (entry && (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)) {
        entry = readdir(folder_.get());
    }
    failed_ = !entry && errno != 0;
    return entry;
}

}  // namespace platform
