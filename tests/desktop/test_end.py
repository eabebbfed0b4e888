# SPDX-License-Identifier: GPL-3.0-or-later
"""The ways in which the program ends."""

import os
import signal
import time
import unittest

from support import history
from support.case import END_SECONDS, DesktopCase

SHOW_SECONDS = 2
KILLS = 3


class End(DesktopCase):
    def setUp(self):
        self.screen = self.desktop(panel=False)
        self.program = self.start_and_wait(self.screen, self.laptop())

    def end_by(self, number):
        self.program.process.send(number)
        self.ends_cleanly(self.program)

    def test_when_asked_to_terminate(self):
        self.end_by(signal.SIGTERM)

    def test_when_interrupted(self):
        self.end_by(signal.SIGINT)

    def test_when_the_terminal_is_closed(self):
        self.end_by(signal.SIGHUP)

    def test_when_the_session_bus_goes(self):
        self.screen.kill_session_bus()
        self.ends_cleanly(self.program)

    def test_when_the_x_server_goes(self):
        # Qt then ends the program, with its own exit code and message.
        self.screen.kill_x_server()
        self.program.process.wait_exit(END_SECONDS)

    def test_with_the_popover_open(self):
        self.program.item.menu.choose("Show details")
        self.soon(lambda: self.screen.windows("Velmora"), 2, "the popover is there")
        self.end_by(signal.SIGTERM)

    def test_the_name_is_free_for_the_next_start(self):
        self.end_by(signal.SIGTERM)
        self.start_and_wait(self.screen, self.laptop())


class HistoryAtTheEnd(DesktopCase):
    """The last reading is on the disk afterwards, even if it was not there before."""

    def begin(self, changes=None):
        self.screen = self.desktop(panel=False)
        machine = self.laptop()
        self.program = self.start_and_wait(self.screen, machine, changes)
        machine.set_level(61)
        machine.event("BAT0")
        self.soon_equal(lambda: self.program.item.label, " 61%", SHOW_SECONDS)
        self.soon_equal(self.levels, [64], SHOW_SECONDS)

    def levels(self):
        return history.levels_on_disk(self.screen)

    def check(self):
        self.program.process.wait_exit(END_SECONDS)
        self.assertEqual(self.levels(), [64, 61])

    def test_when_asked_to_terminate(self):
        self.begin()
        self.program.process.send(signal.SIGTERM)
        self.check()

    def test_when_the_terminal_is_closed(self):
        self.begin()
        self.program.process.send(signal.SIGHUP)
        self.check()

    def test_when_quit_is_chosen(self):
        self.begin()
        self.program.item.menu.choose("Quit")
        self.check()

    def test_when_the_session_bus_goes(self):
        self.begin()
        self.screen.kill_session_bus()
        self.check()

    def test_when_the_x_server_goes(self):
        self.begin()
        self.screen.kill_x_server()
        self.check()

    def test_when_the_x_server_goes_and_gtk_is_the_first_to_notice(self):
        # GTK has an X11 connection of its own.
        self.begin({"QT_QPA_PLATFORMTHEME": "gtk3"})
        self.screen.kill_x_server()
        self.check()


class Killed(DesktopCase):
    def test_while_it_writes_the_history_which_is_whole(self):
        screen = self.desktop(panel=False)
        history.write_old(screen)
        interrupted = 0
        number = history.OLD_SAMPLES
        for _ in range(KILLS):
            machine = self.laptop()
            process = self.start_and_wait(screen, machine).process
            levels = lambda: history.levels(history.read(screen)[1])
            self.soon(lambda: len(levels()) > number, SHOW_SECONDS, "the first reading is saved")
            before = levels()
            number = len(before)
            machine.plug()
            half = self.wait_for_half_written(screen)
            process.kill()
            after = history.levels(history.read(screen)[1])
            self.assertIn(after, (before, [*before, 64]))
            interrupted += half is not None and half.exists()
        self.assertGreater(interrupted, 0, "it was never killed in the middle")

    @staticmethod
    def wait_for_half_written(screen):
        """The temporary file that is to become the history; None if it was not seen. It does not exist for long, so
        there is no pause between two looks."""
        folder = screen.history_file.parent
        deadline = time.monotonic() + SHOW_SECONDS
        while time.monotonic() < deadline:
            for name in os.listdir(folder):
                if name.startswith(".history.json"):
                    return folder / name
        return None


class EndInThePanel(DesktopCase):
    def test_takes_the_item_along(self):
        desktop = self.desktop()
        program = self.start_and_wait(desktop, self.laptop())
        self.assertEqual(len(desktop.registered_items()), 1)
        program.process.send(signal.SIGTERM)
        self.ends_cleanly(program)
        self.soon_equal(desktop.registered_items, [], 2)


class EndAtOnce(DesktopCase):
    def test_when_asked_as_soon_as_the_name_is_taken(self):
        desktop = self.desktop()
        program = self.start(desktop, self.laptop())
        self.soon(lambda: program.item.owner, 10, "the name is taken")
        program.process.send(signal.SIGTERM)
        self.ends_cleanly(program)


if __name__ == "__main__":
    unittest.main()
