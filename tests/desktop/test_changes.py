# SPDX-License-Identifier: GPL-3.0-or-later
"""The battery changes while the program runs."""

import unittest

from support.case import ESTIMATING, HEALTH_AND_CYCLES, DesktopCase
from support.laptop import ADAPTER, BATTERY
from support.notifications import Listener
from support.reads import readings_over_time, wait_for_quiet

CHARGING = "64% · Charging, estimating time to full…"

STORM_SECONDS = 5
STORM_RATE = 200

# A glitch of the firmware must not look like a missing battery, so the program waits some ten seconds to believe it.
GLITCH_SECONDS = 20


class Changes(DesktopCase):
    def setUp(self):
        self.machine = self.laptop()
        self.screen = self.desktop(panel=False)

    def begin(self):
        return self.start_and_wait(self.screen, self.machine).item

    def test_plugging_in_shows_within_a_second(self):
        item = self.begin()
        self.machine.plug()
        self.soon_equal(lambda: item.tooltip, [CHARGING, *HEALTH_AND_CYCLES], 1)
        self.soon_equal(lambda: item.icon, "velmora-percent-64-bolt-symbolic", 1)

    def test_unplugging_shows_within_a_second(self):
        self.machine.set("AC", online=1)
        self.machine.set("BAT0", status="Charging")
        item = self.begin()
        self.assertEqual(item.tooltip[0], CHARGING)
        self.machine.unplug()
        self.soon_equal(lambda: item.tooltip, [ESTIMATING, *HEALTH_AND_CYCLES], 1)

    def test_a_battery_that_lags_behind_its_adapter_is_looked_at_again(self):
        item = self.begin()
        self.machine.set("AC", online=1)
        self.machine.event("AC")
        self.soon_equal(lambda: item.tooltip[0], "64% · Plugged in, not charging", 1)
        self.machine.set("BAT0", status="Charging")  # and no event
        self.soon_equal(lambda: item.tooltip[0], CHARGING, 7)

    def test_full_is_said_in_words(self):
        item = self.begin()
        self.machine.set_level(100)
        self.machine.set("BAT0", status="Full")
        self.machine.set("AC", online=1)
        self.machine.event("AC")
        self.soon_equal(lambda: item.tooltip[0], "100% · Fully charged", 1)
        self.assertEqual(item.label, " 100%")

    def test_a_storm_of_events_costs_one_reading_a_second(self):
        item = self.begin()
        counter = self.count_reads(self.machine)
        reached = []
        moments = readings_over_time(
            counter, lambda: reached.append(self.machine.event("BAT0")), STORM_SECONDS, STORM_RATE
        )
        self.assertGreater(sum(reached), STORM_SECONDS * STORM_RATE / 2)
        self.assertGreaterEqual(len(moments), 2)
        self.assertLessEqual(len(moments), STORM_SECONDS + 1)
        # And a change at the end of the storm is not lost.
        self.machine.set_level(40)
        self.machine.event("BAT0")
        self.soon_equal(lambda: item.label, " 40%", 2)

    def test_events_of_a_mouse_cost_nothing(self):
        mouse = {"type": "Battery", "scope": "Device", "capacity": "50", "status": "Discharging", "online": "1"}
        self.machine.add("hidpp_battery_0", mouse)
        self.begin()
        counter = self.count_reads(self.machine)
        # The program looks a few times after its start; the longest pause between two such looks is ten seconds.
        wait_for_quiet(counter, 11, 50)
        moments = readings_over_time(counter, lambda: self.machine.event("hidpp_battery_0"), 5, 20)
        self.assertEqual(moments, [])

    def test_a_battery_that_is_taken_out_and_put_back(self):
        item = self.begin()
        self.machine.remove("BAT0")
        self.soon_equal(lambda: item.tooltip, ["No battery found"], GLITCH_SECONDS)
        self.assertEqual(item.icon, "velmora-battery-0-symbolic")
        self.machine.add("BAT0", BATTERY)
        self.soon_equal(lambda: item.tooltip, [ESTIMATING, *HEALTH_AND_CYCLES], 2)
        self.assertEqual(item.label, " 64%")


    def test_a_battery_that_is_gone_for_a_moment_is_not_missed(self):
        # A laptop plugged in at the limit at the start causes no reminder; an empty bay in between would cause one.
        self.machine = self.laptop({"BAT0": BATTERY | {"status": "Not charging"}, "AC": ADAPTER | {"online": "1"}})
        self.machine.set_level(85)
        item = self.begin()
        listener = Listener(self.screen)
        self.addCleanup(listener.close)
        self.machine.set("BAT0", present=0)
        self.machine.event("BAT0")
        self.never(lambda: item.tooltip == ["No battery found"], 3)
        self.machine.set("BAT0", present=1)
        self.machine.event("BAT0")
        self.never(lambda: listener.methods, 2)


class NoBattery(DesktopCase):
    def test_says_so(self):
        laptop = self.laptop({"AC": {"type": "Mains", "online": "1"}})
        item = self.start_and_wait(self.desktop(panel=False), laptop).item
        self.assertEqual(item.tooltip, ["No battery found"])

    def test_says_so_on_a_machine_without_any_power_supply(self):
        item = self.start_and_wait(self.desktop(panel=False), self.laptop({})).item
        self.assertEqual(item.tooltip, ["No battery found"])


if __name__ == "__main__":
    unittest.main()
