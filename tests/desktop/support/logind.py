# SPDX-License-Identifier: GPL-3.0-or-later
"""A stand-in for logind on a private system bus: announces that the machine goes to sleep and that it is awake again,
and hands out inhibitor locks that delay the sleep."""

import os
import threading
import time
from typing import NamedTuple

from gi.repository import Gio, GLib

NAME = "org.freedesktop.login1"
PATH = "/org/freedesktop/login1"
MANAGER = "org.freedesktop.login1.Manager"
CLOSE_SECONDS = 5


class Release(NamedTuple):
    moment: float  # on the monotonic clock
    seen: object  # the result of `look` at that moment


class Logind:
    """The machine would sleep as soon as no lock is left, so `look` is called exactly then."""

    def __init__(self, desktop, look):
        """`look` is called on another thread when a lock is released; its result is kept with the release."""
        self.releases = []
        self.given = []  # the arguments of each Inhibit call: what, who, why, mode
        self._look = look
        self._waiting = []
        address = desktop.environment["DBUS_SYSTEM_BUS_ADDRESS"]
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self._connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        self._connection.add_filter(self._hear)
        bus = "org.freedesktop.DBus"
        self._connection.call_sync(
            bus, "/org/freedesktop/DBus", bus, "RequestName", GLib.Variant("(su)", (NAME, 0)), None,
            Gio.DBusCallFlags.NONE, -1, None,
        )

    def close(self):
        """To be called when no lock is held any more; after a failed test one may be."""
        if not self._connection.is_closed():
            self._connection.close_sync(None)
        for thread in self._waiting:
            thread.join(CLOSE_SECONDS)

    @property
    def locks(self):
        """The number of locks held."""
        return len(self.given) - len(self.releases)

    def announce(self, sleep):
        arguments = GLib.Variant("(b)", (sleep,))
        self._connection.emit_signal(None, PATH, MANAGER, "PrepareForSleep", arguments)

    def _hear(self, _, message, incoming):
        """Called on GDBus's worker thread."""
        is_call = message.get_message_type() == Gio.DBusMessageType.METHOD_CALL
        if not incoming or not is_call or message.get_member() != "Inhibit":
            return message
        reading, writing = os.pipe()
        descriptors = Gio.UnixFDList()
        number = descriptors.append(writing)  # a copy of its own
        os.close(writing)
        thread = threading.Thread(target=self._wait_for_release, args=[reading], daemon=True)
        self._waiting.append(thread)
        thread.start()
        reply = Gio.DBusMessage.new_method_reply(message)
        reply.set_body(GLib.Variant("(h)", (number,)))
        reply.set_unix_fd_list(descriptors)
        self._connection.send_message(reply, Gio.DBusSendMessageFlags.NONE)
        self.given.append(message.get_body().unpack())  # now nothing that is announced can be ahead of the lock
        return None

    def _wait_for_release(self, reading):
        os.read(reading, 1)  # nobody writes; it returns when the last copy of the other end is closed
        moment = time.monotonic()
        self.releases.append(Release(moment, self._look()))
        os.close(reading)
