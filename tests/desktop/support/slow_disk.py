# SPDX-License-Identifier: GPL-3.0-or-later
"""A disk for one program on which syncing takes as long as a test wants: it wakes up, or somebody copies a film to it.
The machine's own disk may be busy with other tests, and then a program does not wait for it for ever."""

import os
from pathlib import Path

from .laptop import PRELOAD
from .program import TOP


class SlowDisk:
    """Fast at first."""

    def __init__(self, folder):
        self._file = folder / "slow-disk"
        self.set(0)

    def set(self, seconds):
        """From now on each sync takes that long."""
        fresh = self._file.with_name("fresh-slow-disk")
        fresh.write_text(str(seconds), encoding="utf-8")
        fresh.chmod(0o644)
        fresh.rename(self._file)

    @property
    def environment(self):
        """The environment of a program with this disk on a simulated laptop."""
        library = os.environ.get("VELMORA_SLOW_DISK_LIBRARY", TOP / "build/default/bin/velmora_slow_disk.so")
        return {"LD_PRELOAD": f"{PRELOAD}:{Path(library).resolve(True)}", "VELMORA_SLOW_DISK": str(self._file)}
