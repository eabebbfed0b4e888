# SPDX-License-Identifier: GPL-3.0-or-later
"""Hears messages on a bus that are between others."""

from gi.repository import Gio, GLib

BUS = "org.freedesktop.DBus"


class Monitor:
    """The messages are not for us to answer, so they end here."""

    def __init__(self, address, rules):
        """`rules`: the match rules of the messages that `hear` gets."""
        self._listens = False
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self._connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        self._connection.add_filter(self._filter)
        self._connection.call_sync(
            BUS, "/org/freedesktop/DBus", f"{BUS}.Monitoring", "BecomeMonitor", GLib.Variant("(asu)", (rules, 0)),
            None, Gio.DBusCallFlags.NONE, -1, None,
        )
        self._listens = True

    def close(self):
        if not self._connection.is_closed():
            self._connection.close_sync(None)

    def hear(self, message):
        """Called on GDBus's worker thread."""
        raise NotImplementedError

    def _filter(self, _, message, incoming):
        if not incoming or not self._listens:
            return message
        self.hear(message)
        return None
