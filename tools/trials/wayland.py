# SPDX-License-Identifier: GPL-3.0-or-later
"""The desktops that are Wayland compositors, each in the window of a private X server."""

import os
import re
import signal
import subprocess
from pathlib import Path

from gi.repository import GLib
from support.desktop import SCREEN, START_SECONDS
from support.notifications import Mako
from support.processes import children
from support.program import bundle
from support.screen import Box
from support.waiting import wait_until
from support.wlroots import BAR_HEIGHT, TRAY, WlrootsDesktop

from .pixels import moved, steady
from .x11 import Plasma
from .host import RESTART_SECONDS, STRANGER, Host, X11Host

X_SOCKETS = Path("/tmp/.X11-unix")
HEIGHT = 760  # of the nested compositors' screens

SHELL_SETTINGS = """[org/gnome/shell]
enabled-extensions=['ubuntu-appindicators@ubuntu.com']
welcome-dialog-last-shown-version='99'

[org/gnome/desktop/interface]
clock-show-date=false
"""


DETAILS_WIDTH = 340
PADDING = 16  # of the details
GAP = 8  # between the details and the edge of the screen


class WlrootsHost(Host, WlrootsDesktop):
    packages = ("sway", "qt6-wayland", "mako-notifier", "foot")
    bar = ""
    panel = Box(0, 0, SCREEN.width, BAR_HEIGHT)
    tray = TRAY

    def __init__(self, dark):
        super().__init__(bar=self.bar, dark=dark, hide_pointer=False)
        self.dark = dark
        Mako(self).start()

    @property
    def places(self):
        return (bundle() / "usr/lib/velmora/velmora-layer-shell.so").exists()

    def details(self):
        """Sway does not tell of windows in its layers, so those are looked for on the screen, in its right corner."""
        if not self.places:
            return super().details()
        left = SCREEN.width - GAP - DETAILS_WIDTH
        picture = self.picture()
        colour = lambda x, y: next(iter(picture.crop(Box(x, y, 1, 1)).colours()))
        # Beside the rows there is nothing but the colour of the card, and beside the card its shadow.
        beside = [colour(left + PADDING - 2, y) for y in range(SCREEN.height)]
        card = max(beside, key=beside.count)
        rows = [y for y in range(BAR_HEIGHT, SCREEN.height) if beside[y] == card]
        is_card = lambda x: all(colour(x, y) == card for y in (rows[0] + PADDING, rows[-1] - PADDING))
        if len(rows) < DETAILS_WIDTH or is_card(left - PADDING) or not is_card(left + DETAILS_WIDTH - PADDING + 2):
            return None
        return Box(left, rows[0] - 1, DETAILS_WIDTH, rows[-1] - rows[0] + 3)  # with its line

    def start_stranger(self):
        command = ["foot", "--title", STRANGER, "sleep", "1000"]
        self.stranger = self.start(STRANGER, command)
        wait_until(lambda: self.has_window(STRANGER), START_SECONDS, lambda: f"a window; {self.stranger.errors}")

    def has_window(self, title):
        return f'"{title}"' in self._sway_message("-t", "get_tree")


class SwaybarHost(WlrootsHost):
    version_of = "sway"
    bar = "swaybar"
    tooltip = None

    def kill_panel(self):
        """The bar is not a child of sway: what it leaves behind becomes a child of this process."""
        for pid, name in children(os.getpid()).items():
            if name == "swaybar":
                os.kill(pid, signal.SIGKILL)
        wait_until(lambda: not self.ready(), START_SECONDS, "the bar is gone")

    def start_panel(self):
        """sway starts its bars anew when it reads its configuration again."""
        self._sway_message("reload")
        wait_until(self.ready, START_SECONDS, "the bar is ready")


class WaybarHost(WlrootsHost):
    packages = (*WlrootsHost.packages, "waybar")
    version_of = "waybar"
    bar = "waybar"

    def start_panel(self):
        self._panel = self.start("waybar", ["waybar"])
        wait_until(self.ready, START_SECONDS, "the bar is ready")


