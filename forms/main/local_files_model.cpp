#include "forms/main/local_files_model.h"

#include <QMimeData>
#include <QUrl>

#include "ftp/readable.h"
#include "platform/drive_path.h"
#include "toolkit/conversions.h"
#include "toolkit/wrapped_label.h"

namespace forms {

void LocalFilesModel::SetFiles(const QString& folder, std::vector<platform::FolderEntry> files) {
    beginResetModel();
    folder_ = folder;
    files_ = std::move(files);
    endResetModel();
}

QString LocalFilesModel::PathOf(int row) const {
    return platform::Join(folder_, At(row).name);
}

Qt::ItemFlags LocalFilesModel::flags(const QModelIndex& index) const {
    return QAbstractTableModel::flags(index) | Qt::ItemIsDragEnabled;
}

QStringList LocalFilesModel::mimeTypes() const {
    return {QStringLiteral("text/uri-list")};
}

QMimeData* LocalFilesModel::mimeData(const QModelIndexList& indexes) const {
    QList<QUrl> urls;
    for (const QModelIndex& index : indexes)
        if (index.column() == 0) urls.append(platform::ToUrl(PathOf(index.row())));
    auto* data = new QMimeData;
    data->setUrls(urls);
    return data;
}

int LocalFilesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(files_.size());
}

int LocalFilesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 3;
}

QVariant LocalFilesModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    if (role == Qt::TextAlignmentRole && index.column() == 1) return int{Qt::AlignRight | Qt::AlignVCenter};
    const platform::FolderEntry& file = At(index.row());
    if (role == Qt::ToolTipRole)
        return toolkit::PlainToolTip(file.name.toLower() + u'\n' + ftp::FileTip(file.size, file.modified));
    if (role == Qt::AccessibleDescriptionRole && index.column() == 0)
        return ftp::FileTip(file.size, file.modified);
    if (role != Qt::DisplayRole) return {};
    switch (index.column()) {
        case 0:
            return file.name.toLower();
        case 1:
            return QString::number(file.size);
        default:
            return file.modified ? toolkit::GeneralDate(file.modified) : QString();
    }
}

QVariant LocalFilesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    static const QString titles[] = {QStringLiteral("Filnamn"), QStringLiteral("Storlek"),
                                     QStringLiteral("Senast ändrad")};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section > 2) return {};
    return titles[section];
}

}  // namespace forms
