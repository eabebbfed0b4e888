# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# The Debian packages that the scripts need, and functions that install them. Sourced, not run.
# shellcheck disable=SC2034 # scripts that source this use the lists

# To build the program and to run it in the current session.
BUILD_PACKAGES=(cmake g++ libcanberra-dev libglib2.0-dev libsimdjson-dev libudev-dev
                libxcb1-dev ninja-build pkg-config qt6-base-dev qt6-svg-dev)

# To place the details on Wayland compositors; the package of Debian 12 is for Qt 5. Testing has no number.
LAYER_SHELL_PACKAGES=(liblayershellqtinterface-dev libwayland-dev)
if (. /etc/os-release && [ "${ID:-}" = debian ] && [ "${VERSION_ID:-13}" -ge 13 ]) 2>/dev/null; then
    BUILD_PACKAGES+=("${LAYER_SHELL_PACKAGES[@]}")
fi

# A private desktop with a simulated laptop: X server, window manager, panel, notification daemon, and icons and fonts
# for them; umockdev shows the devices. Python drives it, xdotool clicks, xprop tells of windows.
DESKTOP_PACKAGES=(adwaita-icon-theme dbus-daemon dunst fonts-dejavu-core hicolor-icon-theme librsvg2-common python3-gi
                  umockdev x11-utils xdotool xfce4-panel xfconf xfwm4 xvfb)

# The same desktop in a window on the current one: a nested X server, and xwd to take pictures of it.
WINDOW_PACKAGES=(x11-apps xserver-xephyr)

# To make the Debian package of a build, and to draw its icons.
PACKAGE_PACKAGES=(debhelper dpkg-dev librsvg2-bin)

# Further packages for the tests and the checks.
# sway comes with a bar of its own; Qt shows windows in it through its Wayland plugin. Qt's platform theme for GTK is
# for users who ask for it. libfaketime sets the program's clock, strace records its system calls, readelf of binutils
# shows how it was built. Screen readers learn of windows through at-spi2-core, and xrandr divides a screen into two.
TEST_PACKAGES=(appstream at-spi2-core binutils desktop-file-utils libbenchmark-dev libfaketime libglib2.0-bin
               libgmock-dev libgtest-dev libumockdev-dev mako-notifier mate-notification-daemon nlohmann-json3-dev
               power-profiles-daemon python3-dbusmock qt6-gtk-platformtheme qt6-wayland strace sway systemd tint2
               tzdata x11-xserver-utils xdg-desktop-portal xdg-desktop-portal-gtk xfce4-notifyd)

# Further packages for tools/lint and tools/coverage. Versions of clang-format disagree about some lines; the sources
# are formatted with Debian 12's.
FORMAT_PACKAGES=(clang-format-14)
CHECK_PACKAGES=(clang clang-tidy cppcheck gcovr)

