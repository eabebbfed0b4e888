# SPDX-License-Identifier: GPL-3.0-or-later
"""Counts the readings of a simulated supply."""

import ctypes
import os
import struct
import time

from .waiting import wait_until

IN_OPEN = 0x20
# The program opens this attribute once in each reading, for any kind of supply. Other attributes may be opened before
# and after a look at the counter, so that one reading would seem two.
ONCE_IN_A_READING = "type"
EVENT_HEADER = struct.Struct("=iIII")


class ReadCounter:
    """Watches the attribute files of one supply and sees each time that one is opened."""

    def __init__(self, laptop, name):
        libc = ctypes.CDLL(None, use_errno=True)
        folder = laptop.attribute_file(name, "type").parent
        self._descriptor = libc.inotify_init1(os.O_NONBLOCK | os.O_CLOEXEC)
        if self._descriptor < 0 or libc.inotify_add_watch(self._descriptor, bytes(folder), IN_OPEN) < 0:
            raise OSError(ctypes.get_errno(), f"cannot watch {folder}")

    def close(self):
        os.close(self._descriptor)

    def readings(self):
        """The number of readings that have begun since the last call."""
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
    """Waits until there has been no reading for that many seconds."""
    last = time.monotonic()

    def quiet():
        nonlocal last
        if counter.readings():
            last = time.monotonic()
        return time.monotonic() - last > seconds

    wait_until(quiet, limit, f"{seconds} seconds without a reading")


def readings_over_time(counter, act, seconds, rate):
    """Calls `act` `rate` times a second; returns the time of each reading seen meanwhile, in seconds."""
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
