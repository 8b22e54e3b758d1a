#pragma once
// A one-line label that shortens its text with an ellipsis where it is too narrow. UI thread only.

#include <QLabel>

namespace forms {

/// The whole text stands in the tooltip.
class ElidedLabel : public QLabel {
    Q_OBJECT
 public:
    using QLabel::QLabel;
    void Show(const QString& text);

 protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace forms
