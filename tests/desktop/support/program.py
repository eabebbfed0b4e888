# SPDX-License-Identifier: GPL-3.0-or-later
"""The program under test, started from its bundle on a private desktop."""

import os
from pathlib import Path

from .item import StatusItem

TOP = Path(__file__).resolve().parents[3]

# Options for a build with sanitizers; the only variables that the program inherits from outside.
SANITIZER_OPTIONS = ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS")
SANITIZERS = {key: value for key, value in os.environ.items() if key in SANITIZER_OPTIONS}


def bundle():
    """The bundle to test: the one named in the environment, or the one that `./run.sh` makes."""
    return Path(os.environ.get("VELMORA_BUNDLE", TOP / "build/Velmora.app")).absolute()


def bare_executable():
    """The linked program outside any bundle: the one named in the environment, or the default build's."""
    return Path(os.environ.get("VELMORA_EXECUTABLE", TOP / "build/default/bin/velmora")).absolute()


class Program:
    """One start of the program."""

    def __init__(self, desktop, laptop=None, changes=None, app=None):
        """`laptop` is the laptop that it sees below /sys (None: the machine itself); `changes` are variables that
        differ from the desktop's environment, None for a variable to be unset; `app` is another bundle than the one
        under test, or an executable without one."""
        environment = desktop.environment | (laptop.environment if laptop else {}) | SANITIZERS | (changes or {})
        environment = {key: value for key, value in environment.items() if value is not None}
        self.item = StatusItem(desktop.bus)
        app = app or bundle()
        self.process = desktop.start("velmora", [app / "AppRun" if app.is_dir() else app], environment)
