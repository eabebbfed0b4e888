# SPDX-License-Identifier: GPL-3.0-or-later
"""The system bus is missing, goes away, and comes back. (When the session bus goes away, the program ends; see
test_end.py.)"""

import signal
import unittest

from support import history
from support.faults import SHOW_SECONDS, FaultCase
from support.logind import Logind
from support.slow_disk import SlowDisk

# A lock that was released is taken again as soon as logind is there to give it.
LOCK_SECONDS = 10
TIMES = 3


class SystemBus(FaultCase):
    def start_program(self, changes=None, machine=None, app=None):
        super().start_program((changes or {}) | SlowDisk(self.screen.folder).environment, machine, app)

    def start_logind(self):
        logind = Logind(self.screen, lambda: history.read(self.screen)[1])
        self.addCleanup(logind.close)
        self.soon_equal(lambda: logind.locks, 1, LOCK_SECONDS)
        return logind

    def sleep_and_wake(self, logind, level):
        """The history is on the disk before the machine sleeps, and the battery is read after that."""
        logind.announce(True)
        # The program may have asked twice, when the bus came and when logind did; the last lock counts.
        at_release = lambda: logind.locks == 0 and history.levels(max(logind.releases).seen)[-1]
        self.soon_equal(at_release, self.seen[-1], SHOW_SECONDS)
        self.machine.set_level(level)
        logind.announce(False)
        self.soon_equal(lambda: self.item.label, f" {level}%", SHOW_SECONDS + LOCK_SECONDS)
        self.seen.append(level)
        self.soon_equal(lambda: logind.locks, 1, LOCK_SECONDS)

    def test_goes_and_comes_back_again_and_again(self):
        self.begin()
        for number in range(TIMES):
            logind = self.start_logind()
            self.change_level(60 - number)
            self.sleep_and_wake(logind, 50 - number)
            self.screen.kill_system_bus()
            self.change_level(40 - number)
            self.screen.start_system_bus()
        self.sleep_and_wake(self.start_logind(), 35)
        self.still_right()

    def test_comes_late(self):
        self.begin(system_bus=False)
        self.change_level(60)
        self.screen.start_system_bus()
        self.sleep_and_wake(self.start_logind(), 50)
        self.still_right()

    def test_hangs(self):
        self.begin()
        self.start_logind()
        self.screen.system_bus.send(signal.SIGSTOP)
        self.addCleanup(self.screen.system_bus.send, signal.SIGCONT)
        self.change_level(60)
        self.item.menu.choose("Show details")
        self.change_level(50)
        self.still_right()

    def test_hangs_from_before_the_start(self):
        """The program connects to the bus when it goes on, or when another one takes its place."""
        self.prepare(self.small_desktop())
        for comes_to in (lambda: self.screen.system_bus.send(signal.SIGCONT), self.start_another_bus):
            self.screen.system_bus.send(signal.SIGSTOP)
            self.start_program()
            self.change_level(60)
            comes_to()
            self.sleep_and_wake(self.start_logind(), 50)
            self.assertEqual(self.program.process.stop(), 0)
            self.old = history.samples(history.read(self.screen)[1])
        self.start_program()
        self.still_right()

    def start_another_bus(self):
        self.screen.kill_system_bus()
        self.screen.start_system_bus()


if __name__ == "__main__":
    unittest.main()
