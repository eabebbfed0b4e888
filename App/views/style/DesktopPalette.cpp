// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/DesktopPalette.h"

#include "views/style/ViewStyle.h"

namespace {

QPalette darkPalette() {
    const QColor text(0xf2, 0xf2, 0xf5);
    QPalette palette(QColor(0x36, 0x36, 0x3c), QColor(0x1e, 0x1e, 0x20));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Base, QColor(0x28, 0x28, 0x2c));
    palette.setColor(QPalette::AlternateBase, QColor(0x2e, 0x2e, 0x32));
    palette.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3a, 0x3d));
    palette.setColor(QPalette::PlaceholderText, QColor(0xf2, 0xf2, 0xf2, 0x80));
    palette.setColor(QPalette::Link, QColor(0x6c, 0xb2, 0xf5));
    palette.setColor(QPalette::LinkVisited, QColor(0xc0, 0x9a, 0xf0));
    palette.setColor(QPalette::Highlight, QColor(0x3d, 0x8e, 0xe6));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x90, 0x90, 0x92));
    return palette;
}

/// Qt's own palette with our own backgrounds and text.
QPalette lightPalette(QPalette palette) {
    const QColor text(0x1c, 0x1c, 0x1e);
    palette.setColor(QPalette::Window, QColor(0xf3, 0xf3, 0xf6));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Button, QColor(0xf1, 0xf1, 0xf5));
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            palette.setColor(group, role, text);
    }
    palette.setColor(QPalette::Highlight, QColor(0x26, 0x76, 0xd9));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

/// Text in `one`, on the other; what is disabled can still be read.
QPalette blackAndWhite(const QColor& one, const QColor& other) {
    QPalette palette(other, other);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                            QPalette::BrightText, QPalette::PlaceholderText})
        palette.setColor(role, one);
    for (const auto role : {QPalette::Base, QPalette::AlternateBase, QPalette::ToolTipBase})
        palette.setColor(role, other);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
    const bool isDark = other.lightness() < one.lightness();
    palette.setColor(QPalette::Highlight, isDark ? QColor(0x6c, 0xb2, 0xf5) : QColor(0x0b, 0x4f, 0xa0));
    palette.setColor(QPalette::HighlightedText, other);
    palette.setColor(QPalette::Link, palette.color(QPalette::Highlight));
    return palette;
}

QPalette paletteOf(const Appearance::Colours& colours) {
    const auto colour = [](const Appearance::Colour& told) { return QColor(told[0], told[1], told[2]); };
    QPalette palette(colour(colours.button), colour(colours.window)); // with shades for edges and what is disabled
    palette.setColor(QPalette::WindowText, colour(colours.windowText));
    palette.setColor(QPalette::Base, colour(colours.base));
    palette.setColor(QPalette::Text, colour(colours.text));
    palette.setColor(QPalette::ButtonText, colour(colours.buttonText));
    palette.setColor(QPalette::Highlight, colour(colours.highlight));
    palette.setColor(QPalette::HighlightedText, colour(colours.highlightedText));
    QColor faint = palette.color(QPalette::Text);
    faint.setAlpha(0x80);
    palette.setColor(QPalette::PlaceholderText, faint);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    return palette;
}

} // namespace

QPalette desktopPalette(const QPalette& own, const Appearance& appearance) {
    if (appearance.colours)
        return paletteOf(*appearance.colours);
    const bool isDark = appearance.isDark.value_or(false);
    QPalette palette = isDark ? darkPalette() : appearance.isDark ? lightPalette(own) : own;
    if (appearance.hasHighContrast)
        palette = isDark ? blackAndWhite(Qt::white, Qt::black) : blackAndWhite(Qt::black, Qt::white);
    if (appearance.accent) {
        const auto part = [&](std::size_t i) { return static_cast<float>((*appearance.accent)[i]); };
        const QColor accent = QColor::fromRgbF(part(0), part(1), part(2));
        palette.setColor(QPalette::Highlight, accent);
        const bool whiteIsSeen = contrast(accent, Qt::white) >= contrast(accent, Qt::black);
        palette.setColor(QPalette::HighlightedText, whiteIsSeen ? Qt::white : Qt::black);
    }
    return palette;
}

QFont desktopFont(const QFont& own, const Appearance& appearance) {
    QFont font = own;
    if (appearance.font) {
        font.setFamilies({QString::fromStdString(appearance.font->family)});
        if (appearance.font->points > 0)
            font.setPointSizeF(appearance.font->points);
    }
    return font;
}
