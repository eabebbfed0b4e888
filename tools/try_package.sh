# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash disable=SC2154
# The steps of `tools/newcomer deb` on the systems that it has made. Sourced there, not run.

build='cmake --preset default -DVELMORA_TESTS=OFF -DVELMORA_BENCHMARKS=OFF
    cmake --build --preset default --target velmora
    ./make_app.sh deb'
elsewhere='another place/with a longer name'
newcomer "$build"
step "The same in another folder"
login "mkdir -p '$elsewhere'; cd '$elsewhere'; $fetch; cd velmora; $build"
step "They are the same bytes"
login "sha256sum velmora/build/velmora.deb '$elsewhere'/velmora/build/velmora.deb
    cmp velmora/build/velmora.deb '$elsewhere'/velmora/build/velmora.deb"
newcomer 'lintian --info --display-info --fail-on error,warning build/velmora.deb'
rm -rf "$top/build/newcomer"
mkdir -p "$top/build/newcomer"
package=$top/build/newcomer/velmora.deb
cp "$root$home/velmora/build/velmora.deb" "$package"

step "Another Debian that has nothing but a desktop and what the package depends on"
root=$clean
give_proc
install install "${DESKTOP_PACKAGES[@]}"
install satisfy "$(dpkg-deb --field "$package" Depends)"
inside useradd --create-home "$user"
mkdir -p "$root/tmp/.X11-unix" # a booted system has it
chmod 1777 "$root/tmp/.X11-unix"
cp -r "$top/tests" "$root/srv/tests"
cp "$package" "$root/srv/velmora.deb"
dpkg-deb --raw-extract "$package" "$work/next"
sed -i 's/^Version: .*/&+next/' "$work/next/DEBIAN/control"
dpkg-deb --root-owner-group --build "$work/next" "$root/srv/next.deb" >/dev/null

# Lists every folder and link with its mode, and every file with its checksum, except the data of the user, of the
# package manager and of running programs.
files() {
    local skip=(-path ./proc -o -path ./tmp -o -path ./home -o -path ./var/log -o -path ./var/lib/dpkg
        -o -path ./var/lib/apt -o -path ./var/cache/apt)
    (
        cd "$root" || exit
        find . -xdev \( "${skip[@]}" \) -prune -o -printf '%p %y %m %l\n'
        find . -xdev \( "${skip[@]}" \) -prune -o -type f -print0 | xargs --null sha256sum
    ) | sort
}
try() {
    step "Used, started by: $1"
    login "cd /srv/tests/desktop
        export PYTHONDONTWRITEBYTECODE=1 VELMORA_COMMAND='$1' VELMORA_ENTRY=~/entry.desktop
        python3 -m unittest --verbose installed"
}
files >"$work/before"
step "apt-get install"
install install /srv/velmora.deb
inside dpkg-query --list velmora | tail -1
try /usr/bin/velmora
step "Upgraded"
install install /srv/next.deb
inside dpkg-query --list velmora | tail -1
cat "$root$home/entry.desktop"
try "$(sed -n 's/^Exec="\(.*\)"$/\1/p' "$root$home/entry.desktop")"
step "apt-get purge"
install purge velmora
files >"$work/after"
wc -l "$work/before" "$work/after"
diff "$work/before" "$work/after" || { echo "newcomer: the package leaves something behind" >&2; exit 1; }
echo "Every file outside the user's home is as it was before."
