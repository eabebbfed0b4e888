# SPDX-License-Identifier: GPL-3.0-or-later
"""The notification daemon hangs for good. (One that recovers shows the last reminder; see test_reminders.py.)"""

import signal
import unittest

from support.case import ESTIMATING
from support.faults import SHOW_SECONDS, FaultCase
from support.notifications import Dunst, Listener

# Each plug above the limit causes a reminder, and each unplug withdraws it.
PLUGS = 6


class HangingDaemon(FaultCase):
    def hang(self):
        self.shown = Dunst(self.screen)
        self.shown.start()
        self.shown.process.send(signal.SIGSTOP)
        self.addCleanup(self.shown.process.send, signal.SIGCONT)

    def test_through_many_reminders_and_to_the_end(self):
        self.begin()
        self.hang()
        listener = Listener(self.screen)
        self.addCleanup(listener.close)
        self.change_level(95)
        for _ in range(PLUGS):
            self.machine.plug()
            self.soon(lambda: "· Charging" in str(self.item.tooltip), SHOW_SECONDS, "the item says that it charges")
            self.machine.unplug()
            self.soon(lambda: "· On battery" in str(self.item.tooltip), SHOW_SECONDS, "the item says that it does not")
        self.assertIn("Notify", listener.methods, "there was nothing to remind of")
        self.still_right()

    def test_from_before_the_start(self):
        self.prepare(self.small_desktop())
        self.hang()
        self.start_program()
        self.assertEqual(self.item.tooltip[0], ESTIMATING)
        self.still_right()


if __name__ == "__main__":
    unittest.main()
