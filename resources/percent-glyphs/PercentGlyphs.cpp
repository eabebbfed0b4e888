// SPDX-License-Identifier: GPL-3.0-or-later
//
// Writes the glyphs that carry the percentage, for panels that show an icon and no text:
// FOLDER/velmora-percent-<0..100>-<meaning>-symbolic.svg
#include "Meaning.h"
#include "Number.h"
#include "Shape.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

/// The number above, its meaning below, one unit of space between them.
// The colour comes from the style sheet alone, which Plasma replaces by its own: Qt 5 would rather take the colour of
// an attribute "fill". GTK and GNOME Shell overrule both.
std::string document(int percent, Meaning meaning) {
    Shape shape = moved(numberShape(percent), 1, 0);
    append(shape, moved(meaningShape(meaning, percent), 1, numberHeight + 1));
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- SPDX-License-Identifier: GPL-3.0-or-later -->
<svg xmlns="http://www.w3.org/2000/svg" width="22" height="22" viewBox="0 0 22 22" color="#7f7f7f">
  <style id="current-color-scheme" type="text/css">.ColorScheme-Text{color:#7f7f7f;}</style>
  <path class="ColorScheme-Text" style="fill:currentColor" fill-rule="evenodd"
        d=")" +
           pathData(shape) + "\"/>\n</svg>\n";
}

void write(const std::filesystem::path& file, const std::string& text) {
    std::ofstream stream;
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    stream.open(file, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
}

void writeGlyphs(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (int percent = 0; percent <= 100; ++percent) {
        for (const Meaning meaning : meanings) {
            std::string name = "velmora-percent-" + std::to_string(percent) + '-';
            name += meaningName(meaning);
            write(folder / (name + "-symbolic.svg"), document(percent, meaning));
        }
    }
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fputs("usage: percent_glyphs_generator FOLDER\n", stderr);
        return 2;
    }
    try {
        writeGlyphs(argv[1]);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "cannot write the glyphs into %s: %s\n", argv[1], problem.what());
        return 1;
    }
    return 0;
}
