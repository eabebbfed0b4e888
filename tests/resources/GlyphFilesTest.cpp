// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/ProgramFiles.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace fs = std::filesystem;

namespace {

/// Every glyph: ten in two sizes, and one for each percentage and meaning.
std::map<fs::path, QByteArray> glyphs() {
    std::map<fs::path, QByteArray> contents;
    for (const char* size : {"16x16", "scalable"}) {
        for (const fs::directory_entry& entry :
             fs::directory_iterator(programFile("share/icons/hicolor") / size / "status")) {
            QFile file(entry.path());
            if (file.open(QIODevice::ReadOnly))
                contents[entry.path()] = file.readAll();
        }
    }
    return contents;
}

/// The glyph with other rules in the style sheet that panels look for by its id, and replace.
QByteArray withRules(const QByteArray& glyph, const QByteArray& rules) {
    const QByteArray start = R"(<style id="current-color-scheme" type="text/css">)";
    const qsizetype from = glyph.indexOf(start);
    const qsizetype to = glyph.indexOf("</style>", from);
    return from < 0 ? QByteArray() : glyph.left(from + start.size()) + rules + glyph.mid(to);
}

/// How many pixels have each opaque colour.
std::map<QRgb, int> drawnColours(const QByteArray& glyph) {
    QSvgRenderer renderer(glyph);
    QImage image(renderer.defaultSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    std::map<QRgb, int> colours;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) == 255)
                ++colours[image.pixel(x, y)];
        }
    }
    return colours;
}

void expectOnly(const std::map<QRgb, int>& colours, QRgb colour, const fs::path& glyph) {
    ASSERT_EQ(colours.size(), 1U) << glyph;
    EXPECT_EQ(colours.begin()->first, colour) << glyph;
    EXPECT_GE(colours.begin()->second, 20) << glyph;
}

} // namespace

TEST(GlyphFiles, AreThereForEveryPercentageAndMeaning) {
    EXPECT_EQ(glyphs().size(), 2U * 10 + 101 * 4);
}

TEST(GlyphFiles, TakeTheColourOfAnotherStyleSheet) {
    for (const auto& [path, glyph] : glyphs())
        expectOnly(drawnColours(withRules(glyph, ".ColorScheme-Text { color:#fcfcfc; }")), qRgb(0xFC, 0xFC, 0xFC),
                   path);
}

TEST(GlyphFiles, AreGreyUntilAPanelColoursThem) {
    for (const auto& [path, glyph] : glyphs())
        expectOnly(drawnColours(glyph), qRgb(0x7F, 0x7F, 0x7F), path);
}

TEST(GlyphFiles, AreDrawnWithoutAnyStyleSheet) {
    for (const auto& [path, glyph] : glyphs())
        expectOnly(drawnColours(withRules(glyph, "")), qRgb(0x7F, 0x7F, 0x7F), path);
}

// In Qt 5, which draws the panel of Plasma 5, an attribute "fill" wins over the style, and so over the panel's colour.
TEST(GlyphFiles, NameTheColourInTheStyleOnly) {
    for (const auto& [path, glyph] : glyphs()) {
        int shapes = 0;
        for (QXmlStreamReader reader(glyph); !reader.atEnd(); reader.readNext()) {
            if (!reader.isStartElement() || reader.name() != QLatin1String("path"))
                continue;
            ++shapes;
            const QXmlStreamAttributes attributes = reader.attributes();
            EXPECT_EQ(attributes.value(QLatin1String("style")), QLatin1String("fill:currentColor")) << path;
            EXPECT_FALSE(attributes.hasAttribute(QLatin1String("fill"))) << path;
        }
        EXPECT_GE(shapes, 1) << path;
    }
}
