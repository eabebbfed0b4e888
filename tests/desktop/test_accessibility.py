# SPDX-License-Identifier: GPL-3.0-or-later
"""The windows for users who cannot see them, or have no mouse."""

import json
import unittest

from support.case import DesktopCase
from support.screen_reader import ScreenReader
from support.settings import SettingsForm, stored
from support.sounds import SoundCard

AT_ONCE_SECONDS = 2
DIALOG_SECONDS = 5

NOTE = (
    "macOS may also hold charging at 80% itself (Optimized Battery Charging, System Settings, Battery). "
    "Velmora can only remind you; it cannot control charging."
)

# The controls of the settings, from the top: role, label and preference.
SETTINGS = [
    ("label", "Alerts", None),
    ("check box", "Charge limit", "limitEnabled"),
    ("spin box", "Alert when charging reaches 80%", "limit"),
    ("check box", "Repeat every 5 minutes, up to 3 times", "repeatReminder"),
    ("combo box", "Sound", "limitSound"),
    ("check box", "Low battery", "lowEnabled"),
    ("spin box", "Alert on battery at 20% or less", "low"),
    ("combo box", "Sound", "lowSound"),
    ("check box", "Suggest Low Power Mode", "lowPowerEnabled"),
    ("spin box", "When on battery below 30%", "lowPowerAt"),
    ("combo box", "Sound", "lowPowerSound"),
    ("check box", "Plugged in too long", "longEnabled"),
    ("spin box", "Alert after 8 h plugged in above the charge limit", "longHours"),
    ("combo box", "Sound", "longSound"),
    ("check box", "Battery health below 80% (once)", "healthEnabled"),
    ("combo box", "Sound", "healthSound"),
    ("label", "Quiet hours", None),
    ("check box", "Hold alerts during quiet hours", "quietEnabled"),
    ("spin box", "From", "quietStart"),
    ("spin box", "Until", "quietEnd"),
    ("label", "Menu bar", None),
    ("check box", "Show percentage in the menu bar", "showPercent"),
    ("check box", "Show time remaining", "showTime"),
    ("label", "General", None),
    ("check box", "Launch at Login", None),
    ("push button", "Export History as CSV…", None),
    ("push button", "Reset History…", None),
    ("label", NOTE, None),
]
CONTROLS = [(role, label, key) for role, label, key in SETTINGS if role != "label"]
TIMES = ("From", "Until")
# Roles of Qt's containers and ornaments, which nobody operates.
HOLDERS = ("filler", "frame", "panel", "graphic")


class AccessibilityCase(DesktopCase):
    def begin(self, preferences=None):
        self.screen = self.desktop(panel=False)
        self.reader = ScreenReader(self.screen)
        self.addCleanup(self.reader.close)
        if preferences is not None:
            self.screen.defaults_file.parent.mkdir()
            self.screen.defaults_file.write_text(json.dumps(preferences), encoding="utf-8")
        # The user was asked for consent before, so no question comes up while switches are tried.
        consent = self.screen.home / ".local/state/Velmora/notifications"
        consent.parent.mkdir(parents=True)
        consent.write_text("authorized\n", encoding="utf-8")
        card = SoundCard(self.screen)
        self.item = self.start_and_wait(self.screen, self.laptop(), card.environment).item

    def focused(self, role, label):
        """The control gets the keyboard focus, and announces it."""
        told = lambda: self.reader.focused and (self.reader.focused.role, self.reader.focused.label)
        self.soon_equal(told, (role, label), AT_ONCE_SECONDS)
        self.assertTrue(self.reader.focused.has("focused"))
        return self.reader.focused

    def all_have_names(self, window):
        """Everything visible has a role, and everything that says or does something has a name."""
        unnamed = [each.role for each in window.walk() if each.role not in HOLDERS and not each.label]
        self.assertEqual(unnamed, [])
        self.assertNotIn("", [each.role for each in window.walk()])


