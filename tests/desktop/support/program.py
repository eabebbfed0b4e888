# SPDX-License-Identifier: GPL-3.0-or-later
"""The program under test, started from its bundle on a private desktop."""

import os
from pathlib import Path

from .item import StatusItem

TOP = Path(__file__).resolve().parents[3]

# How a build with sanitizers is to behave; of all variables outside, only these get in.
SANITIZER_OPTIONS = ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS")
SANITIZERS = {key: value for key, value in os.environ.items() if key in SANITIZER_OPTIONS}


def bundle():
    """The bundle to test: the one that the environment names, or the one that `./run.sh` makes."""
    return Path(os.environ.get("VELMORA_BUNDLE", TOP / "build/Velmora.app")).absolute()


def bare_executable():
    """The program as it is linked, outside any bundle: the one that the environment names, or the usual build's."""
    return Path(os.environ.get("VELMORA_EXECUTABLE", TOP / "build/default/bin/velmora")).absolute()


class Program:
    """One start of the program."""

    def __init__(self, desktop, laptop=None, changes=None, app=None):
        """`laptop` is what it sees below /sys (None: the machine itself); `changes` are variables of the desktop's
        environment with another value, or None for those that are to be missing; `app` another bundle than the one
        under test, or an executable without one."""
        environment = desktop.environment | (laptop.environment if laptop else {}) | SANITIZERS | (changes or {})
        environment = {key: value for key, value in environment.items() if value is not None}
        self.item = StatusItem(desktop.bus)
        app = app or bundle()
        self.process = desktop.start("velmora", [app / "AppRun" if app.is_dir() else app], environment)
