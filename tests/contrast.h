#ifndef CONTRAST_H
#define CONTRAST_H

#include <QColor>

#include <algorithm>
#include <cmath>

constexpr double READABLE = 4.5;  // least contrast of a text with its ground

inline double luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
        0.0722 * linear(colour.blueF());
}

// From 1, the same, to 21, black on white.
inline double contrast(const QColor &a, const QColor &b)
{
    const double lighter = std::max(luminance(a), luminance(b));
    const double darker = std::min(luminance(a), luminance(b));
    return (lighter + 0.05) / (darker + 0.05);
}

#endif
