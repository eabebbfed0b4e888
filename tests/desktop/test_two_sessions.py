# SPDX-License-Identifier: GPL-3.0-or-later
"""One user is logged in twice, as at a second seat or over the network: two programs on one history."""

import unittest
from itertools import groupby

from support import history
from support.faults import SHOW_SECONDS, FaultCase

HOME_VARIABLES = ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME")


class TwoSessions(FaultCase):
    def setUp(self):
        self.begin()
        self.second = self.start_second()

    def start_second(self):
        """The program in another session, with a bus and a display of its own."""
        other = self.small_desktop()
        home = {name: self.screen.environment[name] for name in HOME_VARIABLES}
        second = self.start_and_wait(other, self.machine, home)
        self.soon_equal(lambda: second.item.label, f" {self.seen[-1]}%", SHOW_SECONDS)
        return second

    def change_level(self, percent):
        super().change_level(percent)
        for program in (self.program, self.second):
            if program.process.running:
                self.soon_equal(lambda program=program: program.item.label, f" {percent}%", SHOW_SECONDS)

    def levels(self):
        """The charges on the disk that were not there at first."""
        return history.levels(history.read(self.screen)[1])[len(self.old) :]

    def shown(self):
        """The same, each only once in a row."""
        return [level for level, _ in groupby(self.levels())]

    def test_lose_nothing_when_both_end(self):
        for level in (63, 62, 61):
            self.change_level(level)
        for program in (self.second, self.program):
            self.assertEqual(program.process.stop(), 0)
        self.nothing_is_lost()

    def test_lose_nothing_when_the_first_is_killed(self):
        for level in (63, 62):
            self.change_level(level)
        self.program.process.kill()
        self.machine.set_level(61)
        self.machine.event("BAT0")
        # The second takes over, with what the first had not written yet.
        self.soon_equal(lambda: self.shown()[:3], [64, 63, 62], SHOW_SECONDS)
        self.assertEqual(self.second.process.stop(), 0)
        self.assertEqual(self.shown(), [64, 63, 62, 61])

    def test_lose_nothing_when_each_of_them_ends_and_starts_again(self):
        for level in (63, 62):
            self.change_level(level)
        self.assertEqual(self.program.process.stop(), 0)
        self.machine.set_level(61)
        self.machine.event("BAT0")
        self.soon_equal(lambda: self.second.item.label, " 61%", SHOW_SECONDS)
        self.program = self.start_and_wait(self.screen, self.machine)
        self.item = self.program.item
        self.seen.append(61)
        self.change_level(60)
        self.assertEqual(self.second.process.stop(), 0)
        self.change_level(59)
        self.assertEqual(self.program.process.stop(), 0)
        self.assertEqual(self.shown(), [64, 63, 62, 61, 60, 59])


if __name__ == "__main__":
    unittest.main()
