# SPDX-License-Identifier: GPL-3.0-or-later
"""One user is logged in twice, as at a second seat or over the network: two programs on one history."""

import unittest
from itertools import groupby

from support import history
from support.faults import SHOW_SECONDS, FaultCase
from support.screen_reader import ScreenReader
from support.settings import SettingsForm

HOME_VARIABLES = ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME")


class TwoSessions(FaultCase):
    def start_second(self, other):
        """The program in another session, with a bus and a display of its own."""
        home = {name: self.screen.environment[name] for name in HOME_VARIABLES}
        second = self.start_and_wait(other, self.machine, home | self.machine.environment_of_another())
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


class Samples(TwoSessions):
    def setUp(self):
        self.begin()
        self.second = self.start_second(self.small_desktop())

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


class Reset(TwoSessions):
    """A user resets the history in the settings of either program."""

    FEW = 5  # samples recorded since

    def setUp(self):
        self.prepare(self.small_desktop(window_manager=True))
        self.reader = self.make_reader(self.screen)
        self.start_program()
        self.other = self.small_desktop(window_manager=True)
        self.others_reader = self.make_reader(self.other)
        self.second = self.start_second(self.other)

    def make_reader(self, desktop):
        reader = ScreenReader(desktop)
        self.addCleanup(reader.close)
        return reader

    def resets(self, program, desktop, reader):
        form = SettingsForm(desktop, reader)
        program.item.menu.choose("Settings…")
        form.opened()
        form.click(form.control("Reset History…"))
        question = self.soon(lambda: reader.window("Velmora"), SHOW_SECONDS, "the question is there")
        desktop.click(*question.find("push button", "Reset").box.centre)
        # The next minute may come at any time.
        self.soon(lambda: len(self.all_levels()) <= 1, SHOW_SECONDS, "the samples are gone")

    def all_levels(self):
        return history.levels(history.read(self.screen)[1])

    def plugs(self, program):
        """What is written at once comes after the reset."""
        (self.machine.unplug if "Charging" in program.item.tooltip[0] else self.machine.plug)()
        self.soon(lambda: 1 <= len(self.all_levels()), SHOW_SECONDS, "it is saved")
        self.assertLessEqual(len(self.all_levels()), self.FEW)

    def test_in_the_second(self):
        self.change_level(63)
        self.resets(self.second, self.other, self.others_reader)
        self.change_level(62)
        self.plugs(self.program)
        for program in (self.second, self.program):
            self.assertEqual(program.process.stop(), 0)
        self.assertLessEqual(len(self.all_levels()), self.FEW)
        self.assertEqual(self.all_levels()[-1], 62)

    def test_in_the_first(self):
        self.change_level(63)
        self.resets(self.program, self.screen, self.reader)
        self.change_level(62)
        self.assertEqual(self.program.process.stop(), 0)
        self.plugs(self.second)
        self.assertEqual(self.second.process.stop(), 0)
        self.assertLessEqual(len(self.all_levels()), self.FEW)
        self.assertEqual(self.all_levels()[-1], 62)


if __name__ == "__main__":
    unittest.main()
