# SPDX-License-Identifier: GPL-3.0-or-later
"""The settings window as a user operates it: controls are found as a screen reader finds them, and operated with
pointer and keyboard."""

import json

from .waiting import wait_until

TITLE = "Velmora Settings"
LIMIT = 5


class SettingsForm:
    """Each access looks for the window anew, because it comes and goes."""

    def __init__(self, desktop, reader):
        self._desktop = desktop
        self._reader = reader

    @property
    def window(self):
        """The window; None while it is not shown."""
        return self._reader.window(TITLE)

    def opened(self):
        return wait_until(lambda: self.window, LIMIT, "the settings window is there")

    def gone(self):
        wait_until(lambda: self.window is None, LIMIT, "the settings window is gone")

    def control(self, label, section=None):
        """The first control with that label, or the first one after the control with the label `section`."""
        controls = [(control.label, control) for control in self.window.controls()]
        labels = [name for name, _ in controls]
        start = labels.index(section) if section else 0
        return controls[labels.index(label, start)][1]

    def stepper(self, start):
        """The stepper whose label, which contains its number, begins with `start`."""
        return next(each for each in self.window.controls() if each.label.startswith(start))

    def texts(self):
        """All labels and notes, from the top."""
        return [each.name for each in self.window.walk() if each.role == "label"]

    def click(self, control):
        """Clicks in the middle of the control."""
        self._desktop.click(*self.reach(control).centre)

    def reach(self, control):
        """Turns the wheel until the control is wholly visible; returns its place."""
        window = self.window.box
        while not window.contains(box := control.box):
            up = box.y < window.y
            # At the edge, where no other control reacts to the wheel.
            self._desktop.click(window.x + 6, window.centre[1], button=4 if up else 5)
            wait_until(lambda before=box: control.box != before, LIMIT, f"{control} moves with the wheel")
        return box

    def write(self, control, text):
        """Replaces the control's text by typing."""
        box = self.reach(control)
        self._desktop.click(box.x + 10, box.centre[1])
        self._desktop.press("ctrl+a")
        self._desktop.type(text)
        self._desktop.press("Return")

    def write_time(self, control, digits):
        """Clicks on the hours and types hours and minutes."""
        box = self.reach(control)
        self._desktop.click(box.x + 10, box.centre[1])
        self._desktop.type(digits)
        self._desktop.press("Return")


def stored(desktop):
    """The preferences as they are on the disk."""
    try:
        return json.loads(desktop.defaults_file.read_text(encoding="utf-8"))
    except FileNotFoundError:
        return {}
