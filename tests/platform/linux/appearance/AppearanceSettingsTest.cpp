// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/AppearanceSettings.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Font = Appearance::Font;

std::optional<Font> font(const char* name, std::optional<double> scale = std::nullopt) {
    DesktopSettings settings;
    settings.fontName = name;
    settings.textScale = scale;
    return appearanceOf(settings).font;
}

std::optional<bool> isDark(std::optional<std::uint32_t> scheme, const char* theme = nullptr) {
    DesktopSettings settings;
    settings.colorScheme = scheme;
    if (theme != nullptr)
        settings.themeName = theme;
    return appearanceOf(settings).isDark;
}

std::optional<std::array<double, 3>> accent(double red, double green, double blue) {
    DesktopSettings settings;
    settings.accentColor = {red, green, blue};
    return appearanceOf(settings).accent;
}

TEST(Appearance, IsQtsOwnWhereTheDesktopSaysNothing) {
    EXPECT_EQ(appearanceOf({}), Appearance());
}

TEST(Appearance, IsDarkWhereTheSchemeSaysSo) {
    EXPECT_EQ(isDark(1), true);
    EXPECT_EQ(isDark(2), false);
    EXPECT_EQ(isDark(0), std::nullopt);
    EXPECT_EQ(isDark(7), std::nullopt);
}

TEST(Appearance, TheThemesNameDecidesOnlyWithoutAScheme) {
    EXPECT_EQ(isDark(std::nullopt, "Adwaita-dark"), true);
    EXPECT_EQ(isDark(0, "Yaru-Dark"), true);
    EXPECT_EQ(isDark(0, "Adwaita"), false);
    EXPECT_EQ(isDark(2, "Adwaita-dark"), false);
    EXPECT_EQ(isDark(1, "Adwaita"), true);
}

TEST(Appearance, HasHighContrastWhereThePortalOrTheThemeSaysSo) {
    const auto contrast = [](std::optional<std::uint32_t> told, const char* theme) {
        DesktopSettings settings;
        settings.contrast = told;
        if (theme != nullptr)
            settings.themeName = theme;
        return appearanceOf(settings).hasHighContrast;
    };
    EXPECT_TRUE(contrast(1, nullptr));
    EXPECT_FALSE(contrast(0, nullptr));
    EXPECT_FALSE(contrast(2, nullptr));
    EXPECT_FALSE(contrast(std::nullopt, "Adwaita"));
    for (const char* theme : {"HighContrast", "HighContrastInverse", "ContrastHigh", "ContrastHighInverse"})
        EXPECT_TRUE(contrast(0, theme)) << theme;
    EXPECT_TRUE(appearanceOf({}, {.themeName = "HighContrast", .fontName = {}}).hasHighContrast);
    EXPECT_EQ(appearanceOf({}, {.themeName = "HighContrast", .fontName = {}}).isDark, false);
    EXPECT_EQ(appearanceOf({}, {.themeName = "HighContrastInverse", .fontName = {}}).isDark, true);
    EXPECT_EQ(isDark(std::nullopt, "ContrastHighInverse"), true);
    EXPECT_EQ(isDark(std::nullopt, "Inverse"), false);
}

TEST(Appearance, IsDarkByAWordInTheThemesName) {
    for (const char* dark : {"Adwaita-dark", "Greybird-dark", "Arc-Dark", "Breezedark", "Materia-dark-compact", "dark",
                             "Yaru_dark", "Some dark theme", "Yaru-blue-DARK"})
        EXPECT_EQ(isDark(std::nullopt, dark), true) << dark;
    for (const char* light :
         {"Adwaita", "Greybird", "Arc-Darker", "Arc-Darker-solid", "Darkroom", "", "-", "Lavendark-x"})
        EXPECT_EQ(isDark(std::nullopt, light), false) << light;
}

TEST(Appearance, XfceKnowsItsThemeAndFontBetterThanItsPortal) {
    DesktopSettings portal;
    portal.colorScheme = 0;
    portal.themeName = "Adwaita";
    portal.fontName = "Cantarell 11";
    portal.textScale = 1.5;
    EXPECT_EQ(appearanceOf(portal, {.themeName = "Greybird-dark", .fontName = "Sans 10"}),
              (Appearance{.isDark = true, .accent = {}, .font = Font{"Sans", 10}}));
    EXPECT_EQ(appearanceOf(portal, {}), (Appearance{.isDark = false, .accent = {}, .font = Font{"Cantarell", 16.5}}));
    portal.colorScheme = 2;
    EXPECT_EQ(appearanceOf(portal, {.themeName = "Greybird-dark", .fontName = {}}).isDark, false)
        << "a scheme is what the user has chosen for all programs";
    EXPECT_EQ(appearanceOf({}, {.themeName = "Greybird", .fontName = {}}),
              (Appearance{.isDark = false, .accent = {}, .font = {}}));
}

