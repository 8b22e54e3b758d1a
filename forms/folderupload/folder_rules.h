#pragma once
// The rules of the folder upload: what a scan counts and how it is shown, and how the server's folder follows
// the walk. Pure functions over paths in the drive-letter notation.

#include <QString>
#include <cstdint>
#include <optional>

namespace forms {

inline constexpr qsizetype kLengthOfRoot = 3;  // "C:\"

/// "c:\webb\" for "C:\Webb\Bilder": everything before the last name, in lower case; empty for a drive's root.
/// A separator at the end of `path` is taken away, in the caller's variable too.
QString ParentFolderOf(QString& path);
/// "bilder" for "C:\Webb\Bilder\", "c:" for a drive's root. Takes away a separator as ParentFolderOf does.
QString FolderNameOf(QString& path);

/// How many steps up lead from `previous`, which the walk has visited last, to where `folder` is made: none
/// into a child, one to a sibling (also one whose name differs only by case: the server has one folder for
/// both), at most four. A branch that ends deeper has no way back: the next folder
/// is made inside it.
int ClimbLines(QString previous, QString folder);

/// "  10 KB": whole kilobytes in groups of three, the first two blanks always there; "0 KB" for nothing.
QString KilobyteText(double kilobytes);
/// "00 tim. 05 min." at 28.8 kbit/s, at least a minute. Nothing when the seconds are beyond 32 bits.
std::optional<QString> EstimatedTime(double kilobytes);

/// What is shown of a folder tree. The texts are the state: each step reads the number that a text begins
/// with and writes the next one, roundings included.
struct FolderStatistics {
    QString folders = QStringLiteral("0 st");
    QString files = QStringLiteral("0 st");
    QString size = QStringLiteral("0 KB");
    QString time = QStringLiteral("00 tim. 00 min.");

    void CountFolder();
    /// False, and `time` stays, when there is no estimate.
    bool CountFile(std::int64_t bytes);
    /// The total as the progress strip gets it.
    std::int64_t Bytes() const;

    bool operator==(const FolderStatistics&) const = default;
};

}  // namespace forms
