# SPDX-License-Identifier: GPL-3.0-or-later
"""Figures of the kernel and of strace about a running process."""

import re
import subprocess
from pathlib import Path

# The last one continues a wait that strace interrupted when it attached.
WAITS = (
    "poll,ppoll,select,pselect6,epoll_wait,epoll_pwait,epoll_pwait2,nanosleep,clock_nanosleep,timerfd_settime,"
    "restart_syscall"
)


def memory(pid):
    """The memory of a process in KiB, by the kernel's names."""
    text = Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="utf-8")
    return {key: int(value) for key, value in re.findall(r"^(\w+):\s+(\d+) kB", text, re.MULTILINE)}


def memory_by_file(pid):
    """The memory of a process in KiB by the name of the file that is mapped, and by the kernel's names; the stack, the
    heap and all else that no file is behind is "anonymous"."""
    files = {}
    of_file = {}
    for line in Path(f"/proc/{pid}/smaps").read_text(encoding="utf-8").splitlines():
        key, value = line.split(maxsplit=1)
        if not key.endswith(":"):  # the first line of a mapping: addresses, access, offset, device, inode, path
            path = line.split(maxsplit=5)[5:]
            name = Path(path[0]).name if path and path[0].startswith("/") else "anonymous"
            of_file = files.setdefault(name, {})
        elif value.endswith(" kB"):
            of_file[key[:-1]] = of_file.get(key[:-1], 0) + int(value.split()[0])
    return files


def _of_all_threads(pid, file):
    for path in Path(f"/proc/{pid}/task").glob(f"*/{file}"):
        yield path.read_text(encoding="utf-8")


def voluntary_switches(pid):
    """The voluntary context switches of all threads: a thread goes to sleep in each, and so is woken once."""
    pattern = re.compile(r"^voluntary_ctxt_switches:\s+(\d+)", re.MULTILINE)
    return sum(int(pattern.search(status)[1]) for status in _of_all_threads(pid, "status"))


def cpu_seconds(pid):
    """The CPU time of the living threads by the scheduler's own clock, much finer than the ticks of other tools."""
    return sum(int(text.split()[0]) for text in _of_all_threads(pid, "schedstat")) / 1e9


def threads(pid):
    """The names of the threads, the main thread's first."""
    return [text.strip() for text in _of_all_threads(pid, "comm")]


def open_files(pid):
    return len(list(Path(f"/proc/{pid}/fd").iterdir()))


class WaitTrace:
    """Traces the waits of a process with strace, in the background."""

    def __init__(self, pid, seconds):
        trace = ["strace", "-f", "-q", "-e", f"trace={WAITS}", "-p", str(pid)]
        command = ["timeout", "--signal=INT", str(seconds), *trace]
        self._run = subprocess.Popen(command, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, text=True)

    def result(self):
        """How many waits ended by their time limit and how many by an arrival, and how many kernel timers were set."""
        text = self._run.communicate()[1]
        lines = text.splitlines()
        if self._run.returncode != 124 or any("Operation not permitted" in line for line in lines):
            raise SystemExit("strace did not run to its end:\n" + text)
        limits = sum(bool(re.search(r"\)\s+= 0( \(Timeout\))?$", line)) and "timerfd" not in line for line in lines)
        # A call with the limit 0 is not a wait: the loop checks for more work before it goes to sleep.
        looks = sum(bool(re.search(r", 0\)\s+= 0( \(Timeout\))?$", line)) for line in lines)
        arrivals = sum(bool(re.search(r"\)\s+= [1-9]\d*( |$)", line)) for line in lines)
        return limits - looks, arrivals, sum("timerfd_settime" in line for line in lines)
