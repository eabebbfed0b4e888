# SPDX-License-Identifier: GPL-3.0-or-later
"""Panels crash, and at login they may start late."""

import unittest

from support.case import DesktopCase
from support.faults import FaultCase
from support.waiting import watch

CRASHES = 10
BACK_SECONDS = 2
LATE_SECONDS = 15


class PanelCrashes(FaultCase):
    def test_ten_times_in_a_row_and_the_item_is_back_each_time(self):
        self.begin(panel=True, window_manager=True)
        for _ in range(CRASHES):
            self.screen.kill_panel()
            self.screen.start_panel()
            self.soon(lambda: self.item.registered, BACK_SECONDS, "the new panel has the item")
            self.assertEqual(len(self.screen.registered_items()), 1)
        self.still_right()


class PanelRestart(DesktopCase):
    def test_a_panel_that_comes_late_gets_the_item_once(self):
        desktop = self.desktop(panel=False)
        program = self.start_and_wait(desktop, self.laptop())
        alive = watch(lambda: program.process.running, LATE_SECONDS)
        self.assertEqual([value for _, value in alive], [True])
        desktop.start_panel()
        self.soon(lambda: program.item.registered, BACK_SECONDS, "the late panel has the item")
        # The X11 tray icon, for desktops without a watcher, must not stay beside it.
        box = self.soon(desktop.find_item, 5, "the item is drawn")
        self.assertLess(box.width, 30, "there is more than one icon")


if __name__ == "__main__":
    unittest.main()