class LabwcHost(WaybarHost):
    """With waybar. It tells which windows there are, but not where."""

    packages = ("labwc", "waybar", "qt6-wayland", "mako-notifier", "foot", "wlrctl")
    version_of = "labwc"

    def windows(self, title):
        return [SCREEN] if self.has_window(title) else []

    def has_window(self, title):
        command = ["wlrctl", "toplevel", "find", f"title:{title}"]
        run = subprocess.run(
            command, env=self.environment, user=self._user, group=self._user, check=False, timeout=START_SECONDS
        )
        return run.returncode == 0

    def _start_compositor(self, scale, bar):
        self.environment["XDG_CURRENT_DESKTOP"] = "labwc:wlroots"
        self._run_compositor("labwc")
        # Over all of the X server's screen. The window has no name; the first one is the root.
        resize = ["search", "--class", ".*", "windowsize", "%2", SCREEN.width, SCREEN.height]
        wait_until(lambda: self._tool(*resize).returncode == 0, START_SECONDS, "the compositor's window is resized")

    def _find_compositor(self):
        self.environment["WAYLAND_DISPLAY"] = "wayland-0"
        return (self.runtime / "wayland-0").exists()


class NestedHost(X11Host):
    """In a window of the private X server; the program runs on the compositor's Xwayland."""

    wayland = "wl-t"
    wallpaper = ((100, 680), (100, 420), (1150, 420), (640, 700))

    def inside(self):
        return self.xwayland | {"WAYLAND_DISPLAY": self.wayland}

    def _ask(self, command, check=False):
        """Windows are known to Xwayland only, which lets in nobody but the desktop's user; the pointer and the keyboard
        belong to the outer X server."""
        if command[0] == "xdotool" and command[1] not in ("search", "getwindowgeometry"):
            return super()._ask(command, check)
        environment = {key: value for key, value in self.environment.items() if key != "XAUTHORITY"} | self.xwayland
        return subprocess.run(
            command,
            env=environment,
            user=self._user,
            group=self._user,
            capture_output=True,
            text=True,
            check=check,
            timeout=START_SECONDS,
        )

    def stranger_command(self):
        return ["foot", "--title", STRANGER, "--window-size-pixels", "480x300", "sleep", "1000"]

    def start_stranger(self):
        """A Wayland window, as most are there."""
        before = steady(self, SCREEN)
        environment = self.environment | {"WAYLAND_DISPLAY": self.wayland, "QT_QPA_PLATFORM": "wayland"}
        self.stranger = self.start(STRANGER, self.stranger_command(), environment)
        drawn = lambda: self.picture().crop(self.beyond()).changed_box(before.crop(self.beyond()))
        wait_until(drawn, START_SECONDS, lambda: f"a window; {self.stranger.errors}")
        box = moved(steady(self, self.beyond()).changed_box(before.crop(self.beyond())), self.beyond())
        self.window = [(box.x + 40, box.y + box.height - 30), (box.x + box.width - 40, box.y + 45), box.centre]


