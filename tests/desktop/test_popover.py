# SPDX-License-Identifier: GPL-3.0-or-later
"""Opening the popover, its place, and closing it."""

import json
import subprocess
import unittest

from gi.repository import GLib

from support.case import DesktopCase
from support.desktop import BELOW_PANEL, PANEL, SCREEN
from support.screen import Box, luminance

TITLE = "Velmora"
SHOW_SECONDS = 2
NEAR_PIXELS = 48
SAME_CLICK_SECONDS = 0.3  # so long after it was closed, a click is taken for the one that closed it

PORTAL = "org.freedesktop.portal.Desktop"
PORTAL_PATH = "/org/freedesktop/portal/desktop"
SETTINGS = "org.freedesktop.portal.Settings"
APPEARANCE = "org.freedesktop.appearance"
MOCK = "org.freedesktop.DBus.Mock"
DARK, LIGHT = 1, 2
XFCONF = "org.xfce.Xfconf"


class PopoverCase(DesktopCase):
    def shown(self, desktop):
        """Waits for the popover and returns its box."""
        return self.soon(lambda: desktop.windows(TITLE), SHOW_SECONDS, "the popover is there")[0]

    def gone(self, desktop):
        self.soon(lambda: not desktop.windows(TITLE), SHOW_SECONDS, "the popover is gone")

    def background(self, desktop):
        """How bright the popover is where nothing is drawn."""
        colours = desktop.picture().crop(self.shown(desktop)).colours()
        return luminance(max(colours, key=colours.get))

    def is_dark(self, desktop):
        self.soon(lambda: 0 < self.background(desktop) < 0.1, SHOW_SECONDS, "it is dark")

    def is_light(self, desktop):
        self.soon(lambda: self.background(desktop) > 0.7, SHOW_SECONDS, "it is light")


class Popover(PopoverCase):
    def setUp(self):
        self.screen = self.desktop()
        self.machine = self.laptop()

    def test_is_not_there_at_the_start(self):
        self.start_and_wait(self.screen, self.machine)
        self.assertEqual(self.screen.windows(TITLE), [])

    def test_a_click_on_the_item_opens_it_and_another_one_closes_it(self):
        _, box = self.start_and_find(self.screen, self.machine)
        self.screen.click(*box.centre)
        window = self.shown(self.screen)
        self.assertTrue(SCREEN.contains(window), window)
        self.screen.click(*box.centre)
        self.gone(self.screen)
        # The click that closed it has not opened it again; the next one does.
        self.never(lambda: self.screen.windows(TITLE), 0.5)
        self.screen.click(*box.centre)
        self.shown(self.screen)

    def test_opens_below_the_item_in_the_panel(self):
        _, box = self.start_and_find(self.screen, self.machine)
        self.screen.click(*box.centre)
        window = self.shown(self.screen)
        self.assertGreaterEqual(window.y, PANEL.height - 1, "it leaves the panel free")
        self.assertLessEqual(window.y, PANEL.height + NEAR_PIXELS)
        self.assertLessEqual(window.x, box.centre[0])
        self.assertGreaterEqual(window.x + window.width, box.centre[0])

    def test_a_click_elsewhere_closes_it(self):
        _, box = self.start_and_find(self.screen, self.machine)
        self.screen.click(*box.centre)
        self.shown(self.screen)
        self.screen.click(100, 700)
        self.gone(self.screen)

    def test_escape_closes_it(self):
        _, box = self.start_and_find(self.screen, self.machine)
        self.screen.click(*box.centre)
        self.shown(self.screen)
        self.screen.press("Escape")
        self.gone(self.screen)

    def test_a_second_start_shows_the_popover_of_the_first_and_ends(self):
        first = self.start_and_wait(self.screen, self.machine)
        owner = first.item.owner
        second = self.start(self.screen, self.machine)
        self.ends_cleanly(second)
        self.assertTrue(SCREEN.contains(self.shown(self.screen)))
        self.assertEqual(first.item.owner, owner)
        self.assertTrue(first.process.running)

    def test_the_menu_entry_opens_it(self):
        item = self.start_and_wait(self.screen, self.machine).item
        item.menu.choose("Show details")
        self.assertTrue(SCREEN.contains(self.shown(self.screen)))

    def test_the_panels_menu_opens_it(self):
        _, box = self.start_and_find(self.screen, self.machine)
        before = self.screen.picture().crop(BELOW_PANEL)
        self.screen.click(*box.centre, button=3)
        self.soon(
            lambda: self.screen.picture().crop(BELOW_PANEL).changed_box(before), SHOW_SECONDS, "the menu is drawn"
        )
        self.screen.press("Down")
        self.screen.press("Return")
        self.shown(self.screen)

    def test_what_it_shows_follows_the_battery(self):
        item = self.start_and_wait(self.screen, self.machine).item
        item.menu.choose("Show details")
        window = self.shown(self.screen)
        self.soon(lambda: len(self.screen.picture().crop(window).colours()) > 2, SHOW_SECONDS, "text is drawn")
        before = self.screen.picture().crop(window)
        self.machine.set_level(33)
        self.machine.event("BAT0")
        follows = lambda: self.screen.picture().crop(window).changed_box(before)
        self.soon(follows, SHOW_SECONDS, "it shows the new level")

    def test_it_reads_the_battery_when_it_opens(self):
        item = self.start_and_wait(self.screen, self.machine).item
        self.machine.set_level(33)
        item.menu.choose("Show details")
        self.soon_equal(lambda: item.label, " 33%", SHOW_SECONDS)


