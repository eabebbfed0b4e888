# SPDX-License-Identifier: GPL-3.0-or-later
"""The ways in which the program ends."""

import signal
import unittest

from support.case import END_SECONDS, DesktopCase


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
        # The toolkit ends the program then, with a code and a line of its own.
        self.screen.kill_x_server()
        self.program.process.wait_exit(END_SECONDS)

    def test_with_the_popover_open(self):
        self.program.item.menu.choose("Show details")
        self.soon(lambda: self.screen.windows("Velmora"), 2, "the popover is there")
        self.end_by(signal.SIGTERM)

    def test_the_name_is_free_for_the_next_start(self):
        self.end_by(signal.SIGTERM)
        self.start_and_wait(self.screen, self.laptop())


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
