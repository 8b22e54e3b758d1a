#include "toolkit/lists.h"

namespace toolkit {

QString LineModel::At(int row) const {
    return row >= 0 && row < Count() ? lines_[static_cast<std::size_t>(row)] : QString();
}

void LineModel::Add(const QString& line) {
    if (held_) {
        lines_.push_back(line);
        return;
    }
    beginInsertRows({}, Count(), Count());
    lines_.push_back(line);
    endInsertRows();
}

void LineModel::Remove(int row) {
    if (row < 0 || row >= Count()) return;
    if (!held_) beginRemoveRows({}, row, row);
    lines_.erase(lines_.begin() + row);
    if (!held_) endRemoveRows();
}

void LineModel::Clear() {
    SetLines({});
}

void LineModel::SetLines(const QStringList& lines) {
    if (!held_) beginResetModel();
    lines_.assign(lines.begin(), lines.end());
    if (!held_) endResetModel();
}

void LineModel::Hold() {
    if (held_) return;
    beginResetModel();
    held_ = true;
    endResetModel();
}

void LineModel::Publish() {
    if (!held_) return;
    beginResetModel();
    held_ = false;
    endResetModel();
}

int LineModel::rowCount(const QModelIndex& parent) const {
    return held_ || parent.isValid() ? 0 : Count();
}

QVariant LineModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole)) return {};
    return At(index.row());
}

}  // namespace toolkit
