#include <QKeyEvent>
#include <algorithm>

#include "platform/drive_path.h"
#include "platform/folder.h"
#include "toolkit/file_controls.h"
#include "toolkit/line_delegate.h"
#include "toolkit/pictures.h"
#include "toolkit/row_selection.h"

namespace toolkit {
namespace {

const QString kRoot = QStringLiteral("C:\\");

// The names from the root down: "C:\", "home", "anna".
QStringList NamesOf(const QString& path) {
    return QStringList{path.left(kRoot.size())} + path.mid(kRoot.size()).split(u'\\', Qt::SkipEmptyParts);
}

}  // namespace

// The folders of the path, then the subfolders, which only store their names.
class DirListBox::Model : public QAbstractListModel {
 public:
    using QAbstractListModel::QAbstractListModel;

    void Show(const QString& path, const QStringList& subfolders) {
        beginResetModel();
        path_ = path;
        names_ = NamesOf(path);
        depth_ = static_cast<int>(names_.size());
        names_ += subfolders;
        endResetModel();
    }

    int Depth() const { return depth_; }  // rows of the path itself

    QString PathOf(int row) const {
        if (row < 0 || row >= names_.size()) return {};
        if (row >= depth_) return platform::Join(path_, names_[row]);
        QString path = names_.first();
        for (int i = 1; i <= row; ++i) path = platform::Join(path, names_[i]);
        return path;
    }

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(names_.size());
    }

    QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid()) return {};
        switch (role) {
            case Qt::DisplayRole:
                return names_[index.row()];
            case Qt::DecorationRole:
                return index.row() < depth_ ? open_ : closed_;
            case LineDelegate::kIndentLevel:
                return std::min(index.row(), depth_);
            default:
                return {};
        }
    }

 private:
    QString path_;
    QStringList names_;
    int depth_ = 0;
    const QIcon open_ = OpenFolderPicture();
    const QIcon closed_ = FolderPicture();
};

DirListBox::DirListBox(QWidget* parent) : QListView(parent), model_(new Model(this)) {
    setItemDelegate(new LineDelegate(this));
    setUniformItemSizes(true);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollMode(ScrollPerPixel);
    setModel(model_);
    if (!SetPath(platform::CurrentFolder())) SetPath(kRoot);
}

bool DirListBox::SetPath(const QString& path) {
    const auto native = platform::Resolve(path);
    if (!native) return false;
    const QString found = platform::FromNative(*native);
    const auto subfolders = platform::ReadSubfolders(found);
    if (!subfolders) return false;
    const bool changed = found != path_;
    path_ = found;
    ShowFolders(*subfolders);
    if (changed) Q_EMIT Change();
    return true;
}

void DirListBox::Refresh() {
    const QString current = List(ListIndex());
    ShowFolders(platform::ReadSubfolders(path_).value_or(QStringList()));
    for (int row = 0; row < ListCount(); ++row) {
        if (List(row) == current) setCurrentIndex(model_->index(row));
    }
}

int DirListBox::ListCount() const {
    return model_->rowCount();
}

QString DirListBox::List(int row) const {
    return model_->PathOf(row);
}

int DirListBox::ListIndex() const {
    return CurrentRow(*this);
}

void DirListBox::ShowFolders(const QStringList& subfolders) {
    model_->Show(path_, subfolders);
    static_cast<LineDelegate*>(itemDelegate())->SetDeepestLevel(model_->Depth());
    const int row = model_->Depth() - 1;
    setCurrentIndex(model_->index(row));
    // The folder above stays in sight, and as many of the subfolders as there is room for.
    scrollTo(model_->index(std::max(0, model_->Depth() - 2)), PositionAtTop);
    scrollTo(model_->index(row));
}

void DirListBox::OpenCurrent() {
    SetPath(List(ListIndex()));
}

void DirListBox::keyPressEvent(QKeyEvent* event) {
    if (IsEnterOnRow(*this, *event))
        OpenCurrent();
    else
        QListView::keyPressEvent(event);
}

void DirListBox::mouseDoubleClickEvent(QMouseEvent* event) {
    QListView::mouseDoubleClickEvent(event);
    const bool on_row = indexAt(event->position().toPoint()).isValid();
    if (on_row && event->button() == Qt::LeftButton) OpenCurrent();
}

}  // namespace toolkit
