#pragma once
// The fonts that forms ask for by name, and headings. UI thread only.

#include <QFont>
#include <QWidget>

namespace toolkit {

/// "Courier New", or the system's own fixed-pitch font where that is missing, in the application font's size.
QFont FixedPitchFont();

/// The widget's text in bold, `times` as large as it is.
void MakeHeading(QWidget& text, double times = 1);

}  // namespace toolkit
