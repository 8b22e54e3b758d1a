#pragma once
// A label for a text that a box asks or tells. UI thread only.

#include <QLabel>

namespace toolkit {

/// Shows plain text in lines of a pleasant length; a word that is too long for a line, as a path may be, is
/// broken.
class WrappedLabel : public QLabel {
    Q_OBJECT
 public:
    WrappedLabel(const QString& text, QWidget* parent);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace toolkit
