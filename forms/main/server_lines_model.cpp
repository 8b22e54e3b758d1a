#include "forms/main/server_lines_model.h"

#include <QMimeData>

#include "ftp/listing_rows.h"
#include "ftp/readable.h"

namespace forms {
namespace {

QString KindOf(const QString& line) {
    if (!ftp::IsDirectoryOrLink(line)) return QStringLiteral("fil");
    return line.startsWith(u'd', Qt::CaseInsensitive) ? QStringLiteral("katalog") : QStringLiteral("länk");
}

}  // namespace

ServerLinesModel::ServerLinesModel(QObject* parent)
    : LineModel(parent), ImageList1{QIcon(QStringLiteral(":/main/kind1_text.svg")),
                                    QIcon(QStringLiteral(":/main/kind2_folder.svg")),
                                    QIcon(QStringLiteral(":/main/kind3_file.svg")),
                                    QIcon(QStringLiteral(":/main/kind4_image.svg")),
                                    QIcon(QStringLiteral(":/main/kind5_sound.svg")),
                                    QIcon(QStringLiteral(":/main/kind6_parent.svg")),
                                    QIcon(QStringLiteral(":/main/kind7_dotted_folder.svg")),
                                    QIcon(QStringLiteral(":/main/kind8_archive.svg")),
                                    QIcon(QStringLiteral(":/main/kind9_program.svg"))} {}

QVariant ServerLinesModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const QString line = At(index.row());
    switch (role) {
        case Qt::DecorationRole:
            return ImageList1[static_cast<std::size_t>(ftp::ListingIcon(line) - 1)];
        case Qt::AccessibleTextRole:
            return QString(ftp::NameOfListingLine(line) + QStringLiteral(", ") + KindOf(line));
        case Qt::AccessibleDescriptionRole:
            return ftp::ListingTip(line, QDate::currentDate());
        default:
            return LineModel::data(index, role);
    }
}

Qt::ItemFlags ServerLinesModel::flags(const QModelIndex& index) const {
    return LineModel::flags(index) | Qt::ItemIsDragEnabled;
}

QStringList ServerLinesModel::mimeTypes() const {
    return {QStringLiteral("application/x-websmide-server-rows")};
}

QMimeData* ServerLinesModel::mimeData(const QModelIndexList&) const {
    auto* data = new QMimeData;
    data->setData(mimeTypes().first(), {});
    return data;
}

QVariant ServerLinesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (section == 0 && orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return QStringLiteral("Server-fil");
    return LineModel::headerData(section, orientation, role);
}

}  // namespace forms
