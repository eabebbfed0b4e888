#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Makes the bundle out of a finished build: make_app.sh [BUILD_DIR [OUTPUT]]
# The bundle is an AppDir: it runs from wherever it is put, by OUTPUT/AppRun.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=${1:-$here/build/default}
output=${2:-$here/build/Velmora.app}
id=app.velmora.Velmora

if [ ! -x "$build/bin/velmora" ]; then
    echo "make_app.sh: there is no program in $build yet; build it first (./run.sh does both)" >&2
    exit 1
fi

# Beside the place it goes to, so that putting it there is a rename, and nothing of an older bundle stays behind.
mkdir -p "$(dirname "$output")"
work=$(mktemp -d "$output.XXXXXX")
trap 'rm -rf "$work"' EXIT
new=$work/new

cmake --install "$build" --prefix "$new/usr" --strip >"$work/install.log" || { cat "$work/install.log" >&2; exit 1; }
ln -s usr/bin/velmora "$new/AppRun"
ln -s "usr/share/applications/$id.desktop" "$new/$id.desktop"
ln -s "usr/share/icons/hicolor/scalable/apps/$id.svg" "$new/$id.svg"
ln -s "$id.svg" "$new/.DirIcon"
for file in AppRun "$id.desktop" "$id.svg" .DirIcon; do
    [ -r "$new/$file" ] || { echo "make_app.sh: the build installs nothing for $file" >&2; exit 1; }
done

[ ! -e "$output" ] || mv "$output" "$work/old"
mv "$new" "$output"
echo "Made $output"
