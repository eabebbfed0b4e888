# SPDX-License-Identifier: GPL-3.0-or-later
"""The program as seen on the session bus: its item in the panel and the item's menu."""

from typing import NamedTuple

from gi.repository import Gio, GLib

APPLICATION = "app.velmora.Velmora"
ITEM_PATH = "/StatusNotifierItem"
ITEM_INTERFACE = "org.kde.StatusNotifierItem"
MENU_INTERFACE = "com.canonical.dbusmenu"
PROPERTIES_INTERFACE = "org.freedesktop.DBus.Properties"
WATCHER = "org.kde.StatusNotifierWatcher"

CALL_MILLISECONDS = 5000


class Bus:
    """A connection to a private bus, with calls that do not hang."""

    def __init__(self, address):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self._connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)

    def close(self):
        if not self._connection.is_closed():
            self._connection.close_sync(None)

    def call(self, name, path, interface, method, arguments=None):
        """Calls a method and returns its result as a tuple of plain values. Raises GLib.Error on failure."""
        return self.answer(name, path, interface, method, arguments).unpack()

    def answer(self, name, path, interface, method, arguments=None):
        """Like `call`, but with the types of the reply."""
        flags = Gio.DBusCallFlags.NO_AUTO_START
        limit = CALL_MILLISECONDS
        return self._connection.call_sync(name, path, interface, method, arguments, None, flags, limit, None)

    def owner(self, name):
        """The connection that owns a name; None if nobody does."""
        try:
            return self._bus_call("GetNameOwner", "(s)", name)
        except GLib.Error:
            return None

    def pid(self, name):
        """The process that owns a name."""
        return self._bus_call("GetConnectionUnixProcessID", "(s)", name)

    def get(self, name, path, interface, key):
        arguments = GLib.Variant("(ss)", (interface, key))
        return self.call(name, path, PROPERTIES_INTERFACE, "Get", arguments)[0]

    def _bus_call(self, method, signature, *arguments):
        bus = "org.freedesktop.DBus"
        return self.call(bus, "/org/freedesktop/DBus", bus, method, GLib.Variant(signature, arguments))[0]


def registered_items(bus):
    """The items registered with the panel's watcher, each as connection and path; none without a watcher."""
    owner = bus.owner(WATCHER)
    if owner is None:
        return []
    try:
        return bus.get(owner, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems")
    except GLib.Error:
        return []  # the watcher has just gone away


class StatusItem:
    """The program's item; each access asks it anew."""

    def __init__(self, bus):
        self._bus = bus

    @property
    def owner(self):
        """The program's connection; None while there is none."""
        return self._bus.owner(APPLICATION)

    @property
    def registered(self):
        """Whether the panel has it."""
        return f"{self.owner}{ITEM_PATH}" in registered_items(self._bus)

    def get(self, key):
        """A property of the item; None while it has none, or nobody answers."""
        owner = self.owner
        if owner is None:
            return None
        try:
            return self._bus.get(owner, ITEM_PATH, ITEM_INTERFACE, key)
        except GLib.Error:
            return None

    def types(self):
        """The D-Bus type of each property, by name."""
        arguments = GLib.Variant("(s)", (ITEM_INTERFACE,))
        properties = self._bus.answer(self.owner, ITEM_PATH, PROPERTIES_INTERFACE, "GetAll", arguments)
        entries = properties.get_child_value(0)
        types = {}
        for number in range(entries.n_children()):
            entry = entries.get_child_value(number)
            types[entry.get_child_value(0).get_string()] = entry.get_child_value(1).get_variant().get_type_string()
        return types

    @property
    def label(self):
        """The text beside the icon; None while there is none."""
        return self.get("XAyatanaLabel")

    @property
    def icon(self):
        return self.get("IconName")

    @property
    def tooltip(self):
        """The lines of the tooltip, of its title and its text."""
        value = self.get("ToolTip")
        return [line for part in value[2:4] if part for line in part.split("\n")] if value else []

    def activate(self, x, y):
        """Reports a click at this position, as panels do."""
        self._bus.call(self.owner, ITEM_PATH, ITEM_INTERFACE, "Activate", GLib.Variant("(ii)", (x, y)))

    @property
    def menu(self):
        return Menu(self._bus, self.owner, self.get("Menu"))


class MenuEntry(NamedTuple):
    id: int
    label: str


class Menu:
    """The menu that a panel shows for the item."""

    def __init__(self, bus, owner, path):
        self._bus = bus
        self._owner = owner
        self._path = path

    def call(self, method, arguments):
        return self._bus.call(self._owner, self._path, MENU_INTERFACE, method, arguments)

    def get(self, key):
        return self._bus.get(self._owner, self._path, MENU_INTERFACE, key)

    def layout(self, parent=0, depth=-1):
        """The revision and the tree below `parent`: id, properties and children."""
        revision, item = self.call("GetLayout", GLib.Variant("(iias)", (parent, depth, [])))
        return revision, item

    def entries(self):
        """The entries that can be chosen, in order."""
        _, (_, _, children) = self.layout()
        return [MenuEntry(child[0], child[1].get("label", "").replace("_", "")) for child in children]

    def choose(self, label):
        """Activates an entry as a panel does when it is clicked."""
        entry = next(entry for entry in self.entries() if entry.label == label)
        self.event(entry.id, "clicked")

    def event(self, entry_id, kind):
        self.call("Event", GLib.Variant("(isvu)", (entry_id, kind, GLib.Variant("i", 0), 0)))
