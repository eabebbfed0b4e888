# SPDX-License-Identifier: GPL-3.0-or-later
"""The installed program, used once from its start to its end."""

import json
import os
import time
from pathlib import Path

from .case import END_SECONDS, ESTIMATING, HEALTH_AND_CYCLES, START_SECONDS
from .notifications import Listener

PREFERENCES = ".config/Velmora/defaults.json"
HISTORY = ".local/share/Velmora/history.json"
AUTOSTART = ".config/autostart/app.velmora.Velmora.desktop"
CONSENT = ".local/state/Velmora/"

PAST = [{"t": time.time() - 60 * minute, "p": 70, "c": False, "a": False} for minute in range(90, 0, -1)]


def files_below(folder):
    """Everything but folders, each with the target of a link or None."""
    names = (Path(at) / name for at, folders, names in os.walk(folder) for name in [*folders, *names])
    return {
        str(file.relative_to(folder)): os.readlink(file) if file.is_symlink() else None
        for file in names
        if file.is_symlink() or not file.is_dir()
    }


class Installed:
    """A mixin for a test case, once for each place of installation."""

    command = None  # that the user starts
    prefix = None  # below which the program finds its files
    login_command = None  # in the autostart entry
    icon = None  # of the entry

    def keep(self, name):
        """Saves a picture of the screen for a person to look at."""
        raise NotImplementedError

    def test_shows_reminds_remembers_and_starts_at_login(self):
        self.screen = self.desktop(notifications=True)
        self.screen.history_file.parent.mkdir(parents=True)
        self.screen.history_file.write_text(json.dumps(PAST), encoding="utf-8")
        self.listener = Listener(self.screen)
        self.addCleanup(self.listener.close)
        self.machine = self.laptop()
        self.program = self.start_and_wait(self.screen, self.machine, app=self.command)
        self.item = self.program.item
        self.is_in_the_panel()
        self.reminds()
        self.shows_its_details()
        self.starts_at_login()
        self.item.menu.choose("Quit")
        self.ends_cleanly(self.program, END_SECONDS)
        self.wrote_only_the_users_files()

    def is_in_the_panel(self):
        self.assertEqual(self.item.tooltip, [ESTIMATING, *HEALTH_AND_CYCLES])
        self.assertEqual(self.item.get("IconThemePath"), str(self.prefix / "share/velmora/icons"))
        self.soon(self.screen.find_item, START_SECONDS, "the item is drawn")

    def reminds(self):
        self.machine.set_level(18)
        self.machine.event("BAT0")
        titles = lambda: sorted(asked.title for asked in self.listener.asked)
        self.soon_equal(titles, ["Low battery", "Try Low Power Mode"], START_SECONDS)

    def shows_its_details(self):
        self.item.menu.choose("Show details")
        self.soon(lambda: self.screen.windows("Velmora"), START_SECONDS, "the details are there")
        self.keep("details")
        self.screen.press("Escape")
        self.soon(lambda: not self.screen.windows("Velmora"), START_SECONDS, "the details are gone")

    def starts_at_login(self):
        """The switch is the third control from the end of the form."""
        self.item.menu.choose("Settings…")
        self.soon(lambda: self.screen.windows("Velmora Settings"), START_SECONDS, "the settings are there")
        for key in ("shift+Tab", "shift+Tab", "shift+Tab", "space"):
            self.screen.press(key)
        entry = self.screen.home / AUTOSTART
        self.soon(entry.exists, START_SECONDS, "it is to start at login")
        self.keep("settings")
        lines = entry.read_text(encoding="utf-8").splitlines()
        for line in (f'Exec="{self.login_command}"', f"TryExec={self.login_command}", f"Icon={self.icon}"):
            self.assertIn(line, lines)
        for file in (self.login_command, self.icon):
            self.assertTrue(Path(file).is_file(), file)

    def wrote_only_the_users_files(self):
        home = self.screen.home
        names = (str(file.relative_to(home)) for file in home.rglob("*") if file.is_file())
        own = {name for name in names if "velmora" in name.lower()}
        self.assertLessEqual({HISTORY, AUTOSTART}, own)
        others = own - {PREFERENCES, HISTORY, AUTOSTART}
        self.assertEqual({name for name in others if not name.startswith(CONSENT)}, set())
        samples = json.loads((home / HISTORY).read_text(encoding="utf-8"))
        self.assertEqual([sample["p"] for sample in samples[-1:]], [18])
