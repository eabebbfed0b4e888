# SPDX-License-Identifier: GPL-3.0-or-later
"""A program to which something bad happens, and what must be so afterwards, whatever it was."""

import json
import os
import time
from itertools import groupby
from pathlib import Path
from typing import NamedTuple

from . import history
from .case import DesktopCase

SHOW_SECONDS = 5
REST_SECONDS = 2
SETTLED_SECONDS = 0.2

# Of a processor, over the time of rest. A program that waits for events takes next to nothing; one that spins takes what
# it gets, on a busy machine with two processors still several times that.
MOST_AT_REST = 0.05

# A history of a month is written as one text of two megabytes, and the popover and its fonts take as much.
MOST_GROWTH_KIB = 6 * 1024
# The address sanitizer keeps what was freed, so that its later use shows, and everything takes several times as long.
SANITIZED = "VELMORA_SANITIZED" in os.environ
SANITIZERS_SHARE_KIB = 512 * 1024
SANITIZERS_SLOWNESS = 5
MOST_NEW_DESCRIPTORS = 4

PREFERENCES = {"limit": 90, "low": 12, "somebodyElses": ["kept", 1]}


class Usage(NamedTuple):
    """What a process takes of the machine."""

    processor: float  # seconds since its start
    private_kib: int
    descriptors: int

    @classmethod
    def of(cls, pid):
        folder = Path("/proc") / str(pid)
        numbers = (folder / "stat").read_text(encoding="utf-8").rpartition(")")[2].split()
        memory = dict(line.split(":") for line in (folder / "smaps_rollup").read_text(encoding="utf-8").splitlines()[1:])
        # Clean pages are the libraries', and private only while nobody else uses these.
        private = int(memory["Private_Dirty"].split()[0])
        ticks = int(numbers[11]) + int(numbers[12])
        return cls(ticks / os.sysconf("SC_CLK_TCK"), private, len(list((folder / "fd").iterdir())))


def most_growth(kib):
    """So much as a limit for the growth of the program, which is wider where a sanitizer is in it."""
    return kib + SANITIZERS_SHARE_KIB * SANITIZED


def most_processor(seconds):
    """So much as a limit for what the program takes of a processor, likewise."""
    return seconds * (SANITIZERS_SLOWNESS if SANITIZED else 1)


class FaultCase(DesktopCase):
    """`begin` starts the program with a month of history and preferences of the user's own; `still_right` is the end of
    each test."""

    def small_desktop(self, **options):
        """Without what is seldom needed, and slow to start on a busy machine."""
        return self.desktop(**{"panel": False, "window_manager": False} | options)

    def prepare(self, screen):
        self.screen = screen
        self.old = history.write_old(screen)
        screen.defaults_file.parent.mkdir(parents=True)
        screen.defaults_file.write_text(json.dumps(PREFERENCES), encoding="utf-8")

    def begin(self, changes=None, machine=None, app=None, **options):
        self.prepare(self.small_desktop(**options))
        self.start_program(changes, machine, app)

    def start_program(self, changes=None, machine=None, app=None):
        self.machine = machine or self.laptop()
        self.screen.hand_over(self.machine.root)
        self.program = self.start_and_wait(self.screen, self.machine, changes, app)
        self.item = self.program.item
        self.seen = [int(self.machine.supplies["BAT0"]["capacity"])]
        self.soon_equal(lambda: self.item.label, f" {self.seen[0]}%", SHOW_SECONDS)
        self.before = self.settled_usage()

    def usage(self):
        return Usage.of(self.program.process.pid)

    def settled_usage(self):
        """When its memory stands still: right after something big was read or written it takes more."""
        last = self.usage()

        def settled():
            nonlocal last
            time.sleep(SETTLED_SECONDS)
            previous, last = last, self.usage()
            return last.private_kib == previous.private_kib

        self.soon(settled, SHOW_SECONDS, "its memory stands still")
        return last

    def change_level(self, percent):
        """The battery has another charge, and the item says so."""
        self.machine.set_level(percent)
        self.machine.event("BAT0")
        self.soon_equal(lambda: self.item.label, f" {percent}%", SHOW_SECONDS)
        self.seen.append(percent)

    def rests(self, most_growth_kib=MOST_GROWTH_KIB):
        """It takes no processor's time, and not much more memory than it did at the beginning."""
        before = self.usage()
        start = time.monotonic()
        self.never(lambda: not self.program.process.running, REST_SECONDS)
        after = self.usage()
        share = (after.processor - before.processor) / (time.monotonic() - start)
        self.assertLessEqual(share, most_processor(MOST_AT_REST), "it does not come to rest")
        self.assertLessEqual(after.private_kib - self.before.private_kib, most_growth(most_growth_kib))
        self.assertLessEqual(after.descriptors - self.before.descriptors, MOST_NEW_DESCRIPTORS)

    def still_right(self, level=47, **limits):
        """It runs, says what the battery has, is at rest, ends cleanly when asked to, and has lost nothing."""
        self.assertTrue(self.program.process.running)
        self.change_level(level)
        self.rests(**limits)
        self.assertEqual(self.program.process.stop(), 0, self.program.process.errors)
        self.wrote_nothing(self.program)
        self.nothing_is_lost()

    def nothing_is_lost(self):
        """The preferences are as the user left them; the history is whole, and all that was there or was shown is in it."""
        self.assertEqual(json.loads(self.screen.defaults_file.read_text(encoding="utf-8")), PREFERENCES)
        samples = self.all_that_was_shown()
        self.assertTrue(sorted(samples, key=lambda sample: sample["t"]) == samples, "in the order of time")
        self.only_ours_is_there()

    def all_that_was_shown(self):
        """The samples in the history, in which nothing is missing."""
        samples = history.samples(history.read(self.screen)[1])
        # Compared as a whole, because the difference of two months is long to read.
        self.assertTrue(samples[: len(self.old)] == self.old, "what was there before is as it was")
        self.assertEqual([level for level, _ in groupby(sample["p"] for sample in samples[len(self.old) :])], self.seen)
        return samples

    def only_ours_is_there(self):
        """Nothing that was written by halves."""
        for file in (self.screen.history_file, self.screen.defaults_file):
            self.assertEqual([other.name for other in file.parent.iterdir()], [file.name], "something is left over")
