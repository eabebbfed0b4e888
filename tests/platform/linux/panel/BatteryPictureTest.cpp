// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/BatteryPicture.h"

#include "platform/linux/panel/GlyphImages.h"
#include "support/Contrast.h"

#include <QColor>
#include <QPainter>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using Sign = BatteryPicture::Sign;

QImage picture(const std::string& symbol, int size) {
    return draw(batteryPicture(symbol).value_or(BatteryPicture{}), size);
}

/// How many pixels of two pictures can be told apart once both are on the panel: those with a contrast of 3 to 1.
int difference(const QImage& one, const QImage& other, QRgb panel) {
    std::array<QImage, 2> seen;
    const std::array pictures{&one, &other};
    for (std::size_t i = 0; i < seen.size(); ++i) {
        seen[i] = QImage(one.size(), QImage::Format_RGB32);
        seen[i].fill(panel);
        QPainter(&seen[i]).drawImage(0, 0, *pictures[i]);
    }
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            count += contrast(seen[0].pixel(x, y), seen[1].pixel(x, y)) >= 3 ? 1 : 0;
    }
    return count;
}

/// The part of the picture above the battery, where the text is.
QImage textOf(const QImage& image) {
    return image.copy(0, 0, image.width(), image.height() / 2);
}

/// The square in the lower right corner, where a sign is.
QImage signOf(const QImage& image) {
    const int side = image.width() * 3 / 8;
    const int start = image.width() - std::max(1, image.width() / 22) - side;
    return image.copy(start, start, side, side);
}

/// The colours inside the battery below the text, from its left wall to its right one.
std::vector<QRgb> levelRow(const QImage& image) {
    const int margin = std::max(1, image.width() / 22);
    const int y = image.height() - margin - image.height() / 5;
    const QRgb wall = image.pixel(margin, y);
    std::vector<QRgb> colours;
    for (int x = 2 * margin; x < image.width() && image.pixel(x, y) != wall; ++x)
        colours.push_back(image.pixel(x, y));
    return colours;
}

} // namespace

TEST(BatteryPicture, ShowsWhatTheSymbolSays) {
    EXPECT_EQ(batteryPicture("battery.50"), (BatteryPicture{.text = "", .percent = 50, .sign = Sign::None}));
    EXPECT_EQ(batteryPicture("battery.0"), (BatteryPicture{.text = "", .percent = 0, .sign = Sign::Low}));
    EXPECT_EQ(batteryPicture("battery.100.bolt"), (BatteryPicture{.text = "", .percent = {}, .sign = Sign::Bolt}));
    EXPECT_EQ(batteryPicture("bolt.fill"), batteryPicture("battery.100.bolt"));
    EXPECT_EQ(batteryPicture("powerplug.fill"), (BatteryPicture{.text = "", .percent = {}, .sign = Sign::Plug}));
    EXPECT_EQ(batteryPicture("battery.100percent"), (BatteryPicture{.text = "", .percent = 100, .sign = Sign::Tick}));
    EXPECT_EQ(batteryPicture("percent.64.bolt"), (BatteryPicture{.text = "64", .percent = 64, .sign = Sign::Bolt}));
    EXPECT_EQ(batteryPicture("percent.13.level"), (BatteryPicture{.text = "13", .percent = 13, .sign = Sign::None}));
    EXPECT_EQ(batteryPicture("percent.12.level"), (BatteryPicture{.text = "12", .percent = 12, .sign = Sign::Low}));
    EXPECT_EQ(batteryPicture("time.1:45.64.plug"), (BatteryPicture{.text = "1:45", .percent = 64, .sign = Sign::Plug}));
    EXPECT_EQ(batteryPicture("time.0:09.8.level"), (BatteryPicture{.text = "0:09", .percent = 8, .sign = Sign::Low}));
    EXPECT_EQ(batteryPicture("percent.12.bolt"), (BatteryPicture{.text = "12", .percent = 12, .sign = Sign::Bolt}));
}

TEST(BatteryPicture, IsNotMadeForAnythingElse) {
    for (const char* symbol : {"",
                               ".",
                               "battery",
                               "battery.51",
                               "battery.0.level",
                               "percent",
                               "percent.64",
                               "percent.101.level",
                               "time.1:45",
                               "time.1:45.64",
                               "time..64.level",
                               "time.1 h.64.level",
                               "time.1:45.101.level",
                               "percent.-1.level",
                               "percent.64.sun",
                               "percent.64x.level",
                               "percent..level",
                               "percent.64.level.bolt",
                               "../percent.64.level",
                               "velmora-percent-64-level-symbolic"})
        EXPECT_FALSE(batteryPicture(symbol)) << symbol;
}

TEST(BatteryPicture, ShowsStatesThatCanBeToldApartInEverySize) {
    const std::vector<std::pair<const char*, const char*>> pairs{
        {"percent.8.level", "percent.55.level"},
        {"percent.55.level", "percent.55.bolt"},
        {"percent.55.level", "percent.55.plug"},
        {"percent.55.bolt", "percent.55.plug"},
        {"percent.100.full", "percent.100.plug"},
        {"percent.100.full", "percent.100.level"},
        {"percent.100.full", "percent.100.bolt"},
        {"percent.12.level", "percent.13.level"},
        {"percent.8.level", "percent.8.bolt"},
        {"percent.55.level", "percent.87.level"},
        {"battery.0", "battery.25"},
        {"battery.25", "battery.50"},
        {"battery.50", "battery.75"},
        {"battery.75", "battery.100"},
        {"battery.100", "battery.100percent"},
        {"battery.100.bolt", "powerplug.fill"},
        {"battery.100percent", "battery.100.bolt"},
        {"battery.0", "battery.100.bolt"},
        {"battery.0", "powerplug.fill"},
    };
    for (const auto& [one, other] : pairs) {
        for (const int size : GlyphImages::sizes) {
            for (const char* panel : {"#ffffff", "#f0f0f0", "#808080", "#222222", "#000000"}) {
                // One pixel in forty; a sign has twice as many.
                const int least = size * size / 40;
                EXPECT_GE(difference(picture(one, size), picture(other, size), QColor(panel).rgb()), least)
                    << one << " and " << other << " at " << size << " px on " << panel;
            }
        }
    }
}

