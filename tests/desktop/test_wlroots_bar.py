# SPDX-License-Identifier: GPL-3.0-or-later
"""The item in the bar of a wlroots compositor, which shows no label, recolours nothing and drops non-square icons."""

import unittest

from support.case import START_SECONDS, DesktopCase
from support.desktop import SCREEN
from support.screen import contrast
from support.wlroots import BAR_HEIGHT, WlrootsDesktop

CHANGE_SECONDS = 5
LEAST_CONTRAST = 3
LEAST_SIZE = 20
ROUNDING = 3


class ItemInAWlrootsBar(DesktopCase):
    def bar(self, **options):
        desktop = WlrootsDesktop(**options)
        self.addCleanup(desktop.stop)
        laptop = self.laptop()
        desktop.hand_over(laptop.root)
        app = desktop.own_bundle()
        # As built where the library is not there.
        (app / "usr/lib/velmora/velmora-layer-shell.so").unlink(missing_ok=True)
        program = self.start_and_wait(desktop, laptop, app=app)
        box = self.soon(lambda: self.whole(desktop.find_item()), START_SECONDS, "the item is drawn, and nothing else")
        return desktop, laptop, program, box

    @staticmethod
    def whole(box):
        """The box if it can be the whole item's; a picture may be taken while the bar is being drawn."""
        fits = box and all(LEAST_SIZE <= side <= BAR_HEIGHT for side in (box.width, box.height))
        return box if fits else None

    def test_is_a_square_picture_that_changes_with_the_number(self):
        desktop, laptop, program, box = self.bar()
        self.assertEqual(program.item.icon, "")
        sizes = [(width, height) for width, height, _ in program.item.get("IconPixmap")]
        self.assertEqual(sizes, [(size, size) for size in (16, 22, 24, 32, 44, 48, 64)])
        # Another number and nothing else changed: only a picture that carries the number can differ.
        before = desktop.picture().crop(box)
        laptop.set_level(61)
        laptop.event("BAT0")
        changed = lambda: desktop.picture().crop(box).changed_box(before)
        self.soon(changed, CHANGE_SECONDS, "the bar draws the new number")
        self.assertEqual(program.item.label, " 61%")

    def test_is_readable_on_a_dark_bar(self):
        self.check_contrast(dark=True)

    def test_is_readable_on_a_light_bar(self):
        self.check_contrast(dark=False)

    def test_the_popover_floats_and_another_click_closes_it(self):
        desktop, laptop, program, _ = self.bar()
        opened = lambda: desktop.windows("Velmora")
        # swaybar reports a position inside the item, not one on the screen.
        program.item.activate(5, 5)
        window = self.soon(opened, CHANGE_SECONDS, "the popover is there")[0]
        self.assertTrue(SCREEN.contains(window), window)
        # The popover follows the battery here, too.
        self.soon(lambda: len(desktop.picture().crop(window).colours()) > 2, CHANGE_SECONDS, "text is drawn")
        before = desktop.picture().crop(window)
        laptop.set_level(33)
        laptop.event("BAT0")
        follows = lambda: desktop.picture().crop(window).changed_box(before)
        self.soon(follows, CHANGE_SECONDS, "it shows the new level")
        program.item.activate(5, 5)
        self.soon(lambda: not opened(), CHANGE_SECONDS, "the popover is gone")

    def check_contrast(self, dark):
        desktop, _, _, box = self.bar(dark=dark)
        colours = desktop.picture().crop(box._replace(x=box.x - 4, width=box.width + 4)).colours()
        background = max(colours, key=colours.get)
        # The glyph's own two tones, not the colours of a few pixels at its edges.
        tones = sorted((colour for colour in colours if colour != background), key=colours.get)[-2:]
        # Smoothed edges lie between the tones and the bar; a lighter or darker colour means that the glyph has a rim.
        for colour in colours:
            for value, *ends in zip(colour, background, *tones):
                self.assertTrue(min(ends) - ROUNDING <= value <= max(ends) + ROUNDING, (colour, tones, background))
        best = max(contrast(tone, background) for tone in tones)
        self.assertGreaterEqual(best, LEAST_CONTRAST, (tones, background))


if __name__ == "__main__":
    unittest.main()
