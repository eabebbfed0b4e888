// SPDX-License-Identifier: GPL-3.0-or-later
// A window in one family of letters, where the digits of the desktop's font differ in width.
#include "support/PopoverScene.h"
#include "views/popover/PopoverView.h"
#include "views/popover/RingView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFontDatabase>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

class OneFamily : public testing::Test {
protected:
    const QFont usual = QApplication::font();
    const int id = QFontDatabase::addApplicationFont(QStringLiteral(VELMORA_FONTS "/Uneven.ttf"));

    OneFamily() { QApplication::setFont(QFont(QStringLiteral("Velmora Uneven"), 11)); }
    ~OneFamily() override {
        QApplication::setFont(usual);
        QFontDatabase::removeApplicationFont(id);
    }
};

/// Where the text of a ring is drawn, on the line through the middle: its pixels from the left, by their darkness.
std::vector<bool> middleOfRing(std::int64_t percent) {
    RingView ring;
    QPalette colours(Qt::black, Qt::white);
    colours.setColor(QPalette::WindowText, Qt::black);
    ring.setPalette(colours);
    ring.setContent(percent, Qt::red, Qt::yellow);
    const QImage picture = ring.grab().toImage();
    std::vector<bool> dark;
    for (int x = 12; x < picture.width() - 12; ++x)
        dark.push_back(picture.pixelColor(x, picture.height() / 2).lightness() < 64);
    return dark;
}

} // namespace

TEST_F(OneFamily, IsWhatAllTextsOfThePopoverAreIn) {
    ASSERT_GE(id, 0);
    PopoverScene scene;
    PopoverView view(
        scene.started(), scene.fake.platform(), [] {}, [] {});
    view.setFixedWidth(340);
    view.rebuild();
    view.show();
    view.findChild<QAbstractButton*>(QStringLiteral("dailySummaryDisclosure"))->click();
    int texts = 0;
    for (const auto* label : view.findChildren<QLabel*>()) {
        if (!label->isVisible() || label->text().isEmpty())
            continue;
        ++texts;
        EXPECT_EQ(QFontInfo(label->font()).family(), QStringLiteral("Velmora Uneven")) << label->text().toStdString();
    }
    EXPECT_GT(texts, 40) << "with the table";
}

TEST_F(OneFamily, IsWhatTheRingsNumberIsInWhichDoesNotShift) {
    const std::vector<bool> narrow = middleOfRing(11);
    const std::vector<bool> wide = middleOfRing(44);
    // All letters of this font are boxes, and there is nothing else but the gaps between them.
    EXPECT_GT(std::count(wide.begin(), wide.end(), true), 35);
    const auto lastGap = [](const std::vector<bool>& pixels) {
        const auto end = std::find(pixels.rbegin(), pixels.rend(), true);
        return std::find(end, pixels.rend(), false) - pixels.rbegin();
    };
    EXPECT_EQ(lastGap(narrow), lastGap(wide)) << "the percent sign stays where it is";
    EXPECT_GT(std::count(wide.begin(), wide.end(), true), std::count(narrow.begin(), narrow.end(), true) + 10)
        << "and yet the digits are the font's own";
}
