# SPDX-License-Identifier: GPL-3.0-or-later
"""A user opens the settings and goes through them."""

import json
import time
import unittest

from support import history
from support.case import DesktopCase
from support.desktop import BELOW_PANEL, SCREEN
from support.notifications import Listener
from support.program import bare_executable, bundle
from support.screen_reader import ScreenReader
from support.settings import TITLE, SettingsForm, stored
from support.sounds import SoundCard

AT_ONCE_SECONDS = 2
DIALOG_SECONDS = 5
KNOWN_SECONDS = 70
HOLD_SECONDS = 10

ENTRY = "autostart/app.velmora.Velmora.desktop"
PAST = [{"t": time.time() - 60 * minute, "p": 70, "c": False, "a": False} for minute in range(90, 0, -1)]


class SettingsCase(DesktopCase):
    def make_desktop(self, **options):
        self.screen = self.desktop(**options)
        self.reader = ScreenReader(self.screen)
        self.addCleanup(self.reader.close)
        self.form = SettingsForm(self.screen, self.reader)

    def becomes(self, key, value):
        """Waits until the preference has this value on the disk."""
        self.soon_equal(lambda: stored(self.screen).get(key), value, AT_ONCE_SECONDS)

    def dialog(self, name):
        """Waits for the dialog."""
        return self.soon(lambda: self.reader.window(name), DIALOG_SECONDS, f"the dialog {name!r} is there")

    def press_in_dialog(self, dialog, button):
        self.screen.click(*dialog.find("push button", button).box.centre)

    def dialog_is_gone(self, name):
        self.soon(lambda: self.reader.window(name) is None, DIALOG_SECONDS, f"the dialog {name!r} is gone")


