#pragma once
// A disk in memory, which may be full and may be read-only.

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <utility>

#include "ftp/engine/net/local_files.h"

namespace fuzz {

class MemoryFiles : public ftp::LocalFiles {
 public:
    /// Called when a file takes the place of its target, with all its bytes.
    using Committed = std::function<void(const std::string& path, const std::string& bytes)>;
    explicit MemoryFiles(Committed committed) : committed_(std::move(committed)) {}

    std::map<std::string, std::string> files;
    std::size_t space = static_cast<std::size_t>(-1);  // for all the bytes that are written
    std::size_t cut = 0;  // so many bytes a source loses behind its reader's back

    ftp::Result<std::unique_ptr<ftp::SourceFile>> OpenSource(const std::string& path) override {
        const auto file = files.find(path);
        if (file == files.end()) return ftp::Fail(ftp::FailureKind::LocalNotFound, path);
        return std::unique_ptr<ftp::SourceFile>(std::make_unique<Source>(file->second, cut));
    }
    ftp::Result<std::unique_ptr<ftp::TargetFile>> CreateTarget(const std::string& path) override {
        if (path.empty()) return ftp::Fail(ftp::FailureKind::LocalDenied, path);
        return std::unique_ptr<ftp::TargetFile>(std::make_unique<Target>(*this, path));
    }

 private:
    class Source : public ftp::SourceFile {
     public:
        Source(std::string bytes, std::size_t cut) : bytes_(std::move(bytes)), cut_(cut) {}
        std::int64_t Size() const override { return static_cast<std::int64_t>(bytes_.size()); }
        ftp::Result<std::size_t> Read(std::span<char> into) override {
            const std::size_t end = bytes_.size() - std::min(cut_, bytes_.size());
            const std::size_t size = std::min(into.size(), end - std::min(at_, end));
            std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(at_), size, into.begin());
            at_ += size;
            return size;
        }
        ftp::Result<> Seek(std::int64_t offset) override {
            at_ = static_cast<std::size_t>(offset);
            return {};
        }

     private:
        std::string bytes_;
        std::size_t cut_;
        std::size_t at_ = 0;
    };

    class Target : public ftp::TargetFile {
     public:
        Target(MemoryFiles& disk, std::string path) : disk_(disk), path_(std::move(path)) {}
        ftp::Result<> Append(std::span<const char> bytes) override {
            if (bytes.size() > disk_.space) return ftp::Fail(ftp::FailureKind::LocalDiskFull, path_);
            disk_.space -= bytes.size();
            bytes_.append(bytes.begin(), bytes.end());
            return {};
        }
        ftp::Result<> Commit() override {
            disk_.committed_(path_, bytes_);
            disk_.files[path_] = bytes_;
            return {};
        }

     private:
        MemoryFiles& disk_;
        std::string path_, bytes_;
    };

    Committed committed_;
};

}  // namespace fuzz
