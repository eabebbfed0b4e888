# SPDX-License-Identifier: GPL-3.0-or-later
"""Private desktops with a panel, on which programs are started again and again and watched from outside."""

import contextlib
import json
import math
import mmap
import os
import signal
import subprocess
import threading
import time

from gi.repository import Gio, GLib
from support.desktop import SCREEN, TRAY, PrivateDesktop
from support.item import ITEM_INTERFACE, ITEM_PATH, MENU_INTERFACE, PROPERTIES_INTERFACE, WATCHER, Menu
from support.laptop import SimulatedLaptop
from support.waiting import wait_until

LIMIT = 20
POLL_SECONDS = 0.0002
SETTLE_SECONDS = 0.4  # the popover is finished when nothing in it has changed for this long
POINT = (900, 14)
CALL_FLAGS = Gio.DBusCallFlags.NO_AUTO_START

WATCHER_INTERFACE = f"""<node><interface name="{WATCHER}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
  <signal name="StatusNotifierHostRegistered"/>
</interface></node>"""


class Panel:
    """Stands in for the panel. As panels do, it asks a new item for all of its properties; the item counts as there
    once the answer has arrived. It has a connection and a thread of its own."""

    def __init__(self, address):
        self._context = GLib.MainContext()
        self._loop = GLib.MainLoop(self._context)
        self._ready = threading.Event()
        self._came = threading.Event()
        self.moment = self.owner = None
        threading.Thread(target=self._run, args=(address,), daemon=True).start()
        self._ready.wait(LIMIT)

    def _run(self, address):
        self._context.push_thread_default()
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self._connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        interface = Gio.DBusNodeInfo.new_for_xml(WATCHER_INTERFACE).interfaces[0]
        self._connection.register_object("/StatusNotifierWatcher", interface, self._called, self._asked, None)
        Gio.bus_own_name_on_connection(
            self._connection, WATCHER, Gio.BusNameOwnerFlags.NONE, lambda *_: self._ready.set(), None
        )
        self._loop.run()

    def _called(self, _connection, sender, _path, _interface, method, _arguments, invocation):
        invocation.return_value(None)
        if method == "RegisterStatusNotifierItem":
            self.owner = sender
            all_of_it = GLib.Variant("(s)", (ITEM_INTERFACE,))
            self._call(ITEM_PATH, PROPERTIES_INTERFACE, "GetAll", all_of_it, self._answered)

    def _answered(self, connection, result):
        connection.call_finish(result)
        self.moment = time.monotonic()
        self._came.set()

    def _asked(self, _connection, _sender, _path, _interface, key):
        values = {"IsStatusNotifierHostRegistered": ("b", True), "ProtocolVersion": ("i", 0)}
        return GLib.Variant(*values.get(key, ("as", [])))

    def _call(self, path, interface, method, arguments, answered=None):
        self._connection.call(self.owner, path, interface, method, arguments, None, CALL_FLAGS, -1, None, answered)

    def expect(self):
        self._came.clear()

    def wait(self):
        """Waits for the item; returns the time at which it was there."""
        if not self._came.wait(LIMIT):
            raise AssertionError("no item came")
        return self.moment

    def click(self):
        """Clicks on the item, without waiting for the answer."""
        self._call(ITEM_PATH, ITEM_INTERFACE, "Activate", GLib.Variant("(ii)", POINT))

    def choose(self, menu_path, number):
        """Chooses an entry of the item's menu, without waiting for the answer."""
        arguments = GLib.Variant("(isvu)", (number, "clicked", GLib.Variant("i", 0), 0))
        self._call(menu_path, MENU_INTERFACE, "Event", arguments)


