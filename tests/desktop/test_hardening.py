# SPDX-License-Identifier: GPL-3.0-or-later
"""How the program is built: the compiler's and the linker's protections against the exploitation of bugs."""

import os
import re
import subprocess
import unittest

from support.program import bundle

OPTIMISED = os.environ.get("VELMORA_OPTIMISED", "1") == "1"


def files():
    """The program and its plugins."""
    usr = bundle() / "usr"
    return [usr / "bin/velmora", *sorted(usr.glob("lib/**/*.so"))]


def readelf(option, file):
    command = ["readelf", "--wide", option, file]
    return subprocess.run(command, capture_output=True, text=True, check=True, env=os.environ | {"LC_ALL": "C"}).stdout


class Hardening(unittest.TestCase):
    """readelf writes a lot, so a failure names only the file."""

    def each(self, option, expression, wanted=True, chosen=None):
        """The expression is found in readelf's output for each of the files, or for none of them."""
        self.assertGreater(len(files()), 1)
        for file in chosen or files():
            with self.subTest(file=file.name, expression=expression):
                self.assertIs(re.search(expression, readelf(option, file)) is not None, wanted)

    def test_code_can_be_at_any_address(self):
        self.each("--file-header", r"Type: +DYN ")
        self.each("--dynamic", "TEXTREL", wanted=False)

    def test_what_the_linker_filled_in_cannot_be_changed(self):
        self.each("--program-headers", "GNU_RELRO")
        self.each("--dynamic", r"BIND_NOW|Flags:.* NOW")

    def test_data_does_not_run(self):
        self.each("--program-headers", r"GNU_STACK .* RW +0x")

    def test_no_library_comes_from_a_folder_of_the_builders(self):
        self.each("--dynamic", "RPATH|RUNPATH", wanted=False)

    def test_the_stack_is_guarded(self):
        self.each("--dyn-syms", r"\b__stack_chk_fail\b")

    def test_calls_of_the_c_library_are_checked(self):
        if OPTIMISED:  # _FORTIFY_SOURCE works only with optimisation
            self.each("--dyn-syms", r" __\w+_chk@", chosen=files()[:1])


if __name__ == "__main__":
    unittest.main()
