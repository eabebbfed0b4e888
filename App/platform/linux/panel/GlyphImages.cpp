// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/GlyphImages.h"

#include "platform/GlyphName.h"
#include "platform/linux/panel/TwoTone.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <system_error>
#include <utility>

GlyphImages::GlyphImages(std::filesystem::path iconTheme) : iconTheme_(std::move(iconTheme)) {}

std::filesystem::path GlyphImages::file(std::string_view symbol) const {
    return iconTheme_ / "hicolor/scalable/status" / (glyphIconName(symbol) + ".svg");
}

bool GlyphImages::has(std::string_view symbol) const {
    std::error_code error;
    return std::filesystem::exists(file(symbol), error);
}

std::vector<QImage> GlyphImages::images(std::string_view symbol) const {
    std::vector<QImage> images;
    QSvgRenderer glyph(QString::fromStdString(file(symbol).string()));
    if (!glyph.isValid())
        return images;
    const QString id = QStringLiteral("number");
    const QRectF number = glyph.elementExists(id) ? glyph.boundsOnElement(id) : QRectF();
    for (const int size : sizes) {
        // With any other format Qt starts threads to fill paths, even in so small an image.
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        // The glyphs leave a unit free on every side, which is where the outline goes.
        const int grid = glyph.defaultSize().width();
        const int outline = std::max(1, (size + grid / 2) / grid);
        const double fitting = static_cast<double>(size - 2 * outline) / (grid - 2);
        // Puts each unit on whole pixels if a small margin is enough for that.
        const double whole = std::floor(fitting);
        const double unit = fitting - whole <= whole / 5 ? whole : fitting;
        const double margin = (size - unit * grid) / 2;
        glyph.render(&painter, QRectF(margin, margin, unit * grid, unit * grid));
        painter.end();
        const QTransform toPixels = QTransform::fromTranslate(margin, margin).scale(unit, unit);
        images.push_back(twoTone(image, outline, toPixels.mapRect(number).toRect()));
    }
    return images;
}

QIcon GlyphImages::icon(std::string_view symbol) const {
    QIcon icon;
    for (const QImage& image : images(symbol))
        icon.addPixmap(QPixmap::fromImage(image));
    return icon;
}