class World:
    """A desktop with a simulated laptop. The panel is the stand-in, or Xfce's with `real_panel`."""

    def __init__(self, command, changes, real_panel=False, prepare=None, preload=()):
        self.command = command
        self.process = None
        self.panel = None
        self.laptop = SimulatedLaptop()
        try:
            self.desktop = PrivateDesktop(panel=real_panel)
        except BaseException:
            self.laptop.close()
            raise
        try:
            if not real_panel:
                self.panel = Panel(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
            with open(self.desktop.runtime / "Xvfb_screen0", "rb") as file:
                self._screen = mmap.mmap(file.fileno(), 0, prot=mmap.PROT_READ)
            self._environment = self.desktop.environment | self.laptop.environment | changes
            self._environment["LD_PRELOAD"] = ":".join([self._environment["LD_PRELOAD"], *map(str, preload)])
            if prepare:
                prepare(self.desktop)
        except BaseException:
            self.close()
            raise

    def close(self):
        try:
            if self.process:
                self.end()
        finally:
            self.desktop.stop()
            self.laptop.close()

    @property
    def pid(self):
        return self.process.pid

    def remember(self, minutes):
        """Writes a history of that many minutes for the program to find."""
        self.desktop.history_file.parent.mkdir(parents=True, exist_ok=True)
        now = time.time()
        level = lambda minute: round(60 + 38 * math.sin(minute / 200))
        records = [
            {"t": now - 60 * i, "p": level(i), "c": i % 400 < 150, "a": i % 400 < 180} for i in range(minutes, 0, -1)
        ]
        self.desktop.history_file.write_text(json.dumps(records, separators=(",", ":")), encoding="utf-8")

    def start(self):
        """Starts the program; returns the seconds until its item was there."""
        if self.panel:
            self.panel.expect()
        else:
            wait_until(lambda: self.desktop.find_item() is None, LIMIT, "the tray is empty")
            tray = self._rows(TRAY)
            empty = self._pixels(tray)
        before = time.monotonic()
        # Not by the tests' own code: its wrapper between us and the program would distort all figures.
        self.process = subprocess.Popen(
            self.command, env=self._environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, cwd=self.desktop.logs,
        )  # fmt: skip
        if self.panel:
            return self.panel.wait() - before
        while self._pixels(tray) == empty:
            if time.monotonic() - before > LIMIT or self.process.poll() is not None:
                raise AssertionError(f"nothing came into the tray of {self.command}")
            time.sleep(POLL_SECONDS)
        return time.monotonic() - before

    def end(self):
        """Ends the program, by force if it does not react."""
        self.process.send_signal(signal.SIGTERM)
        with contextlib.suppress(subprocess.TimeoutExpired):
            self.process.wait(LIMIT / 4)
        self.process.kill()
        self.process.wait()
        self.process = None

    def toggle(self):
        """Clicks; returns the seconds until something was visible, and until everything was."""
        return self._see(self.panel.click, SCREEN)

    def open_settings(self):
        """Opens the settings from the menu; returns the same as `toggle`. Only the inside of the window counts, not the
        window manager's frame."""
        path = self.desktop.bus.get(self.panel.owner, ITEM_PATH, ITEM_INTERFACE, "Menu")
        entries = Menu(self.desktop.bus, self.panel.owner, path).entries()
        number = next(entry.id for entry in entries if entry.label == "Settings…")
        inside = SCREEN._replace(x=SCREEN.width // 2 - 200, width=400)
        return self._see(lambda: self.panel.choose(path, number), inside)

    def close_settings(self):
        self._see(lambda: self.desktop.press("Escape"), SCREEN)

    def _see(self, act, box):
        """The seconds from `act` until something in the box changed, and until the last change."""
        rows = self._rows(box, step=20)[2:-2]
        last = self._pixels(rows)
        first = finished = None
        begin = time.monotonic()
        act()
        while (now := time.monotonic()) - (finished or begin) < (SETTLE_SECONDS if first else LIMIT):
            time.sleep(POLL_SECONDS)
            current = self._pixels(rows)
            if current != last:
                last = current
                finished = now
                first = first or now
        if not first:
            raise AssertionError("nothing was seen")
        return first - begin, finished - begin

    def _rows(self, box, step=1):
        """The positions of a box's rows in the X server's framebuffer."""
        width = 4 * SCREEN.width
        start = len(self._screen) - width * SCREEN.height + 4 * box.x
        return [
            slice(start + y * width, start + y * width + 4 * box.width) for y in range(box.y, box.y + box.height, step)
        ]

    def _pixels(self, rows):
        return [self._screen[row] for row in rows]


# The same battery as a mocked UPower reports it, for programs that ask UPower.
UPOWER = ("--template", "upower", "--parameters", json.dumps({"OnBattery": True, "DaemonVersion": "0.99"}))


def prepare_xfce_power_manager(desktop):
    """xfce4-power-manager asks UPower for the battery, and shows an item only if configured to."""
    desktop.start("upower", ["/usr/bin/python3", "-m", "dbusmock", "--system", *UPOWER])
    environment = desktop.environment
    call = lambda *arguments: subprocess.run(
        ["gdbus", "call", "--system", "--dest", "org.freedesktop.UPower", "--object-path", "/org/freedesktop/UPower",
         "--method", *arguments], env=environment, capture_output=True, check=False, timeout=LIMIT,
    )  # fmt: skip
    add = ("org.freedesktop.DBus.Mock.AddDischargingBattery", "BAT0", "Simulated", "64.0", "int64 10020")
    wait_until(lambda: call(*add).returncode == 0, LIMIT, "UPower's stand-in has the battery")
    call("org.freedesktop.DBus.Mock.SetupDisplayDevice", "2", "2", "64.0", "27.8", "43.5", "10.0", "int64 10020",
         "int64 0", "true", "battery-good-symbolic", "3")  # fmt: skip
    property_name = "/xfce4-power-manager/show-tray-icon"
    subprocess.run(
        ["xfconf-query", "-c", "xfce4-power-manager", "-p", property_name, "-n", "-t", "bool", "-s", "true"],
        env=environment, check=True, timeout=LIMIT,
    )  # fmt: skip


def missing_programs(names):
    """The programs that are not installed."""
    folders = [*os.environ.get("PATH", "").split(":"), "/usr/bin", "/usr/sbin"]
    return [name for name in names if not any(os.access(os.path.join(folder, name), os.X_OK) for folder in folders)]
