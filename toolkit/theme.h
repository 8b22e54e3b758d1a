#pragma once
// The look of the program. UI thread only.

#include <QApplication>

namespace toolkit {

/// One style everywhere, in light or dark colours as the desktop has them when this is called. The
/// environment variable WEBSMIDE_COLOURS=light|dark decides instead where it is set.
void ApplyTheme(QApplication& application);

}  // namespace toolkit