# For systems with other package names: each of these packages, its upstream name, and how to detect it.
UPSTREAM='
cmake                    | CMake 3.25                           | run:cmake
g++                      | a C++20 compiler, GCC 12 or Clang 14 | run:c++
libcanberra-dev          | libcanberra                          | module:libcanberra
libglib2.0-dev           | GLib                                 | module:glib-2.0
liblayershellqtinterface-dev | LayerShellQt 6                   | include:LayerShellQt
libsimdjson-dev          | simdjson 3                           | module:simdjson
libudev-dev              | libudev, of systemd or eudev         | module:libudev
libwayland-dev           | libwayland                           | module:wayland-client
libxcb1-dev              | libxcb                               | module:xcb
ninja-build              | Ninja                                | run:ninja
pkg-config               | pkg-config                           | run:pkg-config
qt6-base-dev             | Qt 6.4, qtbase                       | module:Qt6Widgets
qt6-svg-dev              | Qt 6.4, qtsvg                        | module:Qt6Svg
adwaita-icon-theme       | Adwaita icons                        | share:icons/Adwaita
dbus-daemon              | dbus-daemon                          | run:dbus-daemon
dunst                    | dunst                                | run:dunst
fonts-dejavu-core        | DejaVu fonts                         | share:fonts/*/*/DejaVuSans.ttf share:fonts/*/DejaVuSans.ttf
hicolor-icon-theme       | hicolor icons                        | share:icons/hicolor/index.theme
librsvg2-common          | librsvg with its GdkPixbuf loader    | lib:gdk-pixbuf-2.0/*/loaders/*svg*
python3-gi               | PyGObject                            | python:gi
umockdev                 | umockdev                             | run:umockdev-run
x11-utils                | xprop                                | run:xprop
xdotool                  | xdotool                              | run:xdotool
xfce4-panel              | xfce4-panel                          | run:xfce4-panel
xfconf                   | xfconf                               | run:xfconf-query
xfwm4                    | xfwm4                                | run:xfwm4
xvfb                     | Xvfb                                 | run:Xvfb
x11-apps                 | xwd                                  | run:xwd
xserver-xephyr           | Xephyr                               | run:Xephyr
debhelper                | debhelper                            | run:dh
dpkg-dev                 | the development tools of dpkg        | run:dpkg-shlibdeps
librsvg2-bin             | rsvg-convert                         | run:rsvg-convert
appstream                | appstreamcli                         | run:appstreamcli
at-spi2-core             | at-spi2-core                         | share:dbus-1/services/org.a11y.Bus.service
binutils                 | GNU binutils                         | run:readelf
desktop-file-utils       | desktop-file-utils                   | run:desktop-file-validate
libbenchmark-dev         | Google Benchmark                     | module:benchmark
libfaketime              | libfaketime                          | lib:faketime/libfaketime.so.1
libglib2.0-bin           | the commands of GLib                 | run:gdbus
libgmock-dev             | GoogleMock                           | module:gmock
libgtest-dev             | GoogleTest                           | module:gtest
libumockdev-dev          | umockdev, for programs               | module:umockdev-1.0
mako-notifier            | mako                                 | run:mako
mate-notification-daemon | the notification daemon of MATE      | share:dbus-1/services/org.freedesktop.mate.Notifications.service
nlohmann-json3-dev       | nlohmann/json 3.11                   | module:nlohmann_json
power-profiles-daemon    | power-profiles-daemon                | run:powerprofilesctl
python3-dbusmock         | python-dbusmock                      | python:dbusmock
qt6-gtk-platformtheme    | Qt 6, its platform theme for GTK     | lib:qt6/plugins/platformthemes/libqgtk3.so
qt6-wayland              | Qt 6, qtwayland                      | lib:qt6/plugins/platforms/libqwayland*
strace                   | strace                               | run:strace
sway                     | sway                                 | run:sway
systemd                  | systemd                              | lib:systemd/user-generators/systemd-xdg-autostart-generator
tint2                    | tint2                                | run:tint2
tzdata                   | tzdata                               | share:zoneinfo/Europe/Berlin
x11-xserver-utils        | xrandr                               | run:xrandr
xdg-desktop-portal       | xdg-desktop-portal                   | lib:xdg-desktop-portal
xdg-desktop-portal-gtk   | xdg-desktop-portal-gtk               | lib:xdg-desktop-portal-gtk
xfce4-notifyd            | xfce4-notifyd                        | lib:xfce4/notifyd/xfce4-notifyd
clang                    | Clang                                | run:clang++
clang-format-14          | clang-format 14                      | run:clang-format-14
clang-tidy               | clang-tidy                           | run:clang-tidy
cppcheck                 | cppcheck                             | run:cppcheck
gcovr                    | gcovr                                | run:gcovr
debootstrap              | debootstrap                          | run:debootstrap
'

# is_there KIND:WHAT...: whether the system has at least one of these.
is_there() {
    local probe what
    for probe in "$@"; do
        what=${probe#*:}
        case "$probe" in
            run:*) command -v "$what" ;;
            module:*) pkg-config --exists "$what" ;;
            python:*) /usr/bin/python3 -c "import $what" ;;
            include:* | share:*) compgen -G "/usr/${probe/://}" ;;
            lib:*) compgen -G "/usr/lib/$what" || compgen -G "/usr/lib64/$what" || compgen -G "/usr/lib/*/$what" ||
                compgen -G "/usr/libexec/$what" ;;
            *) false ;;
        esac >/dev/null 2>&1 && return 0
    done
    return 1
}

# missing_upstream NAME...: the upstream name of each of these packages whose contents the system does not have.
missing_upstream() {
    local name package upstream probe
    for name in "$@"; do
        IFS='|' read -r package upstream probe < <(grep "^$name " <<<"$UPSTREAM" || echo)
        # shellcheck disable=SC2086 # one word for each place
        is_there $probe || sed 's/^ *//; s/ *$//' <<<"${upstream:-$name}"
    done
}

# as_root COMMAND...
as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# apt_get ARGUMENT...: waits for a lock that another program holds, such as a background update of a new machine. apt
# itself waits for dpkg's locks, but not for those of its package lists and its downloads. Its messages about those are
# parsed here, so they have to be in English; its errors are shown once it has ended.
apt_get() {
    local log status held said=
    log=$(mktemp)
    while true; do
        status=0
        as_root env LC_ALL=C DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=-1 "$@" 2>"$log" || status=$?
        held=$(grep -m 1 -E '^E: Could not get lock .*(held by|11:)' "$log") || break
        [ "$status" -ne 0 ] || break
        [ "$said" = "$held" ] || echo "Waiting: ${held#E: }"
        said=$held
        sleep 2
    done
    cat "$log" >&2
    rm "$log"
    return "$status"
}

# ensure_packages NAME...: says which packages are missing and installs them; does nothing at all if none is. Where
# there is no apt, it only looks for their contents and names the missing ones.
ensure_packages() {
    local name state missing=()
    # Other systems can have both commands as mere tools that have installed nothing.
    if ! command -v apt-get >/dev/null || ! dpkg-query --show base-files >/dev/null 2>&1; then
        mapfile -t missing < <(missing_upstream "$@")
        [ ${#missing[@]} -gt 0 ] || return 0
        echo "There is no apt here that could install what is missing:" >&2
        printf '    %s\n' "${missing[@]}" >&2
        echo "Install that, then run this again." >&2
        return 1
    fi
    for name in "$@"; do
        state=$(dpkg-query --show --showformat='${db:Status-Status}' "$name" 2>/dev/null) || state=unknown
        [ "$state" = installed ] || missing+=("$name")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "Missing Debian packages: ${missing[*]}"
    if [ "$(id -u)" -ne 0 ] && ! command -v sudo >/dev/null; then
        echo "Installing needs root, and there is no sudo. As root: apt-get install ${missing[*]}" >&2
        return 1
    fi
    echo "Installing them with apt-get."
    # An unreachable source need not be the one with these packages, so only a failure to install counts.
    apt_get update || echo "apt-get update failed; going on with the lists that are here." >&2
    apt_get install --yes --no-install-recommends "${missing[@]}"
}
