# SPDX-License-Identifier: GPL-3.0-or-later
"""Faults that befall the program, and the state that it must be in afterwards, whatever the fault was."""

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

# The share of a processor at rest. A program that waits for events takes next to nothing; one that spins takes all it
# gets, which is several times this even on a busy machine with two processors.
MOST_AT_REST = 0.05

# A month of history is written as one text of two megabytes, and the popover and its fonts take as much.
MOST_GROWTH_KIB = 6 * 1024
# AddressSanitizer keeps freed memory to detect its later use, and makes everything take several times as long.
SANITIZED = "VELMORA_SANITIZED" in os.environ
SANITIZERS_SHARE_KIB = 512 * 1024
SANITIZERS_SLOWNESS = 5
MOST_NEW_DESCRIPTORS = 4

PREFERENCES = {"limit": 90, "low": 12, "somebodyElses": ["kept", 1]}


class Usage(NamedTuple):
    """The resources that a process uses."""

    processor: float  # seconds since its start
    private_kib: int
    descriptors: int

    @classmethod
    def of(cls, pid):
        folder = Path("/proc") / str(pid)
        numbers = (folder / "stat").read_text(encoding="utf-8").rpartition(")")[2].split()
        memory = dict(line.split(":") for line in (folder / "smaps_rollup").read_text(encoding="utf-8").splitlines()[1:])
        # Clean pages belong to libraries, and are private only while no other process uses those.
        private = int(memory["Private_Dirty"].split()[0])
        ticks = int(numbers[11]) + int(numbers[12])
        return cls(ticks / os.sysconf("SC_CLK_TCK"), private, len(list((folder / "fd").iterdir())))


def most_growth(kib):
    """The limit for the growth of the program, which is wider in a build with sanitizers."""
    return kib + SANITIZERS_SHARE_KIB * SANITIZED


def most_processor(seconds):
    """The limit for the processor time of the program, likewise."""
    return seconds * (SANITIZERS_SLOWNESS if SANITIZED else 1)


class FaultCase(DesktopCase):
    """`begin` starts the program with a month of history and the user's preferences; each test ends with
    `still_right`."""

    def small_desktop(self, **options):
        """A desktop without the parts that are seldom needed and slow to start on a busy machine."""
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
        """The usage once the memory no longer changes: right after something big was read or written it is higher."""
        last = self.usage()

        def settled():
            nonlocal last
            time.sleep(SETTLED_SECONDS)
            previous, last = last, self.usage()
            return last.private_kib == previous.private_kib

        self.soon(settled, SHOW_SECONDS, "its memory stands still")
        return last

    def change_level(self, percent):
        """The battery's charge changes, and the item shows it."""
        self.machine.set_level(percent)
        self.machine.event("BAT0")
        self.soon_equal(lambda: self.item.label, f" {percent}%", SHOW_SECONDS)
        self.seen.append(percent)

    def rests(self, most_growth_kib=MOST_GROWTH_KIB):
        """The program takes no processor time, and not much more memory than at the beginning."""
        before = self.usage()
        start = time.monotonic()
        self.never(lambda: not self.program.process.running, REST_SECONDS)
        after = self.usage()
        share = (after.processor - before.processor) / (time.monotonic() - start)
        self.assertLessEqual(share, most_processor(MOST_AT_REST), "it does not come to rest")
        self.assertLessEqual(after.private_kib - self.before.private_kib, most_growth(most_growth_kib))
        self.assertLessEqual(after.descriptors - self.before.descriptors, MOST_NEW_DESCRIPTORS)

    def still_right(self, level=47, **limits):
        """The program runs, shows the right charge, is at rest, ends cleanly when asked to, and has lost nothing."""
        self.assertTrue(self.program.process.running)
        self.change_level(level)
        self.rests(**limits)
        self.assertEqual(self.program.process.stop(), 0, self.program.process.errors)
        self.wrote_nothing(self.program)
        self.nothing_is_lost()

    def nothing_is_lost(self):
        """The preferences are as the user left them; the history is whole, with all old samples and charges shown."""
        self.assertEqual(json.loads(self.screen.defaults_file.read_text(encoding="utf-8")), PREFERENCES)
        samples = self.all_that_was_shown()
        self.assertTrue(sorted(samples, key=lambda sample: sample["t"]) == samples, "in the order of time")
        self.only_ours_is_there()

    def all_that_was_shown(self):
        """Returns the samples in the history, of which none may be missing."""
        samples = history.samples(history.read(self.screen)[1])
        # Compared as a whole, because unittest's diff of two months would be very long.
        self.assertTrue(samples[: len(self.old)] == self.old, "what was there before is as it was")
        self.assertEqual([level for level, _ in groupby(sample["p"] for sample in samples[len(self.old) :])], self.seen)
        return samples

    def only_ours_is_there(self):
        """There are no half-written files."""
        for file in (self.screen.history_file, self.screen.defaults_file):
            self.assertEqual([other.name for other in file.parent.iterdir()], [file.name], "something is left over")
