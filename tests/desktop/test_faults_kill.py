# SPDX-License-Identifier: GPL-3.0-or-later
"""The program is killed at random moments, again and again through a week."""

import json
import os
import random
import time
import unittest

from support import history
from support.clock import WallClock
from support.faults import PREFERENCES, SHOW_SECONDS, FaultCase

# The long form, which tools/faults runs, or the short one for the test suite.
LIVES = 400 if "VELMORA_LONG" in os.environ else 20
WEEK = 7 * 86400

# Few enough that at the end of the week none of them is old enough to be dropped.
OLD_SAMPLES = 20000

# A change of the charge alone may wait this long to be written to the disk.
LONGEST_WAIT = 300

# A start takes some tenths of a second, the reaction to a change some hundredths.
EARLY_SECONDS = 0.5
SOON_SECONDS = 0.04


class Week(FaultCase):
    def setUp(self):
        self.seed = int(os.environ.get("VELMORA_SEED", time.time_ns() % 1000000))
        self.dice = random.Random(self.seed)
        self.screen = self.small_desktop()
        self.old = history.write_old(self.screen, OLD_SAMPLES)
        self.known = list(self.old)  # certainly on the disk
        self.screen.defaults_file.parent.mkdir()
        self.screen.defaults_file.write_text(json.dumps(PREFERENCES), encoding="utf-8")
        self.clock = WallClock(self.screen.folder)
        self.machine = self.laptop()
        self.level, self.plugged = 64, False
        self.last_save = None  # its latest possible time, in seconds of the program's clock
        self.item = None

    def now(self):
        return time.time() + self.clock.ahead

    def on_disk(self):
        """Returns the samples on the disk: all earlier ones, and besides them only charges that the battery had."""
        samples = history.samples(history.read(self.screen)[1])
        self.assertTrue(samples[: len(self.known)] == self.known, f"something is missing; seed {self.seed}")
        for sample in samples[len(self.known) :]:
            self.assertIn(sample["p"], self.had, f"seed {self.seed}")
            self.assertLess(abs(sample["t"] - self.now()), WEEK)
        return samples

    def must_be_saved(self):
        """The program's latest reading is on the disk as soon as that has written it, and everything before it."""
        reading = [self.level, self.plugged, self.plugged]
        last = lambda: [history.samples(history.read(self.screen)[1])[-1][key] for key in "pca"]
        self.soon_equal(last, reading, SHOW_SECONDS)
        samples = self.on_disk()
        # Every charge shown since the last save, in order.
        shown = [sample["p"] for sample in samples[len(self.known) :]]
        for level in self.pending:
            self.assertIn(level, shown, f"seed {self.seed}")
            del shown[: shown.index(level)]
        self.known = samples
        self.pending = []
        self.last_save = self.now()

    def is_taken_in(self):
        status = "Charging" if self.plugged else "On battery"
        self.soon(
            lambda: self.item.label == f" {self.level}%" and f"· {status}" in self.item.tooltip[0],
            SHOW_SECONDS,
            f"{self.level}%, {status}; seed {self.seed}",
        )

    def act(self):
        """The battery changes, or time passes. Returns whether the change must be on the disk once it is shown."""
        kind = self.dice.choice(["charge", "charge", "plug", "time"])
        if kind == "time":
            self.clock.set(self.clock.ahead + self.dice.randint(30, 900))
            kind = "charge"
        if kind == "plug":
            self.plugged = not self.plugged
            (self.machine.plug if self.plugged else self.machine.unplug)()
            return True
        self.level = self.dice.choice([level for level in range(20, 90) if level != self.level])
        self.had.add(self.level)
        late = self.last_save is not None and self.now() - self.last_save > LONGEST_WAIT
        self.machine.set_level(self.level)
        self.machine.event("BAT0")
        return late

    def live(self):
        """One start, some changes, and a kill at a random moment."""
        self.had = {self.level}
        self.pending = []
        program = self.start(self.screen, self.machine, self.clock.environment)
        self.addCleanup(self.clock.clean_up, program.process.pid)
        self.item = program.item
        if self.dice.random() < 0.3:
            time.sleep(self.dice.uniform(0, EARLY_SECONDS))
        else:
            self.is_taken_in()
            self.must_be_saved()
            for _ in range(self.dice.randint(0, 3)):
                saved = self.act()
                self.is_taken_in()
                self.pending.append(self.level)
                if saved:
                    self.must_be_saved()
            self.act()
            time.sleep(self.dice.uniform(0, SOON_SECONDS))
        program.process.kill()
        self.clock.clean_up(program.process.pid)
        if self.level not in self.had:
            self.fail("the test forgot a level")
        after = self.on_disk()
        halves = len(list(self.screen.history_file.parent.iterdir())) - 1
        written = len(after) - len(self.known)
        self.known = after
        return halves, written

    def test_of_random_ends(self):
        halves = written = 0
        for number in range(LIVES):
            self.clock.set(max(self.clock.ahead, WEEK * number // LIVES))
            one_half, one_written = self.live()
            halves += one_half
            written += bool(one_written)
        print(f"seed {self.seed}: killed {LIVES} times, {halves} of them while the history was being written; "
              f"in {written} the last change was already on the disk; {len(self.known) - len(self.old)} new samples")
        program = self.start_and_wait(self.screen, self.machine, self.clock.environment)
        self.item = program.item
        self.is_taken_in()
        # Halves are removed once the panel has the item, which the end would not wait for.
        for file in (self.screen.history_file, self.screen.defaults_file):
            self.soon_equal(lambda: [other.name for other in file.parent.iterdir()], [file.name], SHOW_SECONDS)
        self.assertEqual(program.process.stop(), 0)
        self.clock.clean_up(program.process.pid)
        self.assertTrue(self.on_disk()[: len(self.old)] == self.old, "what was there before is as it was")
        self.assertEqual(json.loads(self.screen.defaults_file.read_text(encoding="utf-8")), PREFERENCES)


if __name__ == "__main__":
    unittest.main()
