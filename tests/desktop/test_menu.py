# SPDX-License-Identifier: GPL-3.0-or-later
"""The item's menu, as panels ask for it."""

import unittest

from gi.repository import GLib

from support.case import DesktopCase

LABELS = ["Show details", "Snooze alerts for 1 hour", "Settings…", "Quit"]
NO_SUCH_ENTRIES = (-1, 999, 2**31 - 1)


class ItemMenu(DesktopCase):
    def setUp(self):
        self.program = self.start_and_wait(self.desktop(panel=False), self.laptop())
        self.menu = self.program.item.menu

    def answers(self):
        """The program still answers, and properly."""
        self.assertTrue(self.program.process.running)
        self.assertEqual([entry.label for entry in self.menu.entries()], LABELS)

    def test_has_its_entries_in_order(self):
        self.assertEqual([entry.label for entry in self.menu.entries()], LABELS)

    def test_the_root_holds_the_entries(self):
        _, (root, properties, children) = self.menu.layout()
        self.assertEqual((root, properties.get("children-display")), (0, "submenu"))
        self.assertEqual(len({child[0] for child in children}), len(LABELS))
        self.assertNotIn(0, {child[0] for child in children})

    def test_a_depth_of_nothing_gives_the_root_alone(self):
        _, (root, _, children) = self.menu.layout(depth=0)
        self.assertEqual((root, children), (0, []))

    def test_one_entry_can_be_asked_for(self):
        entry = self.menu.entries()[1]
        _, (number, properties, children) = self.menu.layout(parent=entry.id)
        self.assertEqual((number, properties["label"], children), (entry.id, entry.label, []))

    def test_only_the_properties_that_are_asked_for(self):
        _, (_, _, children) = self.menu.call("GetLayout", GLib.Variant("(iias)", (0, -1, ["enabled"])))
        for _, properties, _ in children:
            self.assertNotIn("label", properties)

    def test_an_empty_list_of_ids_means_all(self):
        groups = self.menu.call("GetGroupProperties", GLib.Variant("(aias)", ([], [])))[0]
        labels = dict((number, properties.get("label")) for number, properties in groups)
        self.assertEqual([labels.get(entry.id) for entry in self.menu.entries()], LABELS)

    def test_the_properties_of_some_entries(self):
        last = self.menu.entries()[-1]
        groups = self.menu.call("GetGroupProperties", GLib.Variant("(aias)", ([last.id], ["label"])))[0]
        self.assertEqual(groups, [(last.id, {"label": last.label})])

    def test_one_property(self):
        for entry in self.menu.entries():
            value = self.menu.call("GetProperty", GLib.Variant("(is)", (entry.id, "label")))[0]
            self.assertEqual(value, entry.label)

    def test_what_hosts_read_about_the_menu(self):
        self.assertEqual(self.menu.get("Version"), 3)
        self.assertEqual(self.menu.get("Status"), "normal")
        self.assertEqual(self.menu.get("TextDirection"), "ltr")
        self.assertEqual(self.menu.get("IconThemePath"), [])

    def test_nothing_changes_just_before_it_is_shown(self):
        self.assertIs(self.menu.call("AboutToShow", GLib.Variant("(i)", (0,)))[0], False)
        self.assertEqual(self.menu.call("AboutToShowGroup", GLib.Variant("(ai)", ([0],))), ([], []))

    def test_unknown_ids_do_no_harm(self):
        for number in NO_SUCH_ENTRIES:
            calls = {
                "GetLayout": GLib.Variant("(iias)", (number, -1, [])),
                "GetGroupProperties": GLib.Variant("(aias)", ([number], [])),
                "GetProperty": GLib.Variant("(is)", (number, "label")),
                "AboutToShow": GLib.Variant("(i)", (number,)),
                "AboutToShowGroup": GLib.Variant("(ai)", ([number],)),
                "Event": GLib.Variant("(isvu)", (number, "clicked", GLib.Variant("i", 0), 0)),
                "EventGroup": GLib.Variant("(a(isvu))", ([(number, "clicked", GLib.Variant("i", 0), 0)],)),
            }
            for method, arguments in calls.items():
                with self.subTest(method=method, id=number):
                    self.call_that_may_be_refused(method, arguments)
                    self.answers()

    def test_other_events_choose_nothing(self):
        quit_entry = self.menu.entries()[-1]
        for kind in ("hovered", "opened", "closed", "", "no-such-event"):
            self.menu.event(quit_entry.id, kind)
        self.answers()

    def test_an_entry_that_says_something_new_is_a_new_item(self):
        # In an open menu, the clicked entry may just have been replaced.
        before = self.menu.entries()
        self.menu.event(before[1].id, "clicked")
        self.soon(lambda: self.menu.entries()[1].label.startswith("Cancel snooze"), 5, "it is snoozed")
        after = self.menu.entries()
        self.assertEqual(after[:1] + after[2:], before[:1] + before[2:])
        self.assertNotIn(after[1].id, [entry.id for entry in before])
        event = (before[1].id, "clicked", GLib.Variant("i", 0), 0)
        self.call_that_may_be_refused("Event", GLib.Variant("(isvu)", event))
        self.never(lambda: self.menu.entries() != after, 1)

    def test_quit_ends_the_program(self):
        self.menu.choose("Quit")
        self.ends_cleanly(self.program)

    def test_quit_as_one_of_a_group_of_events(self):
        quit_entry = self.menu.entries()[-1]
        event = (quit_entry.id, "clicked", GLib.Variant("i", 0), 0)
        self.assertEqual(self.menu.call("EventGroup", GLib.Variant("(a(isvu))", ([event],)))[0], [])
        self.ends_cleanly(self.program)

    def call_that_may_be_refused(self, method, arguments):
        """The program may answer with an error, but it must answer."""
        try:
            self.menu.call(method, arguments)
        except GLib.Error as error:
            self.assertIn("org.freedesktop.DBus.Error", error.message)
            self.assertNotIn("NoReply", error.message)


if __name__ == "__main__":
    unittest.main()
