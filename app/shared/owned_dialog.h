#pragma once
// What the dialogs have in common: while one is open, the window that opened it is disabled and stays below
// it. UI thread only.

#include <QDialog>
#include <QPointer>

namespace app {

/// `owner` outlives the dialog.
class OwnedDialog : public QDialog {
    Q_OBJECT
 public:
    explicit OwnedDialog(QWidget& owner);

 protected:
    /// Shows the dialog in the middle of the screen and disables the owner. Returns at once.
    void OpenOverOwner();
    /// Every way of closing comes by here: the owner is enabled again, and the control that had the focus
    /// has it again.
    void done(int result) override;

 private:
    QWidget& owner_;
    QPointer<QWidget> focused_;
};

}  // namespace app
