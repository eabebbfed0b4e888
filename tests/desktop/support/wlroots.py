# SPDX-License-Identifier: GPL-3.0-or-later
"""A private desktop with a wlroots compositor, shown in the private X server: sway with its own bar or with another."""

import json
import os
import stat
import subprocess
from pathlib import Path

from .desktop import SCREEN, START_SECONDS, PrivateDesktop
from .screen import Box
from .waiting import wait_until

BAR_HEIGHT = 28
# The end of the bar where items appear; the rest of it shows workspaces and the window title.
TRAY = Box(SCREEN.width - 160, 0, 160, BAR_HEIGHT)

CONFIGURATION = """xwayland disable
output X11-1 resolution {width}x{height} position 0 0 scale {scale}
{pointer}
{bar}
"""

SWAYBAR = """bar {{
    position top
    {height}
    tray_output *
    colors {{
        background {background}
        statusline {text}
    }}
}}
"""

WAYBAR_STYLE = """* {{ border: none; min-height: 0; }}
window#waybar {{ background: {background}; color: {text}; }}
"""


def open_shared_memory():
    """Lets everyone make shared memory, as on every booted system: the compositor needs it to draw, and without it
    disconnects its clients. On a system that was unpacked but never booted, that folder belongs to root."""
    folder = Path("/dev/shm")
    if os.geteuid() == 0 and not folder.stat().st_mode & stat.S_IWOTH:
        folder.chmod(0o1777)


class WlrootsDesktop(PrivateDesktop):
    """A private desktop whose panel is a bar of sway. Nothing in it runs as root, because sway refuses to."""

    def __init__(self, bar="swaybar", dark=True, scale=1, height=BAR_HEIGHT, hide_pointer=True):
        """`bar` is "swaybar" or "waybar"; with `height` None the bar decides. A pointer that sway hides when it rests
        is for programs not there any more: they show no tooltips."""
        self._pointer = "seat * hide_cursor 100" if hide_pointer else ""
        open_shared_memory()
        super().__init__(panel=False, window_manager=False, ordinary_user=True)
        self.environment["XDG_CURRENT_DESKTOP"] = "sway"
        self.environment["XDG_SESSION_TYPE"] = "wayland"
        background, text = ("#222222", "#eeeeee") if dark else ("#f0f0f0", "#202020")
        self._colours = {"background": background, "text": text}
        try:
            self._start_compositor(scale, self._swaybar(height) if bar == "swaybar" else "")
            if bar == "waybar":
                self._write_waybar_configuration(height)
                self._panel = self.start("waybar", ["waybar"])
            wait_until(self._tray_is_ready, START_SECONDS, lambda: f"the bar's tray is ready; {self._panel.errors}")
            # The tray takes items before the bar is visible.
            wait_until(self._bar_is_drawn, START_SECONDS, lambda: f"the bar is drawn; {self._panel.errors}")
            self.environment["QT_QPA_PLATFORM"] = "wayland"
        except BaseException:
            self.stop()
            raise

    def find_item(self):
        """The box around everything drawn in the tray; None while it is empty."""
        tray = self.picture().crop(TRAY)
        drawn = tray.changed_box(tray.blank())
        return drawn and drawn._replace(x=drawn.x + TRAY.x, y=drawn.y + TRAY.y)

    def kill_compositor(self):
        """Ends the compositor as a crash would; the buses stay, as for a user who is still logged in."""
        self._compositor.kill()

    def windows(self, title):
        """The boxes of the visible floating windows with that title."""
        tree = json.loads(self._sway_message("-t", "get_tree"))
        boxes = []

        def look(node):
            if node["name"] == title and node["type"] == "floating_con" and node["visible"]:
                boxes.append(Box(*(node["rect"][key] for key in ("x", "y", "width", "height"))))
            for child in node["nodes"] + node["floating_nodes"]:
                look(child)

        look(tree)
        return boxes

    def _sway_message(self, *arguments):
        command = ["swaymsg", *arguments]
        run = subprocess.run(
            command, env=self.environment, capture_output=True, text=True, check=True, timeout=START_SECONDS
        )
        return run.stdout

    def _start_compositor(self, scale, bar):
        file = self.config / "sway.conf"
        size = {"width": SCREEN.width, "height": SCREEN.height, "scale": scale}
        file.write_text(CONFIGURATION.format(**size, bar=bar, pointer=self._pointer), encoding="utf-8")
        self._run_compositor("sway", "--config", file)

    def _run_compositor(self, *command):
        changes = {"WLR_BACKENDS": "x11", "WLR_RENDERER": "pixman", "WLR_X11_OUTPUTS": "1"}
        self._panel = self._compositor = self.start(command[0], command, self.environment | changes)
        wait_until(self._find_compositor, START_SECONDS, lambda: f"{command[0]} is ready; {self._panel.errors}")

    def _find_compositor(self):
        """Whether the compositor listens; if so, programs started from now on find it."""
        sockets = [file.name for file in self.runtime.glob("wayland-*") if file.suffix != ".lock"]
        commands = list(self.runtime.glob("sway-ipc.*.sock"))
        if not sockets or not commands:
            return False
        self.environment |= {"WAYLAND_DISPLAY": sockets[0], "SWAYSOCK": str(commands[0])}
        return True

    def _bar_is_drawn(self):
        """Whether the upper edge of the screen has the bar's colour, whatever the bar's height."""
        edge = self.picture().crop(TRAY._replace(height=1))
        return set(edge.colours()) == {bytes.fromhex(self._colours["background"][1:])}

    def _swaybar(self, height):
        return SWAYBAR.format(**self._colours, height=f"height {height}" if height else "")

    def _write_waybar_configuration(self, height):
        folder = self.config / "waybar"
        folder.mkdir()
        settings = {"layer": "top", "position": "top", "modules-right": ["tray"]}
        if height:
            settings["height"] = height
        (folder / "config").write_text(json.dumps(settings), encoding="utf-8")
        (folder / "style.css").write_text(WAYBAR_STYLE.format(**self._colours), encoding="utf-8")
