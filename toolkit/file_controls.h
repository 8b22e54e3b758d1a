#pragma once
// The drive, folder and file list boxes, in the drive-letter notation of platform/. UI thread only.

#include <QComboBox>
#include <QListView>
#include <QWidget>
#include <vector>

#include "platform/folder.h"

namespace toolkit {

/// A combo box of the drives. Change is raised whenever Drive gets another value.
class DriveListBox : public QComboBox {
    Q_OBJECT
 public:
    explicit DriveListBox(QWidget* parent = nullptr);
    QString Drive() const;  // "C:\"
    /// Any text that begins with a drive's letter, for example the first 3 characters of a path. False, and
    /// nothing changes, when there is no such drive.
    bool SetDrive(const QString& drive);
    /// Reads the drives again. The choice stays, also when that drive has gone meanwhile; Change is not
    /// raised.
    void Refresh();

 Q_SIGNALS:
    void Change();

 protected:
    void showPopup() override;  // the list is always fresh when it opens
};

/// A folder list: the folders from the drive's root down to Path, indented and with open icons, then the
/// subfolders of Path. A double click or Enter opens a folder, which sets Path. Starts at the process's
/// current folder.
class DirListBox : public QListView {
    Q_OBJECT
 public:
    explicit DirListBox(QWidget* parent = nullptr);
    QString Path() const { return path_; }
    /// Any notation or native path; case as on the disk afterwards. False, and nothing changes, when it
    /// cannot be read. Raises Change when Path differs from before.
    bool SetPath(const QString& path);
    /// Reads the subfolders again without raising Change. The row that was current stays so if it is still
    /// there.
    void Refresh();
    int ListCount() const;
    QString List(int row) const;  // full path of the row
    int ListIndex() const;

 Q_SIGNALS:
    void Change();

 protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
    void OpenCurrent();
    void ShowFolders(const QStringList& subfolders);  // makes the row of the path current

    QString path_;
    class Model;
    Model* model_;
};

/// The hidden source of file names: the files (never folders) of Path that match Pattern, sorted by name
/// without regard to case. Size and time of each file are read once, when the list is read.
class FileListBox : public QWidget {
    Q_OBJECT
 public:
    explicit FileListBox(QWidget* parent = nullptr);
    void SetPattern(const QString& pattern);  // "*.htm*;*.txt"; empty lists all files
    void SetPath(const QString& path);
    QString Pattern() const { return pattern_; }
    QString Path() const { return path_; }
    /// Reads the folder, whether or not Path or Pattern changed. An unreadable folder lists nothing.
    void Refresh();
    int ListCount() const { return static_cast<int>(files_.size()); }
    QString List(int row) const;
    const std::vector<platform::FolderEntry>& Files() const { return files_; }

 private:
    QString pattern_, path_;
    std::vector<platform::FolderEntry> files_;
};

}  // namespace toolkit
