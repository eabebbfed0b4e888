# SPDX-License-Identifier: GPL-3.0-or-later
"""A program's own clock on the wall, which can be set; what counts the time since the start of the machine is left as it
is. (The kernel has no such clock for a single program, so the library libfaketime stands before its calls.)"""

import os
from pathlib import Path

from .laptop import PRELOAD
from .program import TOP

LIBRARY = "faketime/libfaketimeMT.so.1"
SHARED_MEMORY = Path("/dev/shm")


def plain_fstat():
    """The preload that keeps libfaketime and umockdev from waiting for each other."""
    return Path(os.environ.get("VELMORA_PLAIN_FSTAT", TOP / "build/default/bin/velmora_plain_fstat.so")).resolve(True)


class WallClock:
    """Goes right at first."""

    def __init__(self, folder):
        self._file = folder / "wall-clock"
        self.set(0)

    def set(self, seconds):
        """It is ahead by so many seconds from now on."""
        self.ahead = seconds
        fresh = self._file.with_name("fresh-wall-clock")
        fresh.write_text(f"{seconds:+d}\n", encoding="utf-8")
        fresh.chmod(0o644)
        fresh.rename(self._file)

    @property
    def environment(self):
        """Of a program that goes by this clock, on a simulated laptop."""
        library = next(Path("/usr/lib").glob(f"*/{LIBRARY}"))
        return {
            "LD_PRELOAD": f"{PRELOAD}:{plain_fstat()}:{library}",
            "FAKETIME_TIMESTAMP_FILE": str(self._file),
            "FAKETIME_NO_CACHE": "1",
            "FAKETIME_DONT_FAKE_MONOTONIC": "1",
            "NO_FAKE_STAT": "1",
        }

    @staticmethod
    def clean_up(pid):
        """Removes what the library leaves behind of a process that was killed."""
        for name in (f"sem.faketime_sem_{pid}", f"faketime_shm_{pid}"):
            (SHARED_MEMORY / name).unlink(missing_ok=True)
