# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# The Debian packages that the scripts need, and how they get there. Sourced, not run.

# To build the program and to run it in a session that is there already.
BUILD_PACKAGES=(cmake g++ libcanberra-dev libqcustomplot-dev libsimdjson-dev libudev-dev ninja-build pkg-config
                qt6-base-dev qt6-svg-dev)

# A private desktop with a simulated laptop: X server, window manager, panel, notifications, and what draws their icons
# and text; umockdev shows the devices. Python drives it, xdotool clicks.
DESKTOP_PACKAGES=(adwaita-icon-theme dbus-daemon dunst fonts-dejavu-core hicolor-icon-theme librsvg2-common python3-gi
                  umockdev xdotool xfce4-panel xfconf xfwm4 xvfb)

# The same desktop in a window on the desktop that is there: a nested X server, and what takes pictures of it.
WINDOW_PACKAGES=(x11-apps xserver-xephyr)

# To make the Debian package of a build, and to draw its icons.
PACKAGE_PACKAGES=(debhelper dpkg-dev librsvg2-bin)

# What the tests and the checks need beyond that.
# sway comes with a bar of its own; the toolkit shows windows in it by its Wayland plugin. By GTK the toolkit takes its
# looks for those who ask for that. libfaketime sets the program's clock, strace sees what it asks the kernel for,
# readelf of binutils how it was built. Screen readers hear of windows through at-spi2-core.
TEST_PACKAGES=(appstream at-spi2-core binutils clang-format desktop-file-utils libbenchmark-dev libfaketime
               libglib2.0-bin libgmock-dev libgtest-dev libumockdev-dev mako-notifier mate-notification-daemon
               nlohmann-json3-dev power-profiles-daemon python3-dbusmock qt6-gtk-platformtheme qt6-wayland strace sway
               systemd tint2 tzdata xfce4-notifyd)

# What tools/lint and tools/coverage need beyond that.
CHECK_PACKAGES=(clang clang-tidy cppcheck gcovr)

# ensure_packages NAME...: installs those that are missing and says which; does nothing at all when none is.
ensure_packages() {
    local name state missing=() root=()
    for name in "$@"; do
        state=$(dpkg-query --show --showformat='${db:Status-Status}' "$name" 2>/dev/null) || state=unknown
        [ "$state" = installed ] || missing+=("$name")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "Missing Debian packages: ${missing[*]}"
    if ! command -v apt-get >/dev/null; then
        echo "There is no apt-get here. Install what these packages stand for, then run this again." >&2
        return 1
    fi
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "Installing needs root, and there is no sudo. As root: apt-get install ${missing[*]}" >&2
            return 1
        fi
        root=(sudo)
    fi
    echo "Installing them with apt-get."
    # A source that cannot be reached at the moment need not be the one that has these packages: installing decides.
    "${root[@]}" apt-get update || echo "apt-get update failed; going on with the lists that are here." >&2
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install --yes --no-install-recommends "${missing[@]}"
}
