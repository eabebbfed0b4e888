# SPDX-License-Identifier: GPL-3.0-or-later
"""What the desktop is told of the program's windows, and that the popover closes on any click elsewhere."""

import re
import unittest
from pathlib import Path

from gi.repository import GLib

from support.case import DesktopCase
from support.desktop import BELOW_PANEL, PANEL, SCREEN
from support.item import ITEM_INTERFACE, ITEM_PATH
from support.screen import Box, luminance
from support.waiting import watch
from support.x_server import XServer

TITLE = "Velmora"
SETTINGS_TITLE = "Velmora Settings"
SHOW_SECONDS = 2
WALLPAPER = 0xA0C0D0
VOLUNTARY_SWITCHES = re.compile(r"^voluntary_ctxt_switches:\s+(\d+)", re.MULTILINE)
GAP = 8  # between the popover and the panel or the edge of the screen
# As on the X server of a Wayland compositor. There the program does not follow the pointer, so any X server will do.
IN_WAYLAND = {"WAYLAND_DISPLAY": "wayland-none", "QT_QPA_PLATFORM": "xcb"}


class WindowCase(DesktopCase):
    def begin(self, changes=None, **options):
        self.screen = self.desktop(**options)
        self.server = XServer(self.screen)
        self.addCleanup(self.server.close)
        self.program = self.start_and_wait(self.screen, self.laptop(), changes)
        self.item = self.program.item
        self.box = self.soon(self.screen.find_item, SHOW_SECONDS, "the item is drawn")

    def shown(self, title):
        return self.soon(lambda: self.screen.window_ids(title), SHOW_SECONDS, f"{title} is there")[0]

    def gone(self, title):
        self.soon(lambda: not self.screen.window_ids(title), SHOW_SECONDS, f"{title} is gone")

    def soon_closed_by_click(self, x, y):
        """The popover closes on a click; one in the moment in which it appears may still come too early."""

        def closes():
            self.screen.click(x, y)
            return not self.screen.window_ids(TITLE)

        self.soon(closes, SHOW_SECONDS, "a click closes it")


