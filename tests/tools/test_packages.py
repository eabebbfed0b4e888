# SPDX-License-Identifier: GPL-3.0-or-later
"""How run.sh and test.sh install their packages: with apt while another program uses it, and on systems without apt."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).parents[2] / "tools/packages.sh"
LISTS = ("BUILD", "LAYER_SHELL", "DESKTOP", "WINDOW", "PACKAGE", "TEST", "FORMAT", "CHECK")

# The packages for building and testing are installed wherever this runs.
INSTALLED = '"${BUILD_PACKAGES[@]}" "${DESKTOP_PACKAGES[@]}" "${PACKAGE_PACKAGES[@]}" "${TEST_PACKAGES[@]}"'


class Packages(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="velmora-packages-")
        self.addCleanup(folder.cleanup)
        self.commands = Path(folder.name) / "bin"
        self.commands.mkdir()
        self.calls = Path(folder.name) / "calls"

    def have_commands_except(self, *names):
        """Provides all commands of the system but these."""
        for place in os.environ["PATH"].split(":"):
            for command in Path(place).glob("*"):
                link = self.commands / command.name
                if command.name not in names and not link.is_symlink():
                    link.symlink_to(command)

    def have_apt(self, *answers):
        """Provides an apt-get that records its calls and answers with these commands in turn, repeating the last one;
        no package is installed."""
        self.have_commands_except("apt-get", "dpkg-query", "sudo", "sleep")
        cases = "".join(f"{count}) {answer} ;;\n" for count, answer in enumerate(answers[:-1], 1))
        note = f'echo "$LC_ALL $@" >>{self.calls}'
        self.command("apt-get", f"{note}\ncase $(wc -l <{self.calls}) in\n{cases}*) {answers[-1]}\nesac")
        self.command("dpkg-query", 'for name; do [ "$name" != base-files ] || exit 0; done; exit 1')
        self.command("sudo", '"$@"')
        self.command("sleep", ":")

    def command(self, name, script):
        file = self.commands / name
        file.unlink(missing_ok=True)  # it may be a link to the system's own
        file.write_text(f"#!/bin/sh\n{script}\n", encoding="utf-8")
        file.chmod(0o755)

    def run_bash(self, script):
        return subprocess.run(
            ["/bin/bash", "-euo", "pipefail", "-c", f". {SCRIPT}\n{script}"],
            env=os.environ | {"PATH": str(self.commands)}, capture_output=True, text=True, check=False, timeout=60,
        )

    def output_of(self, script):
        done = self.run_bash(script)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_each_package_is_known_by_its_upstream_name(self):
        self.have_commands_except()
        names = self.output_of("".join(f'printf "%s\\n" "${{{name}_PACKAGES[@]}}"\n' for name in LISTS)).split()
        rows = [row.split("|") for row in self.output_of('echo "$UPSTREAM"').strip().splitlines()]
        known = [name.strip() for name, _upstream, _probe in rows]
        self.assertEqual(sorted(known), sorted({*names, "debootstrap"}))  # debootstrap is for tools/newcomer

    def test_names_what_it_does_not_know_by_the_name_that_it_was_given(self):
        self.have_commands_except()
        self.assertEqual(self.output_of("missing_upstream no-such-package xvfb"), "no-such-package\n")

    def test_without_apt_goes_on_where_all_is_there(self):
        self.have_commands_except("apt-get", "dpkg-query")
        self.assertEqual(self.output_of(f"ensure_packages {INSTALLED}"), "")

    def test_without_packages_of_debian_goes_by_what_is_there(self):
        self.have_commands_except("dpkg-query")
        self.command("dpkg-query", "exit 1")
        self.assertEqual(self.output_of(f"ensure_packages {INSTALLED}"), "")

    def test_without_apt_names_what_is_missing_by_its_upstream_name(self):
        self.have_commands_except("apt-get", "dpkg-query", "ninja", "pkg-config")
        done = self.run_bash(f"ensure_packages {INSTALLED}")
        self.assertEqual(done.returncode, 1)
        missing = [line.strip() for line in done.stderr.splitlines() if line.startswith("    ")]
        # Packages that only pkg-config knows cannot be detected without it.
        self.assertLess({"Ninja", "pkg-config", "libudev, of systemd or eudev"}, set(missing))
        self.assertNotIn("xdotool", missing)

    def test_waits_while_another_program_holds_the_lock_of_apt(self):
        held = "echo 'E: Could not get lock /var/lib/apt/lists/lock. It is held by process 1 (apt)' >&2; exit 100"
        self.have_apt(held, held, "exit 0", held, "exit 0")
        done = self.run_bash("ensure_packages dunst")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        # Once for each of the two calls.
        waits = [line for line in done.stdout.splitlines() if line.startswith("Waiting: ")]
        self.assertEqual(waits, ["Waiting: Could not get lock /var/lib/apt/lists/lock. It is held by process 1 (apt)"] * 2)
        calls = [call.split() for call in self.calls.read_text(encoding="utf-8").splitlines()]
        # In English, so that the script understands it; and with the option that makes apt itself wait for dpkg.
        self.assertEqual({tuple(call[:3]) for call in calls}, {("C", "-o", "DPkg::Lock::Timeout=-1")})
        self.assertEqual([call[3] for call in calls], ["update"] * 3 + ["install"] * 2)

    def test_does_not_wait_for_a_lock_that_nobody_holds(self):
        self.have_apt("echo 'E: Could not get lock /x/lock - open (37: No locks available)' >&2; exit 100")
        self.assertEqual(self.run_bash("ensure_packages dunst").returncode, 100)

    def test_asks_sudo_where_the_user_is_not_root(self):
        self.have_apt("exit 0")
        self.command("id", "echo 1000")
        self.command("sudo", f'echo "$@" >>{self.calls}')
        self.assertEqual(self.run_bash("ensure_packages dunst").returncode, 0)
        calls = self.calls.read_text(encoding="utf-8").splitlines()
        self.assertEqual([call.split()[0] for call in calls], ["env"] * 2)
        self.assertTrue(calls[1].endswith(" install --yes --no-install-recommends dunst"), calls[1])

    def test_says_what_root_has_to_do_where_there_is_no_sudo(self):
        self.have_apt("exit 0")
        self.command("id", "echo 1000")
        (self.commands / "sudo").unlink()
        done = self.run_bash("ensure_packages dunst")
        self.assertEqual(done.returncode, 1)
        self.assertIn("apt-get install dunst", done.stderr)
        self.assertFalse(self.calls.exists())

    def test_goes_on_when_only_the_lists_cannot_be_renewed(self):
        self.have_apt("echo 'E: Failed to fetch' >&2; exit 100", "exit 0")
        done = self.run_bash("ensure_packages dunst")
        self.assertEqual(done.returncode, 0)
        self.assertIn("E: Failed to fetch", done.stderr)

    def test_ends_with_the_exit_code_of_apt(self):
        self.have_apt("exit 0", "echo 'E: Unable to locate package dunst' >&2; exit 100")
        done = self.run_bash("ensure_packages dunst")
        self.assertEqual((done.returncode, done.stderr), (100, "E: Unable to locate package dunst\n"))


if __name__ == "__main__":
    unittest.main()
