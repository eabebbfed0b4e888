# SPDX-License-Identifier: GPL-3.0-or-later
"""The machine goes to sleep and wakes again."""

import time
import unittest

from support import history
from support.case import DesktopCase
from support.laptop import ADAPTER, BATTERY
from support.logind import Logind
from support.notifications import Listener

LOCK_SECONDS = 5
# A machine sleeps five seconds after it said so, whether the lock was let go or not.
RELEASE_SECONDS = 4

# The last of the looks that the program takes after its start.
LAST_LOOK_SECONDS = 15

# Batteries cannot be read at once after waking; a moment later the reading has been shown, too.
EARLIEST_READING = 3
LATEST_READING = 3.5
# A timer may round to the nearest millisecond.
ROUNDING = 0.002

# Through the charge limit, which is not to be told after waking.
LEVELS = range(75, 85)


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
        program = self.start_and_wait(self.screen, machine)
        self.soon_equal(lambda: logind.locks, 1, LOCK_SECONDS)
        self.assertEqual([(what, mode) for what, _, _, mode in logind.given], [("sleep", "delay")])
        last_look = lambda: counter.readings() and time.monotonic() > start + LAST_LOOK_SECONDS - 1
        self.soon(last_look, LAST_LOOK_SECONDS + LOCK_SECONDS, "the program has looked for the last time")

        for number, level in enumerate(LEVELS, start=1):
            inode, _ = history.read(self.screen)
            logind.announce(True)
            self.soon(lambda: len(logind.releases) == number, RELEASE_SECONDS, "the lock is let go")
            inode_at_release, at_release = logind.releases[-1].seen
            self.assertNotEqual(inode_at_release, inode, "not rewritten before the lock was let go")
            self.assertEqual(self.new_levels(at_release), [first, *LEVELS][:number])

            machine.set_level(level)
            self.assertEqual(counter.readings(), 0)
            woken = time.monotonic()
            logind.announce(False)
            self.soon_equal(lambda: logind.locks, 1, LOCK_SECONDS)
            moments = []
            self.soon(
                lambda: self.collect(counter, moments) or program.item.label == f" {level}%",
                LATEST_READING + LOCK_SECONDS,
                lambda: f"{level}% is shown; readings {moments} s after waking",
            )
            # It may have been between the look at the files and the one at the item.
            self.collect(counter, moments)
            self.assertEqual(len(moments), 1, moments)
            self.assertGreaterEqual(moments[0] - woken, EARLIEST_READING - ROUNDING)
            self.assertLessEqual(moments[0] - woken, LATEST_READING)

        self.assertEqual(program.process.stop(), 0)
        self.wrote_nothing(program)
        self.assertEqual(self.new_levels(history.read(self.screen)[1]), [first, *LEVELS])
        self.assertEqual(counter.readings(), 0)
        self.assertEqual(listener.methods, [])

    @staticmethod
    def collect(counter, moments):
        moments += [time.monotonic()] * counter.readings()

    @staticmethod
    def new_levels(content):
        """What this program has added."""
        return history.levels(content)[history.OLD_SAMPLES :]


if __name__ == "__main__":
    unittest.main()
