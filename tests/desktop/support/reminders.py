# SPDX-License-Identifier: GPL-3.0-or-later
"""The reminders as a user sees them, whatever daemon shows them."""

import json
import time
from datetime import datetime, timezone
from zoneinfo import ZoneInfo

from .desktop import BELOW_PANEL, PrivateDesktop
from .notifications import Listener
from .waiting import watch

# A change may have to wait a second for the one before it, and the daemon draws when it likes.
SHOWN_SECONDS = 5
QUIET_SECONDS = 1

HOUR = 3600
ZONE = "Asia/Kolkata"  # half an hour off most zones, so that a test cannot pass with the machine's own
SNOOZE = "Snooze alerts for 1 hour"

LOW_ALONE = {"lowPowerEnabled": False}


class OnADaemon:
    """A mixin for a test case, once for each daemon."""

    daemon = None

    def make_desktop(self):
        desktop = PrivateDesktop(panel=False)
        self.addCleanup(desktop.stop)
        return desktop

    def start_program(self):
        return self.start_and_wait(self.screen, self.machine, {"TZ": ZONE})

    def begin(self, preferences):
        """Starts the program on battery at 64 %, where no reminder is due."""
        self.screen = self.make_desktop()
        self.shown = self.daemon(self.screen)
        self.shown.start()
        self.listener = Listener(self.screen)
        self.addCleanup(self.listener.close)
        self.screen.defaults_file.parent.mkdir()
        self.screen.defaults_file.write_text(json.dumps(preferences), encoding="utf-8")
        self.machine = self.laptop()
        self.item = self.start_program().item

    def change_level(self, percent):
        self.machine.set_level(percent)
        self.machine.event("BAT0")
        self.soon_equal(lambda: self.item.label, f" {percent}%", SHOWN_SECONDS)

    def becomes(self, count):
        """Waits until that many notifications are on the screen."""
        self.soon_equal(self.shown.count, count, SHOWN_SECONDS)

    def stays(self, observe, value):
        self.assertEqual([seen for _, seen in watch(observe, QUIET_SECONDS)], [value])

    def bodies(self):
        """The bodies of all notifications sent."""
        return [asked.body for asked in self.listener.asked]

    def last_asked(self, body):
        """The last notification sent, once the daemon has answered."""
        answered = lambda: self.bodies()[-1:] == [body] and self.listener.asked[-1].id
        self.soon(answered, SHOWN_SECONDS, lambda: f"{body!r}; asked for {self.bodies()}")
        return self.listener.asked[-1]


class RemindersOnADaemon(OnADaemon):
    """The tests that every daemon passes."""

    def test_low_reminders_are_on_the_screen_until_the_adapter_is_plugged_in(self):
        self.begin({})
        before = self.screen.picture().crop(BELOW_PANEL)
        drawn = lambda: self.screen.picture().crop(BELOW_PANEL).changed_box(before)
        self.change_level(18)
        self.becomes(2)
        self.soon(drawn, SHOWN_SECONDS, "they are drawn")
        titles = sorted(asked.title for asked in self.listener.asked)
        self.assertEqual(titles, ["Low battery", "Try Low Power Mode"])
        self.keep_picture(self.screen, f"reminders-{self.daemon.__name__.lower()}")
        self.machine.plug()
        self.becomes(0)
        self.soon(lambda: not drawn(), SHOWN_SECONDS, "nothing is drawn any more")
        self.assertEqual(len(self.listener.asked), 2)

    def test_the_charge_limit_is_told_at_each_plug_and_taken_back_at_each_unplug(self):
        self.begin({"limit": 60})
        for _ in range(2):
            self.machine.plug()
            self.becomes(1)
            self.machine.unplug()
            self.becomes(0)
        self.assertEqual(self.bodies(), ["Battery is at 64%. Unplug to keep it healthy."] * 2)

    def test_the_second_of_a_kind_takes_the_place_of_the_first(self):
        self.begin(LOW_ALONE)
        self.change_level(15)
        first = self.last_asked("Battery is at 15%. Plug in soon.")
        self.becomes(1)
        self.change_level(25)
        self.change_level(14)
        second = self.last_asked("Battery is at 14%. Plug in soon.")
        self.assertEqual((second.replaced, second.id), (first.id, first.id))
        self.stays(self.shown.count, 1)

    def test_a_daemon_that_is_started_again_shows_the_next_beside_what_is_a_strangers(self):
        self.begin(LOW_ALONE)
        self.change_level(15)
        first = self.last_asked("Battery is at 15%. Plug in soon.")
        self.becomes(1)
        self.shown.kill()
        self.shown.start()
        strangers = [self.shown.show(f"A stranger's {number}") for number in range(first.id)]
        self.assertIn(first.id, strangers)
        self.becomes(len(strangers))
        self.change_level(25)
        self.change_level(14)
        second = self.last_asked("Battery is at 14%. Plug in soon.")
        self.assertEqual(second.replaced, 0)
        self.assertNotIn(second.id, strangers)
        self.becomes(len(strangers) + 1)

    def test_snoozed_by_the_button_and_woken_by_the_menu(self):
        self.begin(LOW_ALONE)
        self.change_level(15)
        self.becomes(1)
        self.screen.move_pointer(640, 400)
        earliest = time.time() + HOUR
        self.soon(self.press_button, SHOWN_SECONDS, "the button is pressed")
        until = self.snooze_until()
        self.assertTrue(earliest <= until <= time.time() + HOUR, until - earliest)
        local = datetime.fromtimestamp(until, timezone.utc).astimezone(ZoneInfo(ZONE))
        cancel = f"Cancel snooze (until {local:%H:%M})"
        self.soon_equal(self.snooze_entry, cancel, SHOWN_SECONDS)
        self.becomes(0)

        self.machine.plug()
        self.change_level(85)
        self.stays(lambda: (self.shown.count(), len(self.bodies())), (0, 1))
        self.assertEqual(self.snooze_until(), until)

        self.item.menu.choose(cancel)
        self.soon_equal(self.snooze_until, 0, SHOWN_SECONDS)
        self.soon_equal(self.snooze_entry, SNOOZE, SHOWN_SECONDS)
        self.change_level(86)
        self.becomes(1)
        self.assertEqual(self.bodies()[1:], ["Battery is at 86%. Unplug to keep it healthy."])

    def press_button(self):
        """Presses the button, again if nothing happens: the daemon may still be drawing. True when it worked."""
        if self.snooze_until() is None and self.shown.count() == 1:
            self.shown.press()
        return self.snooze_until() is not None

    def snooze_until(self):
        """The stored end of the snooze; None if there never was one."""
        return json.loads(self.screen.defaults_file.read_text(encoding="utf-8")).get("snoozeUntil")

    def snooze_entry(self):
        """The menu's entry for snoozing."""
        return next(entry.label for entry in self.item.menu.entries() if "snooze" in entry.label.lower())
