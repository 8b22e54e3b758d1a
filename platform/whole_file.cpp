#include "platform/whole_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace platform {
namespace {

class Descriptor {
 public:
    explicit Descriptor(int value) : value_(value) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return value_; }
    bool Close() {
        const int value = std::exchange(value_, -1);
        return value < 0 || close(value) == 0;
    }

 private:
    int value_;
};

std::int64_t Nanoseconds(const timespec& time) {
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

QByteArray FolderOf(const QByteArray& path) {
    return path.left(std::max<qsizetype>(path.lastIndexOf('/'), 1));
}

// The file that a chain of links names, also when it does not exist yet.
QByteArray LinkTarget(QByteArray path) {
    constexpr int kMaxLinks = 40;  // as the kernel
    char target[4096];
    for (int i = 0; i < kMaxLinks; ++i) {
        const ssize_t length = readlink(path.constData(), target, sizeof target);
        if (length < 0) {
            break;
        }
        const QByteArray link(target, length);
        path = link.startsWith('/') ? link : FolderOf(path) + '/' + link;
    }
    return path;
}

bool WriteAll(int descriptor, const QByteArray& bytes) {
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            write(descriptor, bytes.constData() + written, static_cast<size_t>(bytes.size() - written));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        written += std::max<ssize_t>(count, 0);
    }
    return true;
}

}  // namespace

std::optional<FileStamp> StampOf(const QByteArray& path) {
    struct stat status;
    if (stat(path.constData(), &status) != 0) {
        return std::nullopt;
    }
    return FileStamp{status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
                     Nanoseconds(status.st_ctim)};
}

FileContent ReadWholeFile(const QByteArray& path, qsizetype limit) {
    // Not blocking: a pipe in the file's place must not stop the program.
    Descriptor file(open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status;
    if (file.Get() < 0 || fstat(file.Get(), &status) != 0) {
        return {LastFileError(), {}};
    }
    if (!S_ISREG(status.st_mode)) {
        return {FileResult::PathError, {}};
    }
    QByteArray bytes(std::min<qsizetype>(status.st_size, limit), Qt::Uninitialized);
    qsizetype size = 0;
    while (size < bytes.size()) {
        const ssize_t count = read(file.Get(), bytes.data() + size, static_cast<size_t>(bytes.size() - size));
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            return {LastFileError(), {}};
        }
        size += std::max<ssize_t>(count, 0);
    }
    bytes.truncate(size);
    return {FileResult::Done, bytes};
}

FileResult ReplaceWholeFile(const QByteArray& path, const QByteArray& bytes) {
    const QByteArray target = LinkTarget(path);
    QByteArray temporary = target + ".XXXXXX";
    Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (file.Get() < 0) {
        return LastFileError();
    }
    if (!WriteAll(file.Get(), bytes) || fsync(file.Get()) != 0 || !file.Close() ||
        rename(temporary.constData(), target.constData()) != 0) {
        const FileResult result = LastFileError();
        unlink(temporary.constData());
        return result;
    }
    const Descriptor folder(open(FolderOf(target).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    fsync(folder.Get());  // not every file system has it for folders; the file itself is safe by now
    return FileResult::Done;
}

FileResult SetFileAside(const QByteArray& path, const QByteArray& suffix, QByteArray& aside) {
    struct stat status;
    int number = 1;
    do {
        aside = path + suffix + QByteArray::number(number++);
    } while (lstat(aside.constData(), &status) == 0);
    return rename(path.constData(), aside.constData()) == 0 ? FileResult::Done : LastFileError();
}

FileResult MakePrivateFolder(const QByteArray& path) {
    struct stat status;
    if (stat(path.constData(), &status) == 0) {
        return S_ISDIR(status.st_mode) ? FileResult::Done : FileResult::PathError;
    }
    if (errno == ENOENT && path.lastIndexOf('/') > 0) {
        const FileResult parent = MakePrivateFolder(FolderOf(path));
        if (parent != FileResult::Done) {
            return parent;
        }
    }
    return mkdir(path.constData(), S_IRWXU) == 0 || errno == EEXIST ? FileResult::Done : LastFileError();
}

FolderLock::FolderLock(const QByteArray& folder)
    : descriptor_(open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    while (descriptor_ >= 0 && flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
    }
}

FolderLock::~FolderLock() {
    if (descriptor_ >= 0) {
        flock(descriptor_, LOCK_UN);  // a child process may hold a copy of the descriptor
        close(descriptor_);
    }
}

}  // namespace platform
