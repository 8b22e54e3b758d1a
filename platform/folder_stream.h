#pragma once
// The entries of one native folder, read one by one. For the inside of platform/ only.

#include <dirent.h>

#include <QByteArray>
#include <memory>

namespace platform {

class FolderStream {
 public:
    explicit FolderStream(const QByteArray& native);

    /// The next entry but "." and ".."; null at the end, or when reading failed.
    const dirent* Next();
    /// The folder could not be opened, or not be read to its end.
    bool Failed() const { return failed_; }
    /// For the calls that name an entry relative to its folder.
    int Descriptor() const { return dirfd(folder_.get()); }

 private:
    struct Closer {
        void operator()(DIR* folder) const { closedir(folder); }
    };
    std::unique_ptr<DIR, Closer> folder_;
    bool failed_;
};

}  // namespace platform
