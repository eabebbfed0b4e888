# SPDX-License-Identifier: GPL-3.0-or-later
"""The item in a real panel: its properties and its look."""

import unittest

from support.case import ESTIMATING, HEALTH_AND_CYCLES, DesktopCase
from support.desktop import TRAY

TYPES = {
    "Category": "s",
    "Id": "s",
    "Title": "s",
    "Status": "s",
    "WindowId": "i",
    "IconAccessibleDesc": "s",
    "IconName": "s",
    "IconThemePath": "s",
    "IconPixmap": "a(iiay)",
    "OverlayIconName": "s",
    "OverlayIconPixmap": "a(iiay)",
    "AttentionIconName": "s",
    "AttentionIconPixmap": "a(iiay)",
    "AttentionMovieName": "s",
    "ToolTip": "(sa(iiay)ss)",
    "ItemIsMenu": "b",
    "Menu": "o",
    "XAyatanaLabel": "s",
    "XAyatanaLabelGuide": "s",
}


# The colours of a picture of the item: the signs and the tile that they are on.
SIGNS, TILE = bytes.fromhex("1a1a1a"), bytes.fromhex("f6f6f6")

CHANGE_SECONDS = 2
TIME_SECONDS = 70


def brightness(colour):
    return sum(colour)


class ItemInThePanel(DesktopCase):
    def test_says_what_the_battery_does(self):
        item = self.start_and_wait(self.desktop(), self.laptop()).item
        self.assertEqual(item.tooltip, [ESTIMATING, *HEALTH_AND_CYCLES])
        self.assertEqual(item.label, " 64%")
        self.assertEqual(item.icon, "velmora-percent-64-level-symbolic")
        self.assertEqual(item.get("IconAccessibleDesc"), "Battery")

    def test_has_no_tooltip_line_beside_the_only_one(self):
        """Xfce adds the icon's description to a lone line, unless that is the same."""
        item = self.start_and_wait(self.desktop(), self.laptop({})).item
        self.assertEqual(item.get("ToolTip"), ("", [], "No battery found", ""))
        self.assertEqual(item.get("IconAccessibleDesc"), "No battery found")

    def test_has_the_properties_that_hosts_insist_on(self):
        item = self.start_and_wait(self.desktop(), self.laptop()).item
        self.assertEqual(item.get("Category"), "Hardware")
        self.assertEqual(item.get("Title"), "Velmora")
        self.assertEqual(item.get("Status"), "Active")
        self.assertIs(item.get("ItemIsMenu"), False)
        self.assertNotEqual(item.get("Id"), "")
        self.assertEqual(item.get("ToolTip"), ("", [], ESTIMATING, "\n".join(HEALTH_AND_CYCLES)))
        for key in ("OverlayIconName", "AttentionIconName", "AttentionMovieName"):
            self.assertEqual(item.get(key), "")
        for key in ("OverlayIconPixmap", "AttentionIconPixmap"):
            self.assertEqual(item.get(key), [])

    def test_has_them_with_the_types_that_hosts_insist_on(self):
        item = self.start_and_wait(self.desktop(), self.laptop()).item
        self.assertEqual(item.types() | TYPES, item.types())

    def test_is_dark_on_a_light_panel(self):
        glyph, background = self.drawn_colours(dark=False)
        self.assertLess(brightness(min(glyph, key=brightness)), brightness(background) / 2)

    def test_is_light_on_a_dark_panel(self):
        glyph, background = self.drawn_colours(dark=True)
        self.assertGreater(brightness(max(glyph, key=brightness)), brightness(background) * 2)

    def test_shows_the_time_if_the_percentage_is_switched_off(self):
        desktop, laptop = self.desktop(), self.laptop()
        self.prefer(desktop, '{"showPercent": false, "showTime": true}')
        item = self.start_and_wait(desktop, laptop).item
        self.assertEqual(item.icon, "velmora-battery-75-symbolic", "the time is not known yet")
        laptop.set("BAT0", power_now=10000000)
        self.soon(lambda: "2 h 47 min left" in item.tooltip[0], TIME_SECONDS, "the time is known")
        # No file has the time in it, so the panel gets a picture.
        self.soon_equal(lambda: item.icon, "", CHANGE_SECONDS)
        self.assertEqual([pixmap[0:2] for pixmap in item.get("IconPixmap")][0:2], [(16, 16), (22, 22)])
        drawn = lambda: {SIGNS, TILE} <= set(desktop.picture().crop(TRAY).colours())
        self.soon(drawn, CHANGE_SECONDS, "the panel draws it")
        self.keep_picture(desktop, "time-in-the-icon")

    def test_looks_different_when_the_battery_is_low(self):
        desktop, laptop = self.desktop(), self.laptop()
        # Without the number, so that the glyph has to change.
        self.prefer(desktop, '{"showPercent": false}')
        _, box = self.start_and_find(desktop, laptop)
        before = desktop.picture().crop(box)
        laptop.set_level(9)
        laptop.event("BAT0")
        self.soon(lambda: desktop.picture().crop(box).changed_box(before), 2, "the panel draws another glyph")

    @staticmethod
    def prefer(desktop, preferences):
        """Saves preferences before the program starts."""
        file = desktop.config / "Velmora/defaults.json"
        file.parent.mkdir()
        file.write_text(preferences, encoding="utf-8")

    def drawn_colours(self, dark):
        """The colours of the item in the panel, and the panel's own."""
        desktop = self.desktop(dark=dark)
        _, box = self.start_and_find(desktop, self.laptop())
        self.assertTrue(8 <= box.width <= 24 and 6 <= box.height <= 24, box)
        panel = desktop.picture().crop(TRAY).colours()
        background = max(panel, key=panel.get)
        glyph = set(desktop.picture().crop(box).colours()) - {background}
        self.assertTrue(glyph)
        return glyph, background


if __name__ == "__main__":
    unittest.main()
