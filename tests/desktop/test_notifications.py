# SPDX-License-Identifier: GPL-3.0-or-later
"""Notifications on the daemons that people use."""

import unittest

from support.case import DesktopCase
from support.notifications import Driver, Dunst, Mate, Xfce
from support.waiting import watch

SHOWN_SECONDS = 5
QUIET_SECONDS = 1


class OnEachDaemon:
    """Tests that are the same for every daemon."""

    daemon = None

    def begin(self):
        self.shown = self.daemon(self.desktop(panel=False))
        self.shown.start()
        self.driver = Driver(self.shown.desktop)
        self.addCleanup(self.check_end)

    def check_end(self):
        self.assertEqual((self.driver.close(), self.driver.process.errors), (0, ""))

    def becomes(self, count):
        self.soon_equal(self.shown.count, count, SHOWN_SECONDS)

    def stays(self, observe, value):
        self.assertEqual([seen for _, seen in watch(observe, QUIET_SECONDS)], [value])

    def test_the_second_of_a_kind_takes_the_place_of_the_first(self):
        self.begin()
        self.driver.show("tooLong", "Once")
        self.driver.show("tooLong", "Twice")
        self.driver.show("tooLong", "Three times")
        self.becomes(1)
        self.stays(self.shown.count, 1)
        self.driver.show("low", "Another kind")
        self.becomes(2)
        self.driver.withdraw("tooLong")
        self.becomes(1)

    def test_the_button_comes_back_once(self):
        self.begin()
        self.driver.show("tooLong", "Press the button")
        self.becomes(1)
        self.shown.desktop.move_pointer(640, 400)
        self.soon(self.press_button, SHOWN_SECONDS, "the button is pressed")
        self.becomes(0)
        self.stays(lambda: self.driver.lines, ["pressed SNOOZE"])

    def press_button(self):
        """Presses the button unless a press was heard. It may take several: the daemon may still be drawing."""
        if not self.driver.lines and self.shown.count() == 1:
            self.shown.press()
        return self.driver.lines

    def test_a_daemon_that_was_killed_and_started_again_shows_the_next(self):
        self.begin()
        for title in ("Before", "After", "Again"):
            self.driver.show("tooLong", title)
            self.becomes(1)
            self.shown.kill()
            self.shown.start()
            self.assertEqual(self.shown.count(), 0)

    def test_nothing_is_left_of_what_is_withdrawn_at_once(self):
        self.begin()
        self.driver.show("tooLong", "Too late", "Glass")
        self.driver.withdraw("tooLong")
        self.driver.show("low", "In time")
        self.becomes(1)
        self.stays(lambda: (self.shown.count(), self.driver.lines), (1, []))


class Quiet(OnEachDaemon):
    """Tests for desktops that report do-not-disturb."""

    def test_sounds_are_heard_unless_the_user_is_to_be_left_alone(self):
        self.begin()
        self.driver.show("tooLong", "Loud", "Glass")
        self.soon_equal(lambda: self.driver.lines, ["played Glass"], SHOWN_SECONDS)
        self.driver.withdraw("tooLong")
        self.becomes(0)
        self.shown.let_alone(True)
        self.driver.show("low", "Quiet", "Glass")
        self.stays(lambda: (self.shown.count(), self.driver.lines), (0, ["played Glass"]))
        self.shown.let_alone(False)
        self.driver.show("health", "Loud again", "default")
        self.soon_equal(lambda: self.driver.lines, ["played Glass", "played default"], SHOWN_SECONDS)


class OnDunst(Quiet, DesktopCase):
    daemon = Dunst


class OnXfce(Quiet, DesktopCase):
    daemon = Xfce


class OnMate(OnEachDaemon, DesktopCase):
    daemon = Mate


if __name__ == "__main__":
    unittest.main()
