#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Draws contact sheets of all icons, to be judged by eye.
# Usage: preview.sh FOLDER
# Needs rsvg-convert and ImageMagick (convert, montage).
#
# Glyph columns are in the order of $glyphs below, rows are the sizes of $sizes.
#   glyphs-light-on-dark.png, glyphs-dark-on-light.png   recoloured, as a panel would
#   glyphs-plain-on-dark.png, glyphs-plain-on-light.png  as they are in the files
#   glyphs-16-enlarged-*.png                             the 16 px ones, every pixel eight times as large
#   application-on-dark.png, application-on-light.png    the application icon, 16 to 256 px
set -eu

if [ $# -ne 1 ]; then
    echo "usage: $0 FOLDER" >&2
    exit 2
fi

icons=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)/icons/hicolor
mkdir -p -- "$1"
out=$(CDPATH='' cd -- "$1" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 1' HUP INT TERM

own='#7f7f7f'
light='#f2f2f2'
dark='#1e1e1e'
white='#ffffff'
sizes='16 22 24 32 44 48 64'
glyphs='battery-0 battery-25 battery-50 battery-75 battery-100 battery-100percent battery-100-bolt
        bolt-fill powerplug-fill powerplug'

# append FILE COLOUR ROW...: stacks pictures, left-aligned
append() {
    target=$1
    shift
    background=$1
    shift
    convert -background "$background" "$@" -append "$target"
}

# sheet NAME FOREGROUND BACKGROUND
sheet() {
    cd "$scratch"
    rm -f ./*
    for glyph in $glyphs; do
        sed "s/$own/$2/g" "$icons/scalable/status/velmora-$glyph-symbolic.svg" >"$glyph.svg"
    done
    rows=
    for size in $sizes; do
        pictures=
        for glyph in $glyphs; do
            rsvg-convert -w "$size" -h "$size" -o "$size-$glyph.png" "$glyph.svg"
            pictures="$pictures $size-$glyph.png"
        done
        # shellcheck disable=SC2086 # a list of names without spaces
        montage -background "$3" -tile x1 -geometry +10+10 $pictures "row-$size.png"
        rows="$rows row-$size.png"
    done
    # shellcheck disable=SC2086
    append "$out/glyphs-$1.png" "$3" $rows

    pictures=
    for glyph in $glyphs; do
        convert "16-$glyph.png" -background "$3" -flatten -filter point -resize 800% "large-$glyph.png"
        pictures="$pictures large-$glyph.png"
    done
    # shellcheck disable=SC2086
    montage -background "$3" -tile 5x -geometry +16+16 $pictures "$out/glyphs-16-enlarged-$1.png"
}

# application NAME BACKGROUND
application() {
    cd "$scratch"
    rm -f ./*
    pictures=
    for size in 16 22 24 32 48 64 128 256; do
        rsvg-convert -w "$size" -h "$size" -o "$size.png" "$icons/scalable/apps/app.velmora.Velmora.svg"
        convert "$size.png" -background "$2" -flatten -bordercolor "$2" -border 10 "$size-on.png"
        pictures="$pictures $size-on.png"
    done
    # shellcheck disable=SC2086
    convert -background "$2" -gravity center $pictures +append "$out/application-$1.png"
}

sheet light-on-dark "$light" "$dark"
sheet dark-on-light "$dark" "$white"
sheet plain-on-dark "$own" "$dark"
sheet plain-on-light "$own" "$white"
application on-dark "$dark"
application on-light "$white"
echo "sheets are in $out"
