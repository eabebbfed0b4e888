# SPDX-License-Identifier: GPL-3.0-or-later
"""Waiting for a condition, never for time to pass."""

import time

POLL_SECONDS = 0.02


def wait_until(condition, limit, what):
    """Calls `condition` until it returns something true, and returns that. After `limit` seconds raises AssertionError
    with `what`, which may be a text or a function that returns one, and with how often it looked: a program that does
    not answer, or a machine that is too busy, lets us look only a few times."""
    deadline = time.monotonic() + limit
    looks = 0
    longest = 0
    while True:
        start = time.monotonic()
        result = condition()
        if result:
            return result
        looks += 1
        longest = max(longest, time.monotonic() - start)
        if start >= deadline:
            said = what() if callable(what) else what
            raise AssertionError(f"not within {limit:g} s: {said} ({looks} looks, the longest took {longest:.2f} s)")
        time.sleep(POLL_SECONDS)


def watch(observe, seconds):
    """For that many seconds collects each change in the result of `observe`, with the time since the start. For things
    that must not happen, or not too often: those give no condition to wait for."""
    start = time.monotonic()
    seen = []
    while (passed := time.monotonic() - start) < seconds:
        value = observe()
        if not seen or seen[-1][1] != value:
            seen.append((passed, value))
        time.sleep(POLL_SECONDS)
    return seen
