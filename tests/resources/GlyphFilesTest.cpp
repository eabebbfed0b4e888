// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/ProgramFiles.h"

#include <QFile>
#include <QPainter>
#include <QSettings>
#include <QStringList>
#include <QSvgRenderer>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// Every glyph: ten in two sizes, and one for each percentage and meaning.
std::map<fs::path, QByteArray> glyphs() {
    std::map<fs::path, QByteArray> contents;
    for (const char* size : {"16x16", "scalable"}) {
        for (const fs::directory_entry& entry :
             fs::directory_iterator(programFile("share/velmora/icons/hicolor") / size / "status")) {
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

QImage drawn(const QByteArray& glyph) {
    QSvgRenderer renderer(glyph);
    QImage image(renderer.defaultSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    return image;
}

/// How many pixels have each opaque colour.
std::map<QRgb, int> drawnColours(const QByteArray& glyph) {
    const QImage image = drawn(glyph);
    std::map<QRgb, int> colours;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) == 255)
                ++colours[image.pixel(x, y)];
        }
    }
    return colours;
}

/// How many pixels are drawn in the one and left out in the other, or nearly so.
int difference(const QImage& one, const QImage& other) {
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            count += std::abs(qAlpha(one.pixel(x, y)) - qAlpha(other.pixel(x, y))) > 127 ? 1 : 0;
    }
    return count;
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

// Its index is the first that panels find, so a folder that it does not name is not looked into.
TEST(GlyphFiles, AreAnIconThemeByThemselves) {
    const fs::path theme = programFile("share/velmora/icons/hicolor");
    QSettings index(QString::fromStdString((theme / "index.theme").string()), QSettings::IniFormat);
    const QStringList folders = index.value(QStringLiteral("Icon Theme/Directories")).toStringList();
    for (const auto& [path, glyph] : glyphs()) {
        const QString folder = QString::fromStdString(path.parent_path().lexically_relative(theme).string());
        EXPECT_TRUE(folders.contains(folder)) << path;
        const auto told = [&](const char* key) { return index.value(folder + QLatin1Char('/') + QLatin1String(key)); };
        EXPECT_TRUE(told("Type") == QStringLiteral("Scalable") || told("Size").toInt() == drawn(glyph).width()) << path;
    }
}

// A panel gives all of them the same colour.
TEST(GlyphFiles, ShowStatesThatCanBeToldApartByTheirShape) {
    const std::vector<std::pair<const char*, const char*>> pairs{
        {"percent-8-level", "percent-13-level"},
        {"percent-12-level", "percent-12-bolt"},
        {"percent-55-level", "percent-55-bolt"},
        {"percent-55-level", "percent-55-plug"},
        {"percent-55-bolt", "percent-55-plug"},
        {"percent-100-full", "percent-100-level"},
        {"percent-100-full", "percent-100-plug"},
        {"percent-100-full", "percent-100-bolt"},
        {"percent-87-bolt", "percent-17-bolt"},
        {"battery-0", "battery-25"},
        {"battery-25", "battery-50"},
        {"battery-50", "battery-75"},
        {"battery-75", "battery-100"},
        {"battery-100", "battery-100percent"},
        {"battery-100", "battery-100-bolt"},
        {"battery-100percent", "battery-100-bolt"},
        {"battery-100-bolt", "powerplug-fill"},
    };
    const std::map<fs::path, QByteArray> contents = glyphs();
    int compared = 0;
    for (const auto& [one, other] : pairs) {
        for (const char* size : {"16x16", "scalable"}) {
            const fs::path folder = programFile("share/velmora/icons/hicolor") / size / "status";
            const auto first = contents.find(folder / (std::string("velmora-") + one + "-symbolic.svg"));
            const auto second = contents.find(folder / (std::string("velmora-") + other + "-symbolic.svg"));
            if (first == contents.end() || second == contents.end())
                continue; // those with numbers are there in one size
            ++compared;
            const QImage image = drawn(first->second);
            EXPECT_GE(difference(image, drawn(second->second)), image.width() * image.width() / 40)
                << one << " and " << other << ", " << size;
        }
    }
    EXPECT_EQ(compared, 9 + 2 * 8);
}

TEST(GlyphFiles, HaveAMarkWhenTheBatteryIsLow) {
    const fs::path folder = programFile("share/velmora/icons/hicolor/scalable/status");
    const std::map<fs::path, QByteArray> contents = glyphs();
    const auto glyph = [&](int percent) {
        return drawn(contents.at(folder / ("velmora-percent-" + std::to_string(percent) + "-level-symbolic.svg")));
    };
    // A stroke and a dot, with nothing between them.
    const auto hasMark = [](const QImage& image) {
        const auto isDrawn = [&](int y) { return qAlpha(image.pixel(17, y)) > 127; };
        return isDrawn(15) && isDrawn(18) && !isDrawn(19) && isDrawn(20) && isDrawn(21);
    };
    for (int percent = 0; percent <= 100; ++percent)
        EXPECT_EQ(hasMark(glyph(percent)), percent < 13) << percent;
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