class PopoverButtons(PopoverCase):
    def setUp(self):
        self.screen = self.desktop(panel=False)
        self.program = self.start_and_wait(self.screen, self.laptop())
        # The first reading is recorded, and so the details have their final height.
        self.soon(self.screen.history_file.exists, SHOW_SECONDS, "the history is written")

    def open(self):
        self.program.item.menu.choose("Show details")
        return self.shown(self.screen)

    def entries(self):
        return [entry.label for entry in self.program.item.menu.entries()]

    def test_quit_ends_the_program_and_saves_the_history(self):
        window = self.open()
        self.screen.history_file.unlink()
        self.screen.click(window.x + window.width - 40, window.y + window.height - 28)
        self.ends_cleanly(self.program)
        saved = json.loads(self.screen.history_file.read_text(encoding="utf-8"))
        self.assertEqual([record["p"] for record in saved], [64])

    def test_cancel_ends_the_snooze(self):
        self.program.item.menu.choose("Snooze alerts for 1 hour")
        self.soon(lambda: "Snooze alerts for 1 hour" not in self.entries(), SHOW_SECONDS, "it is snoozed")
        window = self.open()
        before = self.screen.picture().crop(window)
        # "Cancel" is the first control that the keyboard reaches.
        self.screen.press("Tab")
        focused = lambda: self.screen.picture().crop(window).changed_box(before)
        self.soon(focused, SHOW_SECONDS, "the focus is seen")
        self.screen.press("space")
        self.soon(lambda: "Snooze alerts for 1 hour" in self.entries(), SHOW_SECONDS, "nothing is snoozed any more")
        self.assertTrue(self.screen.windows(TITLE), "the popover stays")


class PopoverLook(PopoverCase):
    def setUp(self):
        self.screen = self.desktop(panel=False)
        command = ["python3", "-m", "dbusmock", "--session", PORTAL, PORTAL_PATH, SETTINGS]
        self.screen.start("portal", command)
        self.soon(lambda: self.screen.bus.owner(PORTAL), SHOW_SECONDS + 8, "the portal is there")
        self.tell("AddMethod", "(sssss)", SETTINGS, "ReadAll", "as", "a{sa{sv}}", self.answer(DARK))
        program = self.start_and_wait(self.screen, self.laptop())
        program.item.menu.choose("Show details")

    @staticmethod
    def answer(scheme):
        return f"ret = {{'{APPEARANCE}': {{'color-scheme': dbus.UInt32({scheme})}}}}"

    def tell(self, method, signature, *arguments):
        self.screen.bus.call(PORTAL, PORTAL_PATH, MOCK, method, GLib.Variant(signature, arguments))

    def test_is_the_desktops_and_changes_with_it(self):
        self.is_dark(self.screen)
        values = [GLib.Variant("s", APPEARANCE), GLib.Variant("s", "color-scheme"), GLib.Variant("u", LIGHT)]
        self.tell("EmitSignal", "(sssav)", SETTINGS, "SettingChanged", "ssv", values)
        self.is_light(self.screen)


