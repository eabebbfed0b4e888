# SPDX-License-Identifier: GPL-3.0-or-later
"""The history file on the disk."""

import json
import os
import time

# Enough that writing them takes a while, so that races and wrong orders show.
OLD_SAMPLES = 40000


def write_old(desktop, count=OLD_SAMPLES):
    """Writes a month of history, or `count` minutes, for the program to find at its start; returns the samples."""
    newest = time.time() - 60
    times = [newest - 60 * number for number in reversed(range(count))]
    samples = [{"t": t, "p": number % 101, "c": False, "a": False} for number, t in enumerate(times)]
    desktop.history_file.parent.mkdir(parents=True)
    desktop.history_file.write_text(json.dumps(samples), encoding="utf-8")
    return samples


def read(desktop):
    """The identity of the current file, and its content."""
    with open(desktop.history_file, "rb") as file:
        return os.fstat(file.fileno()).st_ino, file.read()


def samples(content):
    """The samples, oldest first; the content must be whole."""
    return json.loads(content)


def levels(content):
    """The percentages, oldest first; the content must be whole."""
    return [sample["p"] for sample in json.loads(content)]


def levels_on_disk(desktop):
    """The percentages, oldest first; None before the first save, which the item does not wait for."""
    return levels(read(desktop)[1]) if desktop.history_file.exists() else None
