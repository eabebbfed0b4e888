# SPDX-License-Identifier: GPL-3.0-or-later
"""Starting where something is missing."""

import shutil
import socket
import unittest

from support.case import END_SECONDS, ESTIMATING, HEALTH_AND_CYCLES, START_SECONDS, DesktopCase
from support.program import bundle

ONE_LINE = r"\A[^\n]*display[^\n]*\n\Z"


class WithoutDisplay(DesktopCase):
    def refused(self, changes):
        """The program's message when it ends because there is no display."""
        desktop = self.desktop(panel=False)
        process = self.start(desktop, self.laptop(), changes).process
        self.assertEqual(process.wait_exit(END_SECONDS), 1)
        self.assertEqual(process.output, "")
        return process.errors

    def test_none_is_named(self):
        self.assertRegex(self.refused({"DISPLAY": None}), ONE_LINE)

    def test_the_named_one_is_not_there(self):
        self.assertRegex(self.refused({"DISPLAY": ":4711"}), ONE_LINE)

    def test_the_named_one_is_a_wayland_display_that_is_not_there(self):
        errors = self.refused({"DISPLAY": None, "WAYLAND_DISPLAY": "nobody"})
        self.assertRegex(errors, ONE_LINE)
        self.assertIn("qt6-wayland", errors)

    def test_the_named_one_does_not_let_us_in(self):
        # libxcb prints a line of its own as well.
        last = self.refused({"XAUTHORITY": None}).rstrip("\n").split("\n")[-1]
        self.assertRegex(last + "\n", ONE_LINE)


class PoorSurroundings(DesktopCase):
    """Everything works as usual, and nothing is written to the terminal."""

    def runs(self, changes=None, app=None, system_bus=True, laptop=None):
        machine = laptop or self.laptop()
        program = self.start_and_wait(self.desktop(panel=False, system_bus=system_bus), machine, changes, app)
        self.assertEqual(program.item.tooltip, [ESTIMATING, *HEALTH_AND_CYCLES])
        self.wrote_nothing(program)

    def test_no_system_bus(self):
        self.runs(system_bus=False)

    def test_no_udev(self):
        laptop = self.laptop()
        laptop.refuse_listeners()
        self.runs(laptop=laptop)

    def test_no_locale(self):
        self.runs({"LANG": None})

    def test_the_locale_of_no_country(self):
        self.runs({"LC_ALL": "C"})

    def test_a_locale_that_is_not_installed(self):
        self.runs({"LC_ALL": "xx_YY.UTF-8"})

    def test_a_locale_that_is_not_installed_and_gtk_which_complains(self):
        self.runs({"LC_ALL": "xx_YY.UTF-8", "QT_QPA_PLATFORMTHEME": "gtk3"})

    def test_no_runtime_folder(self):
        self.runs({"XDG_RUNTIME_DIR": None})

    def test_no_folders_named(self):
        self.runs({key: None for key in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME")})

    def test_no_desktop_named(self):
        self.runs({"XDG_CURRENT_DESKTOP": None, "XDG_SESSION_TYPE": None})

    def test_another_place_for_the_bundle(self):
        desktop = self.desktop(panel=False)
        moved = desktop.home / "My Applications/Battery.app"
        shutil.copytree(bundle(), moved, symlinks=True)
        program = self.start_and_wait(desktop, self.laptop(), app=moved)
        theme = program.item.get("IconThemePath")
        self.assertTrue(theme.startswith(str(moved)), theme)
        self.assertTrue(theme.endswith("/icons"), theme)


class WithASessionManager(DesktopCase):
    def test_it_is_left_alone(self):
        # A session manager that knows the program starts it at the next login, and so does the autostart entry; the
        # second of the two starts would open the details. And one that does not answer must not delay the start.
        desktop = self.desktop(panel=False)
        with socket.socket(socket.AF_UNIX) as manager:
            manager.bind(str(desktop.runtime / "session-manager"))
            manager.listen()
            manager.setblocking(False)
            address = f"local/{socket.gethostname()}:{manager.getsockname()}"
            self.start_and_wait(desktop, self.laptop(), {"SESSION_MANAGER": address})
            with self.assertRaises(BlockingIOError):
                manager.accept()


class NoSessionBus(DesktopCase):
    def test_ends_without_hanging(self):
        desktop = self.desktop(panel=False)
        nobody = f"unix:path={desktop.runtime}/nobody-listens-here"
        process = self.start(desktop, self.laptop(), {"DBUS_SESSION_BUS_ADDRESS": nobody}).process
        self.assertEqual(process.wait_exit(END_SECONDS), 1)
        self.assertEqual(process.output, "")
        self.assertEqual(process.errors.count("\n"), 1)
        self.assertIn("session bus", process.errors)


class RefusedByTheSessionBus(DesktopCase):
    def test_says_so(self):
        desktop = self.desktop(panel=False)
        desktop.refuse_name("app.velmora.Velmora")
        process = self.start(desktop, self.laptop()).process
        self.assertEqual(process.wait_exit(END_SECONDS), 1)
        self.assertRegex(process.errors, r"\A[^\n]*its name\n\Z")


class AfterACrash(DesktopCase):
    def test_what_was_half_written_is_removed(self):
        screen = self.desktop(panel=False)
        halves = [screen.home / ".local/share/Velmora/.history.json.velmora-Ab3xY9",
                  screen.config / "Velmora/.defaults.json.velmora-Ab3xY9"]
        for half in halves:
            half.parent.mkdir(parents=True)
            half.write_text("{", encoding="utf-8")
        self.start_and_wait(screen, self.laptop())
        self.soon(lambda: not any(half.exists() for half in halves), START_SECONDS, "both are gone")


if __name__ == "__main__":
    unittest.main()
