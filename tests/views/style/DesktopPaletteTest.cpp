// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/DesktopPalette.h"

#include "support/BreezeDark.h"
#include "views/style/ViewStyle.h"

#include <gtest/gtest.h>

namespace {

const QPalette light(QColor(0xf0, 0xf0, 0xf0));

double readability(const QPalette& palette, QPalette::ColorRole text, QPalette::ColorRole background) {
    return contrast(palette.color(text), palette.color(background));
}

TEST(DesktopPalette, IsQtsOwnWhereTheDesktopSaysNothing) {
    EXPECT_EQ(desktopPalette(light, {}), light);
}

TEST(DesktopPalette, HasCardsLighterThanTheWindow) {
    for (const bool isDark : {false, true}) {
        const QPalette palette = desktopPalette(light, {.isDark = isDark, .accent = {}, .font = {}});
        EXPECT_EQ(cardColor(palette), palette.color(QPalette::Base));
        EXPECT_NE(cardColor(palette), palette.color(QPalette::Window));
        EXPECT_GE(readability(palette, QPalette::WindowText, QPalette::Base), 10);
        EXPECT_GE(readability(palette, QPalette::HighlightedText, QPalette::Highlight), 3);
    }
}

TEST(DesktopPalette, CanBeReadInTheDark) {
    const QPalette dark = desktopPalette(light, {.isDark = true, .accent = {}, .font = {}});
    EXPECT_LT(dark.color(QPalette::Window).lightness(), 64);
    EXPECT_GE(readability(dark, QPalette::WindowText, QPalette::Window), 7);
    EXPECT_GE(readability(dark, QPalette::ButtonText, QPalette::Button), 7);
    EXPECT_GE(readability(dark, QPalette::Text, QPalette::Base), 7);
    EXPECT_GE(readability(dark, QPalette::ToolTipText, QPalette::ToolTipBase), 7);
    EXPECT_GE(readability(dark, QPalette::Link, QPalette::Base), 4.5);
}

TEST(DesktopPalette, IsBlackAndWhiteWhereTheDesktopWantsHighContrast) {
    for (const bool isDark : {false, true}) {
        Appearance appearance;
        appearance.isDark = isDark;
        appearance.hasHighContrast = true;
        const QPalette palette = desktopPalette(light, appearance);
        EXPECT_EQ(palette.color(QPalette::Window), isDark ? Qt::black : Qt::white);
        EXPECT_EQ(palette.color(QPalette::WindowText), isDark ? Qt::white : Qt::black);
        EXPECT_GE(readability(palette, QPalette::Text, QPalette::Base), 20.9);
        EXPECT_GE(readability(palette, QPalette::ButtonText, QPalette::Button), 20.9);
        EXPECT_GE(readability(palette, QPalette::HighlightedText, QPalette::Highlight), 7);
        appearance.accent = {{0.5, 0.5, 0.5}};
        EXPECT_EQ(desktopPalette(light, appearance).color(QPalette::Highlight), QColor::fromRgbF(0.5F, 0.5F, 0.5F));
    }
}

TEST(DesktopPalette, IsMadeOfTheColoursThatTheDesktopTells) {
    Appearance appearance;
    appearance.isDark = false;
    appearance.colours = breezeDark;
    const QPalette told = desktopPalette(light, appearance);
    EXPECT_EQ(told.color(QPalette::Window), QColor(42, 46, 50));
    EXPECT_EQ(told.color(QPalette::WindowText), QColor(250, 250, 250));
    EXPECT_EQ(told.color(QPalette::Base), QColor(27, 30, 32));
    EXPECT_EQ(told.color(QPalette::Text), QColor(251, 251, 251));
    EXPECT_EQ(told.color(QPalette::Button), QColor(49, 54, 59));
    EXPECT_EQ(told.color(QPalette::ButtonText), QColor(252, 252, 252));
    EXPECT_EQ(told.color(QPalette::Highlight), QColor(61, 174, 233));
    EXPECT_EQ(told.color(QPalette::HighlightedText), QColor(253, 253, 253));
    EXPECT_GE(readability(told, QPalette::WindowText, QPalette::Window), 7);
}

TEST(DesktopPalette, TheAccentIsTheColourOfWhatIsChosen) {
    const std::array<std::array<double, 3>, 4> accents{
        {{0.2, 0.52, 0.89}, {0.9, 0.9, 0.1}, {0.57, 0.25, 0.67}, {0, 0, 0}}};
    for (const auto& accent : accents) {
        const QPalette palette = desktopPalette(light, {.isDark = {}, .accent = accent, .font = {}});
        EXPECT_EQ(palette.color(QPalette::Highlight),
                  QColor::fromRgbF(static_cast<float>(accent[0]), static_cast<float>(accent[1]),
                                   static_cast<float>(accent[2])));
        EXPECT_GE(readability(palette, QPalette::HighlightedText, QPalette::Highlight), 4.5);
        EXPECT_EQ(palette.color(QPalette::Window), light.color(QPalette::Window));
    }
}

TEST(DesktopPalette, TheFontIsTheDesktopsInTheSizeThatItTells) {
    const QFont own(QStringLiteral("Sans Serif"), 9);
    EXPECT_EQ(desktopFont(own, {}), own);
    const QFont told = desktopFont(own, {.isDark = {}, .accent = {}, .font = Appearance::Font{"Cantarell", 11}});
    EXPECT_EQ(told.family(), QStringLiteral("Cantarell"));
    EXPECT_EQ(told.pointSizeF(), 11);
    const QFont unsized = desktopFont(own, {.isDark = {}, .accent = {}, .font = Appearance::Font{"Cantarell", 0}});
    EXPECT_EQ(unsized.pointSizeF(), 9);
}

} // namespace
