# SPDX-License-Identifier: GPL-3.0-or-later
"""The program as a package has installed it. `tools/newcomer deb` runs this on a system of its own: VELMORA_COMMAND
starts the program, and the autostart entry is copied to VELMORA_ENTRY."""

import os
import shutil
import unittest
from pathlib import Path

from support.case import DesktopCase
from support.installed import AUTOSTART, Installed

ENTRY = Path(os.environ["VELMORA_ENTRY"])
APP = Path("/usr/lib/velmora/Velmora.app")


class ByThePackage(Installed, DesktopCase):
    command = Path(os.environ["VELMORA_COMMAND"])
    prefix = APP / "usr"
    login_command = APP / "AppRun"
    icon = APP / "app.velmora.Velmora.svg"

    def keep(self, name):
        self.screen.picture().save(ENTRY.parent / f"installed-{name}.png")

    def starts_at_login(self):
        super().starts_at_login()
        shutil.copyfile(self.screen.home / AUTOSTART, ENTRY)


if __name__ == "__main__":
    unittest.main()
