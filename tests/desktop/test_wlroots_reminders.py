# SPDX-License-Identifier: GPL-3.0-or-later
"""The reminders on a wlroots compositor, with mako, the daemon that people use there; it draws no buttons."""

import unittest

from support.case import DesktopCase
from support.notifications import Mako
from support.reminders import ZONE, RemindersOnADaemon
from support.wlroots import WlrootsDesktop


class OnMako(RemindersOnADaemon, DesktopCase):
    daemon = Mako

    def make_desktop(self):
        desktop = WlrootsDesktop()
        self.addCleanup(desktop.stop)
        return desktop

    def start_program(self):
        self.screen.hand_over(self.machine.root)
        return self.start_and_wait(self.screen, self.machine, {"TZ": ZONE}, self.screen.own_bundle())


if __name__ == "__main__":
    unittest.main()
