# SPDX-License-Identifier: GPL-3.0-or-later
"""The charge limit of the firmware: days of machines that keep it, ignore it, forget it, and have none."""

import unittest

from support.case import DesktopCase
from support.clock import WallClock
from support.laptop import ADAPTER, BATTERY
from support.logind import Logind
from support.notifications import Dunst, Listener, Xfce

START_SECONDS = 10
SHOWN_SECONDS = 5
QUIET_SECONDS = 3
TEN_MINUTES = 600

# The refresh after waking comes three seconds after it.
WOKEN_SECONDS = 3
WAKE_SECONDS = 8

END = "charge_control_end_threshold"
START = "charge_control_start_threshold"
WITH_LIMIT = BATTERY | {START: "75", END: "80"}

NOT_HOLDING = "The firmware's limit is 80%, but the battery is at 84% and still charging."
RESET = "The firmware's limit was 80% and is now 100%."


class FirmwareLimit(DesktopCase):
    def begin(self, battery, daemon=Dunst):
        self.screen = self.desktop(panel=False)
        self.shown = daemon(self.screen)
        self.shown.start()
        self.listener = Listener(self.screen)
        self.addCleanup(self.listener.close)
        self.logind = Logind(self.screen, lambda: None)
        self.addCleanup(self.logind.close)
        self.screen.defaults_file.parent.mkdir()
        # The other reminders are not wanted here.
        self.screen.defaults_file.write_text(
            '{"limitEnabled": false, "lowEnabled": false, "lowPowerEnabled": false}', encoding="utf-8"
        )
        # It has said before that no panel shows its item.
        self.file().parent.mkdir(parents=True)
        self.file().with_name("running-told").write_text("told\n", encoding="utf-8")
        self.machine = self.laptop({"BAT0": battery, "AC": ADAPTER})
        self.clock = WallClock(self.screen.folder)
        self.run_program()

    def run_program(self):
        # Also the clocks that count from the start of the machine are ahead, so that timers that are due by then fire.
        environment = self.clock.environment | {"FAKETIME_DONT_FAKE_MONOTONIC": "0"}
        self.program = self.start_and_wait(self.screen, self.machine, environment)
        self.addCleanup(self.clock.clean_up, self.program.process.pid)
        self.soon_equal(lambda: self.logind.locks, 1, START_SECONDS)

    def end_program(self):
        self.assertEqual(self.program.process.stop(), 0)
        self.soon_equal(lambda: self.logind.locks, 0, START_SECONDS)

    def change(self, percent=None, **attributes):
        """Changes the battery, with an event."""
        if percent is not None:
            self.machine.set_level(percent)
        self.machine.set("BAT0", **attributes)
        self.machine.event("BAT0")
        if percent is not None:
            self.soon_equal(lambda: self.program.item.label, f" {percent}%", SHOWN_SECONDS)

    def pass_ten_minutes(self):
        self.clock.set(self.clock.ahead + TEN_MINUTES + 1)
        self.machine.event("BAT0")

    def sleep(self, asleep):
        """The machine sleeps; `asleep` is what happens meanwhile."""
        count = len(self.logind.releases)
        self.logind.announce(True)
        self.soon(lambda: len(self.logind.releases) > count, SHOWN_SECONDS, "the lock is let go")
        asleep()
        self.logind.announce(False)
        self.machine.event("BAT0")

    def bodies(self):
        return [asked.body for asked in self.listener.asked]

    def file(self):
        return self.screen.home / ".local/state/Velmora/charge-limits"

    def ignores(self, daemon):
        self.begin(WITH_LIMIT, daemon)
        self.machine.plug()
        self.change(80)
        self.change(84)
        self.never(self.bodies, QUIET_SECONDS)
        self.pass_ten_minutes()
        self.soon_equal(self.bodies, [NOT_HOLDING], SHOWN_SECONDS)
        self.assertEqual(self.listener.asked[0].title, "Charge limit not holding")
        self.assertEqual(self.listener.asked[0].hints["x-velmora-identifier"], "limitNotHolding")
        self.assertEqual(self.listener.asked[0].actions, ["SNOOZE", "Snooze 1 hour"])
        self.soon_equal(self.shown.count, 1, SHOWN_SECONDS)
        self.keep_picture(self.screen, f"limit-not-holding-{daemon.__name__.lower()}")
        self.change(90)
        self.pass_ten_minutes()
        self.never(lambda: len(self.bodies()) > 1, QUIET_SECONDS)
        self.machine.unplug()
        self.soon_equal(self.shown.count, 0, SHOWN_SECONDS)

    def test_a_machine_that_ignores_it_on_dunst(self):
        self.ignores(Dunst)

    def test_a_machine_that_ignores_it_on_xfce(self):
        self.ignores(Xfce)

    def forgets(self, daemon):
        self.begin(WITH_LIMIT, daemon)
        self.soon(self.file().exists, SHOWN_SECONDS, "it is remembered")
        self.assertEqual(self.file().read_text(encoding="utf-8"), "80 50000 Simulated\n")
        self.sleep(lambda: self.machine.set("BAT0", **{END: "100", START: "0"}))
        self.never(self.bodies, WOKEN_SECONDS - 1)
        self.pass_ten_minutes()  # the tick after waking
        self.soon_equal(self.bodies, [RESET], WAKE_SECONDS)
        self.assertEqual(self.listener.asked[0].title, "Charge limit was reset")
        self.assertEqual(self.listener.asked[0].hints["x-velmora-identifier"], "limitReset")
        self.soon_equal(self.shown.count, 1, SHOWN_SECONDS)
        self.keep_picture(self.screen, f"limit-reset-{daemon.__name__.lower()}")
        self.change(**{END: "80"})
        self.pass_ten_minutes()
        self.soon_equal(self.shown.count, 0, SHOWN_SECONDS)

        # And once more while it is switched off.
        self.end_program()
        self.machine.set("BAT0", **{END: "100"})
        self.run_program()
        self.assertEqual(len(self.bodies()), 1)
        self.pass_ten_minutes()
        self.soon_equal(self.bodies, [RESET] * 2, SHOWN_SECONDS)
        self.soon_equal(lambda: self.file().read_text(encoding="utf-8"), "", SHOWN_SECONDS)
        self.end_program()
        self.run_program()
        self.pass_ten_minutes()
        self.never(lambda: len(self.bodies()) > 2, QUIET_SECONDS)

    def test_a_machine_that_forgets_it_in_hibernation_on_dunst(self):
        self.forgets(Dunst)

    def test_a_machine_that_forgets_it_in_hibernation_on_xfce(self):
        self.forgets(Xfce)

    def day_in_peace(self, battery):
        """Charges, stands, runs on battery, sleeps, and is switched off; nothing is told."""
        self.begin(battery)
        self.machine.plug()
        for level in (70, 79, 80):
            self.change(level)
            self.pass_ten_minutes()
        self.change(81, status="Not charging")
        self.pass_ten_minutes()
        self.machine.unplug()
        self.change(74)
        self.sleep(lambda: self.machine.set_level(70))
        self.never(self.bodies, WAKE_SECONDS)
        self.pass_ten_minutes()
        self.end_program()
        self.run_program()
        self.pass_ten_minutes()
        self.never(self.bodies, QUIET_SECONDS)
        self.assertEqual(self.bodies(), [])

    def test_a_thinkpad_that_keeps_it(self):
        self.day_in_peace(WITH_LIMIT)
        self.assertTrue(self.file().exists())

    def test_a_machine_without_one(self):
        self.day_in_peace(BATTERY)
        self.assertFalse(self.file().exists())


if __name__ == "__main__":
    unittest.main()
