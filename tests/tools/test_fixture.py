# SPDX-License-Identifier: GPL-3.0-or-later
"""tools/fixture: what it records of a machine, what it leaves out, and that Velmora reads both alike."""

import json
import os
import re
import shutil
import stat
import subprocess
import tempfile
import unittest
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
TOOL = TOP / "tools/fixture"
FIXTURES = sorted((TOP / "tests/fixtures/power_supply").glob("*.json"))
PROGRAM = os.environ["VELMORA_CHECK_FIXTURE"]
NOBODY = 65534


def attributes_that_velmora_reads():
    header = (TOP / "App/platform/linux/power/PowerSupply.h").read_text(encoding="utf-8")
    return set(re.findall(r'"(\w+)"', header[header.index("commonAttributes{"):]))


class Fixture(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="velmora-fixture-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()
        self.sysfs = self.folder / "sys"
        self.temporary = self.folder / "tmp"
        self.empty()

    def empty(self):
        for folder in (self.sysfs, self.temporary):
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir()

    def file(self, path, content):
        """A file below the sysfs of the test; one that is None cannot be read."""
        file = self.sysfs / path
        file.parent.mkdir(parents=True, exist_ok=True)
        if content is None:
            os.mknod(file, stat.S_IFSOCK | 0o600)  # opening a socket fails with ENXIO, even for root
        else:
            file.write_bytes(content)

    def supply(self, name, attributes):
        (self.sysfs / "class/power_supply" / name).mkdir(parents=True, exist_ok=True)
        for attribute, text in attributes.items():
            self.file(f"class/power_supply/{name}/{attribute}", None if text is None else f"{text}\n".encode())

    def run_command(self, *command, **options):
        options.setdefault("env", os.environ | {"TMPDIR": str(self.temporary)})
        return subprocess.run(command, cwd=self.folder, capture_output=True, text=True, check=False, timeout=60,
                              **options)

    def run_tool(self, *arguments, tool=TOOL, **options):
        return self.run_command("/usr/bin/python3", tool, *arguments, **options)

    def text_of(self, *arguments):
        done = self.run_tool(*arguments)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def state(self):
        """Every file below the sysfs of the test, and when it was changed."""
        return [(path, path.lstat().st_mtime_ns) for path in sorted(self.sysfs.rglob("*"))]

    def record(self, timeout=30):
        """The machine as recorded. By default there is time for each attribute even where the processor is busy."""
        before = self.state()
        text = self.text_of("record", "--sysfs", self.sysfs, "--timeout", str(timeout), "-")
        self.assertEqual(self.state(), before)
        return json.loads(text)

    def check(self, fixture):
        file = self.folder / "checked.json"
        if not isinstance(fixture, bytes):
            fixture = json.dumps(fixture).encode()
        file.write_bytes(fixture)
        return self.run_command(PROGRAM, file)  # what the tool would run

    def checked(self, fixture):
        done = self.check(fixture)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_velmora_reads_the_recording_as_it_reads_the_machine(self):
        def without_names_of_peripherals(text):
            return re.sub(r"^  (hidpp\S+) +", "  mouse ", text, flags=re.MULTILINE)

        for file in FIXTURES:
            with self.subTest(file=file.name):
                self.empty()
                fixture = json.loads(file.read_text(encoding="utf-8"))
                self.file("class/dmi/id/product_name", fixture["machine"].encode())
                for device in fixture["devices"]:
                    self.supply(device["name"], device["attributes"])
                expected = self.checked(fixture)
                self.assertIn("\nThe numbers behind it\n", expected)
                self.assertEqual(without_names_of_peripherals(self.checked(self.record())),
                                 without_names_of_peripherals(expected))
        self.assertGreater(len(FIXTURES), 40)

    def test_records_every_attribute_that_velmora_reads(self):
        attributes = attributes_that_velmora_reads()
        self.assertIn("charge_control_end_threshold", attributes)
        self.supply("BAT0", {attribute: "1" for attribute in attributes})
        self.assertEqual(set(self.record()["devices"][0]["attributes"]), attributes)

    def test_leaves_out_serial_numbers_addresses_and_names_of_people(self):
        self.file("class/dmi/id/sys_vendor", b"LENOVO\n")
        self.file("class/dmi/id/product_version", b"ThinkPad T480\n")
        self.file("class/dmi/id/product_name", b"To Be Filled By O.E.M.\n")
        for secret in ("product_serial", "product_uuid", "board_serial", "chassis_serial", "chassis_asset_tag"):
            self.file(f"class/dmi/id/{secret}", b"DMI-SECRET\n")
        self.supply("BAT0", {
            "type": "Battery", "capacity": "80", "cycle_count": "51423", "serial_number": " 51423",
            "model_name": "45N1 51423", "manufacturer": "SANYO", "unique_id": "ID-SECRET", "manufacture_day": "24",
            "uevent": "POWER_SUPPLY_NAME=BAT0\nPOWER_SUPPLY_SERIAL_NUMBER= 51423",
        })
        self.supply("BAT1", {"type": "Battery", "capacity": "80", "serial_number": "ABcd-7", "model_name": "abCD-7",
                             "manufacturer": "of 00:1B:dc:0F:aa:09"})
        for number, name in enumerate(("hid-00:1b:dc:0f:aa:01-battery", "hid-SERIAL99-battery", "00:1b:dc:0f:aa:02")):
            self.supply(name, {"type": "Battery", "scope": "device", "model_name": "Anna's mouse", "status": "Full",
                               "manufacturer": "Apple", "serial_number": f"FF{number}00011"})
        self.supply("usb-001bdc0faa09", {"type": "USB", "online": "1"})

        recorded = self.record()
        text = json.dumps(recorded)
        for secret in ("SECRET", "ABcd", "1b:dc", "1B:dc", "1bdc", "SERIAL99", "Anna", "FF0", '"24"'):
            self.assertNotIn(secret.lower(), text.lower())
        self.assertEqual(text.count("51423"), 1)  # the number of cycles
        self.assertEqual(recorded["machine"], "LENOVO ThinkPad T480")
        devices = {device["name"]: device for device in recorded["devices"]}
        self.assertEqual(set(devices), {"BAT0", "BAT1", "peripheral-1", "hid-peripheral-4", "hid-peripheral-5",
                                        "usb-hidden-4"})
        self.assertEqual(devices["BAT0"], {
            "name": "BAT0",
            "attributes": {"type": "Battery", "capacity": "80", "cycle_count": "51423", "model_name": "45N1 hidden-1",
                           "manufacturer": "SANYO"},
            "omitted": ["manufacture_day", "serial_number", "uevent", "unique_id"],
        })

    def test_replaces_one_thing_by_one_word(self):
        for name, model in (("psy-00:1b:dc:0f:aa:09", "of 00:1b:dc:0f:aa:02"), ("psy-00:1B:DC:0F:AA:02", "x")):
            self.supply(name, {"type": "USB", "model_name": model})
        devices = self.record()["devices"]
        self.assertEqual([(device["name"], device["attributes"]["model_name"]) for device in devices],
                         [("psy-hidden-1", "x"), ("psy-hidden-2", "of hidden-1")])

    def test_tells_why_an_attribute_cannot_be_read(self):
        self.supply("BAT0", {"type": "Battery", "capacity": "50", "power_now": None, "alarm": "1" * 4095})
        self.file("class/power_supply/BAT0/status", b"")
        self.file("class/power_supply/BAT0/model_name", b"\xff\xfe\n")
        self.file("class/power_supply/BAT0/voltage_now", b"1" * 4097)
        self.file("class/power_supply/BAT0/power/control", b"auto\n")  # a folder, as each device has one
        device = self.record()["devices"][0]
        self.assertEqual(device["errors"], {"power_now": "ENXIO", "model_name": "EILSEQ", "voltage_now": "EFBIG"})
        self.assertEqual(device["attributes"], {"type": "Battery", "capacity": "50", "alarm": "1" * 4095, "status": "",
                                                **dict.fromkeys(device["errors"])})
        self.assertIn("BAT0/power_now cannot be read", self.checked({"devices": [device]}))

    def test_does_not_wait_for_an_attribute_that_hangs(self):
        self.supply("BAT0", {"type": "Battery"})
        os.mkfifo(self.sysfs / "class/power_supply/BAT0/current_now")  # nobody writes, so opening it blocks
        device = self.record(timeout=1)["devices"][0]
        self.assertIsNone(device["attributes"]["current_now"])
        self.assertEqual(device["errors"]["current_now"], "ETIMEDOUT")

    def test_follows_no_link_out_of_sysfs(self):
        (self.folder / "outside").mkdir()
        (self.folder / "outside/type").write_text("Battery\n", encoding="utf-8")
        self.file("devices/acpi/BAT0/type", b"Battery\n")
        self.file("devices/acpi/BAT0/energy_now", b"7\n")
        (self.sysfs / "devices/acpi/BAT0/model_name").symlink_to(self.folder / "outside/type")
        classes = self.sysfs / "class/power_supply"
        classes.mkdir(parents=True)
        (classes / "BAT0").symlink_to("../../devices/acpi/BAT0")
        (classes / "BAT1").symlink_to(self.folder / "outside")
        names = self.sysfs / "class/dmi/id"
        names.mkdir(parents=True)
        (names / "product_name").symlink_to(self.folder / "outside/type")
        recorded = self.record()
        self.assertEqual(recorded["machine"], "Unknown machine")
        self.assertEqual(recorded["devices"],
                         [{"name": "BAT0", "attributes": {"energy_now": "7", "type": "Battery"}}])

    def test_records_a_machine_without_power_supplies(self):
        recorded = self.record()
        self.assertEqual((recorded["machine"], recorded["devices"]), ("Unknown machine", []))
        self.assertRegex(self.checked(recorded), r"State +No battery found\n")

    def test_records_what_tells_of_low_power_mode(self):
        def low_power_mode(fixture):
            return re.search(r"low power mode +(\w+)", self.checked(fixture))[1]

        self.assertEqual(low_power_mode(self.record()), "no")
        self.file("firmware/acpi/platform_profile", b"low-power\n")
        recorded = self.record()
        self.assertEqual(recorded["platformProfile"], "low-power")
        self.assertEqual(low_power_mode(recorded), "yes")
        # The daemon's answer goes before the firmware's.
        self.assertEqual(low_power_mode(recorded | {"powerProfiles": {"net.hadess.PowerProfiles": "balanced"}}), "no")

    def test_asks_the_daemon_of_this_machine(self):
        busctl = self.folder / "bin/busctl"
        busctl.parent.mkdir()
        busctl.write_text('#!/bin/sh\ncase "$*" in *--auto-start=no*net.hadess.PowerProfiles*ActiveProfile) '
                          "echo 's \"power-saver\"' ;; *) exit 1 ;; esac\n", encoding="utf-8")
        busctl.chmod(0o755)
        done = self.run_tool("record", "-", env=os.environ | {"PATH": f"{busctl.parent}:{os.environ['PATH']}"})
        self.assertEqual(json.loads(done.stdout)["powerProfiles"], {"net.hadess.PowerProfiles": "power-saver"})
        self.assertNotIn("powerProfiles", self.record())  # another machine's

    def test_names_the_file_after_the_machine_and_overwrites_none(self):
        self.file("firmware/devicetree/base/model", b"Raspberry Pi 5 (Rev 1.0)\0")
        done = self.run_tool("record", "--sysfs", self.sysfs)
        self.assertEqual(done.returncode, 0, done.stderr)
        file = self.folder / "raspberry-pi-5-rev-1-0.json"
        written = file.read_text(encoding="utf-8")
        self.assertEqual(json.loads(written)["machine"], "Raspberry Pi 5 (Rev 1.0)")
        self.assertIn(f"Wrote {file.name}\n", done.stderr)
        self.assertIn("attach it to your report", done.stderr)

        self.supply("BAT0", {"type": "Battery"})
        (self.folder / "link.json").symlink_to("nowhere.json")
        for arguments in ([], [file.name], ["link.json"]):
            done = self.run_tool("record", "--sysfs", self.sysfs, *arguments)
            self.assertEqual(done.returncode, 1)
            self.assertIn("is there already", done.stderr)
        self.assertEqual(file.read_text(encoding="utf-8"), written)
        self.assertFalse((self.folder / "nowhere.json").exists())

        self.assertEqual(self.run_tool("record", "--sysfs", self.sysfs, "mine.json").returncode, 0)
        self.assertEqual(json.loads((self.folder / "mine.json").read_text(encoding="utf-8")), self.record())

    def test_needs_nothing_but_itself_and_no_rights(self):
        self.supply("BAT0", {"type": "Battery", "capacity": "50", "alarm": "7"})
        (self.sysfs / "class/power_supply/BAT0/alarm").chmod(0o200)
        copy = shutil.copy(TOOL, self.folder / "fixture.py")
        other = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
        for path in (self.folder, copy):
            os.chmod(path, 0o755)
        done = self.run_tool("record", "--sysfs", self.sysfs, "-", tool=copy, env={}, **other)
        device = json.loads(done.stdout)["devices"][0]
        self.assertEqual(device["attributes"], {"type": "Battery", "capacity": "50", "alarm": None})
        self.assertEqual(device["errors"], {"alarm": "EACCES"})
        done = self.run_tool("check", "any.json", tool=copy, env={}, **other)
        self.assertEqual((done.returncode, done.stderr), (1, "fixture check needs Velmora's source tree around it\n"))

    def test_says_which_supplies_count_and_why_the_others_do_not(self):
        battery = {"type": "Battery", "status": "Discharging", "capacity": "50", "voltage_now": "12000000",
                   "energy_now": "20000000", "energy_full": "40000000", "energy_full_design": "50000000",
                   "power_now": "10000000", "cycle_count": "300", "temp": "305", "model_name": "5B10W13930"}
        supplies = {
            "AC": ({"type": "Mains", "online": "0"}, "counts: external power, not connected"),
            "BAT0": (battery, "counts: a battery, Discharging, 50.0 %, 20000 of 40000 mWh (new 50000)"),
            "BAT1": (battery | {"present": "0"}, "ignored: the battery is not in its bay (present is 0)"),
            "BAT2": (battery | {"capacity": "0", "voltage_now": "0", "energy_now": "0"},
                     "ignored: a dead battery beside one that works"),
            "BAT3": ({"type": "Battery"}, "ignored: a battery whose charge is unknown"),
            "BAT4": ({"type": None}, "ignored: of unknown type"),
            "mouse": (battery | {"scope": "Device"},
                      "ignored: belongs to a mouse or other peripheral (its scope is Device)"),
            "ups": ({"type": "UPS", "online": "1"}, "ignored: a UPS"),
            "usb": ({"type": "USB"}, "ignored: tells neither online nor present"),
        }
        devices = [{"name": name, "attributes": attributes} for name, (attributes, _role) in supplies.items()]
        told = [re.sub(" +", " ", line) for line in self.checked({"machine": "M", "devices": devices}).splitlines()]
        for name, (_attributes, role) in supplies.items():
            self.assertIn(f" {name} {role}", told)
        for line in ("M", " State On battery, 2 h left", " Ring 50%", " Cycle count 300 of 1000",
                     " Battery health 80% · Fair", " Temperature 30.5 °C", " Power out 10.0 W", " minutes to empty 120",
                     " minutes to full unknown", " capacity when full 40000 mWh", " health 80.00 %",
                     " current, in is positive -0.833 A", " adapter unknown"):
            self.assertIn(line, told)

    def test_refuses_files_that_are_no_fixtures(self):
        def device(name, attributes=None):
            return {"name": name, "attributes": {} if attributes is None else attributes}

        names = ("../../../evil", f"{self.folder}/evil", "a/evil", "..", ".", "", "evil\0", "x" * 256)
        hostile = [{"devices": [device(name)]} for name in names]
        hostile += [{"devices": [device("BAT0", {name: "evil"})]} for name in names]
        hostile += [{"devices": [device("BAT0"), device("BAT0")]}, {"devices": [device(7)]}, {"devices": {}}, [], {},
                    {"devices": [7]}, {"devices": [device("BAT0", {"type": 7})]},
                    {"devices": [device("BAT0", {"type": {"type": "Battery"}})]},
                    b"", b"evil", b'{"devices": [', b'{"devices": ' + b"[" * 100000 + b"]" * 100000 + b"}",
                    b'{"devices": []}' + b" " * 300000]
        for fixture in hostile:
            with self.subTest(fixture=str(fixture)[:80]):
                done = self.check(fixture)
                self.assertEqual((done.returncode, done.stdout), (1, ""))
                self.assertRegex(done.stderr, r"^\S+/checked\.json is no fixture: [a-z ]+\n$")
                self.assertEqual(list(self.temporary.iterdir()), [])
        self.assertEqual([path for path in self.folder.rglob("*evil*")], [])
        good = self.checked({"devices": []})
        self.assertIn("No battery found", good)
        self.assertEqual(self.text_of("check", "--program", PROGRAM, "checked.json"), good)
        done = self.run_tool("check", "--program", PROGRAM, "absent.json")
        self.assertEqual((done.returncode, done.stderr), (1, "cannot read absent.json\n"))

    def test_prints_nothing_that_moves_the_cursor(self):
        evil = "\x1b[2J\x9b1A\u202e\nx"
        battery = {"type": "Battery", "capacity": "50", "status": evil, "model_name": evil, evil: None}
        text = self.checked({"machine": evil, "devices": [{"name": evil, "attributes": battery}]})
        self.assertEqual(re.findall(r"[^\n -~°·…]", text), [])
        self.assertEqual(len(re.findall(r"^x", text, flags=re.MULTILINE)), 0)
        self.assertIn("?[2J?1A??x", text)

    def test_shows_a_machine_to_umockdev(self):
        (self.folder / "laptop.json").write_text(json.dumps({"devices": [{"name": "BAT0", "attributes": {
            "type": "Battery", "model_name": "a\\b\nE: X=1", "power_now": None}}]}), encoding="utf-8")
        self.assertEqual(self.text_of("umockdev", "laptop.json"), (
            "P: /devices/platform/power_supply/BAT0\nE: SUBSYSTEM=power_supply\nE: POWER_SUPPLY_NAME=BAT0\n"
            "E: POWER_SUPPLY_TYPE=Battery\nE: POWER_SUPPLY_MODEL_NAME=a\\b\n"
            "A: type=Battery\\n\nA: model_name=a\\134b\\012E: X=1\\n\n\n"))
        (self.folder / "evil.json").write_text(
            json.dumps({"devices": [{"name": "../evil", "attributes": {}}]}), encoding="utf-8")
        self.assertEqual(self.run_tool("umockdev", "evil.json").returncode, 1)


if __name__ == "__main__":
    unittest.main()
