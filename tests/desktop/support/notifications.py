# SPDX-License-Identifier: GPL-3.0-or-later
"""Real notification daemons on a private desktop: we start them, and query them or look at the screen for the
notifications that they show."""

import os
import shutil
import subprocess
from pathlib import Path

from gi.repository import Gio, GLib

from .desktop import START_SECONDS
from .monitor import Monitor
from .program import TOP
from .screen import Box
from .waiting import wait_until

NAME = "org.freedesktop.Notifications"
PATH = "/org/freedesktop/Notifications"
DUNST = "org.dunstproject.cmd0"
LIBRARIES = Path("/usr/lib")
MATE_PLACES = (LIBRARIES, Path("/usr/libexec"))  # the latter since Debian 13
ICON = TOP / "resources/icons/hicolor/scalable/apps/app.velmora.Velmora.svg"


class Asked:
    """One notification that a program sent to a daemon."""

    def __init__(self, message):
        _, self.replaced, _, self.title, self.body, self.actions, self.hints, _ = message.get_body().unpack()
        self.call = message.get_sender(), message.get_serial()
        self.id = None  # that the daemon gave to the notification; None before its answer


class Listener(Monitor):
    """Hears all calls to the daemon on a desktop's bus, whoever makes them."""

    def __init__(self, desktop):
        self.methods = []  # of all calls, by name
        self.asked = []
        rules = [f"type='method_call',interface='{NAME}'", "type='method_return'"]
        super().__init__(desktop.environment["DBUS_SESSION_BUS_ADDRESS"], rules)

    def hear(self, message):
        if message.get_message_type() == Gio.DBusMessageType.METHOD_CALL:
            self.methods.append(message.get_member())
            if message.get_member() == "Notify":
                self.asked.append(Asked(message))
        elif message.get_message_type() == Gio.DBusMessageType.METHOD_RETURN:
            for asked in self.asked:
                if asked.call == (message.get_destination(), message.get_reply_serial()):
                    asked.id = message.get_body().unpack()[0]


def driver():
    """The executable that shows notifications through the program's adapter."""
    return Path(os.environ.get("VELMORA_NOTIFICATIONS", TOP / "build/default/bin/velmora_notifications_driver"))


class Driver:
    """One run of the driver on a desktop."""

    def __init__(self, desktop, icon=ICON):
        # The user of the desktop may not have access to the build folder.
        program = desktop.folder / "driver"
        shutil.copy(driver(), program)
        copied_icon = desktop.folder / "icon.svg"
        shutil.copy(icon, copied_icon)
        reading, writing = os.pipe()
        self.process = desktop.start("driver", [program, reading, copied_icon], pass_fds=[reading])
        os.close(reading)
        self._commands = os.fdopen(writing, "w", encoding="utf-8", buffering=1)

    def close(self):
        """The driver ends by itself at the end of its input; returns its exit code."""
        self._commands.close()
        return self.process.wait_exit(START_SECONDS)

    def show(self, identifier, title, sound="-"):
        self._commands.write(f"show {identifier} {sound} {title}\n")

    def withdraw(self, identifier):
        self._commands.write(f"withdraw {identifier}\n")

    @property
    def lines(self):
        """The answers so far: "pressed ACTION", "played SOUND"."""
        return self.process.output.splitlines()


