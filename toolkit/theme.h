#pragma once
// The look of the program, to the eye and to programs that read the screen aloud. UI thread only.

#include <QApplication>

namespace toolkit {

/// One style everywhere, in light or dark colours as the desktop has them when this is called. The
/// environment variable WEBSMIDE_COLOURS=light|dark decides instead where it is set.
/// Assistive programs are told what toolkit/accessible.h says.
void ApplyTheme(QApplication& application);

}  // namespace toolkit
