# SPDX-License-Identifier: GPL-3.0-or-later
"""The program on a desktop under trial, and what the steps of a trial do with it."""

import json
import time

from support.desktop import SCREEN
from support.program import Program
from support.waiting import wait_until

from .pixels import look, moved, steady, text_lines, union, whole

ITEM_SECONDS = 60  # the program waits a while for a panel before it uses the X11 tray
SHOWN_SECONDS = 15
CLOSE_SECONDS = 5
STILL_SECONDS = 0.4
LEVELS = (88, 31, 64)  # at none of them is a reminder due
LEAST_REMINDER = 24  # pixels
LARGER = 6  # the scale of the item's pictures
AROUND = 8  # pixels of the panel in them, on each side
SNOOZED = "snoozeUntil"


class Wrong(Exception):
    pass


class NoSuchThing(Exception):
    """The desktop does not have what would be tried."""


class Session:
    """The program, its item in the panel, and the user's pointer."""

    def __init__(self, desktop, laptop, folder):
        self.desktop = desktop
        self.laptop = laptop
        self.folder = folder
        self.box = None  # of the item, on the screen
        self.program = self.listener = self.before_reminder = None
        self.laptop.set_level(LEVELS[-1])
        desktop.hand_over(laptop.root)
        self.prefer(showPercent=True)

    def start_program(self):
        self.program = Program(self.desktop, self.laptop, self.desktop.inside(), self.desktop.own_bundle())
        explain = lambda: f"the item is on the bus; {self.program.process.errors}"
        wait_until(self.tooltip_text, SHOWN_SECONDS * 2, explain)

    def has_item(self):
        if self.box is None:
            raise Wrong("there is no item")

    def has_reminder(self):
        if self.before_reminder is None:
            raise Wrong("no reminder has been tried")

    def find(self):
        """Waits until the item is drawn in the panel, and finds out where."""
        self.box = None
        strip = self.desktop.strip()
        deadline = time.monotonic() + ITEM_SECONDS
        last = None
        while self.box is None and time.monotonic() < deadline:
            box = self.measure()
            if box == last:  # the panel's other parts have come to rest, too
                self.box = box
            last = box
        if self.box is None:
            registered = "has" if self.program.item.registered else "does not have"
            raise Wrong(f"nothing in {strip} follows the charge; the watcher {registered} the item")

    def measure(self):
        """The box of the pixels in the panel that follow the charge; None if there are none."""
        strip = self.desktop.strip()
        boxes = []
        picture = steady(self.desktop, strip)
        for level in LEVELS:
            self.change_level(level)
            last, picture = picture, steady(self.desktop, strip)
            boxes.append(picture.changed_box(last))
        boxes = [box for box in boxes if box]
        return moved(whole(picture, union(boxes)), strip) if boxes else None

    def look_of_item(self, state):
        """Measures the item as it is now, and keeps a picture of it."""
        strip = self.desktop.strip()
        picture = steady(self.desktop, strip)
        box = whole(picture, self.inside(self.box, strip))
        around = box._replace(x=box.x - AROUND, y=box.y - AROUND, width=box.width + 2 * AROUND)
        around = around._replace(height=box.height + 2 * AROUND)
        theme = "dark" if self.desktop.dark else "light"
        picture.crop(around).enlarge(LARGER).save(self.folder / f"item-{state}-{theme}.png")
        seen = look(picture, box)
        if seen is None:
            raise Wrong("nothing is drawn in the item's place")
        return seen

    def tooltip_text(self):
        """What the program gives to the panel for the tooltip, in one line."""
        return " ".join((self.program.item.get("ToolTip") or ["", [], "", ""])[2:]).replace("\n", " ")

    def change_level(self, percent):
        self.laptop.set_level(percent)
        self.laptop.event("BAT0")
        wait_until(lambda: f"{percent}%" in self.tooltip_text(), SHOWN_SECONDS, f"the item says {percent} %")

    def await_change(self, area, before, what):
        wait_until(lambda: self.desktop.picture().crop(area).changed_box(before), SHOWN_SECONDS, f"{what} is drawn")
        return steady(self.desktop, area).changed_box(before)

    def await_equal(self, area, before, what):
        same = lambda: not self.desktop.picture().crop(area).changed_box(before)
        wait_until(same, SHOWN_SECONDS, f"{what} is drawn")

    def prefer(self, **changes):
        file = self.desktop.defaults_file
        values = json.loads(file.read_text(encoding="utf-8")) if file.exists() else {"lowPowerEnabled": False}
        file.parent.mkdir(exist_ok=True)
        fresh = file.with_suffix(".new")
        fresh.write_text(json.dumps(values | changes), encoding="utf-8")
        fresh.rename(file)
        self.desktop.hand_over(file.parent)

    def snoozed_until(self):
        return json.loads(self.desktop.defaults_file.read_text(encoding="utf-8")).get(SNOOZED)

    def open_details(self):
        self.has_item()
        # Not right after it was closed: that could be the same click.
        steady(self.desktop, self.desktop.beyond())
        if self.desktop.opens == "menu":
            self.choose_in_menu(0, button=1)
        elif self.desktop.opens == "double click":
            self.desktop.double_click(*self.box.centre)
        else:
            self.desktop.click(*self.box.centre)
        wait_until(self.desktop.details, SHOWN_SECONDS, "the details are there")
        steady(self.desktop, self.desktop.beyond())
        return self.desktop.details()

    def choose_in_menu(self, entry, button, picture=None):
        """Opens the menu that the panel shows for the item and clicks an entry."""
        beyond = self.desktop.beyond()
        before = steady(self.desktop, beyond)
        self.desktop.click(*self.box.centre, button=button)
        drawn = lambda: self.desktop.picture().crop(beyond).changed_box(before)
        wait_until(drawn, SHOWN_SECONDS, "the menu is drawn")
        after = steady(self.desktop, beyond)
        box = after.changed_box(before)
        if picture:
            after.crop(box).save(self.folder / f"{picture}.png")
        on_screen = moved(box, beyond)
        said = f"the menu {box.width}x{box.height} at {on_screen.x},{on_screen.y}"
        if box.width > SCREEN.width // 2 or box.height > SCREEN.height // 2:
            raise Wrong(f"{said} is not the size of a menu")
        lines = text_lines(after.crop(box))
        if len(lines) != self.desktop.menu_lines:
            raise Wrong(f"{said} has {len(lines)} lines of text, {self.desktop.menu_lines} meant")
        self.desktop.click(on_screen.centre[0], on_screen.y + lines[entry])

    def await_closed(self, what):
        wait_until(lambda: not self.desktop.details(), CLOSE_SECONDS, f"{what} closes the details")

    def click_at(self, points, what):
        box = self.open_details()
        inside = lambda x, y: box.x <= x < box.x + box.width and box.y <= y < box.y + box.height
        point = next(point for point in points if not inside(*point))
        self.desktop.click(*point)
        self.await_closed(f"a click on the {what} at {point[0]},{point[1]}")
        return f"at {point[0]},{point[1]}"

    def reminded(self, level):
        self.change_level(level)
        wait_until(self.drawn_reminder, SHOWN_SECONDS, "a reminder is drawn")

    def drawn_reminder(self):
        """What is drawn on the screen, since no reminder was, in the size of one."""
        beyond = self.desktop.beyond()
        box = self.desktop.picture().crop(beyond).changed_box(self.before_reminder)
        return box if box and min(box.width, box.height) > LEAST_REMINDER else None

    def notification(self):
        """The box of the reminder on the screen, once it no longer moves. Its content may: some count down."""
        last, since = None, time.monotonic()

        def still():
            nonlocal last, since
            box = self.drawn_reminder()
            if box != last:
                last, since = box, time.monotonic()
            return box and time.monotonic() - since > STILL_SECONDS

        wait_until(still, SHOWN_SECONDS, "the reminder stays where it is")
        return moved(last, self.desktop.beyond())

    def tidy(self):
        """Closes what a step has left open."""
        if self.desktop.details():
            self.desktop.press("Escape")
            try:
                self.await_closed("Esc")
            except AssertionError:
                self.program.item.activate(*(self.box.centre if self.box else (0, 0)))
        self.desktop.rest_pointer()

    def keep(self, name):
        self.desktop.picture().save(self.folder / f"{name}.png")

    @staticmethod
    def inside(box, area):
        return box._replace(x=box.x - area.x, y=box.y - area.y)
