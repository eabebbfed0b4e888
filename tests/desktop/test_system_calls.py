# SPDX-License-Identifier: GPL-3.0-or-later
"""A day with the program and all of its system calls: it talks to this machine only, starts nothing, and writes only to
the documented places."""

import re
import shlex
import unittest

from support import history
from support.faults import SHOW_SECONDS, FaultCase
from support.logind import Logind
from support.notifications import Dunst
from support.program import bundle
from support.system_calls import system_calls, traced

START_SECONDS = 30
WAKE_SECONDS = 15
SETTINGS = "Velmora Settings"
LAUNCH_AT_LOGIN = ["shift+Tab", "shift+Tab", "shift+Tab"]  # from the first control backwards to the last ones
SHOW_TIME = ["shift+Tab"]
EXPORT = ["Tab", "Tab"]

# The name of a file until it is complete.
UNFINISHED = r"(\.{name}\.velmora-\w{{6}}|{name})"


class Traced(FaultCase):
    def start_traced(self, machine):
        """Starts the program under strace from its first system call on."""
        self.log = self.screen.folder / "system-calls"
        script = self.screen.folder / "traced"
        command = traced(self.log, [bundle() / "AppRun"])
        script.write_text(f"#!/bin/sh\nexec {shlex.join(map(str, command))}\n", encoding="utf-8")
        script.chmod(0o755)
        self.program = self.start(self.screen, machine, app=script)
        self.item = self.program.item
        self.soon(lambda: self.item.tooltip, START_SECONDS, lambda: f"the item is there; {self.program.process.errors}")

    def check(self):
        """Checks the calls of a run that has ended."""
        self.soon(self.tracer_is_done, SHOW_SECONDS, "all is written down")
        calls = system_calls(self.log)
        self.assertEqual([call.name for call in calls if call.name.startswith("exec")], ["execve"], "it starts nothing")
        self.assertIn(f'"{bundle() / "AppRun"}"', calls[0].arguments)
        children = [call for call in calls if call.name in ("fork", "vfork", "clone", "clone3")]
        self.assertEqual([call for call in children if "CLONE_THREAD" not in call.arguments], [], "it has no children")
        self.assertEqual([call for call in calls if call.name == "ptrace"], [])
        sockets = [call for call in calls if call.name == "socket"]
        local = re.compile(r"\AAF_UNIX,|\AAF_NETLINK, .*, NETLINK_KOBJECT_UEVENT\Z")
        self.assertEqual([call for call in sockets if not local.search(call.arguments)], [], "it stays on this machine")
        self.assertTrue(sockets, "the log is empty")
        addresses = [call for call in calls if call.name in ("connect", "bind")]
        self.assertEqual([call for call in addresses if not re.search(r"sa_family=AF_(UNIX|NETLINK)", call.arguments)], [])
        return calls

    def tracer_is_done(self):
        return self.log.read_text(encoding="utf-8", errors="replace").rstrip().endswith("+++ exited with 0 +++")

    def check_writes(self, calls, allowed):
        """Everything that is made, changed or removed, even without success, is in one of these places."""
        writing = [call for call in calls if call.writes]
        place = re.compile("|".join(allowed))
        strange = [(call, path) for call in writing for path in call.paths if not place.fullmatch(path)]
        self.assertEqual(strange, [])
        self.assertEqual([call for call in writing if not call.paths], [], "a call without a name")
        return {path for call in writing if not call.failed for path in call.paths}


