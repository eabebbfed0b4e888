# SPDX-License-Identifier: GPL-3.0-or-later
"""The machine goes to sleep and wakes again."""

import time
import unittest
from itertools import groupby

from support import history
from support.case import DesktopCase
from support.laptop import ADAPTER, BATTERY
from support.logind import Logind
from support.notifications import Listener
from support.slow_disk import SlowDisk

LOCK_SECONDS = 5
# The machine sleeps five seconds after the announcement, whether the lock was released or not.
RELEASE_SECONDS = 4

# The time of the last look that the program takes after its start.
LAST_LOOK_SECONDS = 15

# Batteries cannot be read right after waking. The rest of the time allows for a busy machine.
EARLIEST_READING = 3
LATEST_READING = 5
# A timer may round to the nearest millisecond.
ROUNDING = 0.002

# These pass the charge limit, which must cause no reminder after waking; soon after the start, because the reading each
# minute would cause one.
LEVELS = range(79, 89)
SHORTEST_MINUTE = 50


class Sleep(DesktopCase):
    def test_ten_times_the_history_is_saved_before_and_the_battery_read_once_after(self):
        self.screen = self.desktop(panel=False)
        history.write_old(self.screen)
        logind = Logind(self.screen, lambda: history.read(self.screen))
        self.addCleanup(logind.close)
        listener = Listener(self.screen)
        self.addCleanup(listener.close)
        machine = self.laptop({"BAT0": BATTERY | {"status": "Not charging"}, "AC": ADAPTER | {"online": "1"}})
        first = LEVELS[0] - 1
        machine.set_level(first)
        counter = self.count_reads(machine)
        start = time.monotonic()
        program = self.start_and_wait(self.screen, machine, SlowDisk(self.screen.folder).environment)
        self.soon_equal(lambda: logind.locks, 1, LOCK_SECONDS)
        self.assertEqual([(what, mode) for what, _, _, mode in logind.given], [("sleep", "delay")])
        last_look = lambda: counter.readings() and time.monotonic() > start + LAST_LOOK_SECONDS - 1
        self.soon(last_look, LAST_LOOK_SECONDS + LOCK_SECONDS, "the program has looked for the last time")

        others = []
        for number, level in enumerate(LEVELS, start=1):
            inode, _ = history.read(self.screen)
            logind.announce(True)
            self.soon(lambda: len(logind.releases) == number, RELEASE_SECONDS, "the lock is let go")
            inode_at_release, at_release = logind.releases[-1].seen
            self.assertNotEqual(inode_at_release, inode, "not rewritten before the lock was let go")
            self.assertEqual(self.new_levels(at_release), [first, *LEVELS][:number])

            machine.set_level(level)
            self.collect(counter, others)
            woken = time.monotonic()
            logind.announce(False)
            self.soon_equal(lambda: logind.locks, 1, LOCK_SECONDS)
            moments = []

            def read_and_shown():
                self.collect(counter, moments)
                is_read = moments and moments[-1] >= woken + EARLIEST_READING - ROUNDING
                return is_read and program.item.label == f" {level}%"

            self.soon(
                read_and_shown,
                LATEST_READING + LOCK_SECONDS,
                lambda: f"{level}% is read and shown; woken {woken}, readings {moments}",
            )
            self.assertLessEqual(moments[-1] - woken, LATEST_READING)
            others += moments[:-1]

        self.assertEqual(program.process.stop(), 0)
        self.wrote_nothing(program)
        self.assertEqual(self.new_levels(history.read(self.screen)[1]), [first, *LEVELS])
        self.collect(counter, others)
        self.assertLessEqual(len(others), (time.monotonic() - start) // SHORTEST_MINUTE, others)
        self.assertEqual(listener.methods, [])

    def test_an_open_popover_closes_before(self):
        # The popover grabs the keyboard, which a screen locker needs that is told of the sleep at the same time.
        desktop = self.desktop(panel=False)
        logind = Logind(desktop, lambda: None)
        self.addCleanup(logind.close)
        program = self.start_and_wait(desktop, self.laptop())
        self.soon_equal(lambda: logind.locks, 1, LOCK_SECONDS)
        program.item.menu.choose("Show details")
        self.soon(lambda: desktop.windows("Velmora"), 2, "the popover is there")
        logind.announce(True)
        self.soon(lambda: not desktop.windows("Velmora"), RELEASE_SECONDS, "the popover is gone")

    @staticmethod
    def collect(counter, moments):
        moments += [time.monotonic()] * counter.readings()

    @staticmethod
    def new_levels(content):
        """The levels that this program has added. The reading each minute may see a level again."""
        return [level for level, _ in groupby(history.levels(content)[history.OLD_SAMPLES :])]


if __name__ == "__main__":
    unittest.main()
