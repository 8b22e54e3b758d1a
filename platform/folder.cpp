#include "platform/folder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QCoreApplication>
#include <QFile>
#include <algorithm>
#include <filesystem>
#include <utility>

#include "platform/drive_path.h"
#include "platform/folder_stream.h"

namespace platform {
namespace {

struct SortKey {
    QString lowered;
    qsizetype index;
};

// Puts the items in order of name without regard to case; each name is lowered once.
template <typename List, typename NameOf>
void SortByName(List& items, NameOf name_of) {
    std::vector<SortKey> keys;
    keys.reserve(static_cast<size_t>(items.size()));
    for (const auto& item : items) {
        keys.push_back({name_of(item).toLower(), static_cast<qsizetype>(keys.size())});
    }
    const auto item = [&](const SortKey& key) -> auto& {
        return items[static_cast<typename List::size_type>(key.index)];
    };
    std::ranges::sort(keys, [&](const SortKey& a, const SortKey& b) {
        const int order = a.lowered.compare(b.lowered);
        return order != 0 ? order < 0 : name_of(item(a)) < name_of(item(b));
    });
    List sorted;
    sorted.reserve(items.size());
    for (const SortKey& key : keys) {
        sorted.push_back(std::move(item(key)));
    }
    items = std::move(sorted);
}

FolderEntry ReadEntry(const FolderStream& stream, const dirent& entry) {
    FolderEntry result{NameFromNative(entry.d_name)};
    struct stat status;
    if (fstatat(stream.Descriptor(), entry.d_name, &status, 0) == 0) {
        result.folder = S_ISDIR(status.st_mode);
        result.size = status.st_size;
        result.modified = status.st_mtim.tv_sec;
    }
    return result;
}

bool IsFolder(const FolderStream& stream, const dirent& entry) {
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) {
        return entry.d_type == DT_DIR;
    }
    struct stat status;
    return fstatat(stream.Descriptor(), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

std::optional<struct stat> StatusOf(const QString& path) {
    const auto native = Resolve(path);
    struct stat status;
    if (!native || stat(native->constData(), &status) != 0) {
        return std::nullopt;
    }
    return status;
}

QString FromSystem(const std::filesystem::path& path) {
    return FromNative(QByteArray::fromStdString(path.native()));
}

}  // namespace

std::optional<std::vector<FolderEntry>> ReadFolder(const QString& path) {
    const auto native = Resolve(path);
    if (!native) {
        return std::nullopt;
    }
    std::vector<FolderEntry> entries;
    FolderStream stream(*native);
    while (const dirent* entry = stream.Next()) {
        entries.push_back(ReadEntry(stream, *entry));
    }
    if (stream.Failed()) {
        return std::nullopt;
    }
    SortByName(entries, [](const FolderEntry& entry) -> const QString& { return entry.name; });
    return entries;
}

std::optional<QStringList> ReadSubfolders(const QString& path) {
    const auto native = Resolve(path);
    if (!native) {
        return std::nullopt;
    }
    QStringList names;
    FolderStream stream(*native);
    while (const dirent* entry = stream.Next()) {
        if (IsFolder(stream, *entry)) {
            names += NameFromNative(entry->d_name);
        }
    }
    if (stream.Failed()) {
        return std::nullopt;
    }
    SortByName(names, [](const QString& name) -> const QString& { return name; });
    return names;
}

bool FolderExists(const QString& path) {
    const auto status = StatusOf(path);
    return status && S_ISDIR(status->st_mode);
}

std::optional<std::int64_t> FileLength(const QString& path) {
    const auto status = StatusOf(path);
    if (!status || !S_ISREG(status->st_mode)) {
        return std::nullopt;
    }
    return status->st_size;
}

QString ProgramFolder() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? FromNative(QFile::encodeName(QCoreApplication::applicationDirPath()))
                 : FromSystem(program.parent_path());
}

QString CurrentFolder() {
    std::error_code error;
    return FromSystem(std::filesystem::current_path(error));
}

}  // namespace platform
