#include "toolkit/line_width.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <algorithm>

namespace toolkit {

LineWidth::LineWidth(const QAbstractItemView& view) : view_(view) {}

int LineWidth::Widest(int column) {
    if (view_.model() != model_ || column != column_) Follow(view_.model(), column);
    if (view_.font() != font_) Forget();
    const int rows = model_ ? model_->rowCount() : 0;
    for (; seen_ < rows; ++seen_) Measure(model_->index(seen_, column_).data().toString());
    return widest_;
}

int LineWidth::Advance(const QString& text) const {
    return QFontMetrics(view_.font()).horizontalAdvance(text);
}

void LineWidth::Forget() {
    font_ = view_.font();
    fixed_pitch_ = QFontInfo(font_).fixedPitch();
    seen_ = 0;
    longest_ = 0;
    widest_ = 0;
}

void LineWidth::Follow(const QAbstractItemModel* model, int column) {
    if (model_) model_->disconnect(this);
    model_ = model;
    column_ = column;
    Forget();
    if (!model) return;
    connect(model, &QAbstractItemModel::modelReset, this, &LineWidth::Forget);
    connect(model, &QAbstractItemModel::layoutChanged, this, &LineWidth::Forget);
    const auto look_again_from = [this](int row) { seen_ = std::min(seen_, row); };
    connect(model, &QAbstractItemModel::dataChanged, this,
            [=](const QModelIndex& top_left) { look_again_from(top_left.row()); });
    connect(model, &QAbstractItemModel::rowsInserted, this,
            [=](const QModelIndex&, int first) { look_again_from(first); });
    connect(model, &QAbstractItemModel::rowsRemoved, this, [this](const QModelIndex&, int first, int last) {
        seen_ -= std::max(0, std::min(seen_, last + 1) - first);
    });
}

void LineWidth::Measure(const QString& text) {
    // With letters of different widths a text that is a quarter shorter may still be the wider one.
    const bool may_be_widest = fixed_pitch_ ? text.size() > longest_ : 4 * text.size() > 3 * longest_;
    if (!may_be_widest) return;
    longest_ = std::max(longest_, text.size());
    widest_ = std::max(widest_, Advance(text));
}

}  // namespace toolkit
