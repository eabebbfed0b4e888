# SPDX-License-Identifier: GPL-3.0-or-later
"""A laptop's power supplies as a program sees them below /sys, and their udev events.

umockdev's preload library shows a program the folder `$UMOCKDEV_DIR/sys` as /sys, and lets it listen on a socket in
that folder instead of the kernel's. The folder and the events are made here by hand: umockdev's own sender ends the
sending process when a listener's queue is full, where the kernel only drops the event, and a reader may find an
attribute empty while umockdev writes it.
"""

import contextlib
import itertools
import json
import os
import shutil
import socket
import struct
import tempfile
from pathlib import Path

PRELOAD = "libumockdev-preload.so.0"
CLASS = "power_supply"
# Sysfs is never on a disk, and a disk's files may have to be fetched again each minute, at many times the cost.
MEMORY = Path("/dev/shm") if os.access("/dev/shm", os.W_OK) else None

# 64 % of 43.5 Wh, which in turn are 87 % of the design; at ten watts they last 2 h 47 min.
BATTERY = {
    "type": "Battery",
    "present": "1",
    "status": "Discharging",
    "capacity": "64",
    "energy_full_design": "50000000",
    "energy_full": "43500000",
    "energy_now": "27840000",
    "power_now": "10000000",
    "voltage_min_design": "11400000",
    "voltage_now": "11800000",
    "cycle_count": "312",
    "manufacturer": "Velmora",
    "model_name": "Simulated",
    "technology": "Li-ion",
}
ADAPTER = {"type": "Mains", "online": "0"}


