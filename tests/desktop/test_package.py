# SPDX-License-Identifier: GPL-3.0-or-later
"""The Debian package of this build: its content, the checkers' verdict, and whether it runs as installed."""

import os
import re
import shutil
import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

from support.case import ESTIMATING, HEALTH_AND_CYCLES, START_SECONDS, DesktopCase
from support.installed import files_below
from support.notifications import Listener
from support.program import TOP, bundle

ID = "app.velmora.Velmora"
PACK_SECONDS = 240
TOOL_SECONDS = 60

APP = "usr/lib/velmora/Velmora.app"
MAN_PAGE = "usr/share/man/man1/velmora.1"
SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
OUTSIDE_THE_BUNDLE = {
    "usr/bin/velmora",
    f"usr/share/applications/{ID}.desktop",
    "usr/share/doc/velmora/changelog.Debian.gz",
    "usr/share/doc/velmora/changelog.gz",
    "usr/share/doc/velmora/copyright",
    *(f"usr/share/icons/hicolor/{size}x{size}/apps/{ID}.png" for size in SIZES),
    f"usr/share/icons/hicolor/scalable/apps/{ID}.svg",
    f"{MAN_PAGE}.gz",
    f"usr/share/metainfo/{ID}.metainfo.xml",
}

# Packages that the dependencies must name, because the program and its plugins are linked with them.
DEPENDENCIES = {"libcanberra0", "libqt6dbus6", "libqt6svg6", "libqt6widgets6", "libudev1"}

# The element <developer> is newer than AppStream 0.16, which knows only its predecessor, and 1.0 rejects that one.
UNKNOWN_TO_OLD_APPSTREAM = ["unknown-tag developer"]


def output_of(*command):
    """The output of a program, which must not complain about anything."""
    environment = os.environ | {"LC_ALL": "C.UTF-8"}
    done = subprocess.run(
        command, env=environment, capture_output=True, text=True, check=False, timeout=TOOL_SECONDS
    )
    if done.returncode != 0 or done.stderr:
        raise AssertionError(f"{command}: {done.returncode}, {done.stdout}{done.stderr}")
    return done.stdout


def appstream_version():
    """The major version."""
    return int(re.search(r"(\d+)\.", output_of("appstreamcli", "--version"))[1])


def pack(file):
    """Makes the package as `file`."""
    command = [TOP / "make_app.sh", "deb", os.environ.get("VELMORA_BUILD", TOP / "build/default"), file]
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, timeout=PACK_SECONDS)
    return file


class Package(DesktopCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="velmora-package-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.file = pack(cls.folder / "velmora.deb")
        cls.root = cls.folder / "root"
        output_of("dpkg-deb", "--extract", cls.file, cls.root)

    def test_holds_the_bundle_the_command_and_what_desktops_look_for(self):
        inside = {f"{APP}/{name}": link for name, link in files_below(bundle()).items() if name != MAN_PAGE}
        found = files_below(self.root)
        self.assertEqual({name: found.get(name) for name in inside}, inside)
        self.assertEqual(found.keys() - inside.keys(), OUTSIDE_THE_BUNDLE)

    def test_the_command_is_the_program_in_the_bundle(self):
        self.assertTrue((self.root / "usr/bin/velmora").samefile(self.root / APP / "AppRun"))
        self.assertFalse(os.readlink(self.root / "usr/bin/velmora").startswith("/"))

    def test_belongs_to_root_and_only_root_may_write(self):
        for line in output_of("dpkg-deb", "--contents", self.file).splitlines():
            self.assertRegex(line, r"^([d-]rw[x-]r-[x-]r-[x-]|lrwxrwxrwx) root/root ")

    def test_runs_nothing_when_it_is_installed_or_removed(self):
        control = self.folder / "control"
        output_of("dpkg-deb", "--control", self.file, control)
        self.assertEqual({file.name for file in control.iterdir()}, {"control", "md5sums"})

    def test_depends_on_what_it_is_linked_with(self):
        depends = output_of("dpkg-deb", "--field", self.file, "Depends")
        names = set(re.findall(r"(?:^|, )([^ ,]+)", depends.strip()))
        self.assertLessEqual(DEPENDENCIES, names)
        recommends = output_of("dpkg-deb", "--field", self.file, "Recommends")
        self.assertIn("qt6-wayland", recommends)

    def test_the_validators_have_nothing_to_say(self):
        share = self.root / "usr/share"
        self.assertEqual(output_of("desktop-file-validate", share / f"applications/{ID}.desktop"), "")
        verdict = output_of("appstreamcli", "validate", "--no-net", share / f"metainfo/{ID}.metainfo.xml")
        expected = UNKNOWN_TO_OLD_APPSTREAM if appstream_version() < 1 else []
        self.assertEqual(re.findall(r"(?m)^[EWI]: \S+ (.*)", verdict), expected)
        page = output_of("man", "--warnings", "--encoding=UTF-8", "--local-file", self.root / f"{MAN_PAGE}.gz")
        self.assertIn("defaults.json", page)

    def test_the_icons_have_the_sizes_of_their_folders(self):
        for size in SIZES:
            file = self.root / f"usr/share/icons/hicolor/{size}x{size}/apps/{ID}.png"
            self.assertEqual(struct.unpack(">8x4x4sII", file.read_bytes()[:24]), (b"IHDR", size, size))

    def test_is_the_same_bytes_when_it_is_made_elsewhere(self):
        again = pack(self.folder / "a folder with another name/again.deb")
        self.assertEqual(again.read_bytes(), self.file.read_bytes())

    def test_runs_and_reminds_by_its_command(self):
        desktop = self.desktop(notifications=True)
        listener = Listener(desktop)
        self.addCleanup(listener.close)
        laptop = self.laptop()
        item = self.start_and_wait(desktop, laptop, app=self.root / "usr/bin/velmora").item
        self.assertEqual(item.tooltip, [ESTIMATING, *HEALTH_AND_CYCLES])
        self.assertEqual(item.get("IconThemePath"), str(self.root / APP / "usr/share/velmora/icons"))
        laptop.set_level(18)
        laptop.event("BAT0")
        titles = lambda: sorted(asked.title for asked in listener.asked)
        self.soon_equal(titles, ["Low battery", "Try Low Power Mode"], START_SECONDS)


if __name__ == "__main__":
    unittest.main()
