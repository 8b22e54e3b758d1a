#pragma once
// The fonts that forms ask for by name. UI thread only.

#include <QFont>

namespace toolkit {

/// "Courier New", or the system's own fixed-pitch font where that is missing, in the application font's size.
QFont FixedPitchFont();

}  // namespace toolkit
