#pragma once
// The number before a step of the help panel. UI thread only.

#include <QLabel>

namespace forms {

/// A label whose short text stands large in a disc of the highlight colour; it grows with the font.
class StepNumber : public QLabel {
    Q_OBJECT
 public:
    using QLabel::QLabel;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace forms