class Daemon:
    """A daemon that draws one window for each notification."""

    name = ""  # from GetServerInformation
    window_class = ""
    press_button = 1  # of the mouse

    def __init__(self, desktop):
        self.desktop = desktop
        self.process = None

    def command(self):
        raise NotImplementedError

    def start(self):
        self.process = self.desktop.start(type(self).__name__.lower(), self.command())
        is_there = lambda: self.desktop.bus.owner(NAME)
        wait_until(is_there, START_SECONDS, lambda: f"{self.name} has its name; {self.process.errors}")

    def kill(self):
        """Ends it as a crash would."""
        self.process.kill()
        wait_until(lambda: self.desktop.bus.owner(NAME) is None, START_SECONDS, f"{self.name} is gone")

    def call(self, method):
        return self.desktop.bus.call(NAME, PATH, NAME, method)

    def capabilities(self):
        return self.call("GetCapabilities")[0]

    def windows(self):
        """The boxes of the daemon's windows."""
        found = self._tool("search", "--onlyvisible", "--class", self.window_class).stdout.split()
        boxes = []
        for window in found:
            answer = self._tool("getwindowgeometry", "--shell", window)
            if answer.returncode == 0:  # the window may be gone by now
                values = dict(line.split("=") for line in answer.stdout.split())
                boxes.append(Box(*(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))))
        return [box for box in boxes if box.width > 1 and box.height > 1]

    def show(self, title):
        """Shows a notification of another program; returns its id."""
        arguments = GLib.Variant("(susssasa{sv}i)", ("stranger", 0, "", title, "", [], {}, 0))
        return self.desktop.bus.call(NAME, PATH, NAME, "Notify", arguments)[0]

    def count(self):
        """The number of notifications on the screen."""
        return len(self.windows())

    def press(self):
        """Clicks the only button of the only notification, as a user would."""
        boxes = self.windows()
        if len(boxes) != 1:
            raise AssertionError(f"{len(boxes)} notifications")
        self.desktop.click(*self.button(boxes[0]), self.press_button)

    def button(self, box):
        """The position of the button, at the lower right; this hits it with and without a countdown beside it."""
        return box.x + box.width - 74, box.y + box.height - 29

    def let_alone(self, on):
        """Switches do-not-disturb."""
        raise NotImplementedError

    def _tool(self, *arguments):
        command = ["xdotool", *map(str, arguments)]
        environment = self.desktop.environment
        return subprocess.run(
            command, env=environment, capture_output=True, text=True, check=False, timeout=START_SECONDS
        )


class Dunst(Daemon):
    name = "dunst"
    window_class = "Dunst"
    press_button = 2  # dunst draws no button, only a hint that there is one

    def command(self):
        return ["dunst"]

    def button(self, box):
        return box.centre

    def let_alone(self, on):
        arguments = GLib.Variant("(ssv)", (DUNST, "paused", GLib.Variant("b", on)))
        self.desktop.bus.call(NAME, PATH, "org.freedesktop.DBus.Properties", "Set", arguments)

    def count(self):
        return self.desktop.bus.get(NAME, PATH, DUNST, "displayedLength")


class Xfce(Daemon):
    name = "Xfce Notify Daemon"
    window_class = "xfce4-notifyd"

    def command(self):
        return [next(LIBRARIES.glob("*/xfce4/notifyd/xfce4-notifyd"))]

    def let_alone(self, on):
        arguments = GLib.Variant("(ssv)", ("xfce4-notifyd", "/do-not-disturb", GLib.Variant("b", on)))
        self.desktop.bus.call("org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf", "SetProperty", arguments)


class Mate(Daemon):
    name = "Notification Daemon"
    window_class = "mate-notification-daemon"

    def command(self):
        places = [place / "mate-notification-daemon/mate-notification-daemon" for place in MATE_PLACES]
        return [next(filter(Path.exists, places))]


class Mako(Daemon):
    """mako, on a desktop with a wlroots compositor."""

    name = "mako"

    def command(self):
        return ["mako"]

    def count(self):
        # The same D-Bus call as makoctl's, whose output has another format in each version.
        (notifications,) = self.desktop.bus.call(NAME, "/fr/emersion/Mako", "fr.emersion.Mako", "ListNotifications")
        return len(notifications)

    def press(self):
        """mako draws no buttons, so makoctl invokes the action of the latest notification."""
        self._run("makoctl", "invoke", "SNOOZE")

    def let_alone(self, on):
        self._run("makoctl", "mode", "-a" if on else "-r", "do-not-disturb")

    def _run(self, *command):
        environment = self.desktop.environment
        return subprocess.run(
            command, env=environment, capture_output=True, text=True, check=True, timeout=START_SECONDS
        ).stdout
