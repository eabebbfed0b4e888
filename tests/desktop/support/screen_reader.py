# SPDX-License-Identifier: GPL-3.0-or-later
"""The tree of a program's controls, queried over the accessibility bus as screen readers do. pyatspi is not used: it
keeps one bus for the whole life of a process, and each test here has a desktop of its own."""

import contextlib

from gi.repository import Gio, GLib

from .item import CALL_MILLISECONDS, Bus
from .screen import Box
from .waiting import wait_until

LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
BUS_NAME = "org.a11y.Bus"
REGISTRY = "org.a11y.atspi.Registry"
REGISTRY_PATH = "/org/a11y/atspi/registry"
EVENT = "org.a11y.atspi.Event.Object"
ROOT = "/org/a11y/atspi/accessible/root"
ACCESSIBLE = "org.a11y.atspi.Accessible"
COMPONENT = "org.a11y.atspi.Component"
VALUE = "org.a11y.atspi.Value"
TEXT = "org.a11y.atspi.Text"
SCREEN_COORDINATES = 0
START_SECONDS = 20

# Their bit numbers in the state set.
STATES = {"checked": 4, "enabled": 8, "focusable": 11, "focused": 12, "showing": 25}
LABELLED_BY = 2


class ScreenReader:
    """Programs that are started after it find a screen reader running."""

    def __init__(self, desktop):
        self.desktop = desktop
        desktop.start("a11y-bus", [LAUNCHER])
        wait_until(lambda: desktop.bus.owner(BUS_NAME), START_SECONDS, "the bus of screen readers is there")
        value = GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", True)))
        desktop.bus.call(BUS_NAME, "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set", value)
        address = desktop.bus.call(BUS_NAME, "/org/a11y/bus", BUS_NAME, "GetAddress")[0]
        self._bus = Bus(address)
        # Nothing else starts it, and our calls do not either.
        bus = "org.freedesktop.DBus"
        arguments = GLib.Variant("(su)", (REGISTRY, 0))
        self._bus.call(bus, "/org/freedesktop/DBus", bus, "StartServiceByName", arguments)
        self._focused = None
        self._follow_focus(address)

    def close(self):
        self._focus_connection.close_sync(None)
        self._bus.close()

    @property
    def focused(self):
        """The control that got the focus last, from the programs' own events; None before the first."""
        return self._focused and Control(self._bus, *self._focused)

    def _follow_focus(self, address):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self._focus_connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        self._focus_connection.add_filter(self._hear)
        bus = "org.freedesktop.DBus"
        rule = GLib.Variant("(s)", (f"type='signal',interface='{EVENT}',member='StateChanged',arg0='focused'",))
        event = GLib.Variant("(sass)", ("object:state-changed:focused", [], ""))
        for name, path, method, arguments in (
            (bus, "/org/freedesktop/DBus", "AddMatch", rule),
            (REGISTRY, REGISTRY_PATH, "RegisterEvent", event),
        ):
            self._focus_connection.call_sync(
                name, path, name, method, arguments, None, Gio.DBusCallFlags.NONE, CALL_MILLISECONDS, None
            )

    def _hear(self, _, message, incoming):
        """Called on GDBus's worker thread."""
        if incoming and message.get_interface() == EVENT:
            kind, has_it, *_ = message.get_body().unpack()
            if kind == "focused" and has_it:
                self._focused = message.get_sender(), message.get_path()
        return message

    def window(self, name):
        """The visible window with that name, of any program; None while there is none."""
        for program in Control(self._bus, REGISTRY, ROOT).children():
            for window in program.children():
                with contextlib.suppress(GLib.Error):  # gone since it was listed
                    if window.name == name and window.has("showing"):
                        return window
        return None


class Control:
    """One object of the tree; each access asks it anew. GLib.Error if it is gone."""

    def __init__(self, bus, owner, path):
        self._bus = bus
        self._owner = owner
        self._path = path

    def __eq__(self, other):
        return (self._owner, self._path) == (other._owner, other._path)

    def __repr__(self):
        return f"<{self.role} {self.name!r}>"

    def children(self):
        return [Control(self._bus, *child) for child in self._call(ACCESSIBLE, "GetChildren")[0]]

    @property
    def window(self):
        """The window that contains it: the last ancestor below the application."""
        parent = Control(self._bus, *self._get(ACCESSIBLE, "Parent"))
        return self if parent.role == "application" else parent.window

    def walk(self):
        """The control and everything visible below it, in reading order."""
        yield self
        for child in self.children():
            if child.has("showing"):
                yield from child.walk()

    def controls(self):
        """The controls below it that can have the focus, in reading order."""
        return [each for each in self.walk() if each.has("focusable")]

    def find(self, role, name):
        """The first control with that role and name below it; None if there is none."""
        return next((each for each in self.walk() if (each.role, each.name) == (role, name)), None)

    @property
    def role(self):
        return self._call(ACCESSIBLE, "GetRoleName")[0]

    @property
    def name(self):
        return self._get(ACCESSIBLE, "Name")

    @property
    def description(self):
        return self._get(ACCESSIBLE, "Description")

    def has(self, state):
        words = self._call(ACCESSIBLE, "GetState")[0]
        return bool(words[STATES[state] // 32] >> STATES[state] % 32 & 1)

    @property
    def labels(self):
        """The labels in front of it."""
        relations = self._call(ACCESSIBLE, "GetRelationSet")[0]
        return [Control(self._bus, *each) for kind, targets in relations if kind == LABELLED_BY for each in targets]

    @property
    def label(self):
        """Its label in front of it, or else its own name."""
        labels = self.labels
        return labels[0].name if labels else self.name

    @property
    def box(self):
        """Its place on the screen."""
        return Box(*self._call(COMPONENT, "GetExtents", GLib.Variant("(u)", (SCREEN_COORDINATES,)))[0])

    @property
    def value(self):
        """The number in it."""
        return self._get(VALUE, "CurrentValue")

    @property
    def text(self):
        """The text in it."""
        return self._call(TEXT, "GetText", GLib.Variant("(ii)", (0, -1)))[0]

    def _call(self, interface, method, arguments=None):
        return self._bus.call(self._owner, self._path, interface, method, arguments)

    def _get(self, interface, key):
        return self._bus.get(self._owner, self._path, interface, key)
