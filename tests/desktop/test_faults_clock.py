# SPDX-License-Identifier: GPL-3.0-or-later
"""The machine's clock is changed while the program runs."""

import time
import unittest

from support import history
from support.clock import WallClock
from support.faults import SHOW_SECONDS, FaultCase

DAY = 86400
SLACK = 60


class Clock(FaultCase):
    def setUp(self):
        self.prepare(self.desktop(panel=False))
        self.clock = WallClock(self.screen.folder)
        self.start_program(self.clock.environment)
        self.addCleanup(self.clock.clean_up, self.program.process.pid)

    def samples(self):
        return history.samples(history.read(self.screen)[1])

    def plug(self):
        """The item shows it at once, and it is on the disk at once."""
        self.machine.plug()
        self.shows("Charging")
        self.is_saved(charging=True)

    def unplug(self):
        self.machine.unplug()
        self.shows("On battery")
        self.is_saved(charging=False)

    def shows(self, status):
        self.soon(lambda: f"· {status}" in self.item.tooltip[0], SHOW_SECONDS, f"the item says {status}")

    def is_saved(self, charging):
        last = lambda: self.samples()[-1]
        self.soon_equal(lambda: [last()[key] for key in "pca"], [self.seen[-1], charging, charging], SHOW_SECONDS)
        self.assertLess(abs(last()["t"] - time.time() - self.clock.ahead), SLACK)

    def popover(self):
        self.item.menu.choose("Show details")
        self.soon(lambda: self.screen.windows("Velmora"), SHOW_SECONDS, "the popover is there")
        self.screen.press("Escape")
        self.soon(lambda: not self.screen.windows("Velmora"), SHOW_SECONDS, "the popover is gone")

    def use(self):
        self.change_level(self.seen[-1] - 1)
        self.popover()
        self.plug()
        self.popover()
        self.unplug()

    def nothing_is_lost(self):
        """The samples are in the order of reading; the next start sorts them by time."""
        samples = self.all_that_was_shown()
        self.clock.set(0)
        again = self.start_and_wait(self.screen, self.machine)
        self.soon_equal(lambda: again.item.label, f" {self.seen[-1]}%", SHOW_SECONDS)
        self.assertEqual(again.process.stop(), 0)
        sorted_samples = sorted(samples, key=lambda sample: sample["t"])
        self.assertTrue(self.samples()[: len(samples)] == sorted_samples, "all is there, in the order of time")
        self.only_ours_is_there()

    def test_forward_by_a_day(self):
        self.use()
        self.clock.set(DAY)
        self.use()
        self.still_right()

    def test_back_by_a_day(self):
        self.use()
        self.clock.set(-DAY)
        self.use()
        self.still_right()

    def test_forward_by_forty_days_for_a_moment(self):
        """Not a sample is dropped by a clock that cannot be believed."""
        self.use()
        self.clock.set(40 * DAY)
        self.use()
        self.clock.set(0)
        self.use()
        self.still_right()

    def test_forward_by_forty_days_at_a_start(self):
        self.assertEqual(self.program.process.stop(), 0)
        self.clock.clean_up(self.program.process.pid)
        seen = self.seen
        self.clock.set(40 * DAY)
        self.start_program(self.clock.environment, self.machine)
        self.addCleanup(self.clock.clean_up, self.program.process.pid)
        self.seen = seen
        self.use()
        self.clock.set(0)
        self.use()
        self.still_right()

    def test_back_by_a_day_and_a_kill(self):
        """While the clock lies before the last save, charges are saved as they would be long after it."""
        self.use()
        self.clock.set(-DAY)
        self.change_level(55)
        self.soon_equal(lambda: self.samples()[-1]["p"], 55, SHOW_SECONDS)
        self.program.process.kill()
        self.all_that_was_shown()

    def test_back_and_forward_while_it_is_plugged_in(self):
        self.plug()
        for days in (-1, 1, -1, 0):
            self.clock.set(days * DAY)
            self.change_level(self.seen[-1] - 1)
            self.popover()
        self.unplug()
        self.still_right()


if __name__ == "__main__":
    unittest.main()
