# SPDX-License-Identifier: GPL-3.0-or-later
"""Low Power Mode, turned on from the reminder that suggests it, with the distribution's power-profiles-daemon."""

import json
import unittest

from support.case import DesktopCase
from support.notifications import Daemon, Dunst, Listener, Xfce
from support.profiles import PowerProfilesDaemon
from support.waiting import wait_until

SHOWN_SECONDS = 5
QUIET_SECONDS = 1
START_SECONDS = 10

TURN_ON = "Turn on Low Power Mode"
TURN_OFF = "Turn off Low Power Mode"
SNOOZE = ["SNOOZE", "Snooze 1 hour"]
WITH_BUTTON = [*SNOOZE, "TURN_ON", "Turn on"]
HOLD = ("app.velmora.Velmora", "power-saver", "Turned on in a reminder of a low battery")


class WithoutButtons(Daemon):
    """A daemon that takes no buttons, and shows nothing either."""

    def command(self):
        parameters = json.dumps({"capabilities": "body"})
        return ["/usr/bin/python3", "-m", "dbusmock", "--template", "notification_daemon", "-p", parameters]


class LowPower(DesktopCase):
    def begin(self, daemon=Xfce, **profiles):
        self.screen = self.desktop(panel=False)
        self.shown = daemon(self.screen)
        self.shown.start()
        self.listener = Listener(self.screen)
        self.addCleanup(self.listener.close)
        self.profiles = PowerProfilesDaemon(self.screen, **profiles)
        self.addCleanup(self.profiles.close)
        self.screen.defaults_file.parent.mkdir()
        self.screen.defaults_file.write_text('{"lowEnabled": false}', encoding="utf-8")
        self.machine = self.laptop()
        self.program = self.start_and_wait(self.screen, self.machine)
        self.item = self.program.item
        self.soon(lambda: self.profiles.questions.answered, START_SECONDS, "the program knows the profiles")

    def suggest(self):
        """The battery gets low; returns what was asked of the notification daemon."""
        count = len(self.listener.asked)
        self.machine.set_level(25)
        self.machine.event("BAT0")
        self.soon(lambda: len(self.listener.asked) > count, SHOWN_SECONDS, "the reminder is sent")
        asked = self.listener.asked[-1]
        self.assertEqual(asked.title, "Try Low Power Mode")
        self.soon(lambda: asked.id, SHOWN_SECONDS, "and shown")
        return asked

    def labels(self):
        return [entry.label for entry in self.item.menu.entries()]

    def entry(self):
        """The menu's entry for Low Power Mode."""
        return next((label for label in self.labels() if "Low Power" in label), None)

    def is_on(self):
        self.soon_equal(self.profiles.firmware, "low-power", SHOWN_SECONDS)
        self.soon_equal(self.entry, TURN_OFF, SHOWN_SECONDS)
        self.assertEqual(self.profiles.holds(), [HOLD])

    def is_off(self, profile):
        self.soon_equal(self.profiles.firmware, profile, SHOWN_SECONDS)
        self.soon_equal(self.profiles.holds, [], SHOWN_SECONDS)

    def test_the_button_on_xfce(self):
        self.begin(Xfce)
        self.profiles.choose("performance")
        self.assertEqual(self.suggest().actions, WITH_BUTTON)
        self.soon_equal(self.shown.count, 1, SHOWN_SECONDS)
        self.screen.move_pointer(640, 400)
        self.keep_picture(self.screen, "low-power-xfce")
        self.assertIsNone(self.entry(), "the button does it")

        def pressed():
            if self.shown.count() == 1:
                self.shown.press()  # the last button is at the lower right
            return self.profiles.firmware() == "low-power"

        wait_until(pressed, SHOWN_SECONDS, "the button is pressed")
        self.is_on()
        self.soon_equal(self.shown.count, 0, SHOWN_SECONDS)
        self.assertNotIn("snoozeUntil", self.screen.defaults_file.read_text(encoding="utf-8"))
        self.item.menu.choose(TURN_OFF)
        self.is_off("performance")
        self.soon_equal(self.entry, None, SHOWN_SECONDS)

    def test_the_menu_on_dunst_which_draws_no_button(self):
        self.begin(Dunst)
        self.assertEqual(self.suggest().actions, WITH_BUTTON)
        self.soon_equal(self.shown.count, 1, SHOWN_SECONDS)
        self.keep_picture(self.screen, "low-power-dunst")
        self.soon_equal(self.entry, TURN_ON, SHOWN_SECONDS)
        self.item.menu.choose(TURN_ON)
        self.is_on()
        self.soon_equal(self.shown.count, 0, SHOWN_SECONDS)

        # The user chooses another profile, which ends the hold, and then the reminder comes again.
        self.profiles.choose("balanced")
        self.is_off("balanced")
        self.soon_equal(self.entry, TURN_ON, SHOWN_SECONDS)
        self.item.menu.choose(TURN_ON)
        self.is_on()
        self.machine.plug()
        self.is_off("balanced")
        self.soon_equal(self.entry, None, SHOWN_SECONDS)

    def test_the_menu_with_a_daemon_that_takes_no_buttons(self):
        self.begin(WithoutButtons)
        self.assertIsNone(self.entry())
        self.assertEqual(self.suggest().actions, [])
        self.soon_equal(self.entry, TURN_ON, SHOWN_SECONDS)
        self.item.menu.choose(TURN_ON)
        self.is_on()
        # The program ends, and the hold with it.
        self.assertEqual(self.program.process.stop(), 0)
        self.is_off("balanced")

    def test_the_entry_lasts_as_long_as_the_reminder(self):
        self.begin(WithoutButtons)
        self.suggest()
        self.soon_equal(self.entry, TURN_ON, SHOWN_SECONDS)
        self.machine.plug()
        self.soon_equal(self.entry, None, SHOWN_SECONDS)

    def test_a_refused_hold_is_not_offered_again_until_the_daemon_is_started_again(self):
        self.begin(WithoutButtons, allowed=False)
        self.suggest()
        self.soon_equal(self.entry, TURN_ON, SHOWN_SECONDS)
        self.item.menu.choose(TURN_ON)
        self.soon_equal(self.entry, None, SHOWN_SECONDS)
        self.assertEqual(self.profiles.firmware(), "balanced")
        self.profiles.allow(True)
        self.never(self.entry, QUIET_SECONDS)
        self.profiles.stop()
        self.profiles.start()
        self.soon_equal(self.entry, TURN_ON, START_SECONDS)
        self.item.menu.choose(TURN_ON)
        self.is_on()
        self.profiles.stop()
        self.soon_equal(self.entry, None, SHOWN_SECONDS)

    def test_nothing_is_offered_where_the_daemon_knows_no_driver(self):
        self.begin(Xfce, has_driver=False)
        self.assertEqual(self.suggest().actions, SNOOZE)
        self.soon_equal(self.shown.count, 1, SHOWN_SECONDS)
        self.never(self.entry, QUIET_SECONDS)


if __name__ == "__main__":
    unittest.main()
