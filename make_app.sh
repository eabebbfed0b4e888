#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Packages a finished build:
#
#   make_app.sh [BUILD_DIR [OUTPUT]]       the bundle, an AppDir, which runs from any place by OUTPUT/AppRun
#   make_app.sh deb [BUILD_DIR [OUTPUT]]   the Debian package, which installs the bundle
#
# The same commit and the same tools always give a package with the same bytes.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/tools/packages.sh"
id=app.velmora.Velmora

what=bundle
if [ "${1:-}" = deb ]; then
    what=deb
    shift
fi
build=${1:-$here/build/default}
if [ ! -x "$build/bin/velmora" ]; then
    echo "make_app.sh: there is no program in $build yet; build it first (./run.sh does both)" >&2
    exit 1
fi

# make_bundle FOLDER: makes the bundle in a folder that does not exist yet.
make_bundle() {
    local new=$1 file
    cmake --install "$build" --prefix "$new/usr" --strip >"$work/install.log" ||
        { cat "$work/install.log" >&2; return 1; }
    ln -s usr/bin/velmora "$new/AppRun"
    ln -s "usr/share/applications/$id.desktop" "$new/$id.desktop"
    ln -s "usr/share/icons/hicolor/scalable/apps/$id.svg" "$new/$id.svg"
    ln -s "$id.svg" "$new/.DirIcon"
    for file in AppRun "$id.desktop" "$id.svg" .DirIcon; do
        [ -r "$new/$file" ] || { echo "make_app.sh: the build installs nothing for $file" >&2; return 1; }
    done
}

# The modification time of the files in the package: that of the last commit or, without git, of the changelog.
commit_time() {
    git -C "$here" log -1 --format=%ct 2>/dev/null || stat --format=%Y "$here/CHANGELOG.md"
}

if [ "$what" = bundle ]; then
    output=${2:-$here/build/Velmora.app}
    # Beside its destination, so that a rename puts it there and nothing of an older bundle stays behind.
    mkdir -p "$(dirname "$output")"
    work=$(mktemp -d "$output.XXXXXX")
    trap 'rm -rf "$work"' EXIT
    make_bundle "$work/new"
    [ ! -e "$output" ] || mv "$output" "$work/old"
    mv "$work/new" "$output"
    echo "Made $output"
    exit
fi

ensure_packages "${PACKAGE_PACKAGES[@]}"
output=${2:-$here/build/velmora.deb}
mkdir -p "$(dirname "$output")"
work=$(cd "$(mktemp -d "$output.XXXXXX")" && pwd)
trap 'rm -rf "$work"' EXIT
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(commit_time)}
umask 022

# debhelper's input: its rules, and the files that they name.
pack=$work/velmora
mkdir "$pack"
cp -r "$here/packaging/debian" "$here/CHANGELOG.md" "$pack"
make_bundle "$pack/Velmora.app"
mv "$pack/Velmora.app/usr/share/man" "$pack" # nobody looks for a man page in the bundle
for size in 16 22 24 32 48 64 128 256 512; do
    icons=$pack/icons/hicolor/${size}x$size/apps
    mkdir -p "$icons"
    rsvg-convert --width=$size --height=$size "$pack/Velmora.app/$id.svg" --output="$icons/$id.png"
done
# The revision marks the package as not Debian's own, and grows with each commit, so that apt sees an upgrade.
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
version+=-0local$(date --utc --date="@$SOURCE_DATE_EPOCH" +%Y%m%d%H%M%S)
maintainer=$(sed -n 's/^Maintainer: //p' "$pack/debian/control")
cat >"$pack/debian/changelog" <<END
velmora ($version) UNRELEASED; urgency=medium

  * What is new stands in the changelog of the program.

 -- $maintainer  $(LC_ALL=C date --utc --rfc-email --date="@$SOURCE_DATE_EPOCH")
END

# debhelper sets only later times to this one; those of a checkout may be earlier.
find "$pack" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
(cd "$pack" && DEB_RULES_REQUIRES_ROOT=no debian/rules binary >"$work/debhelper.log" 2>&1) ||
    { cat "$work/debhelper.log" >&2; exit 1; }
mv "$work"/velmora_*.deb "$output"
echo "Made $output, $version"
