# SPDX-License-Identifier: GPL-3.0-or-later
"""The item in an X11 system tray (XEmbed), where no panel shows StatusNotifierItems."""

import time
import unittest

from support.case import DesktopCase
from support.desktop import SCREEN
from support.item import WATCHER
from support.screen import Box

TRAY = Box(0, 0, SCREEN.width, 28)
BELOW_TRAY = Box(0, TRAY.height, SCREEN.width, SCREEN.height - TRAY.height)
GAP = 8
TIMEOUT_SECONDS = 10
TRAY_SECONDS = 15
CHANGE_SECONDS = 2
TITLE = "Velmora"

# A panel with nothing but a tray, at its right end.
CONFIGURATION = f"""rounded = 0
background_color = #e0e0e0 100
panel_items = FS
panel_position = top center horizontal
panel_size = 100% {TRAY.height}
panel_background_id = 1
systray_icon_size = 24
"""

# The colours of our item in a tray that cannot recolour it: the signs and the tile that they are on.
SIGNS, TILE = bytes.fromhex("1a1a1a"), bytes.fromhex("f6f6f6")


class OldTray(DesktopCase):
    def setUp(self):
        self.screen = self.desktop(panel=False)
        self.machine = self.laptop()
        configuration = self.screen.folder / "tint2rc"
        configuration.write_text(CONFIGURATION, encoding="utf-8")
        self.tray = self.screen.start("tint2", ["tint2", "-c", configuration])
        self.soon(lambda: self.screen.windows("tint2"), TRAY_SECONDS, lambda: f"the tray is ready; {self.tray.errors}")

    def find_item(self):
        """The box of the pixels in the tray that have the colours of our pictures; None while there are none."""
        picture = self.screen.picture().crop(TRAY)
        columns, rows = set(), set()
        for y, row in enumerate(picture.rows):
            for x in range(picture.width):
                if row[3 * x : 3 * x + 3] in (SIGNS, TILE):
                    columns.add(x)
                    rows.add(y)
        if not columns:
            return None
        return Box(min(columns), min(rows), max(columns) - min(columns) + 1, max(rows) - min(rows) + 1)

    def item_in_tray(self):
        program = self.start_and_wait(self.screen, self.machine)
        return program, self.soon(self.find_item, TRAY_SECONDS, lambda: f"the tray has the item; {self.tray.errors}")

    def test_waits_ten_seconds_for_a_newer_panel(self):
        start = time.monotonic()
        self.item_in_tray()
        self.assertGreaterEqual(time.monotonic() - start, TIMEOUT_SECONDS)

    def test_shows_the_number_and_follows_the_battery(self):
        _, box = self.item_in_tray()
        self.assertTrue(16 <= box.width <= 28 and 16 <= box.height <= 28, box)
        colours = self.screen.picture().crop(box).colours()
        self.assertTrue({SIGNS, TILE} <= set(colours), colours)
        before = self.screen.picture().crop(box)
        self.machine.set_level(35)
        self.machine.event("BAT0")
        changed = lambda: self.screen.picture().crop(box).changed_box(before)
        self.soon(changed, CHANGE_SECONDS, "the tray shows the new number")

    def test_a_click_opens_the_popover_below_it_and_another_one_closes_it(self):
        _, box = self.item_in_tray()
        self.screen.click(*box.centre)
        window = self.soon(lambda: self.screen.windows(TITLE), CHANGE_SECONDS, "the popover is there")[0]
        self.assertTrue(SCREEN.contains(window), window)
        self.assertTrue(box.y + box.height <= window.y <= TRAY.height + GAP, window)
        self.screen.click(*box.centre)
        self.soon(lambda: not self.screen.windows(TITLE), CHANGE_SECONDS, "the popover is gone")

    def test_a_right_click_opens_the_menu_and_its_last_entry_ends_the_program(self):
        program, box = self.item_in_tray()
        before = self.screen.picture().crop(BELOW_TRAY)
        self.screen.click(*box.centre, button=3)
        drawn = lambda: self.screen.picture().crop(BELOW_TRAY).changed_box(before)
        self.soon(drawn, CHANGE_SECONDS, "the menu is drawn")
        self.screen.press("Up")
        self.screen.press("Return")
        self.ends_cleanly(program)

    def test_a_panel_that_comes_takes_the_item_over(self):
        program, _ = self.item_in_tray()
        self.screen.start("watcher", ["/usr/bin/python3", "-m", "dbusmock", WATCHER, "/StatusNotifierWatcher", WATCHER])
        self.soon(lambda: self.screen.bus.owner(WATCHER), TRAY_SECONDS, "the watcher is on the bus")
        self.soon(lambda: self.find_item() is None, CHANGE_SECONDS, "the tray is empty")
        self.assertTrue(program.process.running)


if __name__ == "__main__":
    unittest.main()
