# SPDX-License-Identifier: GPL-3.0-or-later
"""The display or the session bus hangs, and the program is told to end."""

import signal
import time
import unittest

from support import history
from support.faults import SHOW_SECONDS, FaultCase

# It waits at most 4.5 seconds for what hangs; the rest is for a busy machine.
END_SECONDS = 8
HANG_SECONDS = 1
START_SECONDS = 10


class Hang(FaultCase):
    def stop(self, process):
        """The process hangs from now on."""
        process.send(signal.SIGSTOP)
        self.addCleanup(process.send, signal.SIGCONT)

    def ends(self, process):
        began = time.monotonic()
        process.send(signal.SIGTERM)
        self.assertEqual(process.wait_exit(END_SECONDS), 0, process.errors)
        print(f"it ended after {time.monotonic() - began:.2f} s")

    def start_hangs(self, server):
        self.prepare(self.small_desktop())
        before = history.read(self.screen)
        self.stop(server(self.screen))
        process = self.start(self.screen, self.laptop()).process
        self.soon(lambda: blocks_termination(process.pid), START_SECONDS, "it handles signals")
        self.never(lambda: not process.running, HANG_SECONDS)
        self.ends(process)
        self.assertEqual(history.read(self.screen), before)

    def test_of_the_display_from_before_the_start(self):
        self.start_hangs(lambda screen: screen.x_server)

    def test_of_the_session_bus_from_before_the_start(self):
        self.start_hangs(lambda screen: screen.session_bus)

    def test_of_the_display_later(self):
        """What was shown before is saved."""
        self.begin()
        self.change_level(60)
        self.change_level(59)
        self.item.menu.choose("Show details")
        self.soon(lambda: self.screen.windows("Velmora"), SHOW_SECONDS, "the popover is there")
        self.stop(self.screen.x_server)
        self.machine.plug()  # the popover is drawn again
        self.never(lambda: not self.program.process.running, HANG_SECONDS)
        self.ends(self.program.process)
        levels = [sample["p"] for sample in self.all_samples()]
        self.assertEqual(levels[: len(self.old) + 3], [*(sample["p"] for sample in self.old), 64, 60, 59])

    def test_of_the_session_bus_later(self):
        self.begin()
        self.change_level(60)
        self.stop(self.screen.session_bus)
        self.ends(self.program.process)
        self.assertEqual([sample["p"] for sample in self.all_samples()[len(self.old) :]], [64, 60])

    def all_samples(self):
        return history.samples(history.read(self.screen)[1])


def blocks_termination(pid):
    """Whether the process waits for SIGTERM instead of being ended by it."""
    with open(f"/proc/{pid}/status", encoding="utf-8") as status:
        blocked = next(line for line in status if line.startswith("SigBlk:"))
    return int(blocked.split()[1], 16) & 1 << (signal.SIGTERM - 1) != 0


if __name__ == "__main__":
    unittest.main()
