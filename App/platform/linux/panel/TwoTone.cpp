// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/TwoTone.h"

#include <QPainter>

#include <algorithm>
#include <cstdlib>

namespace {

// Not white: on a white panel a filled battery must still look fuller than an empty one.
constexpr QRgb light = 0xFFCCCCCC;
constexpr QRgb dark = 0xFF0A0A0A;

/// The pixels within `distance` of the glyph. A pixel that the glyph covers by a quarter counts as fully covered:
/// antialiased edges would blur the outline.
QImage grown(QImage mask, int distance) {
    for (int y = 0; y < mask.height(); ++y) {
        uchar* row = mask.scanLine(y);
        std::transform(row, row + mask.width(), row, [](uchar value) { return std::min(4 * value, 255); });
    }
    QImage result(mask.size(), QImage::Format_Alpha8);
    result.fill(0);
    for (int dy = -distance; dy <= distance; ++dy) {
        for (int dx = -distance; dx <= distance; ++dx) {
            if (dx * dx + dy * dy > distance * (distance + 1))
                continue; // rounder than a square
            for (int y = std::max(0, -dy); y < mask.height() - std::max(0, dy); ++y) {
                const uchar* from = mask.constScanLine(y + dy) + std::max(0, dx);
                uchar* to = result.scanLine(y) + std::max(0, -dx);
                const int count = mask.width() - std::abs(dx);
                std::transform(from, from + count, to, to, [](uchar one, uchar other) { return std::max(one, other); });
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
    QImage image = tinted(grown(mask, outline), dark).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(dark));
    if (!solid.isEmpty())
        painter.drawRoundedRect(solid.adjusted(-outline, -outline, outline, outline), outline, outline);
    painter.drawImage(0, 0, tinted(mask, light));
    painter.end();
    return image.convertToFormat(QImage::Format_ARGB32);
}
