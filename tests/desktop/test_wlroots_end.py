# SPDX-License-Identifier: GPL-3.0-or-later
"""The end of a Wayland session: the compositor goes away, and the session bus may stay."""

import unittest

from support import history
from support.case import END_SECONDS, DesktopCase
from support.wlroots import WlrootsDesktop

SHOW_SECONDS = 5


class WhenTheCompositorGoes(DesktopCase):
    def test_what_was_read_last_is_on_the_disk(self):
        desktop = WlrootsDesktop()
        self.addCleanup(desktop.stop)
        laptop = self.laptop()
        desktop.hand_over(laptop.root)
        program = self.start_and_wait(desktop, laptop, app=desktop.own_bundle())
        laptop.set_level(61)
        laptop.event("BAT0")
        self.soon_equal(lambda: program.item.label, " 61%", SHOW_SECONDS)
        self.soon_equal(lambda: history.levels_on_disk(desktop), [64], SHOW_SECONDS)
        desktop.kill_compositor()
        program.process.wait_exit(END_SECONDS)
        self.assertEqual(history.levels_on_disk(desktop), [64, 61])


if __name__ == "__main__":
    unittest.main()
