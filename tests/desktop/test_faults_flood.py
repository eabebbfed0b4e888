# SPDX-License-Identifier: GPL-3.0-or-later
"""Floods: messages on the session bus that hold far more than any panel or launcher sends."""

import unittest

from gi.repository import Gio, GLib

from support.faults import SHOW_SECONDS, FaultCase, most_growth, most_processor
from support.item import APPLICATION, ITEM_INTERFACE, ITEM_PATH, MENU_INTERFACE

APPLICATION_PATH = "/app/velmora/Velmora"
APPLICATION_INTERFACE = "org.freedesktop.Application"

UNKNOWN = "org.freedesktop.DBus.Error.UnknownObject"
REFUSED = "org.freedesktop.DBus.Error.LimitsExceeded"

EVENTS = 100_000
IDS = 800_000
NAMES = 100_000
LARGE_TOKENS = (50, 1024 * 1024)
MANY_TOKENS = (1_000, 4_000)
LAUNCHERS_TOKENS = (5, 1024 * 1024)  # fewer, because every launch shows the window anew

# The processor time beyond that of messages of the same size to an object that there is not: those are received and
# refused by libdbus and QtDBus alone. A message takes them about 20 ms per megabyte.
MOST_SECONDS = 0.1
MOST_GROWTH_KIB = 1024


def tokens(count, size):
    return [f"{number:0{size}}" for number in range(count)]


class Flood(FaultCase):
    def setUp(self):
        self.begin()
        self.owner = self.item.owner
        self.show_details = self.item.menu.entries()[0].id

    def send(self, path, interface, method, messages, refusal):
        """Calls the method with each of the messages, which must be answered with this error, if any. Returns the
        processor time that the program took."""
        before = self.usage().processor
        for message in messages:
            error = None
            try:
                self.screen.bus.call(self.owner, path, interface, method, message)
            except GLib.Error as caught:
                error = Gio.DBusError.get_remote_error(caught) or caught.message
            self.assertEqual(error, refusal)
        # It answers a call before it does what was asked for, and the next call after that.
        self.soon(lambda: self.item.tooltip, SHOW_SECONDS, "it answers")
        return self.usage().processor - before

    def costs_little(self, path, interface, method, messages, refusal=None):
        """The messages cost the program little more than to receive them, leave next to nothing in its memory, and it
        is still on the bus and right."""
        before = self.settled_usage()
        received = self.send("/nowhere", interface, method, messages, UNKNOWN)
        taken = self.send(path, interface, method, messages, refusal)
        growth = lambda: self.settled_usage().private_kib - before.private_kib
        print(f"{self._testMethodName}: {received:.2f} s to receive it, {taken:.2f} s in all; {growth():+} KiB at first")
        self.assertLessEqual(taken, most_processor(2 * received + MOST_SECONDS))
        self.soon(
            lambda: growth() <= most_growth(MOST_GROWTH_KIB), SHOW_SECONDS, lambda: f"it grows little, not {growth()} KiB"
        )
        self.assertEqual(self.item.owner, self.owner)
        self.still_right()

    def costs_little_for_the_menu(self, method, message):
        self.costs_little("/MenuBar", MENU_INTERFACE, method, [message], REFUSED)

    def test_of_events_for_the_menu(self):
        event = (self.show_details, "clicked", GLib.Variant("i", 0), 0)
        self.costs_little_for_the_menu("EventGroup", GLib.Variant("(a(isvu))", ([event] * EVENTS,)))

    def test_of_items_to_describe(self):
        self.costs_little_for_the_menu("GetGroupProperties", GLib.Variant("(aias)", ([0] * IDS, [])))

    def test_of_items_to_be_shown(self):
        self.costs_little_for_the_menu("AboutToShowGroup", GLib.Variant("(ai)", ([-1] * IDS,)))

    def test_of_names_of_properties(self):
        names = ["label"] * NAMES
        self.costs_little_for_the_menu("GetGroupProperties", GLib.Variant("(aias)", ([0] * 64, names)))

    def test_of_large_tokens_from_a_panel(self):
        self.costs_little_for_tokens(LARGE_TOKENS)

    def test_of_many_tokens_from_a_panel(self):
        self.costs_little_for_tokens(MANY_TOKENS)

    def costs_little_for_tokens(self, size):
        messages = [GLib.Variant("(s)", (token,)) for token in tokens(*size)]
        self.costs_little(ITEM_PATH, ITEM_INTERFACE, "ProvideXdgActivationToken", messages)

    def test_of_what_launchers_tell(self):
        activate = APPLICATION_PATH, APPLICATION_INTERFACE, "Activate"
        self.screen.bus.call(APPLICATION, *activate, GLib.Variant("(a{sv})", ({},)))
        self.soon(lambda: self.screen.windows("Velmora"), SHOW_SECONDS, "the details are there")
        entries = {str(number): GLib.Variant("i", number) for number in range(NAMES)}
        large = [{"activation-token": GLib.Variant("s", token)} for token in tokens(*LAUNCHERS_TOKENS)]
        self.costs_little(*activate, [GLib.Variant("(a{sv})", (data,)) for data in [entries, *large]])


if __name__ == "__main__":
    unittest.main()
