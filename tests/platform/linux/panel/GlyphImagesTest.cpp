// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/GlyphImages.h"

#include "platform/qt/ProgramFiles.h"
#include "support/Contrast.h"

#include <QPainter>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

// Every plain glyph, and every digit and every meaning of the glyphs with numbers.
const std::vector<std::string> symbols{
    "battery.0",        "battery.25",       "battery.50",         "battery.75",      "battery.100",
    "battery.100.bolt", "powerplug.fill",   "battery.100percent", "powerplug",       "bolt.fill",
    "percent.0.level",  "percent.10.level", "percent.38.bolt",    "percent.46.plug", "percent.59.level",
    "percent.72.level", "percent.100.full", "percent.100.level",
};

/// Solid colours of panels: all greys, and others that themes and people choose.
std::vector<QRgb> panelColours() {
    std::vector<QRgb> colours;
    for (int grey = 0; grey < 256; ++grey)
        colours.push_back(qRgb(grey, grey, grey));
    for (const char* name :
         {"red", "green", "blue", "yellow", "orange", "purple", "teal", "#31363b", "#3c3b37", "#268bd2"})
        colours.push_back(QColor(QLatin1String(name)).rgb());
    return colours;
}

QImage on(QRgb panel, const QImage& picture) {
    QImage image(picture.size(), QImage::Format_RGB32);
    image.fill(panel);
    QPainter(&image).drawImage(0, 0, picture);
    return image;
}

/// The pixels of the signs on the tile: those of the darkest colour, or nearly so.
std::vector<QPoint> ink(const QImage& picture) {
    std::map<double, std::vector<QPoint>> byLuminance;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qAlpha(picture.pixel(x, y)) >= 230)
                byLuminance[luminance(picture.pixel(x, y))].emplace_back(x, y);
        }
    }
    std::vector<QPoint> places;
    const double darkest = byLuminance.begin()->first;
    const auto end = byLuminance.upper_bound(darkest + 0.02 * (byLuminance.rbegin()->first - darkest));
    for (auto it = byLuminance.begin(); it != end; ++it)
        places.insert(places.end(), it->second.begin(), it->second.end());
    return places;
}

/// A picture reduced to an index into its few colours, so that it need not be drawn for every panel.
struct Indexed {
    explicit Indexed(const QImage& picture) : size(picture.size()) {
        std::map<QRgb, std::size_t> known;
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x) {
                const auto [entry, isNew] = known.try_emplace(picture.pixel(x, y), colours.size());
                if (isNew)
                    colours.push_back(entry->first);
                indices.push_back(entry->second);
            }
        }
        for (const QPoint place : ink(picture))
            glyph.push_back(index(place));
    }

    std::size_t index(QPoint place) const {
        const int index = place.y() * size.width() + place.x();
        return static_cast<std::size_t>(index);
    }

    QSize size;
    std::vector<QRgb> colours;
    std::vector<std::size_t> indices; ///< into `colours`, row by row
    std::vector<std::size_t> glyph;   ///< the indices of the pixels of the signs
};

/// For each colour of the picture, whether its contrast is at least 3 to 1 once it is drawn on the panel.
std::vector<bool> visible(const Indexed& picture, QRgb panel) {
    QImage strip(static_cast<int>(picture.colours.size()), 1, QImage::Format_ARGB32);
    for (int i = 0; i < strip.width(); ++i)
        strip.setPixel(i, 0, picture.colours[static_cast<std::size_t>(i)]);
    const QImage seen = on(panel, strip);
    std::vector<bool> result;
    for (int i = 0; i < strip.width(); ++i)
        result.push_back(contrast(seen.pixel(i, 0), panel) >= 3);
    return result;
}

