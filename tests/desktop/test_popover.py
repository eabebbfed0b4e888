# SPDX-License-Identifier: GPL-3.0-or-later
"""The ways to the popover, its place, and the ways out."""

import unittest

from support.case import DesktopCase
from support.desktop import BELOW_PANEL, SCREEN

TITLE = "Velmora"
SHOW_SECONDS = 2
NEAR_PIXELS = 48


class PopoverCase(DesktopCase):
    def shown(self, desktop):
        """The box of the popover, which must appear."""
        return self.soon(lambda: desktop.windows(TITLE), SHOW_SECONDS, "the popover is there")[0]

    def gone(self, desktop):
        self.soon(lambda: not desktop.windows(TITLE), SHOW_SECONDS, "the popover is gone")


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


class PopoverPlace(PopoverCase):
    def check(self, x, y):
        """It opens near the point, and all of it can be seen."""
        desktop = self.desktop(panel=False)
        program = self.start_and_wait(desktop, self.laptop())
        program.item.activate(x, y)
        window = self.shown(desktop)
        self.assertTrue(SCREEN.contains(window), window)
        away_x = max(window.x - x, x - (window.x + window.width), 0)
        away_y = max(window.y - y, y - (window.y + window.height), 0)
        self.assertLessEqual(max(away_x, away_y), NEAR_PIXELS, window)

    def test_below_a_panel_at_the_top(self):
        self.check(900, 14)

    def test_in_the_upper_right_corner(self):
        self.check(1275, 10)

    def test_above_a_panel_at_the_bottom(self):
        self.check(600, 790)

    def test_in_the_lower_right_corner(self):
        self.check(1279, 799)

    def test_a_place_that_is_not_on_the_screen_is_not_believed(self):
        desktop = self.desktop(panel=False)
        self.start_and_wait(desktop, self.laptop()).item.activate(99999, -5000)
        self.assertTrue(SCREEN.contains(self.shown(desktop)))


if __name__ == "__main__":
    unittest.main()
