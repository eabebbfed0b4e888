# SPDX-License-Identifier: GPL-3.0-or-later
"""The distribution's power-profiles-daemon on a desktop's system bus, for a machine whose firmware is a folder; a
stand-in for polkit allows everything or nothing."""

from gi.repository import Gio, GLib

from .item import Bus
from .monitor import Monitor
from .waiting import wait_until

NAMES = ("org.freedesktop.UPower.PowerProfiles", "net.hadess.PowerProfiles")
POLKIT = "org.freedesktop.PolicyKit1"
AUTHORITY = "/org/freedesktop/PolicyKit1/Authority"
DAEMON = "/usr/libexec/power-profiles-daemon"
START_SECONDS = 10


class Questions(Monitor):
    """Hears who asks a service on the system bus for the profiles that it has."""

    def __init__(self, address):
        self.answered = 0
        self._asked = []
        super().__init__(address, ["type='method_call',member='Get'", "type='method_return'"])

    def hear(self, message):
        if message.get_message_type() == Gio.DBusMessageType.METHOD_CALL:
            if message.get_body().unpack()[1] == "Profiles":
                self._asked.append((message.get_sender(), message.get_serial()))
        elif (message.get_destination(), message.get_reply_serial()) in self._asked:
            self.answered += 1


class PowerProfilesDaemon:
    def __init__(self, desktop, allowed=True, has_driver=True):
        """`has_driver`: the firmware has profiles; without them the daemon offers its own, which do nothing."""
        self._desktop = desktop
        self._folder = desktop.folder / "profiles"
        self._profile = self._folder / "sys/firmware/acpi/platform_profile"
        self._profile.parent.mkdir(parents=True)
        if has_driver:
            self._profile.write_text("balanced\n", encoding="utf-8")
            choices = self._profile.with_name("platform_profile_choices")
            choices.write_text("low-power balanced performance\n", encoding="utf-8")
        self.bus = Bus(desktop.environment["DBUS_SYSTEM_BUS_ADDRESS"])
        self.questions = Questions(desktop.environment["DBUS_SYSTEM_BUS_ADDRESS"])
        self._process = None
        desktop.start("polkit", ["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "polkitd"])
        wait_until(lambda: self.bus.owner(POLKIT), START_SECONDS, "polkit's stand-in is there")
        self.allow(allowed)
        self.start()

    def close(self):
        self.bus.close()
        self.questions.close()

    def start(self):
        environment = self._desktop.environment | {"UMOCKDEV_DIR": str(self._folder)}
        self._process = self._desktop.start("power-profiles-daemon", [DAEMON], environment)
        wait_until(self._name, START_SECONDS, lambda: f"the daemon is there; {self._process.errors}")

    def stop(self):
        self._process.kill()
        wait_until(lambda: not self._name(), START_SECONDS, "the daemon is gone")

    def allow(self, allowed):
        arguments = GLib.Variant("(b)", (allowed,))
        self.bus.call(POLKIT, AUTHORITY, "org.freedesktop.DBus.Mock", "AllowUnknown", arguments)

    def firmware(self):
        """The profile that the firmware was told."""
        return self._profile.read_text(encoding="utf-8").strip()

    def choose(self, profile):
        """The user chooses a profile in the desktop's settings."""
        arguments = GLib.Variant("(ssv)", (self._name(), "ActiveProfile", GLib.Variant("s", profile)))
        self.bus.call(self._name(), self._path(), "org.freedesktop.DBus.Properties", "Set", arguments)

    def holds(self):
        """Who holds which profile, and why."""
        return [
            (hold["ApplicationId"], hold["Profile"], hold["Reason"])
            for hold in self.bus.get(self._name(), self._path(), self._name(), "ActiveProfileHolds")
        ]

    def _name(self):
        return next(filter(self.bus.owner, NAMES), None)

    def _path(self):
        return "/" + self._name().replace(".", "/")
