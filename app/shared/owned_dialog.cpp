#include "app/shared/owned_dialog.h"

#include "app/shared/busy_focus.h"
#include "app/shared/window_routines.h"

namespace app {

OwnedDialog::OwnedDialog(QWidget& owner) : owner_(owner) {
    new BusyFocus(*this);
}

void OwnedDialog::OpenOverOwner() {
    focused_ = owner_.focusWidget();
    CentreOnScreen(*this);
    SetOwner(*this, owner_);
    owner_.setEnabled(false);
    show();
}

void OwnedDialog::done(int result) {
    owner_.setEnabled(true);
    ClearOwner(*this);
    QDialog::done(result);
    if (focused_) focused_->setFocus();
}

}  // namespace app
