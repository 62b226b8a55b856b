# SPDX-License-Identifier: GPL-2.0-or-later
"""What batch mode tells of a session before it is burned."""

import os
import unittest

from road import SECTOR, RoadTest


class Summary(RoadTest):
    def disc_with(self, *names):
        source = os.path.join(self.folder, "source")
        os.makedirs(source)
        for name in names:
            with open(os.path.join(source, name), "w", encoding="utf-8") as file:
                file.write(name)
        return self.make_disc(source=source, label="SAMPLE")

    def test_changes_and_room_are_told_in_words_and_numbers(self):
        disc = self.disc_with("kept", "replaced", "renamed", "deleted")
        outcome = self.batch(disc, "sh", "-ec", """
            echo new > replaced.new; mv replaced.new replaced
            mv renamed elsewhere; rm deleted
            mkdir folder; echo 1 > folder/one; echo 2 > folder/two
            """)
        self.assertEqual(outcome["state"], "burned")
        summary = outcome["summary"]
        self.assertEqual(summary["added"], {"files": 2, "folders": 1})
        for change in ("replaced", "renamed", "deleted"):
            self.assertEqual(summary[change], {"files": 1, "folders": 0}, change)
        self.assertGreater(summary["bytes_needed"], 0)
        self.assertEqual(summary["bytes_needed"] % SECTOR, 0)
        self.assertGreater(summary["bytes_free_afterwards"], 0)
        self.assertIsNone(summary["problem"])
        self.assertIsNone(outcome["warning"])
        for line in ("Added: 2 files, 1 folder", "Replaced: 1 file", "Renamed or moved: 1 file", "Deleted: 1 file"):
            self.assertIn(line, outcome["lines"])

    def test_what_patterns_do_besides_is_told_before_the_burn(self):
        disc = self.disc_with("x*y", "back\\slash")
        outcome = self.batch(disc, "sh", "-ec", "rm 'x*y' 'back\\slash'; echo 1 > x1y")
        self.assertEqual(outcome["state"], "burned")
        self.assertEqual(outcome["summary"]["hidden_too"], ["x1y"])
        self.assertEqual(outcome["summary"]["shown_still"], ["back\\slash"])
        told = [number for number, line in enumerate(outcome["lines"]) if "“back\\slash”" in line]
        begun = outcome["lines"].index("Preparing to burn…")
        self.assertEqual(len(told), 1, outcome["lines"])
        self.assertLess(told[0], begun)

    def test_where_nothing_is_burned_nothing_is_found_out(self):
        disc = self.disc_with("kept")
        for command, state in (("echo new > new; exit 1", "command-failed"), ("true", "unchanged")):
            outcome = self.batch(disc, "sh", "-ec", command, status=1 if state == "command-failed" else 0)
            self.assertEqual(outcome["state"], state)
            self.assertIsNone(outcome["summary"])


if __name__ == "__main__":
    unittest.main()
