# SPDX-License-Identifier: GPL-3.0-or-later
"""Programs that the tests start and end; none outlives the process that runs the tests."""

import signal
import subprocess
from pathlib import Path

from .waiting import wait_until

STOP_SECONDS = 5


class Process:
    """One program, with its output kept in files."""

    def __init__(self, name, command, environment, log_folder, pass_fds=(), user=None):
        """Starts `command` with exactly this environment, as the user with this number if one is given; its output goes
        to NAME.out and NAME.err in `log_folder`."""
        self.name = name
        self.output_file = log_folder / f"{name}.out"
        self.error_file = log_folder / f"{name}.err"
        # Our parent may ignore the signals that end a program, and that is inherited. When we are killed, the kernel
        # kills the programs that we started.
        wrapper = ["env", "--default-signal=HUP,INT,TERM", "setpriv", "--pdeathsig", "KILL", "--"]
        if user is not None:
            # First of all: the kernel resets the parent-death signal when the user changes.
            wrapper = ["setpriv", f"--reuid={user}", f"--regid={user}", "--clear-groups", "--", *wrapper]
        with open(self.output_file, "wb") as output, open(self.error_file, "wb") as error:
            self._process = subprocess.Popen(
                [*wrapper, *map(str, command)],
                env=environment,
                stdin=subprocess.DEVNULL,
                stdout=output,
                stderr=error,
                pass_fds=pass_fds,
                cwd=log_folder,
            )

    @property
    def pid(self):
        return self._process.pid

    @property
    def exit_code(self):
        """The exit code, the negated signal number when a signal ended it, or None while it runs."""
        return self._process.poll()

    @property
    def running(self):
        return self.exit_code is None

    @property
    def output(self):
        return self.output_file.read_text(encoding="utf-8", errors="replace")

    @property
    def errors(self):
        return self.error_file.read_text(encoding="utf-8", errors="replace")

    def send(self, number):
        self._process.send_signal(number)

    def wait_exit(self, limit):
        """Waits for the end, at most `limit` seconds; returns the exit code."""
        wait_until(lambda: not self.running, limit, f"{self.name} ends; it wrote: {self.output}{self.errors}")
        return self.exit_code

    def stop(self):
        """Ends the program, by force if it does not react; returns its exit code."""
        if self.running:
            self.send(signal.SIGTERM)
            try:
                self.wait_exit(STOP_SECONDS)
            except AssertionError:
                self.kill()
        return self.exit_code

    def kill(self):
        """Kills the program."""
        self.send(signal.SIGKILL)
        self._process.wait()


def children(pid):
    """The processes whose parent this is, by number, with their names."""
    found = {}
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            fields = (folder / "stat").read_text(encoding="utf-8", errors="replace")
        except OSError:  # it has just ended
            continue
        # The name is in brackets and may contain some itself.
        name, rest = fields.split("(", 1)[1].rsplit(")", 1)
        if int(rest.split()[1]) == pid:
            found[int(folder.name)] = name
    return found
