// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/GlyphImages.h"

#include "platform/linux/GlyphName.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

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
    for (const int size : sizes) {
        QImage image(size, size, QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        // On whole pixels of the glyph's own grid where a small margin is enough for that.
        const int grid = glyph.defaultSize().width();
        const int whole = size / grid * grid;
        const int drawn = size - whole <= 4 * (size / grid) ? whole : size;
        const qreal margin = (size - drawn) / 2.0;
        glyph.render(&painter, QRectF(margin, margin, drawn, drawn));
        painter.end();
        images.push_back(std::move(image));
    }
    return images;
}

QIcon GlyphImages::icon(std::string_view symbol) const {
    QIcon icon;
    for (const QImage& image : images(symbol))
        icon.addPixmap(QPixmap::fromImage(image));
    return icon;
}
