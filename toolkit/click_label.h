#pragma once
// A label that can be pressed. UI thread only.

#include <QLabel>

namespace toolkit {

/// Looks like a link; Tab reaches it, and Enter and the space bar press it as the mouse does.
class ClickLabel : public QLabel {
    Q_OBJECT
 public:
    explicit ClickLabel(QWidget* parent = nullptr);

 Q_SIGNALS:
    void Click();

 protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

 private:
    bool pressed_ = false;  // by the mouse
};

}  // namespace toolkit