class Settings(AccessibilityCase):
    def open(self, preferences=None):
        self.begin(preferences)
        self.item.menu.choose("Settings…")
        self.form = SettingsForm(self.screen, self.reader)
        self.form.opened()

    def test_are_read_from_the_top_as_they_are_seen(self):
        self.open()
        window = self.form.window
        shown = [each for each in window.walk() if each.role not in HOLDERS + ("dialog", "scroll bar")]
        # A label that names a control is not read twice.
        names = [label for each in shown for label in each.labels]
        read = [(each.role, each.label) for each in shown if each not in names]
        self.assertEqual(read, [(role, label) for role, label, _ in SETTINGS])
        places = [each.box.centre[1] for each in shown if each not in names]
        self.assertEqual(places, sorted(places), "also on the screen")

    def test_leave_nothing_without_a_name(self):
        self.open()
        self.all_have_names(self.form.window)

    def test_tell_the_five_sounds_apart(self):
        self.open()
        sounds = [each for each in self.form.window.controls() if each.role == "combo box"]
        switches = [label for role, label, key in CONTROLS if (key or "").endswith("Enabled") and key != "quietEnabled"]
        self.assertEqual([each.description for each in sounds], switches)

    def test_are_gone_through_with_the_tabulator_and_back(self):
        self.open({"quietEnabled": True})
        order = [(role, label) for role, label, _ in CONTROLS]
        window = self.form.window.box
        self.focused(*order[0])
        for last, control in zip(order, order[1:] + order[:1]):
            self.leave(last, "Tab")
            box = self.focused(*control).box
            self.assertTrue(window.contains(box), f"{control} is seen: {box}")
        for last, control in zip(order[:1] + order[:0:-1], reversed(order)):
            self.leave(last, "shift+Tab")
            self.focused(*control)

    def test_the_tabulator_leaves_out_what_is_off(self):
        self.open({key: False for _, _, key in CONTROLS if key and key.endswith("Enabled")})
        order = [(role, label) for role, label, key in CONTROLS if role != "spin box" and label != "Sound"]
        order.remove(("check box", "Repeat every 5 minutes, up to 3 times"))
        self.focused(*order[0])
        for control in order[1:] + order[:1]:
            self.screen.press("Tab")
            self.focused(*control)

    def test_are_operated_by_keys_alone(self):
        self.open({"quietEnabled": True})
        entry = self.screen.config / "autostart/app.velmora.Velmora.desktop"
        for number, (role, label, key) in enumerate(CONTROLS):
            with self.subTest(control=label, key=key):
                if number > 0:
                    self.screen.press("Tab")
                self.focused(role, label)
                if label == "Launch at Login":
                    self.press("space", entry.exists, True)
                    self.press("space", entry.exists, False)
                elif role == "check box":
                    self.try_switch(key)
                elif label in TIMES:
                    self.try_time(key)
                elif role == "spin box":
                    self.try_stepper(key)
                elif role == "combo box":
                    self.try_sound(key)
                else:
                    self.try_button("Save As" if label.startswith("Export") else "Velmora")
        self.screen.press("Escape")
        self.form.gone()

    def leave(self, control, key):
        """Moves on to the next control. A time takes two steps, because it has hours and minutes."""
        for _ in range(2 if control[1] in TIMES else 1):
            self.screen.press(key)

    def value(self, key):
        return lambda: stored(self.screen).get(key)

    def press(self, key, observe, expected):
        self.screen.press(key)
        self.soon_equal(observe, expected, AT_ONCE_SECONDS)

    def try_switch(self, key):
        was_on = key not in ("showTime",)
        self.press("space", self.value(key), not was_on)
        self.press("space", self.value(key), was_on)

    def try_stepper(self, key):
        least = {"limit": 50, "low": 5, "lowPowerAt": 10, "longHours": 1}[key]
        first = {"limit": 80, "low": 20, "lowPowerAt": 30, "longHours": 8}[key]
        self.press("Up", self.value(key), first + 1)
        self.press("Down", self.value(key), first)
        self.screen.press("ctrl+a")
        self.screen.type(str(least + 1))
        self.press("Return", self.value(key), least + 1)
        self.press("Next", self.value(key), least)
        # Back to the old value, so that the label is as before, too.
        self.screen.press("ctrl+a")
        self.screen.type(str(first))
        self.press("Return", self.value(key), first)

    def try_time(self, key):
        hours, minutes = {"quietStart": (22, 0), "quietEnd": (7, 0)}[key]
        self.press("Up", self.value(key), (hours + 1) * 60 + minutes)
        self.screen.press("Tab")
        self.press("Up", self.value(key), (hours + 1) * 60 + minutes + 1)
        self.screen.press("shift+Tab")
        self.screen.type("0915")
        self.press("Return", self.value(key), 9 * 60 + 15)

    def try_sound(self, key):
        self.press("Down", self.value(key), "none")
        self.press("Up", self.value(key), "default")
        # The list opens, and typing selects the sound of that name.
        self.screen.press("space")
        self.screen.type("Frog")
        self.press("Return", self.value(key), "Frog")

    def try_button(self, dialog):
        self.screen.press("space")
        window = self.soon(lambda: self.reader.window(dialog), DIALOG_SECONDS, f"{dialog!r} is there")
        if dialog == "Velmora":
            self.all_have_names(window)
        self.screen.press("Escape")
        self.soon(lambda: self.reader.window(dialog) is None, DIALOG_SECONDS, f"{dialog!r} is gone")


class ThePopover(AccessibilityCase):
    def test_says_the_charge_when_it_opens_and_leaves_nothing_without_a_name(self):
        self.begin()
        self.item.menu.choose("Show details")
        self.soon(lambda: self.reader.focused, AT_ONCE_SECONDS, "something has the keyboard")
        self.assertEqual(self.reader.focused.name, "64 %, on battery")
        popover = self.reader.window("Velmora")
        self.assertEqual(popover, self.reader.focused.window)
        self.all_have_names(popover)

    def test_is_gone_through_with_the_tabulator(self):
        self.begin()
        self.item.menu.choose("Show details")
        self.soon(lambda: self.reader.focused, AT_ONCE_SECONDS, "something has the keyboard")
        order = [
            ("radio button", "24 hours"), ("graphic", "Collecting history… a graph appears after a few minutes."),
            ("push button", "Daily summary"), ("push button", "Settings…"), ("push button", "Quit"),
        ]  # fmt: skip
        for control in order:
            self.screen.press("Tab")
            self.focused(*control)


if __name__ == "__main__":
    unittest.main()
