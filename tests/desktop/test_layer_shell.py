# SPDX-License-Identifier: GPL-3.0-or-later
"""The details in a wlroots compositor, which shows them as it shows its bar: at the item, above everything else."""

import unittest

from support.case import START_SECONDS, DesktopCase
from support.desktop import SCREEN
from support.screen import Box
from support.wlroots import BAR_HEIGHT, WlrootsDesktop

SHOW_SECONDS = 5
WIDTH = 340
GAP = 8
MORE_THAN_SHADOW = 60  # of 255: the wallpaper is dark, and the details are light
ON_BAR = (SCREEN.width // 2, BAR_HEIGHT // 2)
ON_WALLPAPER = (300, 600)


class Details(DesktopCase):
    def setUp(self):
        self.desktop = WlrootsDesktop()
        self.addCleanup(self.desktop.stop)
        self.machine = self.laptop()
        self.desktop.hand_over(self.machine.root)
        self.program = self.start_and_wait(self.desktop, self.machine, app=self.desktop.own_bundle())
        self.on_item = self.soon(self.desktop.find_item, START_SECONDS, "the item is drawn").centre
        self.before = self.desktop.picture()

    def drawn(self):
        """The box of everything below the bar that is more than a shadow; None while there is nothing."""
        screen = Box(0, BAR_HEIGHT, SCREEN.width, SCREEN.height - BAR_HEIGHT)
        box = self.desktop.picture().crop(screen).changed_box(self.before.crop(screen), MORE_THAN_SHADOW)
        return box and box._replace(y=box.y + BAR_HEIGHT)

    def open_at(self, x, y):
        self.program.item.activate(x, y)
        return self.soon(self.whole, SHOW_SECONDS, "the details are there")

    def whole(self):
        """The box of the details when it is as wide as they are."""
        box = self.drawn()
        return box if box and box.width == WIDTH else None

    def are_gone(self):
        self.soon(lambda: self.drawn() is None, SHOW_SECONDS, "the details are gone")

    def open_from_menu(self):
        self.program.item.menu.choose("Show details")
        return self.soon(self.whole, SHOW_SECONDS, "the details are there")

    def test_open_beside_the_bar_under_the_item(self):
        self.desktop.click(*self.on_item)
        box = self.soon(self.whole, SHOW_SECONDS, "the details are there")
        self.assertEqual((box.x + box.width, box.y), (SCREEN.width - GAP, BAR_HEIGHT + GAP))

    def test_open_over_a_point_at_the_bottom(self):
        box = self.open_at(500, SCREEN.height - 10)
        self.assertEqual((box.centre[0], box.y + box.height), (500, SCREEN.height - GAP))

    def test_open_in_the_corner_without_a_point(self):
        box = self.open_from_menu()
        self.assertEqual((box.x + box.width, box.y), (SCREEN.width - GAP, BAR_HEIGHT + GAP))

    def test_close_by_a_click_on_the_bar_on_the_wallpaper_and_on_the_item(self):
        for place in (ON_BAR, ON_WALLPAPER, self.on_item):
            self.open_from_menu()
            self.desktop.click(*place)
            self.are_gone()

    def test_stay_open_and_up_to_date_after_a_click_in_them_and_close_by_escape(self):
        box = self.open_at(*self.on_item)
        self.desktop.click(*box.centre)
        before = self.desktop.picture().crop(box)
        self.machine.set_level(33)
        self.machine.event("BAT0")
        follow = lambda: self.desktop.picture().crop(box).changed_box(before)
        self.soon(follow, SHOW_SECONDS, "they show the new level")
        self.assertIsNotNone(self.whole(), "and are still there")
        self.desktop.press("Escape")
        self.are_gone()


if __name__ == "__main__":
    unittest.main()
