# SPDX-License-Identifier: GPL-3.0-or-later
"""The base of all whole-program tests: each begins with an empty world and ends with a program that ended cleanly."""

import unittest

from .desktop import PrivateDesktop
from .laptop import SimulatedLaptop
from .program import Program, bundle
from .reads import ReadCounter
from .waiting import wait_until, watch

START_SECONDS = 10
END_SECONDS = 5
STILL_SECONDS = 5

ESTIMATING = "64% · On battery, estimating time left…"
HEALTH_AND_CYCLES = ["Health: 87% (Fair)", "Cycles: 312"]


class DesktopCase(unittest.TestCase):
    """`desktop`, `laptop` and `start` make what a test needs; all of it is removed when the test ends or fails."""

    maxDiff = None

    def desktop(self, **options):
        desktop = PrivateDesktop(**options)
        self.addCleanup(desktop.stop)
        return desktop

    def laptop(self, supplies=None):
        laptop = SimulatedLaptop(supplies)
        self.addCleanup(laptop.close)
        return laptop

    def count_reads(self, laptop, name="BAT0"):
        counter = ReadCounter(laptop, name)
        self.addCleanup(counter.close)
        return counter

    def start(self, desktop, laptop=None, changes=None, app=None):
        """Starts the program. If it still runs when the test ends, it is asked to end and must do so cleanly; it must
        never have printed anything."""
        program = Program(desktop, laptop, changes, app)
        self.addCleanup(self._check_end, program)
        return program

    def start_and_wait(self, desktop, laptop=None, changes=None, app=None):
        """Like `start`, and waits until the item can be read (and is in the panel where there is one)."""
        program = self.start(desktop, laptop, changes, app)
        self.soon(lambda: program.item.tooltip != [], START_SECONDS, "the item is on the bus")
        if desktop.has_panel:
            self.soon(lambda: program.item.registered, START_SECONDS, "the panel has the item")
        return program

    def start_and_find(self, desktop, laptop):
        """Like `start_and_wait`; returns the program and the box of its item on the screen."""
        program = self.start_and_wait(desktop, laptop)
        return program, self.soon(desktop.find_item, START_SECONDS, "the item is drawn")

    def soon(self, condition, limit, what):
        """The condition becomes true within `limit` seconds."""
        return wait_until(condition, limit, what)

    def never(self, condition, seconds):
        """The condition stays false for that many seconds."""
        self.assertEqual([value for _, value in watch(lambda: bool(condition()), seconds)], [False])

    def soon_equal(self, observe, expected, limit):
        """The result of `observe` becomes `expected` within `limit` seconds."""
        wait_until(lambda: observe() == expected, limit, lambda: f"{expected!r}; it is {observe()!r}")

    def keep_picture(self, desktop, name):
        """Saves the screen, as soon as nothing moves, among the build's pictures for a person to look at."""
        last = desktop.picture()

        def still():
            nonlocal last
            previous, last = last, desktop.picture()
            return last.changed_box(previous) is None

        wait_until(still, STILL_SECONDS, "the picture stands still")
        folder = bundle().parent / "pictures"
        folder.mkdir(exist_ok=True)
        last.save(folder / f"{name}.png")

    def ends_cleanly(self, program, limit=END_SECONDS):
        """The program ends by itself within `limit` seconds, with exit code 0 and no output."""
        self.assertEqual(program.process.wait_exit(limit), 0, program.process.errors)
        self.wrote_nothing(program)

    def wrote_nothing(self, program):
        self.assertEqual((program.process.output, program.process.errors), ("", ""))

    def _check_end(self, program):
        if program.process.running:
            self.assertEqual(program.process.stop(), 0, f"when asked to end; {program.process.errors}")
            self.wrote_nothing(program)