TEST(Appearance, KnowsXfce) {
    for (const char* desktops : {"XFCE", "xfce", "X-Xubuntu:XFCE"})
        EXPECT_TRUE(isXfce(desktops)) << desktops;
    for (const char* desktops : {"", "GNOME", "XFCE4"})
        EXPECT_FALSE(isXfce(desktops)) << desktops;
}

TEST(Appearance, AnAccentBeyondTheLimitsIsNone) {
    EXPECT_EQ(accent(0, 0.5, 1), (std::array{0.0, 0.5, 1.0}));
    EXPECT_EQ(accent(-0.1, 0.5, 1), std::nullopt);
    EXPECT_EQ(accent(0, 1.1, 1), std::nullopt);
    EXPECT_EQ(accent(0, 0, std::numeric_limits<double>::quiet_NaN()), std::nullopt);
}

TEST(Appearance, TakesFamilyAndSizeOfTheFont) {
    EXPECT_EQ(font("Cantarell 11"), (Font{"Cantarell", 11}));
    EXPECT_EQ(font("Noto Sans 10.5"), (Font{"Noto Sans", 10.5}));
    EXPECT_EQ(font("Noto Sans, 10"), (Font{"Noto Sans", 10}));
    EXPECT_EQ(font("Ubuntu Semi-Bold Italic 12"), (Font{"Ubuntu", 12}));
    EXPECT_EQ(font("Source Sans 3"), (Font{"Source Sans", 0})) << "a size that nobody means";
    EXPECT_EQ(font("Sans"), (Font{"Sans", 0}));
    EXPECT_EQ(font("Bold"), (Font{"Bold", 0}));
    EXPECT_EQ(font("12"), (Font{"12", 0}));
    EXPECT_EQ(font("Sans 0"), (Font{"Sans", 0}));
    EXPECT_EQ(font("Sans -3"), (Font{"Sans", 0}));
    EXPECT_EQ(font("Sans 9000"), (Font{"Sans", 0}));
    EXPECT_EQ(font("Sans nan"), (Font{"Sans", 0}));
    EXPECT_EQ(font("Sans 11px"), (Font{"Sans 11px", 0}));
    EXPECT_EQ(font(""), std::nullopt);
    EXPECT_EQ(font(" , "), std::nullopt);
}

TEST(Appearance, LargerTextIsALargerFont) {
    EXPECT_EQ(font("Cantarell 11", 1.5), (Font{"Cantarell", 16.5}));
    EXPECT_EQ(font("Cantarell 11", 0.1), (Font{"Cantarell", 11}));
    EXPECT_EQ(font("Cantarell 11", 100), (Font{"Cantarell", 11}));
    EXPECT_EQ(font("Cantarell 11", std::numeric_limits<double>::quiet_NaN()), (Font{"Cantarell", 11}));
}

TEST(Appearance, RefusesTheGtkOnItsDesktops) {
    for (const char* desktops : {"GNOME", "ubuntu:GNOME", "XFCE", "MATE", "X-Cinnamon", "Budgie:GNOME"})
        EXPECT_TRUE(refusesQtPlatformTheme(desktops, "")) << desktops;
    for (const char* desktops : {"KDE", "LXQt", "sway", "", ":", "NOGNOME", "GNOME2"})
        EXPECT_FALSE(refusesQtPlatformTheme(desktops, "")) << desktops;
    EXPECT_FALSE(refusesQtPlatformTheme("GNOME", "gtk3")) << "the user's choice comes first";
}

TEST(Appearance, FollowsThePortalWhereNobodyElseKnowsTheLook) {
    for (const char* desktops : {"GNOME", "XFCE", "sway", ""})
        EXPECT_TRUE(followsPortal(desktops, "")) << desktops;
    for (const char* desktops : {"KDE", "LXQt"})
        EXPECT_FALSE(followsPortal(desktops, "")) << desktops;
    EXPECT_FALSE(followsPortal("GNOME", "qt6ct"));
}

TEST(AppearanceSettings, OnPlasmaQtsOwnThemeIsFollowed) {
    EXPECT_TRUE(followsKde("KDE", ""));
    EXPECT_TRUE(followsKde("KDE", "kde"));
    EXPECT_FALSE(followsKde("KDE", "qt6ct"));
    for (const char* desktops : {"", "GNOME", "XFCE", "LXQt", "KDEish"})
        EXPECT_FALSE(followsKde(desktops, "")) << desktops;
}

} // namespace