TEST(BatteryPicture, HasSignsThatCanBeToldApart) {
    const std::array symbols{"percent.5.level", "percent.5.bolt", "percent.5.plug", "percent.5.full"};
    for (const int size : GlyphImages::sizes) {
        QImage tile = signOf(picture("percent.5.bolt", size));
        tile.fill(picture("percent.5.bolt", size).pixel(size / 2, 0));
        for (const char* one : symbols) {
            const QImage sign = signOf(picture(one, size));
            const int least = sign.width() * sign.width() / 6;
            EXPECT_GE(difference(sign, tile, qRgb(255, 255, 255)), least) << one << " at " << size << " px";
            for (const char* other : symbols) {
                if (one == other)
                    break;
                EXPECT_GE(difference(sign, signOf(picture(other, size)), qRgb(255, 255, 255)), least)
                    << one << " and " << other << " at " << size << " px";
            }
        }
    }
}

TEST(BatteryPicture, HasANumberWithMuchContrastOnWholePixels) {
    for (const char* symbol : {"percent.8.level", "percent.55.bolt", "percent.100.full"}) {
        for (const int size : GlyphImages::sizes) {
            const QImage text = textOf(picture(symbol, size));
            std::set<QRgb> colours;
            for (int y = 0; y < text.height(); ++y) {
                for (int x = 0; x < text.width(); ++x) {
                    if (text.pixel(x, y) != 0) // the tile has round corners
                        colours.insert(text.pixel(x, y));
                }
            }
            ASSERT_EQ(colours.size(), 2U) << symbol << " at " << size << " px";
            EXPECT_GE(contrast(*colours.begin(), *colours.rbegin()), 7) << symbol << " at " << size << " px";
        }
    }
}

TEST(BatteryPicture, HasDigitsThatCanBeToldApart) {
    for (const int size : GlyphImages::sizes) {
        for (int one = 0; one < 10; ++one) {
            for (int other = 0; other < one; ++other) {
                const auto text = [&](int digit) {
                    return textOf(picture("percent.2" + std::to_string(digit) + ".level", size));
                };
                EXPECT_GE(difference(text(one), text(other), qRgb(255, 255, 255)), size * size / 256 * 2)
                    << one << " and " << other << " at " << size << " px";
            }
        }
    }
}

TEST(BatteryPicture, HasTimesThatCanBeToldApart) {
    const std::vector<std::pair<const char*, const char*>> pairs{
        {"1:45", "1:46"}, {"1:45", "2:45"}, {"0:58", "0:59"}, {"2:08", "2:00"}, {"9:59", "12:05"}, {"12:05", "13:05"}};
    for (const int size : GlyphImages::sizes) {
        for (const auto& [one, other] : pairs) {
            const auto text = [size](const std::string& time) {
                return textOf(picture("time." + time + ".64.level", size));
            };
            EXPECT_GE(difference(text(one), text(other), qRgb(255, 255, 255)), std::max(2, size * size / 300))
                << one << " and " << other << " at " << size << " px";
        }
    }
}

TEST(BatteryPicture, LeavesTheMinutesOfManyHoursOutWhereThereIsNoRoom) {
    EXPECT_EQ(picture("time.12:05.64.level", 16), picture("time.12h.64.level", 16));
    EXPECT_NE(picture("time.12:05.64.level", 22), picture("time.12h.64.level", 22));
    EXPECT_NE(picture("time.9:59.64.level", 16), picture("time.9h.64.level", 16));
    EXPECT_EQ(picture("time.100:00.64.level", 22), picture("time.100h.64.level", 22));
}

TEST(BatteryPicture, FillsTheBatteryToTheLevel) {
    for (const char* meaning : {".level", ".bolt", ".plug", ".full"}) {
        for (const int size : GlyphImages::sizes) {
            double before = 0;
            for (int percent = 0; percent <= 100; ++percent) {
                const QImage image = picture("percent." + std::to_string(percent) + meaning, size);
                const QRgb tile = image.pixel(size / 2, 0);
                const std::vector<QRgb> row = levelRow(image);
                ASSERT_GE(row.size(), 4U);
                const auto empty = std::count(row.begin(), row.end(), tile);
                const double share = 1 - static_cast<double>(empty) / static_cast<double>(row.size());
                EXPECT_EQ(share == 0, percent == 0) << percent << meaning << " at " << size << " px";
                EXPECT_EQ(share == 1, percent == 100) << percent << meaning << " at " << size << " px";
                EXPECT_NEAR(share, percent / 100.0, 0.25) << percent << meaning << " at " << size << " px";
                if (percent > 0) {
                    EXPECT_GE(contrast(row.front(), tile), 4.5) << percent << meaning << " at " << size << " px";
                }
                // The battery gets longer where the mark for a low level ends.
                if (percent != 13) {
                    EXPECT_GE(share, before) << percent << meaning << " at " << size << " px";
                }
                before = share;
            }
        }
    }
}
