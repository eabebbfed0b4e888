# SPDX-License-Identifier: GPL-3.0-or-later
"""What happens after a minute: a reading that finds changes for which the laptop sends no event, and a word to users
whose desktop shows no items."""

import unittest

from support.case import HEALTH_AND_CYCLES, DesktopCase
from support.notifications import Dunst, Listener

# The timer's period of a minute, and its tolerance.
MINUTE_SECONDS = 70


# 27.84 Wh at 10 W.
WITH_TIME = "64% · On battery, 2 h 47 min left"


class MinuteReading(DesktopCase):
    def test_the_remaining_time_is_told_and_then_a_change_without_event_shows_within_seventy_seconds(self):
        laptop = self.laptop()
        item = self.start_and_wait(self.desktop(panel=False), laptop).item
        # Once the time is known, the program reads nothing more before the timer's next reading.
        self.soon_equal(lambda: item.tooltip, [WITH_TIME, *HEALTH_AND_CYCLES], MINUTE_SECONDS)
        laptop.set("AC", online=1)
        laptop.set("BAT0", status="Charging")
        laptop.set_level(66)
        self.soon_equal(lambda: item.label, " 66%", MINUTE_SECONDS)
        self.assertEqual(item.tooltip, ["66% · Charging, estimating time to full…", *HEALTH_AND_CYCLES])


class NoPanel(DesktopCase):
    def test_the_user_is_told_that_the_program_runs(self):
        screen = self.desktop(panel=False)
        shown = Dunst(screen)
        shown.start()
        listener = Listener(screen)
        self.addCleanup(listener.close)
        self.start_and_wait(screen, self.laptop())
        self.soon_equal(shown.count, 1, MINUTE_SECONDS)
        self.keep_picture(screen, "running")
        (told,) = listener.asked
        self.assertEqual(told.title, "Velmora is running")
        self.assertEqual(told.actions, [])
        self.assertIs(told.hints["suppress-sound"], True)
        self.assertTrue((screen.home / ".local/state/Velmora/running-told").exists())


if __name__ == "__main__":
    unittest.main()
