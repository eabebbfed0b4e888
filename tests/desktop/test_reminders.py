# SPDX-License-Identifier: GPL-3.0-or-later
"""The reminders on the screen, by the daemons that people have."""

import unittest

from support.case import DesktopCase
from support.notifications import Dunst, Listener, Mate, Xfce
from support.program import bare_executable
from support.reminders import QUIET_SECONDS, SHOWN_SECONDS, RemindersOnADaemon
from support.waiting import watch

class OnDunst(RemindersOnADaemon, DesktopCase):
    daemon = Dunst


class OnXfce(RemindersOnADaemon, DesktopCase):
    daemon = Xfce


class OnMate(RemindersOnADaemon, DesktopCase):
    daemon = Mate


class OutsideTheBundle(DesktopCase):
    def test_no_daemon_is_asked_for_anything(self):
        screen = self.desktop(panel=False)
        shown = Dunst(screen)
        shown.start()
        listener = Listener(screen)
        self.addCleanup(listener.close)
        laptop = self.laptop()
        item = self.start_and_wait(screen, laptop, app=bare_executable()).item
        laptop.set_level(15)
        laptop.event("BAT0")
        self.soon_equal(lambda: item.label, " 15%", SHOWN_SECONDS)
        asked = watch(lambda: list(listener.methods), QUIET_SECONDS)
        self.assertEqual([seen for _, seen in asked], [[]])


if __name__ == "__main__":
    unittest.main()
