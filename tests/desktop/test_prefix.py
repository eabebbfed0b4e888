# SPDX-License-Identifier: GPL-3.0-or-later
"""This build as the packages of most distributions install it: below a prefix, among other programs."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from support.case import DesktopCase
from support.installed import Installed, files_below
from support.notifications import Dunst
from support.program import TOP, bundle
from support.reminders import LOW_ALONE, SHOWN_SECONDS, ZONE, RemindersOnADaemon
from support.sounds import SoundCard

ID = "app.velmora.Velmora"
ICON = f"share/icons/hicolor/scalable/apps/{ID}.svg"
INSTALL_SECONDS = 60

# The files that packaging/README.md names, besides glyphs and sounds.
NAMED = {
    "bin/velmora",
    "lib/velmora/velmora-sound.so",
    f"share/applications/{ID}.desktop",
    ICON,
    "share/man/man1/velmora.1",
    f"share/metainfo/{ID}.metainfo.xml",
    "share/velmora/icons/hicolor/index.theme",
}
# Built where LayerShellQt 6 is.
OPTIONAL = "lib/velmora/velmora-layer-shell.so"
GLYPH = r"velmora/icons/hicolor/(scalable|[0-9x]+)/status/velmora-.*-symbolic\.svg"
SOUND = r"sounds/velmora/[A-Z][a-z]+\.wav"

folder = Path()


def setUpModule():
    global folder
    folder = Path(tempfile.mkdtemp(prefix="velmora-prefix-"))
    unittest.addModuleCleanup(shutil.rmtree, folder)
    install(folder / "usr/local")
    install("/usr", {"DESTDIR": str(folder / "stage")})


def install(prefix, variables=None):
    command = ["cmake", "--install", os.environ.get("VELMORA_BUILD", TOP / "build/default"), "--prefix", prefix]
    environment = os.environ | (variables or {})
    subprocess.run(command, check=True, env=environment, stdout=subprocess.DEVNULL, timeout=INSTALL_SECONDS)


class OfAPrefix(Installed):
    def setUp(self):
        self.prefix = folder / self.place
        self.command = self.login_command = self.prefix / "bin/velmora"
        self.icon = self.prefix / ICON

    def keep(self, name):
        self.keep_picture(self.screen, f"{Path(self.place).name}-{name}")

    def test_has_what_the_bundle_has(self):
        files = files_below(self.prefix)
        self.assertEqual(files, files_below(bundle() / "usr"))
        others = {name for name in files if name not in NAMED | {OPTIONAL}}
        self.assertEqual(files.keys() - others - {OPTIONAL}, NAMED)
        for name in others:
            self.assertRegex(name, rf"\Ashare/({GLYPH}|{SOUND})\Z")


class Direct(OfAPrefix, DesktopCase):
    place = "usr/local"


class Staged(OfAPrefix, DesktopCase):
    """Installed for "/usr" in a staging folder, where it must run as well."""

    place = "stage/usr"


class Reminders(RemindersOnADaemon, DesktopCase):
    daemon = Dunst

    def setUp(self):
        self.prefix = folder / "usr/local"

    def start_program(self):
        self.card = SoundCard(self.screen)
        return self.start_and_wait(
            self.screen, self.machine, {"TZ": ZONE} | self.card.environment, self.prefix / "bin/velmora"
        )

    def test_are_heard_by_the_sounds_of_the_prefix_wherever_that_is(self):
        self.prefix = folder / "moved to another place"
        shutil.copytree(folder / "usr/local", self.prefix)
        sounds = self.prefix / "share/sounds/velmora"
        shutil.copyfile(sounds / "Frog.wav", sounds / "Ping.wav")  # the bundle has another Ping
        self.begin(LOW_ALONE | {"lowSound": "Ping"})
        self.change_level(15)
        self.becomes(1)
        self.soon_equal(self.card.played, ["Frog"], SHOWN_SECONDS)


if __name__ == "__main__":
    unittest.main()
