#pragma once
// How well two colours stand out from each other.

#include <QColor>
#include <algorithm>
#include <cmath>

namespace forms {

/// By the definition of the W3C's guidelines: 1 to 21. They ask for 4.5 for text, 3 for large text, pictures
/// and what shows the focus.
inline double Contrast(const QColor& one, const QColor& other) {
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [&](const QColor& colour) {
        return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
               0.0722 * linear(colour.blueF());
    };
    const double a = luminance(one) + 0.05, b = luminance(other) + 0.05;
    return std::max(a, b) / std::min(a, b);
}

}  // namespace forms
