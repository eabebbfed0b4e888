# SPDX-License-Identifier: GPL-3.0-or-later
"""Nothing can be written for a while: the home is read-only, or the disk is full."""

import contextlib
import ctypes
import json
import os
import resource
import subprocess
import time
import unittest

from support import history
from support.faults import PREFERENCES, SHOW_SECONDS, FaultCase

CLONE_NEWNS = 0x20000
DISK_SIZE = "16m"

SNOOZE = "Snooze alerts for 1 hour"


class Disk(FaultCase):
    """While nothing can be written, the program goes on with its state in memory, which is on the disk afterwards."""

    def trouble(self, begin, end):
        before = history.read(self.screen)
        begin()
        for level in (63, 62):
            self.change_level(level)
        # This would be written at once.
        self.machine.plug()
        self.soon(lambda: "· Charging" in self.item.tooltip[0], SHOW_SECONDS, "the item says that it charges")
        self.item.menu.choose(SNOOZE)
        self.soon(self.is_snoozed, SHOW_SECONDS, "the menu says that there are no reminders")
        self.item.menu.choose("Show details")
        self.soon(lambda: self.screen.windows("Velmora"), SHOW_SECONDS, "the popover is there")
        self.rests()
        self.assertEqual(history.read(self.screen), before)
        self.assertEqual(json.loads(self.screen.defaults_file.read_text(encoding="utf-8")), PREFERENCES)
        end()

    def is_over(self):
        """The fault ends; the user changes something else."""
        self.item.menu.choose(next(entry.label for entry in self.item.menu.entries() if "Cancel" in entry.label))
        self.soon(lambda: not self.is_snoozed(), SHOW_SECONDS, "the menu says that there are reminders")
        self.soon_equal(self.stored_snooze, 0, SHOW_SECONDS)
        self.take_stored_snooze()
        self.still_right()

    def is_over_and_the_user_leaves(self):
        """The fault ends and the program, too; choices made meanwhile are kept all the same."""
        self.assertEqual(self.program.process.stop(), 0, self.program.process.errors)
        self.wrote_nothing(self.program)
        self.assertGreater(self.take_stored_snooze(), time.time())
        self.nothing_is_lost()

    def stored_snooze(self):
        return json.loads(self.screen.defaults_file.read_text(encoding="utf-8")).get("snoozeUntil")

    def take_stored_snooze(self):
        """Removes the one preference that the program itself has written."""
        stored = json.loads(self.screen.defaults_file.read_text(encoding="utf-8"))
        until = stored.pop("snoozeUntil")
        self.screen.defaults_file.write_text(json.dumps(stored), encoding="utf-8")
        return until

    def is_snoozed(self):
        return SNOOZE not in [entry.label for entry in self.item.menu.entries()]


class ReadOnly(Disk):
    def begin_as_ordinary_user(self):
        """Permissions do not apply to root."""
        self.screen = self.small_desktop(ordinary_user=True)
        self.prepare(self.screen)
        self.start_program(app=self.screen.own_bundle())

    def folders(self):
        return [self.screen.home, *(file for file in self.screen.home.rglob("*") if file.is_dir())]

    def let_write(self, allowed):
        for file in self.folders():
            file.chmod(0o700 if allowed else 0o500)

    def test_home_for_a_while(self):
        self.begin_as_ordinary_user()
        self.addCleanup(self.let_write, True)
        self.trouble(lambda: self.let_write(False), lambda: self.let_write(True))
        self.is_over()

    def test_home_from_the_start_and_to_the_end(self):
        """Existing files stay as they were."""
        self.screen = self.small_desktop(ordinary_user=True)
        self.prepare(self.screen)
        app = self.screen.own_bundle()
        self.screen.hand_over(self.screen.folder)
        self.let_write(False)
        self.addCleanup(self.let_write, True)
        self.start_program(app=app)
        self.change_level(60)
        self.machine.plug()
        self.soon(lambda: "· Charging" in self.item.tooltip[0], SHOW_SECONDS, "the item says that it charges")
        self.rests()
        self.assertEqual(self.program.process.stop(), 0)
        self.seen = []
        self.wrote_nothing(self.program)
        self.nothing_is_lost()

    def test_home_without_anything_in_it(self):
        """The program cannot make any of its folders."""
        self.screen = self.small_desktop(ordinary_user=True)
        app = self.screen.own_bundle()
        self.screen.hand_over(self.screen.folder)
        self.let_write(False)
        self.addCleanup(self.let_write, True)
        self.start_program(app=app)
        self.change_level(60)
        self.rests()
        self.assertEqual(self.program.process.stop(), 0)
        self.wrote_nothing(self.program)


class Full(Disk):
    def test_when_files_may_not_grow(self):
        """The kernel limits the size of files for this process."""
        self.begin()
        self.trouble_by_limit()
        self.is_over_and_the_user_leaves()

    def test_when_there_is_no_room(self):
        """Where we may not mount a small disk, the limit on the file size takes its place."""
        screen = self.small_desktop()
        has_disk = mount_small_disk(screen.home)
        self.prepare(screen)
        self.start_program()
        ballast = screen.home / "ballast"
        if has_disk:
            self.trouble(lambda: fill_with(ballast), ballast.unlink)
        else:
            self.trouble_by_limit()
        self.is_over()

    def trouble_by_limit(self):
        pid = self.program.process.pid
        _, most = resource.prlimit(pid, resource.RLIMIT_FSIZE)
        self.trouble(
            lambda: resource.prlimit(pid, resource.RLIMIT_FSIZE, (0, most)),
            lambda: resource.prlimit(pid, resource.RLIMIT_FSIZE, (most, most)),
        )


def mount_small_disk(folder):
    """Mounts a file system over the folder, for this process and those that it starts; it goes away with them. False
    where that is not permitted."""
    libc = ctypes.CDLL(None)
    if os.geteuid() != 0 or libc.unshare(CLONE_NEWNS) != 0:
        return False
    for command in (["mount", "--make-rprivate", "/"], ["mount", "-t", "tmpfs", "-o", f"size={DISK_SIZE}", "none", folder]):
        if subprocess.run(command, capture_output=True, check=False).returncode != 0:
            return False
    return True


def fill_with(ballast):
    """Fills the disk."""
    with open(ballast, "wb", buffering=0) as file:
        with contextlib.suppress(OSError):
            while True:
                file.write(bytes(4096))


if __name__ == "__main__":
    unittest.main()
