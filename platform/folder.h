#pragma once
// Reading the local file system, in the drive-letter notation. Any thread.

#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace platform {

struct FolderEntry {
    QString name;               // in the notation, case as on the disk
    std::int64_t size = 0;      // bytes; 0 when it cannot be read
    std::int64_t modified = 0;  // seconds since 1970, UTC; 0 when it cannot be read
    bool folder = false;        // a folder, or a link to one
    bool plain = false;         // a plain file, or a link to one
};

/// All entries but "." and "..", hidden ones included, sorted by name without regard to case (then as
/// written). Each entry's size and time are read once. 100,000 entries take well under a second. Nothing when
/// the folder cannot be read.
std::optional<std::vector<FolderEntry>> ReadFolder(const QString& path);

/// The subfolders only, same order; much cheaper in a folder of many files.
std::optional<QStringList> ReadSubfolders(const QString& path);

bool FolderExists(const QString& path);

/// Which folder a path leads to: the same for every path to it, through links too.
struct FolderIdentity {
    std::uint64_t volume = 0, number = 0;
    bool operator==(const FolderIdentity&) const = default;
};
/// Nothing where there is no folder.
std::optional<FolderIdentity> IdentityOf(const QString& path);

/// Length of a plain file in bytes, or nothing.
std::optional<std::int64_t> FileLength(const QString& path);

/// Whether `name` matches the patterns, separated by ";" as in "*.htm*;*.txt": "*" any run, "?" one
/// character, case ignored. An empty pattern and "*.*" match every name.
bool MatchesPattern(const QString& name, const QString& patterns);

/// The folder where the executable stands, and the process's current folder, in the notation.
QString ProgramFolder();
QString CurrentFolder();

}  // namespace platform