class PopoverXfceLook(PopoverCase):
    """A desktop with Xfce's own settings service and no portal."""

    def setUp(self):
        self.screen = self.desktop(panel=False)

    def choose(self, setting, value):
        arguments = GLib.Variant("(ssv)", ("xsettings", setting, GLib.Variant("s", value)))
        self.screen.bus.call(XFCONF, "/org/xfce/Xfconf", XFCONF, "SetProperty", arguments)

    def test_is_the_desktops_and_changes_with_it(self):
        self.choose("/Net/ThemeName", "Greybird-dark")
        self.start_and_wait(self.screen, self.laptop()).item.menu.choose("Show details")
        self.is_dark(self.screen)
        self.keep_picture(self.screen, "popover-xfce-dark")
        self.choose("/Net/ThemeName", "Greybird")
        self.is_light(self.screen)
        usual = self.shown(self.screen).height
        self.choose("/Gtk/FontName", "DejaVu Sans 15")
        self.soon(lambda: self.shown(self.screen).height > usual, SHOW_SECONDS, "text is larger")


class PopoverPlace(PopoverCase):
    def check(self, x, y):
        """The popover opens near the point, and is wholly visible."""
        desktop = self.desktop(panel=False)
        program = self.start_and_wait(desktop, self.laptop())
        program.item.activate(x, y)
        window = self.shown(desktop)
        self.assertTrue(SCREEN.contains(window), window)
        away_x = max(window.x - x, x - (window.x + window.width), 0)
        away_y = max(window.y - y, y - (window.y + window.height), 0)
        self.assertLessEqual(max(away_x, away_y), NEAR_PIXELS, window)
        inside = window.x < x < window.x + window.width - 1 and window.y < y < window.y + window.height - 1
        self.assertFalse(inside, f"it covers what was clicked: {window}")

    def test_below_a_panel_at_the_top(self):
        self.check(900, 14)

    def test_in_the_upper_right_corner(self):
        self.check(1275, 10)

    def test_above_a_panel_at_the_bottom(self):
        self.check(600, 790)

    def test_in_the_lower_right_corner(self):
        self.check(1279, 799)

    def test_beside_a_panel_at_the_left(self):
        self.check(12, 400)

    def test_beside_a_panel_at_the_right(self):
        self.check(1268, 400)

    def test_a_place_that_is_not_on_the_screen_is_not_believed(self):
        desktop = self.desktop(panel=False)
        self.start_and_wait(desktop, self.laptop()).item.activate(99999, -5000)
        self.assertTrue(SCREEN.contains(self.shown(desktop)))


class PopoverOnTwoScreens(PopoverCase):
    """Two screens side by side, with a panel at the top and one at the bottom of each."""

    def setUp(self):
        self.screen = self.desktop(panel=False, window_manager=False)
        left, right = ("640/170x800/210+0+0", "screen"), ("640/170x800/210+640+0", "none")
        for name, geometry in {"left": left, "right": right}.items():
            self.run_tool("xrandr", "--setmonitor", name, *geometry)
        area = f"0, 28, {SCREEN.width}, {SCREEN.height - 28 - 40}"
        self.run_tool("xprop", "-root", "-f", "_NET_WORKAREA", "32c", "-set", "_NET_WORKAREA", area)
        self.item = self.start_and_wait(self.screen, self.laptop()).item

    def run_tool(self, *command):
        subprocess.run(command, env=self.screen.environment, capture_output=True, check=True, timeout=SHOW_SECONDS)

    def beside_a_panel(self, left):
        """Whether the popover is on the screen that begins there, off the panels, and 8 pixels from one of them."""
        free = Box(left, 28, SCREEN.width // 2, SCREEN.height - 28 - 40)
        gaps = lambda box: (box.y - free.y, free.y + free.height - box.y - box.height)
        return any(free.contains(box) and 8 in gaps(box) for box in self.screen.windows(TITLE))

    def test_opens_beside_the_panel_on_the_screen_of_the_item(self):
        for x, left in ((300, 0), (630, 0), (660, 640), (1270, 640)):
            for y in (14, SCREEN.height - 20):
                self.item.activate(x, y)
                place = f"it is beside the panel with {x}, {y}"
                self.soon(lambda left=left: self.beside_a_panel(left), SHOW_SECONDS, place)
                self.screen.press("Escape")
                self.gone(self.screen)
                self.never(lambda: self.screen.windows(TITLE), SAME_CLICK_SECONDS)


if __name__ == "__main__":
    unittest.main()
