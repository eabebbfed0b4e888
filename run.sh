#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds Velmora and starts it: run.sh        in this desktop session, or as a demo if there is none
#                               run.sh demo   on a private desktop with a simulated laptop; pictures go to build/demo
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. tools/packages.sh

case "${1:-}" in
    '') mode=session ;;
    demo) mode=demo ;;
    *) echo "usage: run.sh [demo]" >&2; exit 2 ;;
esac

if [ "$mode" = session ]; then
    if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
        echo "There is no display here, so this is the demo: a private desktop with a simulated laptop."
        mode=demo
    elif [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ] && [ ! -S "${XDG_RUNTIME_DIR:-/nonexistent}/bus" ]; then
        echo "There is no session bus here, so this is the demo: a private desktop with a simulated laptop."
        mode=demo
    fi
fi

packages=("${BUILD_PACKAGES[@]}")
window=()
if [ "$mode" = demo ]; then
    packages+=("${DESKTOP_PACKAGES[@]}")
    if [ -n "${DISPLAY:-}" ]; then
        packages+=("${WINDOW_PACKAGES[@]}")
        window=(--window)
    fi
fi
[ -z "${WAYLAND_DISPLAY:-}" ] || packages+=(qt6-wayland)
ensure_packages "${packages[@]}"

# A configured build folder keeps its options; a new one needs neither tests nor benchmarks.
if [ ! -f build/default/build.ninja ]; then
    cmake --preset default -DVELMORA_TESTS=OFF -DVELMORA_BENCHMARKS=OFF
fi
cmake --build --preset default --target velmora
./make_app.sh

if [ "$mode" = session ]; then
    echo "Starting it. One that runs already only shows its details then; quit it first to see this build."
    exec build/Velmora.app/AppRun
fi
exec env PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 tests/desktop/demo.py build/Velmora.app build/demo "${window[@]}"
