// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QImage>

#include <filesystem>
#include <string_view>
#include <vector>

/// Our glyphs as images, for panels that do not draw them by name in their own colour. We cannot find out that colour,
/// so the images have two tones, one of which is visible on any colour.
class GlyphImages {
public:
    /// The sizes that panels ask for, at scale 1 and 2, in pixels.
    static constexpr int sizes[] = {16, 22, 24, 32, 44, 48, 64};

    /// `iconTheme` is the folder "…/icons" that holds the glyphs.
    explicit GlyphImages(std::filesystem::path iconTheme);

    const std::filesystem::path& iconTheme() const { return iconTheme_; }

    /// Whether there is a glyph for the symbol.
    bool has(std::string_view symbol) const;

    /// The glyph in each of the sizes, ARGB32; empty when there is none.
    std::vector<QImage> images(std::string_view symbol) const;

    /// The glyph as an icon; null when there is none.
    QIcon icon(std::string_view symbol) const;

private:
    std::filesystem::path iconTheme_;

    std::filesystem::path file(std::string_view symbol) const;
};
