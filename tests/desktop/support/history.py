# SPDX-License-Identifier: GPL-3.0-or-later
"""What the program remembers of the battery's charge, as it is on the disk."""

import json
import os
import time

# Enough that writing it takes a while: what happens meanwhile, or in the wrong order, then shows.
OLD_SAMPLES = 40000


def write_old(desktop, count=OLD_SAMPLES):
    """A month, or so many minutes, that the program finds when it starts; gives its samples."""
    newest = time.time() - 60
    times = [newest - 60 * number for number in reversed(range(count))]
    samples = [{"t": t, "p": number % 101, "c": False, "a": False} for number, t in enumerate(times)]
    desktop.history_file.parent.mkdir(parents=True)
    desktop.history_file.write_text(json.dumps(samples), encoding="utf-8")
    return samples


def read(desktop):
    """Which file it is now, and what it holds."""
    with open(desktop.history_file, "rb") as file:
        return os.fstat(file.fileno()).st_ino, file.read()


def samples(content):
    """What it holds, oldest first; the content must be whole."""
    return json.loads(content)


def levels(content):
    """The percentages, oldest first; the content must be whole."""
    return [sample["p"] for sample in json.loads(content)]
