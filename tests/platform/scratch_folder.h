#pragma once
// A folder of its own for a test, removed with all that is in it, names that are not UTF-8 included.

#include <QString>
#include <cstdlib>
#include <filesystem>

class ScratchFolder {
 public:
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "websmide-test-XXXXXX").native();
        path_ = mkdtemp(name.data());
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    QString Path() const { return QString::fromStdString(path_.native()); }
    QString FilePath(const QString& name) const { return Path() + u'/' + name; }
    QByteArray Native() const { return QByteArray::fromStdString(path_.native()); }
    QByteArray Native(const QByteArray& name) const { return Native() + '/' + name; }

 private:
    std::filesystem::path path_;
};
