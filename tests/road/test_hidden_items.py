# SPDX-License-Identifier: GPL-2.0-or-later
"""What the pattern of a deleted name hides besides, from the volume to the disc, read back by everybody. The confirmation
sheet foretells these items by the same rule."""

import os
import unittest

from road import RoadTest


class HiddenItems(RoadTest):
    def disc_with(self, *names):
        source = os.path.join(self.folder, "source")
        for name in names:
            path = os.path.join(source, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "w", encoding="utf-8") as file:
                file.write(name)
        return self.make_disc(source=source, label="SAMPLE")

    def check(self, disc, script, missing):
        """Runs the script on the volume; the session has all that the volume showed, without `missing` and what is in it."""
        shown, _ = self.edit(disc, script)
        gone = {path for path in shown if path in missing or path.startswith(tuple(name + "/" for name in missing))}
        self.assertEqual({path for path in gone if "/" not in path or path in missing}, set(missing))
        self.assert_last_session_equals(disc, {path: entry for path, entry in shown.items() if path not in gone})

    def test_new_items_that_a_star_matches_are_missing_and_old_ones_are_not(self):
        disc = self.disc_with("x*y", "xoldy", "docs/xoldy")
        self.check(disc, """
            rm 'x*y'
            echo 1 > x1y; echo 2 > xyz; echo 3 > docs/x3y
            mkdir xfoldy; echo 4 > xfoldy/inside
            """, ["x1y", "xfoldy"])

    def test_changed_and_moved_items_are_missing_too(self):
        disc = self.disc_with("Müller.txt", "Maller.txt", "Moller.txt", "away.txt")
        self.check(disc, """
            rm Müller.txt
            echo changed > Maller.new; mv Maller.new Maller.txt
            mv away.txt Meeller.txt
            """, ["Maller.txt", "Meeller.txt"])

    def test_without_a_pattern_nothing_is_missing(self):
        disc = self.disc_with("a.txt", "docs/b.txt")
        self.check(disc, "rm a.txt; rm -r docs; echo 1 > aXtxt; mkdir docs2; echo 2 > docs2/b.txt", [])


if __name__ == "__main__":
    unittest.main()