class AUser(SettingsCase):
    def setUp(self):
        self.make_desktop(notifications=True)
        self.machine = self.laptop()
        self.card = SoundCard(self.screen)
        self.listener = Listener(self.screen)
        self.addCleanup(self.listener.close)
        self.screen.history_file.parent.mkdir(parents=True)
        self.screen.history_file.write_text(json.dumps(PAST), encoding="utf-8")

    def test_goes_through_all_of_it(self):
        self.program = self.start_and_wait(self.screen, self.machine, self.card.environment)
        self.item = self.program.item
        self.opens_it_from_the_panels_menu()
        self.shows_the_remaining_time()
        self.hides_the_percentage_for_a_while()
        self.types_the_limit()
        self.holds_the_arrow_of_the_limit()
        self.is_reminded_at_the_new_limit()
        self.switches_an_alert_off_and_on()
        self.sets_quiet_hours()
        self.picks_frog()
        self.switches_launch_at_login_on_and_off()
        self.exports()
        self.resets()
        self.quits()

    def opens_it_from_the_panels_menu(self):
        box = self.soon(self.screen.find_item, AT_ONCE_SECONDS, "the item is drawn")
        before = self.screen.picture().crop(BELOW_PANEL)
        self.screen.click(*box.centre, button=3)
        drawn = lambda: self.screen.picture().crop(BELOW_PANEL).changed_box(before)
        self.soon(drawn, AT_ONCE_SECONDS, "the menu is drawn")
        self.keep_picture(self.screen, "settings-1-menu")
        for key in ("Down", "Down", "Down", "Return"):
            self.screen.press(key)
        window = self.form.opened()
        self.assertEqual((window.box.width, window.box.height), (480, 720))
        self.assertTrue(SCREEN.contains(window.box), window.box)
        self.assertEqual(stored(self.screen), {}, "looking changes nothing")
        drawn = lambda: len(self.screen.picture().crop(window.box).colours()) > 30
        self.soon(drawn, DIALOG_SECONDS, "it is drawn")
        self.keep_picture(self.screen, "settings-2-open")

    def shows_the_remaining_time(self):
        self.soon(lambda: "2 h 47 min left" in self.item.tooltip[0], KNOWN_SECONDS, "the time is known")
        self.assertEqual(self.item.label, " 64%")
        self.form.click(self.form.control("Show time remaining"))
        self.becomes("showTime", True)
        self.soon_equal(lambda: self.item.label, " 64% · 2:47", AT_ONCE_SECONDS)
        self.assertTrue(self.form.control("Show time remaining").has("checked"))
        self.keep_picture(self.screen, "settings-3-time")

    def hides_the_percentage_for_a_while(self):
        icon = self.item.icon
        drawn = self.screen.picture().crop(self.screen.find_item())
        self.form.click(self.form.control("Show percentage in the menu bar"))
        self.becomes("showPercent", False)
        self.soon_equal(lambda: self.item.label, " 2:47", AT_ONCE_SECONDS)
        self.soon(lambda: self.item.icon != icon, AT_ONCE_SECONDS, "the icon is one without a number")
        changed = lambda: self.screen.find_item() and self.picture_of_item().changed_box(drawn)
        self.soon(changed, AT_ONCE_SECONDS, "another icon is drawn")
        self.keep_picture(self.screen, "settings-4-no-percentage")
        self.form.click(self.form.control("Show percentage in the menu bar"))
        self.becomes("showPercent", True)
        self.soon_equal(lambda: (self.item.label, self.item.icon), (" 64% · 2:47", icon), AT_ONCE_SECONDS)

    def types_the_limit(self):
        self.form.write(self.form.stepper("Alert when charging reaches"), "55")
        self.becomes("limit", 55)
        self.soon(lambda: "Alert when charging reaches 55%" in self.form.texts(), AT_ONCE_SECONDS, "the label says 55")
        self.keep_picture(self.screen, "settings-5-limit-typed")

    def holds_the_arrow_of_the_limit(self):
        stepper = self.form.stepper("Alert when charging reaches")
        box = self.form.reach(stepper)
        # The arrows are at the right; the upper one increases the value.
        with self.screen.hold_button(box.x + box.width - 7, box.y + 6):
            self.soon(lambda: stored(self.screen)["limit"] >= 60, HOLD_SECONDS, "the arrow repeats")
        limit = int(stepper.value)
        self.becomes("limit", limit)
        with self.screen.hold_key("Down"):
            self.soon(lambda: stored(self.screen)["limit"] == 50, HOLD_SECONDS, "the key repeats down to the least")
        self.assertEqual(self.form.stepper("Alert when charging reaches").label, "Alert when charging reaches 50%")
        self.form.write(stepper, "60")
        self.becomes("limit", 60)
        self.keep_picture(self.screen, "settings-6-limit-held")

    def is_reminded_at_the_new_limit(self):
        self.assertEqual(self.listener.asked, [])
        self.machine.plug()
        bodies = lambda: [asked.body for asked in self.listener.asked]
        self.soon_equal(bodies, ["Battery is at 64%. Unplug to keep it healthy."], DIALOG_SECONDS)
        self.soon(lambda: len(self.card.played()) == 1, DIALOG_SECONDS, "the reminder is heard")
        self.machine.unplug()

    def switches_an_alert_off_and_on(self):
        switch = self.form.control("Low battery")
        self.form.click(switch)
        self.becomes("lowEnabled", False)
        self.assertFalse(self.form.control("Sound", "Low battery").has("enabled"))
        self.assertFalse(self.form.stepper("Alert on battery at").has("enabled"))
        self.keep_picture(self.screen, "settings-7-low-off")
        self.form.click(switch)
        self.becomes("lowEnabled", True)
        question = self.dialog("Velmora")
        self.assertIsNotNone(question.find("label", "Allow notifications?"))
        self.keep_picture(self.screen, "settings-8-permission")
        self.press_in_dialog(question, "Continue")
        self.dialog_is_gone("Velmora")
        for expected in (False, True):
            self.form.click(switch)
            self.becomes("lowEnabled", expected)
        self.never(lambda: self.reader.window("Velmora"), 0.5)

    def sets_quiet_hours(self):
        start, end = (self.form.control(name) for name in ("From", "Until"))
        self.assertFalse(start.has("enabled") or end.has("enabled"))
        self.assertEqual((start.text, end.text), ("22:00", "07:00"))
        self.form.click(self.form.control("Hold alerts during quiet hours"))
        self.becomes("quietEnabled", True)
        self.form.write_time(start, "2230")
        self.becomes("quietStart", 22 * 60 + 30)
        self.form.write_time(end, "0645")
        self.becomes("quietEnd", 6 * 60 + 45)
        self.assertEqual((start.text, end.text), ("22:30", "06:45"))
        self.keep_picture(self.screen, "settings-9-quiet-hours")

    def picks_frog(self):
        picker = self.form.control("Sound", "Charge limit")
        self.assertEqual(picker.name, "Default")
        before = self.card.played()
        self.pick(picker, "Frog")
        self.becomes("limitSound", "Frog")
        self.soon_equal(self.card.played, [*before, "Frog"], DIALOG_SECONDS)
        self.keep_picture(self.screen, "settings-10-frog")
        self.pick(picker, "None")
        self.becomes("limitSound", "none")
        self.pick(picker, "Default")
        self.becomes("limitSound", "default")
        self.never(lambda: self.card.played() != [*before, "Frog"], 1)

    def switches_launch_at_login_on_and_off(self):
        entry = self.screen.config / ENTRY
        switch = self.form.control("Launch at Login")
        self.assertFalse(switch.has("checked") or entry.exists())
        self.form.click(switch)
        self.soon(entry.exists, AT_ONCE_SECONDS, "there is an entry")
        self.assertIn(f"Exec={bundle() / 'AppRun'}\n", entry.read_text(encoding="utf-8"))
        self.soon(lambda: switch.has("checked"), AT_ONCE_SECONDS, "it is seen to be on")
        self.keep_picture(self.screen, "settings-11-login")
        self.form.click(switch)
        self.soon(lambda: not entry.exists(), AT_ONCE_SECONDS, "the entry is gone")
        self.soon(lambda: not switch.has("checked"), AT_ONCE_SECONDS, "it is seen to be off")

    def exports(self):
        self.form.click(self.form.control("Export History as CSV…"))
        self.dialog("Save As")
        file = self.screen.home / "my history.csv"
        self.keep_picture(self.screen, "settings-12-export")
        self.screen.press("ctrl+a")
        self.screen.type(str(file))
        self.screen.press("Return")
        self.dialog_is_gone("Save As")
        self.soon(file.exists, AT_ONCE_SECONDS, "the file is there")
        lines = file.read_text(encoding="utf-8").splitlines()
        self.assertGreater(len(lines), len(PAST), "a line of names, and one for each sample")
        self.assertEqual({len(line.split(",")) for line in lines}, {len(lines[0].split(","))})

    def resets(self):
        reset = self.form.control("Reset History…")
        _, before = history.read(self.screen)
        self.assertGreaterEqual(len(history.levels(before)), len(PAST))
        self.form.click(reset)
        question = self.dialog("Velmora")
        self.assertIsNotNone(question.find("label", "Reset history?"))
        self.assertIsNotNone(question.find("label", "This deletes all saved battery samples used for the chart."))
        self.keep_picture(self.screen, "settings-13-reset")
        self.press_in_dialog(question, "Cancel")
        self.dialog_is_gone("Velmora")
        self.assertGreaterEqual(len(self.levels()), len(PAST), "nothing has happened")
        self.form.click(reset)
        self.press_in_dialog(self.dialog("Velmora"), "Reset")
        self.dialog_is_gone("Velmora")
        # The next minute may come at any time.
        self.soon(lambda: len(self.levels()) <= 1, AT_ONCE_SECONDS, "the samples are gone")
        self.keep_picture(self.screen, "settings-14-empty")

    def quits(self):
        self.item.menu.choose("Quit")
        self.ends_cleanly(self.program)
        self.assertEqual(stored(self.screen), {
            "showTime": True, "showPercent": True, "limit": 60, "lowEnabled": True, "quietEnabled": True,
            "quietStart": 1350, "quietEnd": 405, "limitSound": "default",
        })  # fmt: skip

    def pick(self, picker, sound):
        """Opens the list and clicks on the sound."""
        self.form.click(picker)
        choice = lambda: next((each for each in picker.children()[0].walk() if each.name == sound), None)
        self.soon(lambda: picker.children()[0].has("showing"), AT_ONCE_SECONDS, "the list is there")
        self.screen.click(*choice().box.centre)
        self.soon(lambda: not picker.children()[0].has("showing"), AT_ONCE_SECONDS, "the list is gone")

    def picture_of_item(self):
        return self.screen.picture().crop(self.screen.find_item())

    def levels(self):
        return history.levels(history.read(self.screen)[1])


