// SPDX-License-Identifier: GPL-3.0-or-later
// What can be pressed, and what shows a value, can be told from what is behind it: measured in pictures.
#include "views/popover/GaugeBar.h"
#include "views/popover/SegmentedPicker.h"
#include "views/settings/ToggleSwitch.h"
#include "views/style/DesktopPalette.h"
#include "views/style/ThinScrollBar.h"
#include "views/style/ViewStyle.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

struct Look {
    const char* name;
    Appearance appearance;
    double leastContrast;
};

Appearance appearance(bool isDark, bool hasHighContrast, std::optional<std::array<double, 3>> accent = std::nullopt) {
    Appearance made;
    made.isDark = isDark;
    made.hasHighContrast = hasHighContrast;
    made.accent = accent;
    return made;
}

class ContrastTest : public testing::TestWithParam<Look> {
protected:
    const QPalette usual = QApplication::palette();

    ContrastTest() {
        QApplication::setPalette(desktopPalette(QApplication::style()->standardPalette(), GetParam().appearance));
    }
    ~ContrastTest() override { QApplication::setPalette(usual); }

    /// The picture of a widget on a background, in which there is no text.
    static QImage picture(QWidget& widget, const QColor& background) {
        widget.resize(widget.sizeHint());
        QImage image(widget.size(), QImage::Format_RGB32);
        image.fill(background);
        widget.render(&image, {}, {}, QWidget::DrawChildren);
        return image;
    }
};

} // namespace

TEST_P(ContrastTest, ASwitchCanBeSeenAndSoCanItsKnob) {
    const QColor card = QApplication::palette().color(QPalette::Base);
    for (const bool isOn : {false, true}) {
        ToggleSwitch toggle;
        toggle.setChecked(isOn);
        const QImage image = picture(toggle, card);
        const int y = image.height() / 2;
        const QColor left = image.pixelColor(14, y);
        const QColor right = image.pixelColor(image.width() - 14, y);
        const QColor& track = isOn ? left : right;
        const QColor& knob = isOn ? right : left;
        EXPECT_GE(contrast(track, image.pixelColor(0, 0)), GetParam().leastContrast) << isOn;
        EXPECT_GE(contrast(track, knob), 3) << isOn;
    }
}

TEST_P(ContrastTest, TheChosenSegmentHasAnEdge) {
    SegmentedPicker picker({QStringLiteral("a"), QStringLiteral("b")});
    picker.resize(300, picker.sizeHint().height());
    QImage image(picker.size(), QImage::Format_RGB32);
    picker.render(&image, {}, {}, QWidget::DrawWindowBackground | QWidget::DrawChildren);
    const int y = image.height() / 2;
    const QColor trough = image.pixelColor(image.width() - 20, y);
    double edge = 1;
    for (int x = 0; x < 8; ++x)
        edge = std::max(edge, contrast(image.pixelColor(x, y), trough));
    EXPECT_GE(edge, GetParam().leastContrast);
}

TEST_P(ContrastTest, TheHandleOfAScrollBarCanBeSeen) {
    QScrollBar other(Qt::Vertical);
    other.setRange(0, 100);
    other.setPageStep(100);
    ThinScrollBar bar(&other, nullptr);
    bar.resize(ThinScrollBar::thickness, 200);
    QImage image(bar.size(), QImage::Format_RGB32);
    const QColor window = QApplication::palette().color(QPalette::Window);
    image.fill(window);
    bar.render(&image, {}, {}, QWidget::DrawChildren);
    EXPECT_GE(contrast(image.pixelColor(ThinScrollBar::thickness / 2, 50), window), GetParam().leastContrast);
}

TEST_P(ContrastTest, AGaugeCanBeToldFromItsTrack) {
    const QPalette palette = QApplication::palette();
    for (const Tint tint : {Tint::accent, Tint::orange, Tint::red}) {
        GaugeBar bar;
        bar.setColors(tintColorOn(trackColor(palette), tint, palette, Use::graphics), trackColor(palette));
        bar.setRange(0, 2);
        bar.setValue(1);
        const QImage image = picture(bar, palette.color(QPalette::Window));
        const int y = image.height() / 2;
        EXPECT_GE(contrast(image.pixelColor(3, y), image.pixelColor(image.width() - 3, y)), GetParam().leastContrast);
    }
}

INSTANTIATE_TEST_SUITE_P(Looks, ContrastTest,
                         testing::Values(Look{"Light", appearance(false, false), 3},
                                         Look{"Dark", appearance(true, false), 3},
                                         Look{"LightYellowAccent", appearance(false, false, {{0.9, 0.9, 0.1}}), 3},
                                         Look{"DarkBlackAccent", appearance(true, false, {{0, 0, 0}}), 3},
                                         Look{"HighContrast", appearance(false, true), 4.5},
                                         Look{"HighContrastInverse", appearance(true, true), 4.5}),
                         [](const auto& each) { return each.param.name; });
