#pragma once
// A tool tip that goes on telling while it is shown. UI thread only.

#include <QPoint>
#include <QWidget>

namespace forms {

/// The tool tip of a widget and of all in it that has none of its own. A change shows at once, in the place
/// where the tip came up. The text is the program's own, not from outside.
class LiveTip : public QObject {
    Q_OBJECT
 public:
    explicit LiveTip(QWidget& area);
    void SetText(const QString& text);

 protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    QWidget& area_;
    QPoint place_;  // on the screen, where the mouse rested
};

}  // namespace forms
