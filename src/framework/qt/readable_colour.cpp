#include "framework/qt/readable_colour.h"

#include <algorithm>
#include <cmath>

namespace permora::qt {
namespace {

double Linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double LuminanceOf(const QColor& colour) {
    return 0.2126 * Linear(colour.redF()) + 0.7152 * Linear(colour.greenF()) +
           0.0722 * Linear(colour.blueF());
}

}  // namespace

QColor Mixed(const QColor& one, const QColor& other, double shareOfOne) {
    const auto mix = [shareOfOne](int channel, int otherChannel) {
        return static_cast<int>(channel * shareOfOne + otherChannel * (1 - shareOfOne));
    };
    return {mix(one.red(), other.red()), mix(one.green(), other.green()), mix(one.blue(), other.blue())};
}

double ContrastOf(const QColor& one, const QColor& other) {
    const auto [dark, light] = std::minmax({LuminanceOf(one), LuminanceOf(other)});
    return (light + 0.05) / (dark + 0.05);
}

QColor Readable(QColor colour, const QColor& background) {
    constexpr double kSought = kReadableContrast + 0.3;  // styles lay shades over it
    constexpr int kMost = 255;
    const int step = ContrastOf(background, Qt::white) > ContrastOf(background, Qt::black) ? 1 : -1;
    for (int light = colour.lightness(); ContrastOf(colour, background) < kSought; light += step) {
        if (light < 0 || light > kMost) break;
        colour.setHsl(colour.hslHue(), colour.hslSaturation(), light);
    }
    return colour;
}

}  // namespace permora::qt
