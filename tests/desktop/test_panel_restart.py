# SPDX-License-Identifier: GPL-3.0-or-later
"""Panels crash, and at login they may come late."""

import unittest

from support.case import DesktopCase
from support.waiting import watch

BACK_SECONDS = 2
LATE_SECONDS = 15


class PanelRestart(DesktopCase):
    def test_the_item_is_back_in_a_panel_that_was_killed(self):
        desktop = self.desktop()
        program = self.start_and_wait(desktop, self.laptop())
        for _ in range(2):
            desktop.kill_panel()
            desktop.start_panel()
            self.soon(lambda: program.item.registered, BACK_SECONDS, "the new panel has the item")
        self.assertTrue(program.process.running)

    def test_a_panel_that_comes_late_gets_the_item_once(self):
        desktop = self.desktop(panel=False)
        program = self.start_and_wait(desktop, self.laptop())
        alive = watch(lambda: program.process.running, LATE_SECONDS)
        self.assertEqual([value for _, value in alive], [True])
        desktop.start_panel()
        self.soon(lambda: program.item.registered, BACK_SECONDS, "the late panel has the item")
        # An icon of the old kind, for panels without a watcher, must not stay beside it.
        box = self.soon(desktop.find_item, 5, "the item is drawn")
        self.assertLess(box.width, 30, "there is more than one icon")


if __name__ == "__main__":
    unittest.main()
