#pragma once
// The raw listing lines with their icons: the model behind listDir and listdir2. Those who hear a row are
// told its name and kind, and then what its tool tip says. UI thread only.

#include <QIcon>
#include <array>

#include "toolkit/lists.h"

namespace forms {

class ServerLinesModel : public toolkit::LineModel {
    Q_OBJECT
 public:
    explicit ServerLinesModel(QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    // Rows can be dragged; what a drop of them means is for the window to know.
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
    std::array<QIcon, 9> ImageList1;  // icon n of the row kinds stands at n - 1
};

}  // namespace forms
