# SPDX-License-Identifier: GPL-3.0-or-later
"""Firmware that fails or reports nonsense in one attribute after the other, and batteries that come and go."""

import contextlib
import os
import shutil
import socket
import unittest

from support.case import ESTIMATING, HEALTH_AND_CYCLES
from support.faults import SHOW_SECONDS, FaultCase
from support.laptop import BATTERY

# Supplies that have all attributes that the program reads.
FULL_BATTERY = {
    "type": "Battery",
    "scope": "System",
    "present": "1",
    "status": "Discharging",
    "capacity": "64",
    "model_name": "Simulated",
    "cycle_count": "312",
    "voltage_now": "11800000",
    "voltage_min_design": "11400000",
    "energy_now": "27840000",
    "energy_avg": "27840000",
    "energy_full": "43500000",
    "energy_full_design": "50000000",
    "power_now": "10000000",
    "power_avg": "10000000",
    "charge_now": "2442000",
    "charge_avg": "2442000",
    "charge_full": "3816000",
    "charge_full_design": "4386000",
    "current_now": "847000",
    "current_avg": "847000",
    "temp": "301",
    "charge_control_end_threshold": "100",
}
FULL_ADAPTER = {
    "type": "Mains",
    "scope": "System",
    "present": "1",
    "online": "0",
    "voltage_now": "20000000",
    "voltage_max": "20000000",
    "voltage_max_design": "20000000",
    "current_now": "0",
    "current_max": "3250000",
    "input_power_limit": "65000000",
}

# An ordinary user cannot make a file fail with every error of a driver, but the program is to treat all errors alike.
FAILING = {
    "EIO": lambda file: file.symlink_to("/proc/self/mem"),  # nothing is mapped at the beginning
    "EISDIR": lambda file: file.mkdir(),
    "ENXIO": lambda file: bind(file),
    "ELOOP": lambda file: file.symlink_to(file.name),
    "ENOENT": lambda file: None,
    "a pipe that nobody writes": os.mkfifo,
    "no end": lambda file: file.symlink_to("/dev/zero"),
}
GARBAGE = {
    "empty": b"",
    "a line feed": b"\n",
    "negative": b"-1\n",
    "zero": b"0\n",
    "the largest number": b"9223372036854775807\n",
    "the smallest number": b"-9223372036854775808\n",
    "a larger number": b"18446744073709551616\n",
    "a fraction": b"12.5\n",
    "words": b"NaN, inf or 64 %\n",
    "no text": bytes(range(256)),
    "zeros": bytes(64),
    "a long line": b"9" * 4095 + b"\n",
    "more than a page": b"9" * 8192,
    "lines": b"64\n" * 100,
}

MOST_GROWTH_KIB = 2048
TIMES_OUT = 5
GONE_SECONDS = 20  # a glitch of the firmware must not look like a missing battery


def bind(file):
    """Makes a socket, by a short relative name because the path may be too long for one."""
    with contextlib.chdir(file.parent), socket.socket(socket.AF_UNIX) as place:
        place.bind(file.name)


def remove(file):
    if file.is_dir() and not file.is_symlink():
        shutil.rmtree(file)
    else:
        file.unlink(missing_ok=True)


class Firmware(FaultCase):
    def setUp(self):
        self.begin(machine=self.laptop({"BAT0": FULL_BATTERY, "AC": FULL_ADAPTER}))
        self.right = self.item.tooltip
        # The memory that the popover takes on its first opening is no growth. More texts and pictures follow later.
        self.read_now()
        self.before = self.settled_usage()

    def read_now(self):
        """Opening the popover takes a reading each time; an event would do so once a second at most."""
        self.item.menu.choose("Show details")
        self.item.menu.entries()  # answered after the reading

    def each(self, faults, make):
        """Tries each fault in each attribute, and restores the right value after it."""
        for name, attributes in (("BAT0", FULL_BATTERY), ("AC", FULL_ADAPTER)):
            for attribute, value in attributes.items():
                for what, fault in faults.items():
                    try:
                        file = self.machine.attribute_file(name, attribute)
                        remove(file)
                        make(file, fault)
                        self.read_now()
                        self.item_is_sound()
                        remove(file)
                        self.machine.set(name, **{attribute: value})
                        self.read_now()
                        self.soon_equal(lambda: self.item.label, " 64%", SHOW_SECONDS)
                    except Exception as error:
                        error.add_note(f"{attribute} of {name}: {what}")
                        raise

    def item_is_sound(self):
        """The program may believe a single wrong attribute, but the item must still show a battery."""
        label = self.item.label or ""
        self.assertRegex(label, r"\A( (100|[1-9]?[0-9])%)?\Z")
        if label not in ("", " 64%"):
            self.seen += [int(label.strip(" %")), 64]
        self.assertRegex(self.item.icon, r"\Avelmora-[a-z0-9-]+-symbolic\Z")
        self.assertRegex(self.item.tooltip[0], r"\A((100|[1-9]?[0-9])% · \w.*|No battery found)\Z")
        for line in self.item.tooltip[1:]:
            self.assertRegex(line, r"\A(Health: [0-9]+% \([A-Z]\w+\)|Cycles: [0-9]+)\Z")

    def test_each_attribute_fails_in_turn(self):
        self.each(FAILING, lambda file, fail: fail(file))
        self.ends_right()

    def test_each_attribute_is_garbage_in_turn(self):
        self.each(GARBAGE, lambda file, content: file.write_bytes(content))
        self.ends_right()

    def ends_right(self):
        self.assertEqual(self.item.tooltip[1:], self.right[1:])
        self.still_right(most_growth_kib=MOST_GROWTH_KIB)


class ComesAndGoes(FaultCase):
    def test_a_battery_that_is_taken_out_and_put_back_again_and_again(self):
        self.begin()
        for number in range(TIMES_OUT):
            self.machine.remove("BAT0")
            self.soon_equal(lambda: self.item.tooltip, ["No battery found"], GONE_SECONDS)
            self.machine.add("BAT0", BATTERY)
            self.soon_equal(lambda: self.item.tooltip, [ESTIMATING, *HEALTH_AND_CYCLES], SHOW_SECONDS)
        self.still_right()


if __name__ == "__main__":
    unittest.main()
