// Colours that can be read on a background.
#pragma once

#include <QColor>

namespace permora::qt {

// Between the two, with so much of the first, from 0 to 1.
QColor Mixed(const QColor& one, const QColor& other, double shareOfOne);

// At least this much for texts of usual size. Source: "Web Content Accessibility Guidelines", contrast
// (minimum).
inline constexpr double kReadableContrast = 4.5;

// From 1, of equal colours, to 21, as the guidelines define it. Both are opaque.
double ContrastOf(const QColor& one, const QColor& other);
// `colour` itself where it can well be read on `background`; else the nearest of its hue that can, or that
// comes closest to it: lighter on a dark one, darker on a light one.
QColor Readable(QColor colour, const QColor& background);

}  // namespace permora::qt
