# SPDX-License-Identifier: GPL-3.0-or-later
"""The disk takes many seconds to sync a file, and nothing that the user sees waits for it."""

import fcntl
import json
import os
import signal
import time
import unittest

from support import history
from support.faults import MOST_GROWTH_KIB, SHOW_SECONDS, FaultCase
from support.logind import Logind
from support.slow_disk import SlowDisk

SLOW = 12  # seconds for a sync, as measured while a USB stick is written
STUCK = 120

# It gives up waiting for the disk after 4 seconds; the rest is for a busy machine.
END_SECONDS = 8

LOCK_SECONDS = 10

# A month of history as text, of which three wait at most: one being written, one to be written next, and one for a forced
# end.
HISTORY_KIB = 3 * 1024
SNOOZE = "Snooze alerts for 1 hour"


class SlowDiskCase(FaultCase):
    def setUp(self):
        self.prepare(self.small_desktop())
        self.disk = SlowDisk(self.screen.folder)

    def start_with_disk(self):
        self.start_program(self.disk.environment)

    def levels(self):
        """The charges on the disk that were not there before the start."""
        return history.levels(history.read(self.screen)[1])[len(self.old) :]

    def open_and_close_popover(self):
        self.item.menu.choose("Show details")
        self.soon(lambda: self.screen.windows("Velmora"), SHOW_SECONDS, "the popover is there")
        self.screen.press("Escape")
        self.soon(lambda: not self.screen.windows("Velmora"), SHOW_SECONDS, "the popover is gone")

    def takes(self, action):
        began = time.monotonic()
        action()
        return time.monotonic() - began


class Shown(SlowDiskCase):
    def test_start_and_popover_are_as_fast_as_ever(self):
        times = []
        for seconds in (0, SLOW):
            self.disk.set(seconds)
            program = self.start(self.screen, self.laptop(), self.disk.environment)
            item = program.item
            start = self.takes(lambda: self.soon_equal(lambda: item.owner and item.label, " 64%", SHOW_SECONDS))
            self.item = item
            times.append((start, self.takes(self.open_and_close_popover)))
            self.disk.set(0)
            program.process.kill()
        (start, popover), (slow_start, slow_popover) = times
        print(f"start {start:.2f} s, with syncs of {SLOW} s {slow_start:.2f} s; "
              f"popover there and gone again {popover:.2f} s, {slow_popover:.2f} s")

    def test_what_happens_is_shown_at_once(self):
        self.start_with_disk()
        self.disk.set(STUCK)
        self.machine.plug()
        self.soon(lambda: "· Charging" in self.item.tooltip[0], SHOW_SECONDS, "the item says that it charges")
        self.item.menu.choose(SNOOZE)
        labels = lambda: [entry.label for entry in self.item.menu.entries()]
        self.soon(lambda: SNOOZE not in labels(), SHOW_SECONDS, "the menu says that there are no reminders")
        self.machine.unplug()
        self.soon(lambda: "· On battery" in self.item.tooltip[0], SHOW_SECONDS, "the item says that it does not charge")
        self.change_level(60)
        self.rests(MOST_GROWTH_KIB + 2 * HISTORY_KIB)

    def test_a_setting_does_not_wait_for_another_process(self):
        self.start_with_disk()
        folder = os.open(self.screen.defaults_file.parent, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        fcntl.flock(folder, fcntl.LOCK_EX)
        self.item.menu.choose(SNOOZE)
        # The program waits 5 seconds for the lock, and then goes ahead without it.
        self.machine.set_level(60)
        self.machine.event("BAT0")
        self.soon_equal(lambda: self.item.label, " 60%", 3)
        self.assertNotIn("snoozeUntil", json.loads(self.screen.defaults_file.read_text(encoding="utf-8")))
        fcntl.flock(folder, fcntl.LOCK_UN)
        stored = lambda: "snoozeUntil" in json.loads(self.screen.defaults_file.read_text(encoding="utf-8"))
        self.soon(stored, SHOW_SECONDS, "it is on the disk")


class Saved(SlowDiskCase):
    def test_at_the_end_the_newest_is_in_place_although_the_disk_is_stuck(self):
        self.start_with_disk()
        self.disk.set(STUCK)
        self.machine.plug()  # would be on the disk at once
        self.soon(lambda: "· Charging" in self.item.tooltip[0], SHOW_SECONDS, "the item says that it charges")
        self.change_level(60)
        self.item.menu.choose(SNOOZE)
        self.program.process.send(signal.SIGTERM)
        seconds = self.takes(lambda: self.assertEqual(self.program.process.wait_exit(END_SECONDS), 0))
        print(f"it ended after {seconds:.2f} s")
        self.assertEqual(self.levels(), [64, 64, 60])
        self.assertIn("snoozeUntil", json.loads(self.screen.defaults_file.read_text(encoding="utf-8")))

    def test_it_can_be_started_again_while_it_still_waits_for_the_disk(self):
        self.start_with_disk()
        owner = self.item.owner
        self.disk.set(STUCK)
        self.machine.plug()
        self.soon(lambda: "· Charging" in self.item.tooltip[0], SHOW_SECONDS, "the item says that it charges")
        self.program.process.send(signal.SIGTERM)
        self.soon(lambda: self.item.owner != owner, SHOW_SECONDS, "its name is free")
        self.assertTrue(self.program.process.running)
        self.start_and_wait(self.screen, self.machine)
        self.assertEqual(self.program.process.wait_exit(END_SECONDS), 0)

    def test_before_the_machine_sleeps(self):
        """The machine waits for a slow disk, but not for ever."""
        logind = Logind(self.screen, lambda: self.levels()[-1])
        self.addCleanup(logind.close)
        self.start_with_disk()
        for seconds, level in ((1, 60), (STUCK, 59)):
            self.soon_equal(lambda: logind.locks, 1, LOCK_SECONDS)
            self.disk.set(seconds)
            self.change_level(level)
            logind.announce(True)
            released = self.takes(lambda: self.soon_equal(lambda: logind.locks, 0, END_SECONDS))
            print(f"syncs of {seconds} s: the lock is let go after {released:.2f} s")
            self.assertGreaterEqual(released, min(seconds, 3))
            if seconds == 1:
                self.assertEqual(logind.releases[-1].seen, level)
                logind.announce(False)

    def test_soon_on_a_healthy_disk(self):
        self.start_with_disk()
        file = self.screen.history_file
        delays = []
        for number in range(5):
            before = file.stat().st_ino
            (self.machine.unplug if number % 2 else self.machine.plug)()
            status = "On battery" if number % 2 else "Charging"
            self.soon(lambda: f"· {status}" in self.item.tooltip[0], SHOW_SECONDS, f"the item says {status}")
            shown = time.time()
            self.soon(lambda: file.stat().st_ino != before, SHOW_SECONDS, "it is on the disk")
            delays.append(file.stat().st_ctime - shown)
            self.assertEqual(history.samples(history.read(self.screen)[1])[-1]["c"], number % 2 == 0)
        print(f"a plug is in the file at most {max(delays) * 1000:.0f} ms after it was seen in the item")


if __name__ == "__main__":
    unittest.main()
