#pragma once
// A one-line label that shortens its text with an ellipsis where it is too narrow. UI thread only.

#include <QLabel>

namespace forms {

/// Plain text, whatever it looks like: it may be a server's. The whole of it stands in the tooltip, and below
/// it a note, where there is one; those who hear the window hear that, too.
class ElidedLabel : public QLabel {
    Q_OBJECT
 public:
    explicit ElidedLabel(QWidget* parent = nullptr);
    void Show(const QString& text, const QString& note = {});

 protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace forms
