# SPDX-License-Identifier: GPL-3.0-or-later
"""The program as a package has installed it. `tools/newcomer deb` runs this on a system of its own:
VELMORA_COMMAND starts the program, VELMORA_ENTRY is where the entry that starts it at login is kept."""

import json
import os
import shutil
import time
import unittest
from pathlib import Path

from support.case import END_SECONDS, ESTIMATING, HEALTH_AND_CYCLES, START_SECONDS, DesktopCase
from support.notifications import Listener

COMMAND = Path(os.environ["VELMORA_COMMAND"])
ENTRY = Path(os.environ["VELMORA_ENTRY"])
APP = Path("/usr/lib/velmora/Velmora.app")

PREFERENCES = ".config/Velmora/defaults.json"
HISTORY = ".local/share/Velmora/history.json"
AUTOSTART = ".config/autostart/app.velmora.Velmora.desktop"
CONSENT = ".local/state/Velmora/"

PAST = [{"t": time.time() - 60 * minute, "p": 70, "c": False, "a": False} for minute in range(90, 0, -1)]


class Installed(DesktopCase):
    def test_shows_reminds_remembers_and_starts_at_login(self):
        self.screen = self.desktop(notifications=True)
        self.screen.history_file.parent.mkdir(parents=True)
        self.screen.history_file.write_text(json.dumps(PAST), encoding="utf-8")
        self.listener = Listener(self.screen)
        self.addCleanup(self.listener.close)
        self.machine = self.laptop()
        self.program = self.start_and_wait(self.screen, self.machine, app=COMMAND)
        self.item = self.program.item
        self.is_in_the_panel()
        self.reminds()
        self.draws_its_chart()
        self.starts_at_login()
        self.item.menu.choose("Quit")
        self.ends_cleanly(self.program, END_SECONDS)
        self.wrote_only_the_users_files()

    def is_in_the_panel(self):
        self.assertEqual(self.item.tooltip, [ESTIMATING, *HEALTH_AND_CYCLES])
        self.assertEqual(self.item.get("IconThemePath"), str(APP / "usr/share/icons"))
        self.soon(self.screen.find_item, START_SECONDS, "the item is drawn")

    def reminds(self):
        self.machine.set_level(18)
        self.machine.event("BAT0")
        titles = lambda: sorted(asked.title for asked in self.listener.asked)
        self.soon_equal(titles, ["Low battery", "Try Low Power Mode"], START_SECONDS)

    def draws_its_chart(self):
        """The chart's library is loaded for it, not linked."""
        maps = Path(f"/proc/{self.program.process.pid}/maps")
        loaded = lambda name: name in maps.read_text(encoding="utf-8")
        self.assertFalse(loaded("libQCustomPlotQt6"))
        self.item.menu.choose("Show details")
        self.soon(lambda: self.screen.windows("Velmora"), START_SECONDS, "the details are there")
        self.soon(lambda: loaded(f"{APP}/usr/lib/velmora/velmora-chart.so"), START_SECONDS, "the chart is drawn")
        self.soon(lambda: loaded("libQCustomPlotQt6"), START_SECONDS, "the chart's library is loaded")
        self.keep_installed_picture("details")
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
        self.keep_installed_picture("settings")
        lines = entry.read_text(encoding="utf-8").splitlines()
        for line in (f'Exec="{APP}/AppRun"', f"TryExec={APP}/AppRun", f"Icon={APP}/app.velmora.Velmora.svg"):
            self.assertIn(line, lines)
        shutil.copyfile(entry, ENTRY)

    def keep_installed_picture(self, name):
        self.screen.picture().save(ENTRY.parent / f"installed-{name}.png")

    def wrote_only_the_users_files(self):
        home = self.screen.home
        names = (str(file.relative_to(home)) for file in home.rglob("*") if file.is_file())
        own = {name for name in names if "velmora" in name.lower()}
        self.assertLessEqual({HISTORY, AUTOSTART}, own)
        others = own - {PREFERENCES, HISTORY, AUTOSTART}
        self.assertEqual({name for name in others if not name.startswith(CONSENT)}, set())
        samples = json.loads((home / HISTORY).read_text(encoding="utf-8"))
        self.assertEqual([sample["p"] for sample in samples[-1:]], [18])


if __name__ == "__main__":
    unittest.main()
