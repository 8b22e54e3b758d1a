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

// Puts the items in order of name without regard to case; each name is lowered once.
template <typename Items, typename NameOf>
void SortByName(Items& items, NameOf name_of) {
    struct Keyed {
        QString lowered;
        typename Items::value_type item;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(static_cast<size_t>(items.size()));
    for (auto& item : items) {
        keyed.push_back({name_of(item).toLower(), std::move(item)});
    }
    std::ranges::sort(keyed, [&](const Keyed& a, const Keyed& b) {
        const int order = a.lowered.compare(b.lowered);
        return order != 0 ? order < 0 : name_of(a.item) < name_of(b.item);
    });
    std::ranges::transform(keyed, items.begin(), [](Keyed& entry) { return std::move(entry.item); });
}

FolderEntry ReadEntry(const FolderStream& stream, const dirent& entry) {
    FolderEntry result{NameFromNative(entry.d_name)};
    struct stat status;
    if (fstatat(stream.Descriptor(), entry.d_name, &status, 0) == 0) {
        result.folder = S_ISDIR(status.st_mode);
        result.plain = S_ISREG(status.st_mode);
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

std::optional<FolderIdentity> IdentityOf(const QString& path) {
    const auto status = StatusOf(path);
    if (!status || !S_ISDIR(status->st_mode)) {
        return std::nullopt;
    }
    return FolderIdentity{status->st_dev, status->st_ino};
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
