#pragma once
// How wide the widest text of a list is, found without measuring every one. UI thread only.

#include <QAbstractItemView>
#include <QFont>
#include <QPointer>

namespace toolkit {

/// Follows one column of the view's model. Each row is looked at once, when the width is asked for; only a
/// text long enough to be the widest is measured. The width does not shrink while rows are taken away.
class LineWidth : public QObject {
 public:
    explicit LineWidth(const QAbstractItemView& view);

    int Widest(int column);                  // pixels, in the view's font; 0 for an empty list
    int Advance(const QString& text) const;  // pixels

 private:
    void Forget();
    void Follow(const QAbstractItemModel* model, int column);
    void Measure(const QString& text);

    const QAbstractItemView& view_;
    QPointer<const QAbstractItemModel> model_;
    int column_ = 0;
    QFont font_;
    bool fixed_pitch_ = false;
    int seen_ = 0;           // rows looked at, from the top
    qsizetype longest_ = 0;  // characters
    int widest_ = 0;         // pixels
};

}  // namespace toolkit
