#include "forms/main/local_files_model.h"

#include "toolkit/conversions.h"

namespace forms {

void LocalFilesModel::SetFiles(std::vector<platform::FolderEntry> files) {
    beginResetModel();
    files_ = std::move(files);
    endResetModel();
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
    if (role != Qt::DisplayRole) return {};
    const platform::FolderEntry& file = At(index.row());
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
