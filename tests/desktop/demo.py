# SPDX-License-Identifier: GPL-3.0-or-later
"""Shows the program on a private desktop while a simulated laptop goes through a day:

    demo.py BUNDLE PICTURE_FOLDER [--window]

With --window the private desktop is shown in a window on the current one. Each step prints the changes below /sys and
then the item in the panel, and saves pictures. The exit code is 0 if every step showed the right item."""

import json
import os
import shutil
import signal
import sys
from pathlib import Path

from support.desktop import BELOW_PANEL, SCREEN, TRAY, PrivateDesktop
from support.laptop import SimulatedLaptop
from support.program import Program
from support.waiting import wait_until

START_SECONDS = 10
CHANGE_SECONDS = 5
ESTIMATE_SECONDS = 25
QUIET_SECONDS = 5

# The scale of the tray's pictures.
ENLARGED = 6

# The sum of red, green and blue below which a panel is dark, and the least difference of the glyph from the panel.
DARK = 384
CONTRAST = 400


class Demo:
    def __init__(self, bundle, folder, window_on):
        self.folder = folder
        self.steps = 0
        self.laptop = SimulatedLaptop()
        try:
            self.desktop = PrivateDesktop(notifications=True, window_on=window_on)
        except BaseException:
            self.laptop.close()
            raise
        self.before = self.desktop.picture()
        self.icon, self.tray = None, self.before.crop(TRAY)
        self.program = Program(self.desktop, self.laptop, app=bundle)
        self.item = self.program.item

    def close(self):
        self.desktop.stop()
        self.laptop.close()

    def run(self):
        self.show("start", "The program starts on a laptop that runs on battery.")
        wait_until(lambda: self.item.registered, START_SECONDS, "the panel has the item")
        self.expect(" 64%", "percent-64-level", "64% · On battery, estimating time left…", START_SECONDS)
        self.take_pictures()

        self.show("time", "Some seconds later it knows how long that lasts.")
        self.change(power_now=10000000)
        self.expect(" 64%", "percent-64-level", "64% · On battery, 2 h 47 min left", ESTIMATE_SECONDS)
        self.take_pictures()

        self.show("half", "The battery empties.")
        self.change(level=41)
        self.expect(" 41%", "percent-41-level", "41% · On battery, 1 h 57 min left")
        self.take_pictures()

        self.show("tooltip", "The pointer rests on the item.")
        self.desktop.move_pointer(*self.desktop.find_item().centre)
        self.expect_drawn("the tooltip")
        self.take_pictures()
        self.expect_nothing_drawn("the tooltip")

        self.show("popover", "A click on the item opens its details.")
        self.desktop.click(*self.desktop.find_item().centre)
        wait_until(lambda: self.desktop.windows("Velmora"), CHANGE_SECONDS, "the popover is there")
        self.desktop.move_pointer(*SCREEN.centre)
        self.take_pictures()
        self.desktop.press("Escape")
        self.expect_nothing_drawn("the popover")

        self.show("menu", "The other button opens its menu.")
        self.desktop.click(*self.desktop.find_item().centre, button=3)
        self.expect_drawn("the menu")
        self.take_pictures()
        self.desktop.press("Escape")
        self.expect_nothing_drawn("the menu")
        self.desktop.move_pointer(*SCREEN.centre)

        self.show("low", "The battery is low, and the user is reminded.")
        self.change(level=18)
        self.expect(" 18%", "percent-18-level", "18% · On battery, 51 min left")
        self.expect_drawn("the reminder")
        self.take_pictures()

        self.show("plugged-in", "The adapter is plugged in, and the reminder goes.")
        self.change(online=1, status="Charging", power_now=30000000)
        self.expect(" 18%", "percent-18-bolt", "18% · Charging, estimating time to full…")
        self.expect_nothing_drawn("the reminder")
        self.take_pictures()

        self.show("charging", "Some seconds later it knows how long charging takes.")
        self.expect(" 18%", "percent-18-bolt", "18% · Charging, 1 h 45 min to full", ESTIMATE_SECONDS)
        self.take_pictures()

        self.show("filling", "The battery fills.")
        self.change(level=55)
        self.expect(" 55%", "percent-55-bolt", "55% · Charging, 1 h 20 min to full")
        self.take_pictures()

        self.show("dark-panel", "The panel crashes and comes back, now a dark one.")
        self.restart_panel(dark=True)
        self.take_pictures()

        self.show("preferences", "Another program edits the preferences: the remaining time beside the icon.")
        self.edit_preferences({"showTime": True})
        self.expect(" 55% · 1:20", "percent-55-bolt", "55% · Charging, 1 h 20 min to full")
        self.take_pictures()

        self.show("held", "The firmware stops charging at a threshold; the user is reminded to unplug.")
        self.change(level=80, status="Not charging", power_now=0)
        self.expect(" 80%", "percent-80-plug", "80% · Plugged in, not charging")
        self.expect_drawn("the reminder")
        self.take_pictures()

        self.show("full", "The battery is full.")
        self.change(level=100, status="Full")
        self.expect(" 100%", "percent-100-full", "100% · Fully charged")
        self.take_pictures()

        self.show("plain", "The user does not want the percentage: the plain glyph.")
        self.edit_preferences({"showPercent": False})
        self.expect(None, "battery-100percent", "100% · Fully charged")
        self.take_pictures()

        self.show("light-panel", "The panel crashes once more and comes back as a light one.")
        self.restart_panel(dark=False)
        self.take_pictures()

        self.show("unplugged", "The adapter is unplugged.")
        self.change(online=0, status="Discharging", power_now=12000000)
        self.expect(None, "battery-100", "100% · On battery, estimating time left…")
        self.expect_nothing_drawn("the reminder")
        self.take_pictures()

        self.show("quit", "Quit is chosen in the menu.")
        self.item.menu.choose("Quit")
        code = self.program.process.wait_exit(CHANGE_SECONDS)
        print(f"   program: ended with exit code {code}, wrote {self.program.process.errors or 'nothing'}")
        if code != 0 or self.program.process.errors:
            raise AssertionError("the program did not end cleanly")
        wait_until(lambda: not self.desktop.registered_items(), CHANGE_SECONDS, "the item is gone")
        self.take_pictures()

    def show(self, name, sentence):
        self.steps += 1
        self.name = f"{self.steps:02}-{name}"
        print(f"\n{self.steps}. {sentence}")

    def edit_preferences(self, preferences):
        file = self.desktop.config / "Velmora/defaults.json"
        file.parent.mkdir(exist_ok=True)
        file.write_text(json.dumps(preferences), encoding="utf-8")
        print(f"   file:  Velmora/defaults.json is {file.read_text(encoding='utf-8')}")

    def change(self, level=None, online=None, **battery):
        """Changes the laptop, prints the changes, and sends the events that a kernel would send."""
        before = {name: dict(attributes) for name, attributes in self.laptop.supplies.items()}
        if online is not None:
            self.laptop.set("AC", online=online)
        if level is not None:
            self.laptop.set_level(level)
        self.laptop.set("BAT0", **battery)
        for name, attributes in self.laptop.supplies.items():
            old = before[name]
            changes = [f"{key} {old[key]} -> {value}" for key, value in attributes.items() if value != old[key]]
            if changes:
                print(f"   sysfs: {name}: {', '.join(changes)}")
        for name in ["AC", "BAT0"] if online is not None else ["BAT0"]:
            print(f"   udev:  change {name}")
            self.laptop.event(name)

    def expect(self, label, icon, first_line, limit=CHANGE_SECONDS):
        """Within `limit` seconds the item offers exactly this to the panel."""
        expected = (label, f"velmora-{icon}-symbolic", [first_line, "Health: 87% (Fair)", "Cycles: 312"])
        shown = lambda: (self.item.label, self.item.icon, self.item.tooltip)
        wait_until(lambda: shown() == expected, limit, lambda: f"expected {expected}, shown {shown()}")
        label, icon, tooltip = shown()
        if icon != self.icon:
            # The panel is told of the change, and draws the item some time later.
            redrawn = lambda: self.desktop.picture().crop(TRAY).changed_box(self.tray)
            wait_until(redrawn, CHANGE_SECONDS, "the panel draws the item")
        self.icon, self.tray = icon, self.desktop.picture().crop(TRAY)
        print(f"   panel: title '{label or str()}', icon {icon}, tooltip {' | '.join(tooltip)}")

    def restart_panel(self, dark):
        """Kills the panel and starts it with other colours; the item must come back and stand out from it."""
        self.desktop.kill_panel()
        self.desktop.use_dark_panel(dark)
        self.desktop.start_panel()
        wait_until(lambda: self.item.registered, CHANGE_SECONDS, "the new panel has the item")

        def readable():
            colours = self.desktop.picture().crop(TRAY).colours()
            panel = sum(max(colours, key=colours.get))
            return (panel < DARK) == dark and max(abs(panel - sum(colour)) for colour in colours) > CONTRAST

        wait_until(readable, QUIET_SECONDS, "the item stands out from the panel")
        print(f"   panel: has the item again, {'light on dark' if dark else 'dark on light'}")

    def expect_drawn(self, what):
        drawn = lambda: self.desktop.picture().crop(BELOW_PANEL).changed_box(self.before.crop(BELOW_PANEL))
        wait_until(drawn, CHANGE_SECONDS, f"{what} is drawn")

    def expect_nothing_drawn(self, what):
        self.desktop.move_pointer(*SCREEN.centre)
        drawn = lambda: self.desktop.picture().crop(BELOW_PANEL).changed_box(self.before.crop(BELOW_PANEL))
        wait_until(lambda: not drawn(), CHANGE_SECONDS, f"{what} is gone")

    def take_pictures(self):
        """Takes one picture of the screen and one of the tray, enlarged, as soon as nothing moves."""
        last = self.desktop.picture()

        def quiet():
            nonlocal last
            previous, last = last, self.desktop.picture()
            return last.changed_box(previous) is None

        wait_until(quiet, QUIET_SECONDS, "the picture stands still")
        self.tray = last.crop(TRAY)
        last.save(self.folder / f"{self.name}.png")
        self.tray.enlarge(ENLARGED).save(self.folder / f"{self.name}-tray.png")


def main(bundle, folder, window_on):
    # Output may go to a pipe, and the locale may be limited to ASCII.
    sys.stdout.reconfigure(encoding="utf-8", line_buffering=True)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    demo = Demo(bundle, folder, window_on)
    try:
        demo.run()
    except AssertionError as error:
        print(f"   FAILED: {error}")
        process = demo.program.process
        print(f"   program: exit code {process.exit_code}, wrote {process.errors or 'nothing'}")
        demo.desktop.picture().save(folder / "failed.png")
        return 1
    finally:
        demo.close()
    print(f"\nEvery step showed what it must. Pictures: {folder}")
    return 0


if __name__ == "__main__":
    arguments = sys.argv[1:]
    window = arguments[2:] == ["--window"]
    if len(arguments) != 2 and not window:
        sys.exit(__doc__)
    sys.exit(main(Path(arguments[0]).absolute(), Path(arguments[1]).absolute(), dict(os.environ) if window else None))
