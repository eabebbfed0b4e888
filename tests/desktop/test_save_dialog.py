# SPDX-License-Identifier: GPL-3.0-or-later
"""The history is saved to the file chosen in the desktop's own dialog: the real portal shows GTK's."""

import json
import unittest
from pathlib import Path

from support.case import START_SECONDS
from support.installed import PAST
from test_settings import SettingsCase

BACKEND = "org.freedesktop.impl.portal.desktop.gtk"
PORTAL = "org.freedesktop.portal.Desktop"
LIBEXEC = Path("/usr/libexec")
SHOWN_SECONDS = 10
LOOK_SECONDS = 1  # the time that a person takes; a dialog that closes within half of it was closed by something else


class SaveDialog(SettingsCase):
    def setUp(self):
        self.make_desktop()
        self.screen.history_file.parent.mkdir(parents=True)
        self.screen.history_file.write_text(json.dumps(PAST), encoding="utf-8")
        choice = self.screen.config / "xdg-desktop-portal/portals.conf"
        choice.parent.mkdir()
        choice.write_text("[preferred]\ndefault=gtk\n", encoding="utf-8")
        for program, name in (("xdg-desktop-portal-gtk", BACKEND), ("xdg-desktop-portal", PORTAL)):
            self.screen.start(program, [LIBEXEC / program])
            self.soon(lambda: self.screen.bus.owner(name), START_SECONDS, f"{name} is there")
        self.program = self.start_and_wait(self.screen, self.laptop())
        self.program.item.menu.choose("Settings…")
        self.form.opened()

    def ask(self):
        """The dialog appears and stays open, and it is not one of the program's own."""
        self.form.click(self.form.control("Export History as CSV…"))
        self.soon(lambda: self.screen.windows("Save As"), SHOWN_SECONDS, "the desktop's dialog is there")
        self.never(lambda: not self.screen.windows("Save As"), LOOK_SECONDS)
        self.assertIsNone(self.reader.window("Save As"))

    def is_gone(self):
        self.soon(lambda: not self.screen.windows("Save As"), SHOWN_SECONDS, "the dialog is gone")

    def test_saves_where_it_says(self):
        self.ask()
        self.keep_picture(self.screen, "save-dialog")
        file = self.screen.home / "my history.csv"
        self.screen.press("ctrl+a")
        self.screen.type(str(file))
        self.screen.press("Return")
        lines = lambda: file.read_text(encoding="utf-8").splitlines() if file.exists() else []
        self.soon(lambda: len(lines()) > len(PAST), SHOWN_SECONDS, "a line for each sample is there, and the names")
        self.is_gone()

    def test_saves_nothing_where_it_is_closed_and_asks_again(self):
        for _ in range(2):
            self.ask()
            self.screen.press("Escape")
            self.is_gone()
        self.assertEqual(list(self.screen.home.glob("*.csv")), [])


if __name__ == "__main__":
    unittest.main()
