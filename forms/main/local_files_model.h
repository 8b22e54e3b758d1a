#pragma once
// The files of the local panel as rows: name, size, time. UI thread only.

#include <QAbstractTableModel>
#include <vector>

#include "platform/folder.h"

namespace forms {

/// Rows are replaced all at once. What a row's tool tip says beside the name, those who hear the name are
/// told, too. Size and time are those that were read with the folder; nothing is read later.
class LocalFilesModel : public QAbstractTableModel {
    Q_OBJECT
 public:
    using QAbstractTableModel::QAbstractTableModel;

    /// `folder` is where they lie, in the drive-letter notation.
    void SetFiles(const QString& folder, std::vector<platform::FolderEntry> files);
    /// `row` must exist. The name is as on the disk; the screen shows it in lower case.
    const platform::FolderEntry& At(int row) const { return files_[static_cast<std::size_t>(row)]; }

    /// The path of the very file that the row was made from.
    QString PathOf(int row) const;

    // Rows can be dragged, to other programs too: they are given as URLs of files.
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
    QString folder_;
    std::vector<platform::FolderEntry> files_;
};

}  // namespace forms
