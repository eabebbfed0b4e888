# SPDX-License-Identifier: GPL-3.0-or-later
"""A wall clock for one program, which can be set; the clocks that count from the start of the machine are left alone.
(The kernel has no wall clock for a single program, so libfaketime is preloaded.)"""

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
    """Right at first."""

    def __init__(self, folder):
        self._file = folder / "wall-clock"
        self.set(0)

    def set(self, seconds):
        """From now on it is ahead by that many seconds."""
        self.ahead = seconds
        fresh = self._file.with_name("fresh-wall-clock")
        fresh.write_text(f"{seconds:+d}\n", encoding="utf-8")
        fresh.chmod(0o644)
        fresh.rename(self._file)

    @property
    def environment(self):
        """The environment of a program with this clock on a simulated laptop."""
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
        """Removes the files that libfaketime leaves behind when its process was killed."""
        for name in (f"sem.faketime_sem_{pid}", f"faketime_shm_{pid}"):
            (SHARED_MEMORY / name).unlink(missing_ok=True)
