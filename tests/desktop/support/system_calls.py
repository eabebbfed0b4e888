# SPDX-License-Identifier: GPL-3.0-or-later
"""The system calls of a program, as recorded by strace."""

import os
import re
from pathlib import Path

# Calls that make a connection or a process, and calls that change something in the file system by name.
TRACED = (
    "socket,connect,bind,execve,execveat,fork,vfork,clone,clone3,"
    "open,openat,openat2,creat,rename,renameat,renameat2,link,linkat,symlink,symlinkat,unlink,unlinkat,"
    "mkdir,mkdirat,rmdir,mknod,mknodat,truncate,chmod,fchmodat,chown,fchownat,lchown,utimensat,"
    "setxattr,lsetxattr,removexattr,mount,umount2,chroot,ptrace,chdir,fchdir"
)

# After the process id: a finished call, or the second half of one that another thread's call interrupted.
LINE = re.compile(r"\A(\d+) +(\w+)\((.*)\) += (-?\d+|0x[0-9a-f]+|\?)(?:<([^>]*)>)?(.*)\Z")
BEGUN = re.compile(r"\A(\d+) +(.*) <unfinished \.\.\.>\Z")
RESUMED = re.compile(r"\A(\d+) +<\.\.\. \w+ resumed>(.*)\Z")
NO_CALL = re.compile(r"\A\d+ +(\+\+\+|---) ")
FOLDER_AND_NAME = re.compile(r'(AT_FDCWD|\d+)<([^>]*)>, "((?:[^"\\]|\\.)*)"')
NAME = re.compile(r'"((?:[^"\\]|\\.)*)"')


class SystemCall:
    """One call and its result."""

    def __init__(self, name, arguments, failed):
        self.name = name
        self.arguments = arguments
        self.failed = failed

    def __repr__(self):
        return f"{self.name}({self.arguments}){' failed' if self.failed else ''}"

    @property
    def writes(self):
        """Whether it would change something in the file system."""
        if self.name in ("open", "openat", "openat2"):
            return bool(re.search(r"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_TMPFILE", self.arguments))
        return self.name.startswith(
            ("creat", "rename", "link", "symlink", "unlink", "mkdir", "rmdir", "mknod", "truncate", "chmod", "fchmod",
             "chown", "fchown", "lchown", "utimensat", "setxattr", "lsetxattr", "removexattr")
        )

    @property
    def paths(self):
        """The files that it names, as full paths."""
        if "at" in self.name.removeprefix("creat") and FOLDER_AND_NAME.search(self.arguments):
            pairs = [(folder, name) for _, folder, name in FOLDER_AND_NAME.findall(self.arguments)]
        else:
            pairs = [("/", name) for name in NAME.findall(self.arguments)]
        return [os.path.normpath(Path(folder) / name) for folder, name in pairs]


def traced(log, command):
    """The command with its system calls, and those of its children, written to the file. The command keeps its process
    id: the tracer is a process beside it."""
    return ["strace", "-D", "-f", "-y", "-q", "-s", "4096", "-e", f"trace={TRACED}", "-o", log, "--", *command]


def system_calls(log):
    """The recorded calls, ordered by their beginnings. Raises ValueError if a line is not understood."""
    calls = []
    begun = {}
    for line in log.read_text(encoding="utf-8", errors="replace").splitlines():
        if NO_CALL.match(line):
            continue
        if half := BEGUN.match(line):
            begun[half[1]] = half[2]
            continue
        if half := RESUMED.match(line):
            line = f"{half[1]} {begun.pop(half[1])}{half[2]}"
        whole = LINE.match(line)
        if not whole:
            raise ValueError(line)
        calls.append(SystemCall(whole[2], whole[3], whole[4].startswith("-")))
    return calls