class SimulatedLaptop:
    """Power supplies by name; programs read the values that are set here. Events are sent only when asked for."""

    def __init__(self, supplies=None):
        """`supplies`: the supplies at first, by name; by default a battery BAT0 that discharges and an adapter AC."""
        self.root = self._make_folder()
        self._folders = [self.root]
        self._class_folder = self.root / "sys/class" / CLASS
        self._class_folder.mkdir(parents=True)
        (self.root / "sys/bus").mkdir()
        (self.root / "sys/devices").mkdir()
        self._sequence = itertools.count(1)
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.setblocking(False)
        self.supplies = {}
        for name, attributes in ({"BAT0": BATTERY, "AC": ADAPTER} if supplies is None else supplies).items():
            self._create(name, attributes)

    @staticmethod
    def _make_folder():
        return Path(tempfile.mkdtemp(prefix="velmora-laptop-", dir=MEMORY))

    @classmethod
    def from_fixture(cls, file):
        """The machine that a fixture describes; attributes that cannot be read there are missing here."""
        devices = json.loads(Path(file).read_text(encoding="utf-8"))["devices"]
        return cls({
            device["name"]: {key: value for key, value in device["attributes"].items() if value is not None}
            for device in devices
        })

    def close(self):
        self._socket.close()
        for folder in self._folders:
            shutil.rmtree(folder)

    @property
    def environment(self):
        """The environment variables that make a program see these devices instead of the machine's own."""
        return {"LD_PRELOAD": PRELOAD, "UMOCKDEV_DIR": str(self.root)}

    def environment_of_another(self):
        """The environment variables for one more program at the same time. umockdev names the socket on which a program
        hears events after a number that two programs may share, so each needs a folder of its own."""
        folder = self._make_folder()
        (folder / "sys").symlink_to(self.root / "sys")
        self._folders.append(folder)
        return {"LD_PRELOAD": PRELOAD, "UMOCKDEV_DIR": str(folder)}

    def attribute_file(self, name, attribute):
        """The file of an attribute, for tests that watch it being read."""
        return self._folder(name) / attribute

    def set(self, name, **attributes):
        """Changes attributes without an event. Each change is atomic: a reader finds the old value or the new one."""
        for key, value in attributes.items():
            self.supplies[name][key] = str(value)
            self._write(self._folder(name) / key, f"{value}\n")

    def set_level(self, percent):
        """Changes the charge of BAT0, without an event."""
        full = int(self.supplies["BAT0"]["energy_full"])
        self.set("BAT0", capacity=percent, energy_now=full * percent // 100)

    def plug(self):
        """Plugs the adapter in, with the kernel's events: first the adapter's, then the now charging battery's."""
        self._plugged(online=1, status="Charging")

    def unplug(self):
        self._plugged(online=0, status="Discharging")

    def _plugged(self, online, status):
        self.set("AC", online=online)
        self.set("BAT0", status=status)
        self.event("AC")
        self.event("BAT0")

    def event(self, name, action="change"):
        """Sends one udev event to all listeners; returns the number of those reached. A listener whose queue is full
        misses it."""
        properties = {"ACTION": action, "DEVPATH": self._path(name), "SUBSYSTEM": CLASS, "SEQNUM": next(self._sequence)}
        message = _udev_message(properties | self._properties(name))
        reached = 0
        for folder in self._folders:
            for listener in folder.glob("event*"):
                with contextlib.suppress(BlockingIOError, ConnectionRefusedError):
                    self._socket.sendto(message, str(listener))
                    reached += 1
        return reached

    def add(self, name, attributes):
        """Adds a supply, with its event."""
        self._create(name, attributes)
        self.event(name, "add")

    def remove(self, name):
        """Removes a supply, and then sends its event."""
        (self._class_folder / name).unlink()
        shutil.rmtree(self._folder(name))
        self.event(name, "remove")
        del self.supplies[name]

    def refuse_listeners(self):
        """From now on no program can listen for udev events: the paths of their sockets are taken."""
        for number in range(256):
            (self.root / f"event{number}").mkdir()

    def _create(self, name, attributes):
        self.supplies[name] = dict(attributes)
        folder = self._folder(name)
        folder.mkdir(parents=True)
        (folder / "subsystem").symlink_to(os.path.relpath(self._class_folder, folder))
        self._write(folder / "uevent", "".join(f"{key}={value}\n" for key, value in self._properties(name).items()))
        self.set(name, **attributes)
        (self._class_folder / name).symlink_to(os.path.relpath(folder, self._class_folder))

    def _properties(self, name):
        own = {f"POWER_SUPPLY_{key.upper()}": value.split("\n")[0] for key, value in self.supplies[name].items()}
        return {"DEVTYPE": CLASS, "POWER_SUPPLY_NAME": name} | own

    @staticmethod
    def _path(name):
        return f"/devices/platform/{name}.0/{CLASS}/{name}"

    def _folder(self, name):
        return self.root / "sys" / self._path(name)[1:]

    @staticmethod
    def _write(file, text):
        # Beside the device's folder, so that listing the folder does not show the temporary file.
        fresh = file.parent.parent / f".{file.name}"
        fresh.write_text(text, encoding="utf-8")
        fresh.rename(file)


def _udev_message(properties):
    """An event as udevd sends it: a header with the offset and size of the properties, each of which ends with a zero
    byte. Listeners filter by the hashes of subsystem and device type in the header; the tags, here none, come last."""
    body = b"".join(f"{key}={value}\0".encode() for key, value in properties.items())
    sizes = struct.pack("=III", 40, 40, len(body))
    hashes = struct.pack("!II", _hash(properties["SUBSYSTEM"]), _hash(properties["DEVTYPE"]))
    return struct.pack("=8s", b"libudev") + struct.pack("!I", 0xFEEDCAFE) + sizes + hashes + bytes(8) + body


def _hash(text):
    """32-bit MurmurHash2 with seed 0, as udev uses it."""
    data = text.encode()
    multiplier, mask = 0x5BD1E995, 0xFFFFFFFF
    result = len(data)
    whole = len(data) // 4 * 4
    for (word,) in struct.iter_unpack("<I", data[:whole]):
        word = word * multiplier & mask
        word = (word ^ word >> 24) * multiplier & mask
        result = result * multiplier & mask ^ word
    if data[whole:]:
        result = (result ^ int.from_bytes(data[whole:], "little")) * multiplier & mask
    result = (result ^ result >> 13) * multiplier & mask
    return result ^ result >> 15
