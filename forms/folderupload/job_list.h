#pragma once
// The steps of a folder upload, as lines of text: "cd ..", "Skapa " + name, "Fil " + path. UI thread only.

#include <QHash>
#include <QString>
#include <vector>

#include "toolkit/lists.h"

namespace forms {

inline const QString kUpLine = QStringLiteral("cd ..");
inline const QString kFolderLine = QStringLiteral("Skapa ");
inline const QString kFileLine = QStringLiteral("Fil ");

/// Keeps beside the lines what they cannot tell: the very file that a line in lower case was made from, and
/// which files would take each other's place on the server.
class JobList {
 public:
    JobList() { Clear(); }

    /// For the list box that shows them.
    toolkit::LineModel& Lines() { return lines_; }

    void Clear();
    void AddUp(int times);
    void AddFolder(const QString& name);
    /// `name` as it is on the disk.
    void AddFile(const QString& folder_with_slash, const QString& name);
    void RemoveLast();

    int Count() const { return lines_.Count(); }
    QString Line(int row) const { return lines_.At(row); }
    /// The path of the file that a "Fil " line sends.
    QString SourceOf(int row) const;

    /// Two lines that send to the same place: the later one replaces what the earlier one has sent.
    struct Overwrite {
        int earlier, later;
    };
    const std::vector<Overwrite>& Overwrites() const { return overwrites_; }

 private:
    // A folder of the server, as far as the steps so far lead there.
    struct Place {
        int parent = -1;
        QHash<QString, int> folders;  // by name: their places
        QHash<QString, int> files;    // by name: the line that sends them
    };
    int NewPlace(int parent);

    toolkit::LineModel lines_;
    QHash<int, QString> names_;  // by line, where the name on the disk is another than the line's
    std::vector<Place> places_;
    int here_ = 0;
    std::vector<Overwrite> overwrites_;
};

}  // namespace forms
