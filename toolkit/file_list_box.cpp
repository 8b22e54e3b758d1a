#include "toolkit/file_controls.h"

namespace toolkit {

FileListBox::FileListBox(QWidget* parent) : QWidget(parent) {}

void FileListBox::SetPattern(const QString& pattern) {
    if (pattern == pattern_) return;
    pattern_ = pattern;
    Refresh();
}

void FileListBox::SetPath(const QString& path) {
    if (path == path_) return;
    path_ = path;
    Refresh();
}

void FileListBox::Refresh() {
    files_ = platform::ReadFolder(path_).value_or(std::vector<platform::FolderEntry>());
    std::erase_if(files_, [this](const platform::FolderEntry& entry) {
        return entry.folder || !platform::MatchesPattern(entry.name, pattern_);
    });
}

QString FileListBox::List(int row) const {
    return row >= 0 && row < ListCount() ? files_[static_cast<std::size_t>(row)].name : QString();
}

}  // namespace toolkit
