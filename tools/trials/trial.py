# SPDX-License-Identifier: GPL-3.0-or-later
"""One desktop, tried from the item in its panel to the end of the program."""

import shutil
import time

from gi.repository import GLib
from support.desktop import SCREEN
from support.laptop import SimulatedLaptop
from support.notifications import Listener
from support.waiting import wait_until, watch

from .pixels import steady, text_lines
from .session import SHOWN_SECONDS, NoSuchThing, Session, Wrong

HOVER_SECONDS = 8
QUIET_SECONDS = 1
LATE_SECONDS = 3
BUTTON_PIXELS = 16
NEAR_PIXELS = 48
LEAST_CONTRAST = 3
RECOLOURED_CONTRAST = 4.5
BLOCK_EDGE = 0.95  # digits and outlines on a light tile reach 0.85
SETTINGS_TITLE = "Velmora Settings"


class Trial(Session):
    """The steps need each other's results, so they have an order; a step without the item it needs fails."""

    STEPS = {
        "item": "shown",
        "percentage": "percentage",
        "contrast": "contrast",
        "tooltip": "tooltip",
        "click": "click",
        "place": "place",
        "menu": "menu",
        "escape": "Esc",
        "click_on_panel": "click on panel",
        "click_on_wallpaper": "on wallpaper",
        "click_on_window": "on window",
        "reminder": "reminder",
        "withdrawal": "withdrawn",
        "snooze": "snooze",
        "restart": "panel restarted",
        "late_panel": "panel later",
        "end": "end",
    }
    LOOK_STEPS = ("item", "contrast")

    def run(self, step):
        """Tries one step; returns the verdict."""
        try:
            said = getattr(self, step)()
        except NoSuchThing as reason:
            verdict = f"no such thing here: {reason}"
        except (Wrong, AssertionError, GLib.Error) as reason:
            verdict = f"wrong: {' '.join(str(reason).split())}"
            self.keep(f"{step}-wrong")
            self.desktop.press("Escape")  # a menu or the settings may still be open
        else:
            verdict = f"right: {said}" if said else "right"
        self.tidy()
        return verdict

    # The steps

    def item(self):
        self.desktop.rest_pointer()
        steady(self.desktop, self.desktop.strip())
        start = time.monotonic()
        self.start_program()
        self.find()
        passed = time.monotonic() - start
        self.keep("item")
        return f"{self.box.width}x{self.box.height} at {self.box.x},{self.box.y}, known after {passed:.0f} s"

    def percentage(self):
        self.has_item()
        with_number, strip = self.box, self.desktop.strip()
        number = steady(self.desktop, strip)
        self.change_level(61)
        changed = self.await_change(strip, number, "another number")
        self.change_level(64)
        self.await_equal(strip, number, "the number again")
        self.prefer(showPercent=False)
        self.await_change(strip, number, "no number")
        plain = steady(self.desktop, strip)
        plain.save(self.folder / "item-plain.png")
        without = self.measure()
        self.prefer(showPercent=True)
        self.await_change(strip, plain, "the number once more")
        self.box = self.measure() or with_number
        if without is None:
            raise Wrong("without a number, nothing follows the charge")
        wider = self.box.width - without.width
        if self.desktop.label and wider < 12:
            raise Wrong(f"no text beside the icon: {with_number.width} pixels with it, {without.width} without")
        return "text beside the icon" if self.desktop.label else f"in the icon, {changed.width} pixels of it changed"

    def contrast(self):
        self.has_item()
        looks = []
        for state, change in (("charging", self.laptop.plug), ("on-battery", self.laptop.unplug)):
            change()
            said = state.replace("-", " ")
            wait_until(lambda: said in self.tooltip_text().lower(), SHOWN_SECONDS, f"the item says {said}")
            looks.append(self.look_of_item(state))
        if looks[0].panel_is_dark != self.desktop.dark:
            raise Wrong(f"this is not the theme that was asked for: {looks[0].tones}")
        worst = min(looks, key=lambda seen: seen.least)
        said = f"{worst.least:.1f} to 1 at the least, {worst.tones}"
        if worst.least < (RECOLOURED_CONTRAST if self.desktop.recolours else LEAST_CONTRAST):
            raise Wrong(said)
        edge = max(seen.edge for seen in looks)
        if edge > BLOCK_EDGE:
            raise Wrong(f"a dark block: {edge:.0%} of its edge is darker than the panel; {said}")
        return f"{said}; {edge:.0%} of its edge is darker than the panel"

    def tooltip(self):
        self.has_item()
        beyond = self.desktop.beyond()
        before = steady(self.desktop, beyond)
        # Some panels take the first position as the pointer's arrival, and wait for a motion.
        self.desktop.move_pointer(self.box.centre[0] - 2, self.box.centre[1] - 2)
        steady(self.desktop, self.desktop.strip())
        self.desktop.move_pointer(*self.box.centre)
        drawn = lambda: self.desktop.picture().crop(beyond).changed_box(before)
        try:
            wait_until(drawn, HOVER_SECONDS, "a tooltip is drawn")
        except AssertionError:
            if self.desktop.tooltip is None:
                raise NoSuchThing("nothing appeared") from None
            raise
        after = steady(self.desktop, beyond)
        box = after.changed_box(before)
        after.crop(box).save(self.folder / "tooltip.png")
        self.keep("tooltip-screen")
        if self.desktop.tooltip is None:
            raise Wrong(f"the panel is said to have none, and drew {box}")
        lines = len(text_lines(after.crop(box)))
        _, _, title, text = self.program.item.get("ToolTip")
        meant = [line for line in f"{title}\n{text}".split("\n") if line]
        if lines != len(meant):
            raise Wrong(f"{lines} lines of text drawn, {len(meant)} meant")
        if self.desktop.tooltip == "title and text" and "\n" in title:
            raise Wrong("all lines are in the title")
        return f"{lines} lines, {box.width}x{box.height}"

    def click(self):
        self.has_item()
        how = {"click": "left click", "double click": "double click", "menu": "the menu that a click opens"}
        self.open_details()
        self.keep("details")
        if self.desktop.opens == "click":
            self.desktop.click(*self.box.centre)
            self.await_closed("a second click on the item")
            again = watch(lambda: self.desktop.details() is not None, QUIET_SECONDS)
            if [seen for _, seen in again] != [False]:
                raise Wrong("the second click on the item closes it and opens it again")
        return how[self.desktop.opens]

    def place(self):
        box = self.open_details()
        item = self.box
        right, bottom = item.x + item.width, item.y + item.height
        apart_x = max(box.x - right, item.x - (box.x + box.width))
        apart_y = max(box.y - bottom, item.y - (box.y + box.height))
        said = f"{box.width}x{box.height} at {box.x},{box.y}; the item {item.width}x{item.height} at {item.x},{item.y}"
        if not self.desktop.places:
            raise NoSuchThing(f"the compositor places windows; {said}")
        if not SCREEN.contains(box):
            raise Wrong(f"not wholly on the screen: {said}")
        if apart_x < 0 and apart_y < 0:
            raise Wrong(f"covers the item: {said}")
        if max(apart_x, apart_y) > NEAR_PIXELS:
            raise Wrong(f"{max(apart_x, apart_y)} pixels from the item: {said}")
        return f"{max(apart_x, apart_y)} pixels from the item; {said}"

    def menu(self):
        self.has_item()
        button = self.desktop.menu_button
        self.choose_in_menu(0, button, picture="menu")
        wait_until(self.desktop.details, SHOWN_SECONDS, "the details, from the menu's first entry")
        self.tidy()
        self.choose_in_menu(2, button)
        opened = lambda: self.desktop.windows(SETTINGS_TITLE)
        wait_until(opened, SHOWN_SECONDS, "the settings, from the menu's third entry")
        self.keep("settings")
        self.desktop.close_settings()
        wait_until(lambda: not opened(), SHOWN_SECONDS, "the settings are closed by Esc")
        return "details and settings opened from it" + ("" if button == 3 else "; a left click opens it")

    def escape(self):
        self.open_details()
        self.desktop.press("Escape")
        self.await_closed("Esc")

    def click_on_panel(self):
        return self.click_at([self.desktop.empty_panel], "panel")

    def click_on_wallpaper(self):
        return self.click_at(self.desktop.wallpaper, "wallpaper")

    def click_on_window(self):
        self.desktop.start_stranger()
        return self.click_at(self.desktop.window, "window")

    def reminder(self):
        self.listener = Listener(self.desktop)
        self.before_reminder = steady(self.desktop, self.desktop.beyond())
        self.reminded(15)
        box = self.notification()
        self.desktop.picture().crop(box).save(self.folder / "reminder.png")
        self.keep("reminder-screen")
        return f"{self.desktop.daemon()}, {box.width}x{box.height} at {box.x},{box.y}"

    def withdrawal(self):
        self.has_reminder()
        if not self.drawn_reminder():
            raise Wrong("there was none to withdraw")
        withdrawn = lambda: "CloseNotification" in self.listener.methods
        if withdrawn():
            raise Wrong("it was withdrawn already")
        self.laptop.plug()
        wait_until(withdrawn, SHOWN_SECONDS, "the program asks the daemon to close it after plugging in")
        wait_until(lambda: not self.drawn_reminder(), SHOWN_SECONDS, "it is gone after that")

    def snooze(self):
        self.has_reminder()
        self.laptop.unplug()
        self.change_level(64)
        self.reminded(14)
        box = self.notification()
        if self.desktop.button is None:
            raise NoSuchThing(f"{self.desktop.daemon()} draws no button")
        if self.desktop.hover:
            self.desktop.move_pointer(*box.centre)
            grown = lambda: (drawn := self.drawn_reminder()) and drawn.height > box.height + BUTTON_PIXELS
            wait_until(grown, SHOWN_SECONDS, "the reminder shows its button")
            box = self.notification()
        self.keep("snooze")
        x, y = self.desktop.button
        self.desktop.click(box.x + box.width + x, box.y + box.height + y)
        wait_until(self.snoozed_until, SHOWN_SECONDS, "it is snoozed by the button")
        hours = (self.snoozed_until() - time.time()) / 3600
        if not 0.98 < hours <= 1:
            raise Wrong(f"snoozed for {hours:.2f} h")
        self.desktop.rest_pointer()
        wait_until(lambda: not self.drawn_reminder(), SHOWN_SECONDS, "the reminder is gone")
        return "by its button"

    def restart(self):
        self.has_item()
        self.desktop.kill_panel()
        return f"seen again, {self.panel_starts('panel-restarted')}"

    def late_panel(self):
        self.desktop.kill_panel()
        self.program.process.stop()
        self.start_program()
        alive = watch(lambda: self.program.process.running, LATE_SECONDS)
        if [seen for _, seen in alive] != [True]:
            raise Wrong(f"the program ends without a panel: {self.program.process.errors}")
        return f"seen, {self.panel_starts('panel-later')}"

    def panel_starts(self, picture):
        self.desktop.start_panel()
        start = time.monotonic()
        self.find()
        self.keep(picture)
        return f"known {time.monotonic() - start:.0f} s after the panel was ready"

    def end(self):
        process = self.program.process
        if not process.running:
            raise Wrong(f"it has ended by itself with {process.exit_code}: {process.errors}")
        code = process.stop()
        if code or process.output or process.errors:
            raise Wrong(f"exit code {code}; {process.output}{process.errors}")


def try_desktop(make, dark, folder, steps, tell):
    """Goes through the steps on a fresh desktop; `tell` hears of each."""
    laptop = SimulatedLaptop()
    verdicts = {}
    try:
        desktop = make(dark)
        trial = Trial(desktop, laptop, folder)
        try:
            for step in steps:
                verdicts[step] = trial.run(step)
                tell(step, verdicts[step])
        finally:
            if trial.listener:
                trial.listener.close()
            shutil.copytree(desktop.logs, folder / "logs", dirs_exist_ok=True)
            desktop.stop()
    finally:
        laptop.close()
    return verdicts
