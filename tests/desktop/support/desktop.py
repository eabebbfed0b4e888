# SPDX-License-Identifier: GPL-3.0-or-later
"""A private desktop: X server, window manager, panel with a tray, session and system bus, home. It is isolated from the
session that it is started from, in both directions."""

import contextlib
import os
import secrets
import select
import shutil
import struct
import subprocess
import tempfile
from pathlib import Path

from gi.repository import GLib

from .item import WATCHER, Bus, registered_items
from .processes import Process
from .program import bundle
from .screen import Box, Picture
from .waiting import wait_until

SCREEN = Box(0, 0, 1280, 800)
PANEL = Box(0, 0, 1280, 29)  # its lower border adds a pixel to its size
# The end of the panel where items appear, without the panel's edges, which change by themselves.
TRAY = Box(PANEL.width - 160, 0, 159, PANEL.height - 1)
BELOW_PANEL = Box(0, PANEL.height, SCREEN.width, SCREEN.height - PANEL.height)
START_SECONDS = 20

SERVICES = Path("/usr/share/dbus-1/services")

# "nobody": exists everywhere, owns nothing, and needs no entry in /etc/passwd.
ORDINARY_USER = 65534

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>{kind}</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  {services}
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

# One panel along the upper edge: the windows at the left, the tray at the right.
PANEL_CONFIGURATION = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="{dark}"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="{height}"/>
      <property name="icon-size" type="uint" value="22"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
        <value type="int" value="3"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="tasklist"/>
    <property name="plugin-2" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-3" type="string" value="systray">
      <property name="icon-size" type="uint" value="22"/>
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
"""


class PrivateDesktop:
    """Everything is ready when the constructor returns; `stop` ends it all and leaves nothing behind."""

    def __init__(
        self,
        panel=True,
        dark=False,
        system_bus=True,
        notifications=False,
        window_manager=True,
        composited=False,
        ordinary_user=False,
        window_on=None,
        xfce_settings=True,
        services=(),
        variables=None,
    ):
        """`ordinary_user`: even if we are root, programs started here are not, because some compositors refuse to be.
        `services`: patterns for names that the session bus may start programs for; `variables`: further ones in the
        environment, which those programs have, too.
        `window_on`: the environment of a desktop with a display; this desktop is then shown in a window there."""
        self._window_on = window_on
        self._user = ORDINARY_USER if ordinary_user and os.geteuid() == 0 else None
        self.folder = Path(tempfile.mkdtemp(prefix="velmora-desktop-"))
        self.logs = self._make_folder("logs")
        self.home = self._make_folder("home")
        self.runtime = self._make_folder("run")
        self.config = self._make_folder("home/.config")
        self.environment = {
            "PATH": "/usr/local/bin:/usr/bin:/bin",
            "HOME": str(self.home),
            "USER": "tester",
            "LANG": "C.UTF-8",
            "XDG_RUNTIME_DIR": str(self.runtime),
            "XDG_CONFIG_HOME": str(self.config),
            "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_STATE_HOME": str(self.home / ".local/state"),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            "XDG_CURRENT_DESKTOP": "XFCE",
            "XDG_SESSION_TYPE": "x11",
            # Programs must not ask for services that the private buses do not offer.
            "NO_AT_BRIDGE": "1",
            "GIO_USE_VFS": "local",
            "GSETTINGS_BACKEND": "memory",
        } | (variables or {})
        # The program's history.
        self.history_file = self.home / ".local/share/Velmora/history.json"
        self.defaults_file = self.config / "Velmora/defaults.json"
        self._processes = []
        self._panel = None
        self.bus = None
        try:
            self._start_x_server()
            self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={self.runtime}/system-bus"
            self._permit_services(services)
            self.session_bus = self._start_bus("session", "DBUS_SESSION_BUS_ADDRESS", self._user)
            self.bus = Bus(self.environment["DBUS_SESSION_BUS_ADDRESS"])
            if system_bus:
                self.start_system_bus()
            if xfce_settings:
                self._write_panel_configuration(dark)
                self._start_settings()
            if window_manager:
                self.start("xfwm4", ["xfwm4", f"--compositor={'on' if composited else 'off'}"])
                managed = lambda: self._tool("get_num_desktops").returncode == 0
                wait_until(managed, START_SECONDS, "the window manager is ready")
            self.move_pointer(*SCREEN.centre)
            if notifications:
                self.start("dunst", ["dunst"])
                self._wait_for_name("org.freedesktop.Notifications")
            if panel:
                self.start_panel()
        except BaseException:
            self.stop()
            raise

    def stop(self):
        """Ends everything that was started here, the last first."""
        if self.bus:
            self.bus.close()
            self.bus = None
        while self._processes:
            self._processes.pop().stop()
        shutil.rmtree(self.folder, ignore_errors=True)

    def start(self, name, command, environment=None, pass_fds=()):
        """Starts a program on this desktop, which ends with the desktop at the latest."""
        self.hand_over(self.folder)
        return self._start(name, command, environment, pass_fds, self._user)

    def hand_over(self, folder):
        """From now on the files that we have made in this folder belong to the user of this desktop."""
        if self._user is None:
            return
        for file in [folder, *folder.rglob("*")]:
            with contextlib.suppress(FileNotFoundError):  # other programs make and remove files here, too
                if file.lstat().st_uid == 0:
                    os.lchown(file, self._user, self._user)

    def own_bundle(self):
        """A copy of the bundle that this desktop's user can read, wherever the original is."""
        copy = self.folder / "Velmora.app"
        if not copy.exists():
            shutil.copytree(bundle(), copy, symlinks=True)
        return copy

    def _start(self, name, command, environment, pass_fds, user):
        number = len(self._processes)
        environment = environment or self.environment
        process = Process(f"{number:02}-{name}", command, environment, self.logs, pass_fds, user)
        self._processes.append(process)
        return process

    def start_panel(self):
        """Starts the panel and waits until its tray takes items."""
        self._panel = self.start("xfce4-panel", ["xfce4-panel", "--disable-wm-check"])
        wait_until(self._tray_is_ready, START_SECONDS, lambda: f"the panel's tray is ready; {self._panel.errors}")

    @property
    def has_panel(self):
        return self._panel is not None and self._panel.running

    def kill_panel(self):
        """Ends the panel as a crash would, and waits until its tray is gone as well."""
        self._panel.kill()
        wait_until(lambda: self.bus.owner(WATCHER) is None, START_SECONDS, "the panel's tray is gone")

    def registered_items(self):
        """The items that the panel has, each as connection and path."""
        return registered_items(self.bus)

    def use_dark_panel(self, dark):
        """Changes the panel's colours while it runs."""
        value = GLib.Variant("(ssv)", ("xfce4-panel", "/panels/dark-mode", GLib.Variant("b", dark)))
        self.bus.call("org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf", "SetProperty", value)

    def kill_session_bus(self):
        self.session_bus.kill()

    def start_system_bus(self):
        """Starts the system bus, for the first time or again; always at the same address."""
        self.system_bus = self._start_bus("system", "DBUS_SYSTEM_BUS_ADDRESS")

    def kill_system_bus(self):
        self.system_bus.kill()

    def kill_x_server(self):
        self.x_server.kill()

    def picture(self):
        """The current content of the screen."""
        if self._window_on is None:
            return Picture.of_dump((self.runtime / "Xvfb_screen0").read_bytes())
        dump = subprocess.run(
            ["xwd", "-root", "-silent"], env=self.environment, capture_output=True, check=True, timeout=START_SECONDS
        )
        return Picture.of_dump(dump.stdout)

    def find_item(self):
        """The box around everything drawn in the tray; None while it is empty."""
        tray = self.picture().crop(TRAY)
        drawn = tray.changed_box(tray.blank())
        return drawn and drawn._replace(x=drawn.x + TRAY.x, y=drawn.y + TRAY.y)

    def move_pointer(self, x, y):
        self._tool("mousemove", x, y, check=True)

    def click(self, x, y, button=1):
        self._tool("mousemove", x, y, "click", button, check=True)

    def press(self, key):
        self._tool("key", key, check=True)

    def type(self, text):
        """Types a text key by key."""
        self._tool("type", "--", text, check=True)

    @contextlib.contextmanager
    def hold_key(self, key):
        self._tool("keydown", key, check=True)
        try:
            yield
        finally:
            self._tool("keyup", key, check=True)

    @contextlib.contextmanager
    def hold_button(self, x, y):
        """Holds the left button of the pointer down at this position."""
        self._tool("mousemove", x, y, "mousedown", 1, check=True)
        try:
            yield
        finally:
            self._tool("mouseup", 1, check=True)

    def window_ids(self, title):
        """The X server's numbers of the visible windows with that title."""
        return [int(word) for word in self._tool("search", "--onlyvisible", "--name", f"^{title}$").stdout.split()]

    def windows(self, title):
        """The boxes of the visible windows with that title, without their shadows."""
        boxes = (self._window(window) for window in self.window_ids(title))
        return [box for box in boxes if box]

    def _window(self, window):
        """The box of a window without its shadow; None if it is gone by now."""
        before, box = None, self._geometry(window)
        tries = 0
        while box and box != before and tries < 20:  # xdotool asks for place and size one after the other
            before, box = box, self._geometry(window)
            tries += 1
        if not box:
            return None
        left, right, top, bottom = self._shadow(window)
        return Box(box.x + left, box.y + top, box.width - left - right, box.height - top - bottom)

    def _geometry(self, window):
        answer = self._tool("getwindowgeometry", "--shell", window)
        if answer.returncode != 0:
            return None
        values = dict(line.split("=") for line in answer.stdout.split())
        return Box(*(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT")))

    def _shadow(self, window):
        """How far a window's own shadow reaches beyond the window, at the left, right, top and bottom."""
        answer = self._ask(["xprop", "-id", str(window), "-notype", "_GTK_FRAME_EXTENTS"])
        _, found, sides = answer.stdout.partition(" = ")
        return [int(side) for side in sides.split(",")] if found else [0] * 4

    def _make_folder(self, name):
        folder = self.folder / name
        folder.mkdir(mode=0o700, parents=True)
        return folder

    def _tool(self, *arguments, check=False):
        return self._ask(["xdotool", *map(str, arguments)], check)

    def _ask(self, command, check=False):
        return subprocess.run(
            command, env=self.environment, capture_output=True, text=True, check=check, timeout=START_SECONDS
        )

    def _start_x_server(self):
        authority = self.runtime / "authority"
        authority.write_bytes(_authority(secrets.token_bytes(16)))
        screen = f"{SCREEN.width}x{SCREEN.height}"
        if self._window_on is None:
            command = ["Xvfb", "-screen", "0", f"{screen}x24", "-fbdir", self.runtime, "-nocursor"]
        else:
            command = ["Xephyr", "-screen", screen, "-title", "Velmora: a laptop's day", "-no-host-grab"]
        command += ["-auth", authority, "-noreset", "-nolisten", "tcp", "-displayfd"]
        # Not as the ordinary user, who may not make the folder for X servers' sockets if it is missing.
        self.x_server, number = self._start_and_hear(command[0], command, self._window_on)
        self.environment |= {"DISPLAY": f":{number}", "XAUTHORITY": str(authority)}

    def _permit_services(self, patterns):
        folder = self._make_folder("run/services")
        for pattern in patterns:
            for file in SERVICES.glob(f"{pattern}.service"):
                (folder / file.name).symlink_to(file)

    def _start_bus(self, kind, variable, user=None):
        socket = self.runtime / f"{kind}-bus"
        configuration = self.runtime / f"{kind}.conf"
        services = f"<servicedir>{self.runtime}/services</servicedir>" if kind == "session" else ""
        text = BUS_CONFIGURATION.format(kind=kind, socket=socket, services=services)
        configuration.write_text(text, encoding="utf-8")
        command = ["dbus-daemon", "--nofork", "--nopidfile", f"--config-file={configuration}", "--print-address"]
        self.hand_over(self.folder)
        bus, self.environment[variable] = self._start_and_hear(f"{kind}-bus", command, user=user)
        return bus

    def refuse_name(self, name):
        """From now on the session bus lets no program own that name."""
        configuration = self.runtime / "session.conf"
        text = configuration.read_text(encoding="utf-8")
        configuration.write_text(text.replace("</policy>", f'<deny own="{name}"/></policy>'), encoding="utf-8")
        bus = "org.freedesktop.DBus"
        self.bus.call(bus, "/org/freedesktop/DBus", bus, "ReloadConfig")

    def _start_and_hear(self, name, command, environment=None, user=None):
        """Starts a server that prints a line on a file descriptor, its last argument, when it is ready; returns the
        process and the line. The server runs as the same user as we do if no other is given."""
        reading, writing = os.pipe()
        with os.fdopen(reading) as answer:
            process = self._start(name, [*command, writing], environment, [writing], user)
            os.close(writing)
            ready, _, _ = select.select([answer], [], [], START_SECONDS)
            line = answer.readline().strip() if ready else ""
        if not line:
            raise AssertionError(f"{name} does not get ready: {process.errors}")
        return process, line

    def _start_settings(self):
        # Its path differs between architectures; the D-Bus service file has it.
        service = (SERVICES / "org.xfce.Xfconf.service").read_text(encoding="utf-8")
        command = next(line.removeprefix("Exec=") for line in service.splitlines() if line.startswith("Exec="))
        self.start("xfconfd", command.split())
        self._wait_for_name("org.xfce.Xfconf")

    def _write_panel_configuration(self, dark):
        file = self.config / "xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml"
        file.parent.mkdir(parents=True)
        values = {"dark": str(dark).lower(), "height": PANEL.height - 1}
        file.write_text(PANEL_CONFIGURATION.format(**values), encoding="utf-8")

    def _wait_for_name(self, name):
        wait_until(lambda: self.bus.owner(name), START_SECONDS, f"{name} is on the session bus")

    def _tray_is_ready(self):
        owner = self.bus.owner(WATCHER)
        if owner is None:
            return False
        return self.bus.get(owner, "/StatusNotifierWatcher", WATCHER, "IsStatusNotifierHostRegistered")


def _authority(cookie):
    """The content of an Xauthority file, for any host and any display with this cookie."""

    def counted(value):
        return struct.pack(">H", len(value)) + value

    return struct.pack(">H", 0xFFFF) + counted(b"") + counted(b"") + counted(b"MIT-MAGIC-COOKIE-1") + counted(cookie)
