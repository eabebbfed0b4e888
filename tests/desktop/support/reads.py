# SPDX-License-Identifier: GPL-3.0-or-later
"""Counts how often the attributes of a simulated supply are read."""

import ctypes
import os
import struct
import time

from .waiting import wait_until

IN_OPEN = 0x20
# The program opens it once in each reading, whatever the supply is. Other attributes may be opened before and after a
# look at the counter, and would make one reading seem two.
ONCE_IN_A_READING = "type"
EVENT_HEADER = struct.Struct("=iIII")


class ReadCounter:
    """Sees every opening of an attribute file of one supply from its creation on."""

    def __init__(self, laptop, name):
        libc = ctypes.CDLL(None, use_errno=True)
        folder = laptop.attribute_file(name, "type").parent
        self._descriptor = libc.inotify_init1(os.O_NONBLOCK | os.O_CLOEXEC)
        if self._descriptor < 0 or libc.inotify_add_watch(self._descriptor, bytes(folder), IN_OPEN) < 0:
            raise OSError(ctypes.get_errno(), f"cannot watch {folder}")

    def close(self):
        os.close(self._descriptor)

    def readings(self):
        """How many readings have begun since the last call."""
        begun = 0
        while True:
            try:
                data = os.read(self._descriptor, 65536)
            except BlockingIOError:
                return begun
            position = 0
            while position < len(data):
                _, _, _, length = EVENT_HEADER.unpack_from(data, position)
                position += EVENT_HEADER.size
                begun += data[position : position + length].rstrip(b"\0") == ONCE_IN_A_READING.encode()
                position += length


def wait_for_quiet(counter, seconds, limit):
    """Waits until there was no reading for so many seconds."""
    last = time.monotonic()

    def quiet():
        nonlocal last
        if counter.readings():
            last = time.monotonic()
        return time.monotonic() - last > seconds

    wait_until(quiet, limit, f"{seconds} seconds without a reading")


def readings_over_time(counter, act, seconds, rate):
    """Calls `act` so many times a second; gives the moment of each reading that was seen meanwhile, in seconds."""
    start = time.monotonic()
    moments = []
    for number in range(int(seconds * rate)):
        act()
        next_turn = start + (number + 1) / rate
        while True:
            moments += [time.monotonic() - start] * counter.readings()
            left = next_turn - time.monotonic()
            if left <= 0:
                break
            time.sleep(left)
    return moments