/// The share of the signs that blends into the panel: the pixels that can be reached from the edge of the picture
/// without crossing a pixel whose contrast with the panel is at least 3 to 1.
double lostShare(QRgb panel, const Indexed& picture) {
    const std::vector<bool> stops = visible(picture, panel);
    const int width = picture.size.width();
    const int height = picture.size.height();
    std::vector<bool> lost(picture.indices.size());
    std::vector<QPoint> open;
    const auto enter = [&](QPoint place) {
        if (!QRect(QPoint(), picture.size).contains(place))
            return;
        const std::size_t index = picture.index(place);
        if (lost[index] || stops[picture.indices[index]])
            return;
        lost[index] = true;
        open.push_back(place);
    };
    for (int i = 0; i < width; ++i) {
        for (const QPoint edge : {QPoint(i, 0), QPoint(i, height - 1), QPoint(0, i), QPoint(width - 1, i)})
            enter(edge);
    }
    while (!open.empty()) {
        const QPoint place = open.back();
        open.pop_back();
        for (const QPoint step : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)})
            enter(place + step);
    }
    const auto count =
        std::count_if(picture.glyph.begin(), picture.glyph.end(), [&](std::size_t index) { return lost[index]; });
    return static_cast<double>(count) / static_cast<double>(picture.glyph.size());
}

} // namespace

TEST(GlyphImages, CanBeSeenOnAPanelOfAnyColour) {
    const GlyphImages glyphs{programFile("share/velmora/icons")};
    for (const std::string& symbol : symbols) {
        const auto images = glyphs.images(symbol);
        ASSERT_EQ(images.size(), std::size(GlyphImages::sizes)) << symbol;
        for (const QImage& image : images) {
            const Indexed picture(image);
            for (const QRgb panel : panelColours())
                ASSERT_EQ(lostShare(panel, picture), 0)
                    << symbol << " at " << image.width() << " px on " << qPrintable(QColor(panel).name());
        }
    }
}

TEST(GlyphImages, HaveTwoTonesThatAreFarApart) {
    const GlyphImages glyphs{programFile("share/velmora/icons")};
    for (const std::string& symbol : symbols) {
        for (const QImage& image : glyphs.images(symbol)) {
            std::map<double, QRgb> byLuminance;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    if (qAlpha(image.pixel(x, y)) == 255)
                        byLuminance[luminance(image.pixel(x, y))] = image.pixel(x, y);
                }
            }
            EXPECT_GT(contrast(byLuminance.begin()->second, byLuminance.rbegin()->second), 9)
                << symbol << " at " << image.width() << " px";
        }
    }
}

TEST(GlyphImages, LieOnWholePixels) {
    const GlyphImages glyphs{programFile("share/velmora/icons")};
    for (const QImage& image : glyphs.images("battery.50")) {
        const int size = image.width();
        std::set<QRgb> colours;
        for (int i = 0; i < size; ++i) {
            colours.insert(image.pixel(i, size / 2));
            colours.insert(image.pixel(size / 2, i));
        }
        EXPECT_EQ(colours.size(), 4U) << "the panel, the tile, the wall and the level, at " << size << " px";
    }
}

// For somebody to look at.
TEST(GlyphImages, AreLeftAsAPicture) {
    const GlyphImages glyphs{programFile("share/velmora/icons")};
    const std::vector<const char*> panels{"#ffffff", "#dadada", "#a0a0a0", "#7a7a7a", "#3c3b37", "#1e1e1e", "#000000"};
    constexpr int cell = 72;
    QImage sheet(cell * static_cast<int>(symbols.size()),
                 cell * static_cast<int>(panels.size() * std::size(GlyphImages::sizes)), QImage::Format_RGB32);
    QPainter painter(&sheet);
    std::map<std::string, std::vector<QImage>> images;
    for (const std::string& symbol : symbols)
        images[symbol] = glyphs.images(symbol);
    int y = 0;
    for (const char* panel : panels) {
        painter.fillRect(0, y, sheet.width(), cell * static_cast<int>(std::size(GlyphImages::sizes)),
                         QColor(QLatin1String(panel)));
        for (std::size_t size = 0; size < std::size(GlyphImages::sizes); ++size) {
            int x = 0;
            for (const std::string& symbol : symbols) {
                painter.drawImage(x + 4, y + 4, images.at(symbol)[size]);
                x += cell;
            }
            y += cell;
        }
    }
    painter.end();
    EXPECT_TRUE(sheet.save(QStringLiteral(VELMORA_PICTURES "/glyphs.png")));
}
