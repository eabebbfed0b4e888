// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/GlyphImages.h"

#include "platform/GlyphName.h"
#include "platform/linux/panel/BatteryPicture.h"

#include <QPixmap>

#include <system_error>
#include <utility>

GlyphImages::GlyphImages(std::filesystem::path iconTheme) : iconTheme_(std::move(iconTheme)) {}

bool GlyphImages::has(std::string_view symbol) const {
    return batteryPicture(symbol).has_value();
}

bool GlyphImages::hasFile(std::string_view symbol) const {
    std::error_code error;
    return std::filesystem::exists(iconTheme_ / "hicolor/scalable/status" / (glyphIconName(symbol) + ".svg"), error);
}

std::vector<QImage> GlyphImages::images(std::string_view symbol) const {
    std::vector<QImage> images;
    if (const std::optional<BatteryPicture> picture = batteryPicture(symbol)) {
        for (const int size : sizes)
            images.push_back(draw(*picture, size));
    }
    return images;
}

QIcon GlyphImages::icon(std::string_view symbol) const {
    QIcon icon;
    for (const QImage& image : images(symbol))
        icon.addPixmap(QPixmap::fromImage(image));
    return icon;
}