class GnomeHost(NestedHost):
    packages = (
        "gnome-shell",
        "gnome-shell-extension-appindicator",
        "gjs",
        "xwayland",
        "foot",
        "python3-dbusmock",
        "adwaita-icon-theme",
    )
    version_of = "gnome-shell"
    services = ("org.gnome.Shell.*", "ca.desrt.dconf")
    variables = {
        "XDG_CURRENT_DESKTOP": "GNOME",
        "XDG_SESSION_TYPE": "wayland",
        "MUTTER_DEBUG_DUMMY_MODE_SPECS": f"{SCREEN.width}x{HEIGHT}",
    }
    settings = SHELL_SETTINGS
    both_themes = False
    label = True
    recolours = True
    opens = "double click"
    tooltip = None
    panel = Box(0, 0, SCREEN.width, 32)
    tray = Box(SCREEN.width // 2 + 100, 0, SCREEN.width // 2 - 100, 32)  # without the clock
    empty_panel = (SCREEN.width // 2 - 200, 14)
    rest = (SCREEN.width // 2 - 200, 2)
    pointer_below = 12
    button = (-250, -28)
    hover = True
    extension = "ubuntu-appindicators@ubuntu.com"

    def begin(self):
        self.start("logind", ["python3", "-m", "dbusmock", "--system", "--template", "logind"])
        command = ["gnome-shell", "--nested", "--wayland", f"--wayland-display={self.wayland}"]
        self.shell = self.start("gnome-shell", command)
        said = lambda: self.shell.output + self.shell.errors
        wait_until(self.ready, RESTART_SECONDS, lambda: f"the shell's tray is ready; {said()[-2000:]}")
        display = re.search(r"public X11 display (:\d+),", said())[1]
        authority = next(self.runtime.glob(".mutter-Xwaylandauth.*"))
        self.xwayland = {"DISPLAY": display, "XAUTHORITY": str(authority)}
        steady(self, SCREEN)
        self.press("Escape")  # it starts in the overview

    def start_panel(self):
        self._switch("EnableExtension")
        wait_until(self.ready, RESTART_SECONDS, "the extension is on")

    def kill_panel(self):
        """The panel is the compositor itself, so only its extension can end."""
        self._switch("DisableExtension")
        wait_until(lambda: not self.ready(), START_SECONDS, "the extension is off")

    def _switch(self, method):
        shell = "org.gnome.Shell"
        arguments = GLib.Variant("(s)", (self.extension,))
        self.bus.call(shell, "/org/gnome/Shell", f"{shell}.Extensions", method, arguments)


class PlasmaWaylandHost(Plasma, NestedHost):
    packages = (*Plasma.packages, "kwin-wayland", "qtwayland5|qt6-wayland", "xwayland", "layer-shell-qt", "kdialog")
    packages += ("python3-dbusmock",)
    variables = Plasma.variables | {"XDG_SESSION_TYPE": "wayland"}
    panel = Box(0, HEIGHT - 44, SCREEN.width, 44)
    tray = Box(1000, HEIGHT - 44, 140, 44)  # without the clock
    empty_panel = (SCREEN.width // 2, HEIGHT - 20)

    def begin(self):
        self.start("logind", ["python3", "-m", "dbusmock", "--system", "--template", "logind"])
        command = ["kwin_wayland", "--x11-display", self.environment["DISPLAY"], "--xwayland", "--socket", self.wayland]
        command += ["--width", SCREEN.width, "--height", HEIGHT, "--no-lockscreen"]
        self.earlier = self.x_sockets()
        self.compositor = self.start("kwin_wayland", command, self.environment | {"KWIN_COMPOSE": "Q"})
        wait_until(self._find_xwayland, START_SECONDS, lambda: f"Xwayland runs; {self.compositor.errors[-2000:]}")
        self.wayland_environment = {"WAYLAND_DISPLAY": self.wayland, "QT_QPA_PLATFORM": "wayland", **self.xwayland}
        self.start("kded", [self.kded()], self.environment | self.wayland_environment)

    def stranger_command(self):
        return ["kdialog", "--title", STRANGER, "--msgbox", "Another window. " * 12]

    @staticmethod
    def x_sockets():
        """The names of X servers' sockets, and when they were made: one that was killed has left its own."""
        return {(file.name, file.stat().st_ctime_ns) for file in X_SOCKETS.glob("X*")}

    def _find_xwayland(self):
        """Whether the compositor listens, for both kinds of clients. It starts Xwayland when the first one comes."""
        fresh = self.x_sockets() - self.earlier
        if not fresh or not (self.runtime / self.wayland).exists():
            return False
        self.xwayland = {"DISPLAY": f":{next(iter(fresh))[0][1:]}"}
        for file in self.runtime.glob("xauth_*"):  # since Plasma 6
            self.xwayland["XAUTHORITY"] = str(file)
        return True

    def run_panel(self):
        environment = self.environment | self.wayland_environment
        return self.start("plasmashell", ["plasmashell", "--no-respawn"], environment)
