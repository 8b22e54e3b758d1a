#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "ftp/engine/net/local_files.h"

namespace ftp {
namespace {

FailureKind KindOf(int error) {
    switch (error) {
        case ENOENT:
            return FailureKind::LocalNotFound;
        case EACCES:
        case EPERM:
        case EROFS:
            return FailureKind::LocalDenied;
        case ENOSPC:
        case EDQUOT:
            return FailureKind::LocalDiskFull;
        case ENOTDIR:
        case EISDIR:
        case ELOOP:
        case ENAMETOOLONG:
            return FailureKind::LocalPath;
        default:
            return FailureKind::LocalOther;
    }
}

tl::unexpected<Failure> LocalFailure(int error, const std::string& path) {
    return Fail(KindOf(error), path, error);
}

/// Owns a descriptor.
class Descriptor {
 public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() { Close(); }
    int Get() const { return number_; }
    bool Close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }

 private:
    int number_;
};

class PosixSource : public SourceFile {
 public:
    PosixSource(Descriptor file, std::int64_t size, std::string path)
        : file_(std::move(file)), size_(size), path_(std::move(path)) {}

    std::int64_t Size() const override { return size_; }
    int Handle() const override { return file_.Get(); }

    Result<> Seek(std::int64_t offset) override {
        if (::lseek(file_.Get(), offset, SEEK_SET) < 0) return LocalFailure(errno, path_);
        return {};
    }

    Result<std::size_t> Read(std::span<char> into) override {
        for (;;) {
            const ssize_t got = ::read(file_.Get(), into.data(), into.size());
            if (got >= 0) return static_cast<std::size_t>(got);
            if (errno != EINTR) return LocalFailure(errno, path_);
        }
    }

 private:
    Descriptor file_;
    std::int64_t size_;
    std::string path_;
};

class PosixTarget : public TargetFile {
 public:
    PosixTarget(Descriptor file, std::string temporary, std::string target, bool replaces)
        : file_(std::move(file)),
          temporary_(std::move(temporary)),
          target_(std::move(target)),
          replaces_(replaces) {}
    ~PosixTarget() override {
        if (!committed_) ::unlink(temporary_.c_str());
    }

    Result<> Append(std::span<const char> bytes) override {
        while (!bytes.empty()) {
            const ssize_t put = ::write(file_.Get(), bytes.data(), bytes.size());
            if (put >= 0) {
                bytes = bytes.subspan(static_cast<std::size_t>(put));
            } else if (errno != EINTR) {
                return LocalFailure(errno, target_);
            }
        }
        return {};
    }

    Result<> Commit() override {
        if (replaces_ && ::fdatasync(file_.Get()) != 0) return LocalFailure(errno, target_);
        if (!file_.Close()) return LocalFailure(errno, target_);
        if (::rename(temporary_.c_str(), target_.c_str()) != 0) return LocalFailure(errno, target_);
        committed_ = true;
        return {};
    }

 private:
    Descriptor file_;
    std::string temporary_, target_;
    bool replaces_;
    bool committed_ = false;
};

std::string TemporaryName() {
    std::random_device random;
    std::array<char, 40> name{};
    std::snprintf(name.data(), name.size(), ".websmide-%08x%08x.tmp", random(), random());
    return name.data();
}

/// The file that a chain of symbolic links ends at, or the path itself where there is none: a link that the
/// user made stays a link.
std::string FollowLinks(const std::string& path) {
    char* real = ::realpath(path.c_str(), nullptr);
    std::string followed = real != nullptr ? real : path;
    std::free(real);
    return followed;
}

class PosixFiles : public LocalFiles {
 public:
    Result<std::unique_ptr<SourceFile>> OpenSource(const std::string& path) override {
        // Not blocking: a named pipe in the folder must not hold the worker.
        Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (file.Get() < 0) return LocalFailure(errno, path);
        struct stat info {};
        if (::fstat(file.Get(), &info) != 0) return LocalFailure(errno, path);
        if (!S_ISREG(info.st_mode)) return Fail(FailureKind::LocalPath, path);
        return std::unique_ptr<SourceFile>(
            std::make_unique<PosixSource>(std::move(file), info.st_size, path));
    }

    Result<std::unique_ptr<TargetFile>> CreateTarget(const std::string& path) override {
        const std::string target = FollowLinks(path);
        struct stat old {};
        const bool replaces = ::lstat(target.c_str(), &old) == 0;
        if (replaces && !S_ISREG(old.st_mode)) return Fail(FailureKind::LocalPath, path);
        if (replaces && ::access(target.c_str(), W_OK) != 0) return LocalFailure(errno, path);

        const auto slash = target.rfind('/');
        const std::string folder = slash == std::string::npos ? "" : target.substr(0, slash + 1);
        if (target.size() - folder.size() > NAME_MAX) return LocalFailure(ENAMETOOLONG, path);
        const std::string temporary = folder + TemporaryName();
        Descriptor file(
            ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666));
        if (file.Get() < 0)
            return errno == ENOENT ? Fail(FailureKind::LocalPath, path) : LocalFailure(errno, path);
        if (replaces) {
            [[maybe_unused]] const int kept = ::fchmod(file.Get(), old.st_mode & 07777);  // best effort
        }
        return std::unique_ptr<TargetFile>(
            std::make_unique<PosixTarget>(std::move(file), temporary, target, replaces));
    }
};

}  // namespace

std::unique_ptr<LocalFiles> MakeLocalFiles() {
    return std::make_unique<PosixFiles>();
}

}  // namespace ftp
