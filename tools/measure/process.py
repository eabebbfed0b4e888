# SPDX-License-Identifier: GPL-3.0-or-later
"""What the kernel and strace say about a running process."""

import re
import subprocess
from pathlib import Path

# The last is how a wait goes on that was interrupted when strace came.
WAITS = (
    "poll,ppoll,select,pselect6,epoll_wait,epoll_pwait,epoll_pwait2,nanosleep,clock_nanosleep,timerfd_settime,"
    "restart_syscall"
)


def memory(pid):
    """Kibibytes by the kernel's names."""
    text = Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="utf-8")
    return {key: int(value) for key, value in re.findall(r"^(\w+):\s+(\d+) kB", text, re.MULTILINE)}


def _of_all_threads(pid, file):
    for path in Path(f"/proc/{pid}/task").glob(f"*/{file}"):
        yield path.read_text(encoding="utf-8")


def voluntary_switches(pid):
    """Of all threads; each is one time that a thread went to sleep, and so also one time that it was woken."""
    pattern = re.compile(r"^voluntary_ctxt_switches:\s+(\d+)", re.MULTILINE)
    return sum(int(pattern.search(status)[1]) for status in _of_all_threads(pid, "status"))


def cpu_seconds(pid):
    """Of the threads that there are, by the scheduler's own clock: much finer than the ticks that other tools show."""
    return sum(int(text.split()[0]) for text in _of_all_threads(pid, "schedstat")) / 1e9


def threads(pid):
    """Their names, the main thread's first."""
    return [text.strip() for text in _of_all_threads(pid, "comm")]


def open_files(pid):
    return len(list(Path(f"/proc/{pid}/fd").iterdir()))


class WaitTrace:
    """Follows the waits of a process with strace, beside whatever else is done meanwhile."""

    def __init__(self, pid, seconds):
        trace = ["strace", "-f", "-q", "-e", f"trace={WAITS}", "-p", str(pid)]
        command = ["timeout", "--signal=INT", str(seconds), *trace]
        self._run = subprocess.Popen(command, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, text=True)

    def result(self):
        """How many waits ended by their time limit, how many by an arrival, and how many kernel timers were set."""
        text = self._run.communicate()[1]
        lines = text.splitlines()
        if self._run.returncode != 124 or any("Operation not permitted" in line for line in lines):
            raise SystemExit("strace did not run to its end:\n" + text)
        limits = sum(bool(re.search(r"\)\s+= 0( \(Timeout\))?$", line)) and "timerfd" not in line for line in lines)
        # A wait with the limit 0 is none: a loop that looks whether there is more to do before it goes to sleep.
        looks = sum(bool(re.search(r", 0\)\s+= 0( \(Timeout\))?$", line)) for line in lines)
        arrivals = sum(bool(re.search(r"\)\s+= [1-9]\d*( |$)", line)) for line in lines)
        return limits - looks, arrivals, sum("timerfd_settime" in line for line in lines)
