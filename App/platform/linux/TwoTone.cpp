// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/TwoTone.h"

#include <QPainter>

#include <algorithm>

namespace {

// Not white: on a white panel a filled battery must still look fuller than an empty one.
constexpr QRgb light = 0xFFCCCCCC;
constexpr QRgb dark = 0xFF0A0A0A;

/// What lies within so many pixels of the glyph. What it covers by a quarter counts as a whole: smoothed edges would
/// blur the outline.
QImage grown(const QImage& mask, int distance) {
    QImage result(mask.size(), QImage::Format_Alpha8);
    result.fill(0);
    for (int dy = -distance; dy <= distance; ++dy) {
        for (int dx = -distance; dx <= distance; ++dx) {
            if (dx * dx + dy * dy > distance * (distance + 1))
                continue; // rounder than a square
            for (int y = std::max(0, -dy); y < mask.height() - std::max(0, dy); ++y) {
                const uchar* from = mask.constScanLine(y + dy);
                uchar* to = result.scanLine(y);
                for (int x = std::max(0, -dx); x < mask.width() - std::max(0, dx); ++x)
                    to[x] = static_cast<uchar>(std::max<int>(to[x], std::min(4 * from[x + dx], 255)));
            }
        }
    }
    return result;
}

QImage tinted(const QImage& mask, QRgb colour) {
    QImage image(mask.size(), QImage::Format_ARGB32);
    image.fill(colour);
    image.setAlphaChannel(mask);
    return image;
}

} // namespace

QImage twoTone(const QImage& glyph, int outline, const QRect& solid) {
    const QImage mask = glyph.convertToFormat(QImage::Format_Alpha8);
    QImage image = tinted(grown(mask, outline), dark);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(dark));
    if (!solid.isEmpty())
        painter.drawRoundedRect(solid.adjusted(-outline, -outline, outline, outline), outline, outline);
    painter.drawImage(0, 0, tinted(mask, light));
    return image;
}
