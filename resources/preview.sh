#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Draws contact sheets of all icon files, to be judged by eye. For the pictures that panels get which cannot recolour
# glyphs, see pictures/glyphs.png in the build folder, which the test of GlyphImages makes.
# Usage: preview.sh FOLDER [NUMBERS]
# NUMBERS is the folder with the generated percentage glyphs: share/velmora/icons/hicolor/scalable/status in a build
# folder.
# Needs rsvg-convert and ImageMagick (convert, montage).
#
# Glyph columns are in the order of $glyphs below; rows are 16 px, which has files of its own, and the sizes in $sizes.
#   glyphs-light-on-dark.png, glyphs-dark-on-light.png   recoloured, as by a panel
#   glyphs-plain-on-dark.png, glyphs-plain-on-light.png  as they are in the files
#   glyphs-16-enlarged-*.png, glyphs-22-enlarged-*.png   those sizes, every pixel eight times as large
#   application-on-dark.png, application-on-light.png    the application icon, 16 to 256 px
# With NUMBERS: columns are the percentages in $numbers, rows the meanings in $meanings, for each of the sizes.
#   numbers-light-on-dark.png, -dark-on-light.png, -plain-on-dark.png, -plain-on-light.png
#   numbers-22-enlarged-*.png                            the 22 px ones, every pixel eight times as large
set -eu

if [ $# -ne 1 ] && [ $# -ne 2 ]; then
    echo "usage: $0 FOLDER [NUMBERS]" >&2
    exit 2
fi

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
mkdir -p -- "$1"
out=$(CDPATH='' cd -- "$1" && pwd)
generated=
if [ $# -eq 2 ]; then
    generated=$(CDPATH='' cd -- "$2" && pwd)
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 1' HUP INT TERM

own='#7f7f7f'
light='#f2f2f2'
dark='#1e1e1e'
white='#ffffff'
sizes='22 24 32 44 48 64'
glyphs='battery-0 battery-25 battery-50 battery-75 battery-100 battery-100percent battery-100-bolt
        bolt-fill powerplug-fill powerplug'
numbers='0 5 9 17 20 38 46 53 68 79 80 99 100'
meanings='level bolt plug full'

# append FILE COLOUR ROW...: stacks pictures, left-aligned
append() {
    target=$1
    shift
    background=$1
    shift
    convert -background "$background" "$@" -append "$target"
}

# recolour FOLDER COLOUR GLYPH...: puts glyphs into the scratch folder, as a panel would draw them
recolour() {
    source=$1
    colour=$2
    shift 2
    for glyph in "$@"; do
        sed "s/$own/$colour/g" "$source/velmora-$glyph-symbolic.svg" >"$glyph.svg"
    done
}

# row FILE SIZE BACKGROUND GLYPH...: draws glyphs side by side
row() {
    target=$1
    size=$2
    background=$3
    shift 3
    pictures=
    for glyph in "$@"; do
        rsvg-convert -w "$size" -h "$size" -o "$size-$glyph.png" "$glyph.svg"
        pictures="$pictures $size-$glyph.png"
    done
    # shellcheck disable=SC2086 # a list of names without spaces
    montage -background "$background" -tile x1 -geometry +10+10 $pictures "$target"
}

# enlarged FILE SIZE COLUMNS BACKGROUND GLYPH...: glyphs that have been drawn, every pixel eight times as large
enlarged() {
    target=$1
    size=$2
    columns=$3
    background=$4
    shift 4
    pictures=
    for glyph in "$@"; do
        convert "$size-$glyph.png" -background "$background" -flatten -filter point -resize 800% "large-$glyph.png"
        pictures="$pictures large-$glyph.png"
    done
    # shellcheck disable=SC2086
    montage -background "$background" -tile "${columns}x" -geometry +16+16 $pictures "$target"
}

# glyph_sheet NAME FOREGROUND BACKGROUND
# shellcheck disable=SC2086
glyph_sheet() {
    cd "$scratch"
    rm -f ./*
    recolour "$here/glyphs/hicolor/16x16/status" "$2" $glyphs
    row row-16.png 16 "$3" $glyphs
    enlarged "$out/glyphs-16-enlarged-$1.png" 16 5 "$3" $glyphs
    recolour "$here/glyphs/hicolor/scalable/status" "$2" $glyphs
    rows=row-16.png
    for size in $sizes; do
        row "row-$size.png" "$size" "$3" $glyphs
        rows="$rows row-$size.png"
    done
    append "$out/glyphs-$1.png" "$3" $rows
    enlarged "$out/glyphs-22-enlarged-$1.png" 22 5 "$3" $glyphs
}

# number_sheet NAME FOREGROUND BACKGROUND
# shellcheck disable=SC2086
number_sheet() {
    cd "$scratch"
    rm -f ./*
    all=
    for meaning in $meanings; do
        for percent in $numbers; do
            all="$all percent-$percent-$meaning"
        done
    done
    recolour "$generated" "$2" $all
    rows=
    for size in $sizes; do
        for meaning in $meanings; do
            names=
            for percent in $numbers; do
                names="$names percent-$percent-$meaning"
            done
            row "row-$size-$meaning.png" "$size" "$3" $names
            rows="$rows row-$size-$meaning.png"
        done
    done
    append "$out/numbers-$1.png" "$3" $rows
    # shellcheck disable=SC2046
    enlarged "$out/numbers-22-enlarged-$1.png" 22 $(echo $numbers | wc -w) "$3" $all
}

# sheets NAME FOREGROUND BACKGROUND
sheets() {
    glyph_sheet "$@"
    if [ -n "$generated" ]; then
        number_sheet "$@"
    fi
}

# application NAME BACKGROUND
application() {
    cd "$scratch"
    rm -f ./*
    pictures=
    for size in 16 22 24 32 48 64 128 256; do
        rsvg-convert -w "$size" -h "$size" -o "$size.png" "$here/icons/hicolor/scalable/apps/app.velmora.Velmora.svg"
        convert "$size.png" -background "$2" -flatten -bordercolor "$2" -border 10 "$size-on.png"
        pictures="$pictures $size-on.png"
    done
    # shellcheck disable=SC2086
    convert -background "$2" -gravity center $pictures +append "$out/application-$1.png"
}

sheets light-on-dark "$light" "$dark"
sheets dark-on-light "$dark" "$white"
sheets plain-on-dark "$own" "$dark"
sheets plain-on-light "$own" "$white"
application on-dark "$dark"
application on-light "$white"
echo "sheets are in $out"