class Day(Traced):
    def test_on_a_simulated_laptop(self):
        self.prepare(self.desktop(ordinary_user=False))
        shown = Dunst(self.screen)
        shown.start()
        logind = Logind(self.screen, lambda: None)
        self.addCleanup(logind.close)
        self.machine = self.laptop()
        self.seen = [64]
        self.start_traced(self.machine)
        self.soon(lambda: self.item.registered, START_SECONDS, "the panel has the item")
        self.soon_equal(lambda: logind.locks, 1, START_SECONDS)

        self.remind(shown)
        self.look()
        self.settle()
        self.sleep(logind)
        self.item.menu.choose("Quit")
        self.ends_cleanly(self.program, START_SECONDS)

        calls = self.check()
        home = re.escape(str(self.screen.home))
        written = self.check_writes(calls, [
            rf"{home}/\.local/share/Velmora/" + UNFINISHED.format(name=r"history\.json"),
            rf"{home}/\.config/Velmora/" + UNFINISHED.format(name=r"defaults\.json"),
            rf"{home}/\.config/autostart/" + UNFINISHED.format(name=r"app\.velmora\.Velmora\.desktop"),
            rf"{home}/" + UNFINISHED.format(name=r"Velmora-history\.csv"),
            rf"{home}/\.local/state/Velmora(/.*)?",
            rf"{home}/\.cache(/.*)?",
            rf"{home}/(\.config|\.local|\.local/share|\.local/state)(/Velmora|/autostart)?",  # made if missing
            re.escape(str(self.screen.runtime)),  # likewise; it exists
            r"/dev/null",
            r"/proc/self/task/\d+/comm",  # thread names
            rf"{re.escape(str(self.machine.root))}/event\d+",  # umockdev's socket for the kernel's events
        ])
        for file in (self.screen.history_file, self.screen.defaults_file, self.autostart, self.csv):
            self.assertIn(str(file), written, "it was not seen being written")

    def remind(self, shown):
        self.change_level(95)
        self.machine.plug()
        self.soon_equal(shown.count, 1, START_SECONDS)
        self.machine.unplug()
        self.soon_equal(shown.count, 0, START_SECONDS)
        self.change_level(60)
        self.item.menu.choose("Snooze alerts for 1 hour")

    def look(self):
        self.item.menu.choose("Show details")
        self.window_comes("Velmora")
        self.screen.press("Escape")
        self.window_goes("Velmora")

    def settle(self):
        """Changes a preference, switches on the start at login and exports the history, all by keyboard."""
        self.autostart = self.screen.config / "autostart/app.velmora.Velmora.desktop"
        self.csv = self.screen.home / "Velmora-history.csv"
        self.item.menu.choose("Settings…")
        self.window_comes(SETTINGS)
        self.press_until([*LAUNCH_AT_LOGIN, "space"], self.autostart.exists)
        before = self.screen.defaults_file.read_text(encoding="utf-8")
        self.press_until([*SHOW_TIME, "space"], lambda: self.screen.defaults_file.read_text(encoding="utf-8") != before)
        self.press_until([*EXPORT, "space"], lambda: self.screen.windows("Save As"))
        self.press_until(["Return"], self.csv.exists)
        self.assertGreater(len(self.csv.read_text(encoding="utf-8").splitlines()), history.OLD_SAMPLES)
        self.window_goes("Save As")

    def sleep(self, logind):
        logind.announce(True)
        self.soon_equal(lambda: logind.locks, 0, START_SECONDS)
        self.machine.set_level(50)
        logind.announce(False)
        self.soon(lambda: self.item.label.startswith(" 50%"), WAKE_SECONDS, "the new level is read")

    def press_until(self, keys, condition):
        for key in keys:
            self.screen.press(key)
        self.soon(condition, START_SECONDS, f"it happens after {keys}")

    def window_comes(self, title):
        self.soon(lambda: self.screen.windows(title), START_SECONDS, f"{title} is there")

    def window_goes(self, title):
        self.soon(lambda: not self.screen.windows(title), START_SECONDS, f"{title} is gone")


class Machine(Traced):
    def test_on_this_machine(self):
        """Without umockdev: the program asks the kernel itself for power supplies and events."""
        self.screen = self.desktop(panel=False)
        self.start_traced(None)
        self.assertEqual(self.program.process.stop(), 0)
        families = {call.arguments.split(",")[0] for call in self.check() if call.name == "socket"}
        self.assertEqual(families, {"AF_UNIX", "AF_NETLINK"})


if __name__ == "__main__":
    unittest.main()
