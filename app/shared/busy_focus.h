#pragma once
// The keyboard's way through a window while an operation runs. UI thread only.

#include <QObject>
#include <QWidget>

namespace app {

/// While the OperationGate keeps keys away, Tab and Shift+Tab still move the focus, to what may be used then.
/// Belongs to the window.
class BusyFocus : public QObject {
    Q_OBJECT
 public:
    explicit BusyFocus(QWidget& window);

 protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    void Move(bool next);

    QWidget& window_;
};

}  // namespace app
