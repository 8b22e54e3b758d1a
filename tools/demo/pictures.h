#pragma once
// Pictures of the X server's screen. UI thread only.

#include <QImage>

#include "tools/demo/step.h"

namespace demo {

QImage Screen();

/// The part of the screen, in the program's own coordinates, with the numbers of the marks on it.
QImage Framed(const QImage& screen, const QRect& frame, const std::vector<Mark>& marks);

}  // namespace demo