class PopoverInWayland(WindowCase):
    def test_stands_in_no_list_of_windows_each_time(self):
        self.begin(IN_WAYLAND, window_manager=False)  # some window managers add to what they are told
        for _ in range(2):
            self.item.menu.choose("Show details")
            states = self.server.names(self.shown(TITLE), "_NET_WM_STATE")
            self.assertIn("_NET_WM_STATE_SKIP_TASKBAR", states)
            self.assertIn("_NET_WM_STATE_SKIP_PAGER", states)
            self.assertIn("_NET_WM_STATE_ABOVE", states)
            self.soon_closed_by_click(*SCREEN.centre)

    def test_closes_on_clicks_that_take_the_focus_from_nobody(self):
        self.begin(IN_WAYLAND)
        empty_panel = (SCREEN.width // 2, 14)
        for point in (SCREEN.centre, empty_panel, (3, SCREEN.height - 3), (SCREEN.width - 3, SCREEN.height - 3)):
            self.item.menu.choose("Show details")
            self.shown(TITLE)
            self.soon_closed_by_click(*point)

    def test_stays_on_clicks_on_itself_and_on_turns_of_the_wheel(self):
        self.begin(IN_WAYLAND)
        self.item.menu.choose("Show details")
        self.shown(TITLE)
        (place,) = self.screen.windows(TITLE)
        self.screen.click(place.x + 3, place.y + 3)
        self.screen.click(place.x + place.width - 3, place.y + place.height - 3)
        for wheel in (4, 5):
            self.screen.click(*SCREEN.centre, button=wheel)
        self.never(lambda: not self.screen.window_ids(TITLE), 1)

    def test_a_click_on_the_item_closes_it(self):
        self.begin(IN_WAYLAND)
        self.screen.click(*self.box.centre)
        self.shown(TITLE)
        self.screen.click(*self.box.centre)
        self.gone(TITLE)
        self.never(lambda: self.screen.window_ids(TITLE), 1)

    def test_leaves_nothing_over_the_screen(self):
        self.begin(IN_WAYLAND)
        self.item.menu.choose("Show details")
        self.shown(TITLE)
        self.screen.press("Escape")
        self.gone(TITLE)
        # For a moment a click on the item counts as the one that closed it.
        self.never(lambda: self.screen.window_ids(TITLE), 0.5)
        self.screen.click(*self.box.centre)
        self.shown(TITLE)


class PopoverOnX11(WindowCase):
    def test_closes_also_if_it_was_opened_while_the_panel_had_the_pointer(self):
        self.begin()
        with self.screen.hold_button(SCREEN.width // 2, 14):
            self.item.activate(*self.box.centre)
            self.shown(TITLE)
        self.soon_closed_by_click(*SCREEN.centre)

    def test_closes_on_a_click_on_what_lies_above_all_windows_even_then(self):
        """As Cinnamon's panel does."""
        self.begin()
        with self.screen.hold_button(SCREEN.width // 2, 14):
            self.item.activate(*self.box.centre)
            self.shown(TITLE)
            self.server.cover(Box(300, 400, 200, 100), WALLPAPER)
        self.never(lambda: not self.screen.window_ids(TITLE), 0.5)
        # It takes the pointer some time after the button was released.
        self.soon_closed_by_click(400, 450)

    def test_sleeps_while_it_is_open(self):
        self.begin()
        self.item.activate(*self.box.centre)
        self.shown(TITLE)
        status = Path(f"/proc/{self.program.process.pid}/status")
        wakes = lambda: VOLUNTARY_SWITCHES.search(status.read_text(encoding="ascii"))[1]
        self.soon(lambda: len(watch(wakes, 1)) == 1, 10 * SHOW_SECONDS, "nothing wakes it for a second")
        self.assertTrue(self.screen.window_ids(TITLE))


class FloatingPopover(WindowCase):
    """Windows can be transparent: something composes the screen of them."""

    def card(self):
        self.screen.click(*self.box.centre)
        self.shown(TITLE)
        (card,) = self.screen.windows(TITLE)
        return card

    def test_has_round_corners_and_a_shadow(self):
        self.begin(composited=True)
        self.server.cover(BELOW_PANEL, WALLPAPER)
        below_panel = lambda: self.screen.picture().crop(BELOW_PANEL)
        self.soon(
            lambda: below_panel().colours().keys() == {WALLPAPER.to_bytes(3, "big")}, SHOW_SECONDS, "the wallpaper is there"
        )
        card = self.card()
        self.assertEqual(self.server.numbers(self.shown(TITLE), "_GTK_FRAME_EXTENTS"), [20] * 4)
        self.assertEqual((card.x + card.width, card.y), (SCREEN.width - GAP, PANEL.height + GAP))

        def brightness(x, y):
            return luminance(next(iter(self.screen.picture().crop(Box(x, y, 1, 1)).colours())))

        self.soon(lambda: brightness(card.x + 6, card.y + 60) == 1, SHOW_SECONDS, "the card is drawn")
        wallpaper = luminance(WALLPAPER.to_bytes(3, "big"))
        bottom = card.y + card.height
        for corner in ((card.x, card.y), (card.x, bottom - 1)):
            self.assertLess(brightness(*corner), wallpaper, "the corner is round: there is only shadow")
            self.assertGreater(brightness(*corner), wallpaper / 2, "and nothing black")
        below = [brightness(card.centre[0], bottom + distance) for distance in range(1, 20)]
        self.assertEqual(below, sorted(below), "it is lighter farther from the card")
        self.assertLess(below[0], wallpaper * 0.9)
        self.assertAlmostEqual(below[-1], wallpaper, delta=0.02)

    def check_click_on_shadow(self, changes=None):
        self.begin(changes, composited=True)
        card = self.card()
        self.screen.click(card.x - 5, card.centre[1])
        self.gone(TITLE)

    def test_closes_on_a_click_on_its_shadow(self):
        self.check_click_on_shadow()

    def test_closes_on_a_click_on_its_shadow_in_wayland(self):
        self.check_click_on_shadow(IN_WAYLAND)


class SettingsWindow(WindowCase):
    def test_is_a_usual_window(self):
        self.begin()
        self.item.menu.choose("Settings…")
        self.assertEqual(
            self.server.names(self.shown(SETTINGS_TITLE), "_NET_WM_WINDOW_TYPE"), ["_NET_WM_WINDOW_TYPE_NORMAL"]
        )

    def test_has_no_minimise_button_on_plasma(self):
        """Plasma gives one to all windows but utility windows that are transient for no other."""
        self.begin({"XDG_CURRENT_DESKTOP": "KDE"})
        self.item.menu.choose("Settings…")
        window = self.shown(SETTINGS_TITLE)
        self.assertEqual(
            self.server.names(window, "_NET_WM_WINDOW_TYPE"),
            ["_NET_WM_WINDOW_TYPE_UTILITY", "_NET_WM_WINDOW_TYPE_NORMAL"],
        )
        self.assertEqual(self.server.names(window, "WM_TRANSIENT_FOR"), [])


class ActivationToken(WindowCase):
    def test_is_given_back(self):
        """Until then, the pointer shows that the program is being started."""
        self.begin()
        for token in ("abc", "gnome-shell/Velmora/1234-0-host_TIME567", 'with "quotes" and \\'):
            self.screen.bus.call(
                self.item.owner, ITEM_PATH, ITEM_INTERFACE, "ProvideXdgActivationToken", GLib.Variant("(s)", (token,))
            )
            quoted = token.replace("\\", "\\\\").replace('"', '\\"')
            self.soon_equal(lambda: self.server.ended_startups[-1:], [f'remove: ID="{quoted}"'], SHOW_SECONDS)


if __name__ == "__main__":
    unittest.main()