class TheWindow(SettingsCase):
    def begin(self, **start):
        self.make_desktop(panel=False)
        self.program = self.start_and_wait(self.screen, self.laptop(), **start)

    def open(self):
        self.program.item.menu.choose("Settings…")
        return self.form.opened()

    def test_opens_from_the_popover_which_closes(self):
        self.begin()
        # The first reading is recorded, and so the details have their final height.
        self.soon(self.screen.history_file.exists, DIALOG_SECONDS, "the history is written")
        self.program.item.menu.choose("Show details")
        popover = self.soon(lambda: self.screen.windows("Velmora"), DIALOG_SECONDS, "the popover is there")[0]
        self.screen.click(popover.x + 40, popover.y + popover.height - 28)
        self.form.opened()
        self.soon_equal(lambda: self.screen.windows("Velmora"), [], AT_ONCE_SECONDS)

    def test_is_the_same_where_it_was_when_it_opens_again(self):
        self.begin()
        window = self.open()
        self.form.click(self.form.control("Show time remaining"))
        x, y = window.box.centre[0], window.box.y - 12
        with self.screen.hold_button(x, y):
            # The window manager takes the first motion as the start of the move.
            for left in (150, 300):
                self.screen.move_pointer(x - left, y)
            self.soon(lambda: window.box.x < 200, AT_ONCE_SECONDS, "it is moved")
        place = window.box
        scrolled = self.form.control("Charge limit").box.y
        self.assertLess(scrolled, place.y)
        self.screen.press("Escape")
        self.form.gone()
        self.assertTrue(self.program.process.running)
        self.assertEqual(self.open().box, place)
        self.open()
        self.assertEqual(len(self.screen.windows(TITLE)), 1)
        self.assertEqual(self.form.control("Charge limit").box.y, scrolled)

    def test_follows_the_file_while_it_is_open(self):
        self.begin()
        self.open()
        self.screen.defaults_file.parent.mkdir(exist_ok=True)
        self.screen.defaults_file.write_text(json.dumps({"low": 150, "showTime": True}), encoding="utf-8")
        self.soon(lambda: self.form.control("Show time remaining").has("checked"), AT_ONCE_SECONDS, "it is seen")
        self.assertIn("Alert on battery at 150% or less", self.form.texts())
        self.never(lambda: stored(self.screen) != {"low": 150, "showTime": True}, 0.5)

    def test_tells_why_launch_at_login_cannot_be_changed(self):
        self.begin()
        (self.screen.config / "autostart").write_text("a file where a folder should be", encoding="utf-8")
        self.open()
        self.form.click(self.form.control("Launch at Login"))
        reason = "Could not change Launch at Login: Not a directory"
        self.soon(lambda: reason in self.form.texts(), AT_ONCE_SECONDS, lambda: f"the reason is in {self.form.texts()}")
        self.assertFalse(self.form.control("Launch at Login").has("checked"))
        self.keep_picture(self.screen, "settings-login-failed")

    def test_shows_at_each_opening_whether_the_desktop_starts_the_program(self):
        self.begin()
        self.open()
        self.form.click(self.form.control("Launch at Login"))
        entry = self.screen.config / ENTRY
        self.soon(entry.exists, AT_ONCE_SECONDS, "there is an entry")
        self.screen.press("Escape")
        self.form.gone()
        entry.write_text(entry.read_text(encoding="utf-8") + "Hidden=true\n", encoding="utf-8")  # as desktops do
        self.open()
        self.assertFalse(self.form.control("Launch at Login").has("checked"))

    def test_says_outside_a_bundle_what_cannot_be(self):
        self.begin(app=bare_executable())
        self.open()
        self.form.click(self.form.control("Launch at Login"))
        reason = "Could not change Launch at Login: Velmora does not run from an application bundle"
        self.soon(lambda: reason in self.form.texts(), AT_ONCE_SECONDS, lambda: f"the reason is in {self.form.texts()}")
        note = "Notifications need Velmora to run as an app bundle (see make_app.sh). "
        self.assertIn(note + "Run from the command line, alerts cannot be delivered.", self.form.texts())
        self.form.click(self.form.control("Low battery"))
        self.form.click(self.form.control("Low battery"))
        self.becomes("lowEnabled", True)
        self.never(lambda: self.reader.window("Velmora"), 0.5)


if __name__ == "__main__":
    unittest.main()
