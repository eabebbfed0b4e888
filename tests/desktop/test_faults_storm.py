# SPDX-License-Identifier: GPL-3.0-or-later
"""Storms: an endless stream of udev events, or of edits of the preferences."""

import json
import os
import statistics
import time
import unittest

from support.faults import PREFERENCES, SHOW_SECONDS, FaultCase, most_growth, most_processor

# The long form, which tools/faults runs, takes a minute.
STORM_SECONDS = 60 if "VELMORA_LONG" in os.environ else 10
EVENTS_A_SECOND = 200
EDITS_A_SECOND = 100

# The program's processor time as a multiple of that of the sender, a script that is told what to send.
MOST_FOR_EVENTS = 1.0
MOST_FOR_EDITS = 4.0

# The kernel queues ten messages for a listener like this one; the program works them off and answers within this time.
MOST_ANSWER_SECONDS = 1
MOST_GROWTH_KIB = 256


class Storm(FaultCase):
    def blow(self, act, rate, most):
        """Calls `act` `rate` times a second. The program must keep up, take no more processor time than `most` allows,
        and not grow."""
        own = slowest = 0.0
        memory = []
        number = 0
        before = self.usage()
        start = time.monotonic()
        while (passed := time.monotonic() - start) < STORM_SECONDS:
            if number > passed * rate:
                time.sleep(number / rate - passed)
            begin = time.process_time()
            act(number)
            own += time.process_time() - begin
            number += 1
            if number % (rate // 2) == 0:
                memory.append(self.usage().private_kib)
                asked = time.monotonic()
                self.soon(lambda: self.item.tooltip, SHOW_SECONDS, "it answers")
                slowest = max(slowest, time.monotonic() - asked)
        taken = self.usage().processor - before.processor
        quarter = len(memory) // 4
        # Something else may take memory for a moment.
        growth = statistics.median(memory[-quarter:]) - statistics.median(memory[quarter : 2 * quarter])
        print(
            f"{number} in {passed:.1f} s; program {taken:.2f} s of the processor, sender {own:.2f} s; slowest answer "
            f"{slowest * 1000:.0f} ms; {growth:+} KiB from the second to the last quarter"
        )
        self.assertGreater(number, passed * rate / 2, "that was no storm")
        self.assertLessEqual(taken, most_processor(own * most))
        self.assertLessEqual(slowest, MOST_ANSWER_SECONDS)
        self.assertLessEqual(growth, most_growth(MOST_GROWTH_KIB))

    def test_of_udev_events(self):
        self.begin()
        missed = []
        self.blow(lambda _: missed.append(self.machine.event("BAT0") == 0), EVENTS_A_SECOND, MOST_FOR_EVENTS)
        self.assertLess(sum(missed), len(missed) / 2, "most of them had no room in the queue")
        self.still_right()

    def test_of_edited_preferences(self):
        """Another program replaces the file again and again."""
        self.begin()
        texts = [json.dumps(PREFERENCES | {"showPercent": bool(number)}) for number in range(2)]
        fresh = self.screen.defaults_file.with_name("fresh")

        def edit(number):
            fresh.write_text(texts[number % 2], encoding="utf-8")
            fresh.rename(self.screen.defaults_file)

        self.blow(edit, EDITS_A_SECOND, MOST_FOR_EDITS)
        # The last edit takes effect.
        for number, label in ((0, None), (1, " 64%")):
            edit(number)
            self.soon_equal(lambda: self.item.label, label, SHOW_SECONDS)
        fresh.write_text(json.dumps(PREFERENCES), encoding="utf-8")
        fresh.rename(self.screen.defaults_file)
        self.still_right()


if __name__ == "__main__":
    unittest.main()
