#pragma once
// Routines that every form uses: centring, owner links, the mouse pointer. UI thread only.

#include <QWidget>

namespace app {

/// Puts the window in the middle of its screen's usable area.
void CentreOnScreen(QWidget& window);

/// Makes `owner` the owner of `dialog`: the dialog stays above it, also while the owner is disabled.
void SetOwner(QWidget& dialog, QWidget& owner);
void ClearOwner(QWidget& dialog);

/// The program's mouse pointer: hourglass or default. Setting the same twice changes nothing.
void SetHourglass(bool on);

}  // namespace app
