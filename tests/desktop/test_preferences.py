# SPDX-License-Identifier: GPL-3.0-or-later
"""Another program edits the preferences."""

import json
import unittest

from support.case import DesktopCase

AT_ONCE_SECONDS = 1
SAVED_SECONDS = 5


class EditedPreferences(DesktopCase):
    def setUp(self):
        self.screen = self.desktop(panel=False)
        self.machine = self.laptop()
        self.file = self.screen.config / "Velmora/defaults.json"

    def write_in_place(self, values):
        self.file.parent.mkdir(exist_ok=True)
        self.file.write_text(json.dumps(values), encoding="utf-8")

    def write_by_rename(self, values):
        self.file.parent.mkdir(exist_ok=True)
        fresh = self.file.with_name("fresh")
        fresh.write_text(json.dumps(values), encoding="utf-8")
        fresh.rename(self.file)

    def test_the_time_appears_in_the_title_at_once(self):
        item = self.start_and_wait(self.screen, self.machine).item
        self.soon(lambda: "2 h 47 min left" in item.tooltip[0], 70, "the time is known")
        self.assertEqual(item.label, " 64%")
        self.write_in_place({"showTime": True})
        self.soon_equal(lambda: item.label, " 64% · 2:47", AT_ONCE_SECONDS)
        self.write_by_rename({"showTime": True, "showPercent": False})
        self.soon_equal(lambda: item.label, " 2:47", AT_ONCE_SECONDS)

    def test_a_file_in_a_folder_that_was_not_there(self):
        item = self.start_and_wait(self.screen, self.machine).item
        self.write_in_place({"showPercent": False})
        self.soon_equal(lambda: item.label, None, AT_ONCE_SECONDS)

    def test_a_file_that_is_edited_again_and_again(self):
        self.write_by_rename({"showPercent": False})
        item = self.start_and_wait(self.screen, self.machine).item
        self.assertEqual(item.label, None)
        for write in (self.write_in_place, self.write_by_rename, self.write_by_rename, self.write_in_place):
            write({"showPercent": True})
            self.soon_equal(lambda: item.label, " 64%", AT_ONCE_SECONDS)
            write({"showPercent": False})
            self.soon_equal(lambda: item.label, None, AT_ONCE_SECONDS)

    def test_a_file_that_is_deleted_means_the_fallbacks(self):
        self.write_in_place({"showPercent": False})
        item = self.start_and_wait(self.screen, self.machine).item
        self.assertEqual(item.label, None)
        self.file.unlink()
        self.soon_equal(lambda: item.label, " 64%", AT_ONCE_SECONDS)

    def test_a_link_to_a_folder_is_set_aside_and_the_folder_stays(self):
        folder = self.screen.home / "Documents"
        folder.mkdir()
        (folder / "letter").write_text("Dear", encoding="utf-8")
        self.file.parent.mkdir()
        self.file.symlink_to(folder)
        item = self.start_and_wait(self.screen, self.machine).item
        item.menu.choose("Snooze alerts for 1 hour")
        self.soon(lambda: self.file.is_file() and not self.file.is_symlink(), SAVED_SECONDS, "there is a file")
        self.assertIn("snoozeUntil", json.loads(self.file.read_text(encoding="utf-8")))
        self.assertEqual((folder / "letter").read_text(encoding="utf-8"), "Dear")
        self.assertEqual(self.file.with_name("defaults.json.damaged").readlink(), folder)

    def test_a_value_of_another_kind_counts_as_absent(self):
        self.write_in_place({"showPercent": "no"})
        self.assertEqual(self.start_and_wait(self.screen, self.machine).item.label, " 64%")

    def test_a_damaged_file_does_not_stop_the_program(self):
        self.file.parent.mkdir()
        self.file.write_bytes(b'{"showPercent": fal')
        self.assertEqual(self.start_and_wait(self.screen, self.machine).item.label, " 64%")

    def test_fallbacks_are_not_written(self):
        program = self.start_and_wait(self.screen, self.machine)
        self.assertEqual(program.process.stop(), 0)
        self.wrote_nothing(program)
        self.assertFalse(self.file.exists())


if __name__ == "__main__":
    unittest.main()
