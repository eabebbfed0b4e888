# SPDX-License-Identifier: GPL-3.0-or-later
"""Waiting for something to come true, never for time to pass."""

import time

POLL_SECONDS = 0.02


def wait_until(condition, limit, what):
    """Asks `condition` until it gives something true, and gives that. After `limit` seconds: AssertionError with
    `what`, which may be a text or a function that gives one."""
    deadline = time.monotonic() + limit
    while True:
        late = time.monotonic() >= deadline
        result = condition()
        if result:
            return result
        if late:
            raise AssertionError(f"not within {limit:g} s: {what() if callable(what) else what}")
        time.sleep(POLL_SECONDS)


def watch(observe, seconds):
    """Collects what `observe` gives, with the time since the start, each time it differs from the one before, for that
    long. For what must not happen, or not too often: there is nothing to wait for then."""
    start = time.monotonic()
    seen = []
    while (passed := time.monotonic() - start) < seconds:
        value = observe()
        if not seen or seen[-1][1] != value:
            seen.append((passed, value))
        time.sleep(POLL_SECONDS)
    return seen
