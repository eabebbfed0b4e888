# SPDX-License-Identifier: GPL-3.0-or-later
"""The reminders on the screen, with the daemons that people use."""

import shutil
import signal
import unittest
from pathlib import Path

from support.case import DesktopCase
from support.notifications import Dunst, Listener, Mate, Xfce
from support.program import bare_executable
from support.reads import wait_for_quiet
from support.reminders import QUIET_SECONDS, SHOWN_SECONDS, OnADaemon, RemindersOnADaemon
from support.sounds import SoundCard
from support.waiting import watch

AT_ONCE_SECONDS = 1
REST_SECONDS = 1.1
SETTLED_SECONDS = 15


class OnDunst(RemindersOnADaemon, DesktopCase):
    daemon = Dunst


class OnXfce(RemindersOnADaemon, DesktopCase):
    daemon = Xfce


class OnMate(RemindersOnADaemon, DesktopCase):
    daemon = Mate


class SeveralAtOnce(OnADaemon):
    """With a sound card that records."""

    def test_come_in_their_order_and_the_first_is_heard(self):
        self.begin({"lowSound": "Glass", "lowPowerSound": "Ping", "healthSound": "Frog"})
        self.machine.set("BAT0", energy_full="35000000")  # the health falls as well
        self.change_level(18)
        self.becomes(3)
        titles = [asked.title for asked in self.listener.asked]
        self.assertEqual(titles, ["Low battery", "Try Low Power Mode", "Battery health is low"])
        self.soon_equal(self.card.played, ["Glass"], SHOWN_SECONDS)
        self.stays(self.card.played, ["Glass"])

    def start_program(self):
        self.card = SoundCard(self.screen)
        return self.start_and_wait(self.screen, self.machine, self.card.environment)


class SeveralOnDunst(SeveralAtOnce, DesktopCase):
    daemon = Dunst


class SeveralOnXfce(SeveralAtOnce, DesktopCase):
    daemon = Xfce


class SeveralOnMate(SeveralAtOnce, DesktopCase):
    daemon = Mate


class HangingDaemon(DesktopCase):
    def test_the_item_follows_the_adapter_and_the_last_reminder_comes_late(self):
        screen = self.desktop(panel=False)
        shown = Dunst(screen)
        shown.start()
        laptop = self.laptop()
        laptop.set_level(85)
        item = self.start_and_wait(screen, laptop).item
        counter = self.count_reads(laptop)
        shown.process.send(signal.SIGSTOP)
        for change, status in ((laptop.plug, "Charging"), (laptop.unplug, "On battery"), (laptop.plug, "Charging")):
            # A change within a second of the last one waits for that second to pass.
            wait_for_quiet(counter, REST_SECONDS, SETTLED_SECONDS)
            change()
            self.soon(lambda: f"· {status}" in str(item.tooltip), AT_ONCE_SECONDS, f"the item says {status}")
        shown.process.send(signal.SIGCONT)
        self.soon_equal(shown.count, 1, SHOWN_SECONDS)
        self.assertEqual([count for _, count in watch(shown.count, QUIET_SECONDS)], [1])


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


class ReplacedBundle(DesktopCase):
    """As an upgrade or a build replaces it: the plugins in its place are for another version of the program."""

    def test_the_program_loads_none_of_the_new_plugins(self):
        screen = self.desktop(panel=False, notifications=True)
        listener = Listener(screen)
        self.addCleanup(listener.close)
        app = screen.own_bundle()
        laptop = self.laptop()
        program = self.start_and_wait(screen, laptop, SoundCard(screen).environment, app)
        shutil.rmtree(app)
        screen.own_bundle()
        laptop.set_level(15)
        laptop.event("BAT0")
        self.soon(lambda: listener.asked, SHOWN_SECONDS, "a reminder is shown")
        maps = Path(f"/proc/{program.process.pid}/maps")
        self.never(lambda: "velmora-sound" in maps.read_text(encoding="utf-8"), QUIET_SECONDS)


if __name__ == "__main__":
    unittest.main()
