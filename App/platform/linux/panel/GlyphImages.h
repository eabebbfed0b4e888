// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QImage>

#include <filesystem>
#include <string_view>
#include <vector>

/// Our glyphs: as files, for panels that draw them by name in their own colour, and as pictures for the others.
class GlyphImages {
public:
    /// The sizes that panels ask for, at scale 1 and 2, in pixels.
    static constexpr int sizes[] = {16, 22, 24, 32, 44, 48, 64};

    /// `iconTheme` is the folder "…/icons" that holds the glyphs.
    explicit GlyphImages(std::filesystem::path iconTheme);

    const std::filesystem::path& iconTheme() const { return iconTheme_; }

    /// Whether there is a glyph for the symbol, as a picture at least.
    bool has(std::string_view symbol) const;

    /// Whether there is one in a file, which a panel can draw by name.
    bool hasFile(std::string_view symbol) const;

    /// A picture of the same in each of the sizes; empty for a symbol without one.
    std::vector<QImage> images(std::string_view symbol) const;

    /// The pictures as an icon; null when there are none.
    QIcon icon(std::string_view symbol) const;

private:
    std::filesystem::path iconTheme_;
};
