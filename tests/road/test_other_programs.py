# SPDX-License-Identifier: GPL-2.0-or-later
"""Sessions that other programs have appended through an emulated drive are opened and edited like our own."""

import os
import unittest

from road import RoadTest, run, sha256_of_sectors


class OtherPrograms(RoadTest):
    def setUp(self):
        super().setUp()
        self.source = os.path.join(self.folder, "source")
        os.makedirs(os.path.join(self.source, "docs"))
        with open(os.path.join(self.source, "docs/first.txt"), "w", encoding="utf-8") as file:
            file.write("first")
        self.disc = self.make_disc(source=self.source, label="SAMPLE")
        self.addition = os.path.join(self.folder, "addition")
        os.mkdir(self.addition)
        with open(os.path.join(self.addition, "added.txt"), "w", encoding="utf-8") as file:
            file.write("added elsewhere")

    def check_that_it_is_edited(self):
        track = self.sessions(self.disc)[0]["tracks"][0]
        first = (track["start"], track["start"] + track["sectors"])
        digest = sha256_of_sectors(self.disc, *first)
        shown, outcome = self.edit(self.disc, "test -e docs/first.txt; mv added.txt docs/moved.txt; echo x > new")
        self.assertEqual(outcome["session"], 3)
        self.assertEqual(set(shown), {"docs", "docs/first.txt", "docs/moved.txt", "new"})
        self.assert_last_session_equals(self.disc, shown)
        self.assertEqual(sha256_of_sectors(self.disc, *first), digest)

    def test_a_session_appended_by_cdrskin(self):
        info = self.info(self.disc)
        last = self.sessions(self.disc)[-1]["tracks"][0]["start"]
        image = os.path.join(self.folder, "addition.iso")
        run("genisoimage", "-quiet", "-D", "-r", "-J", "-joliet-long", "-V", "SAMPLE", "-o", image,
            "-M", os.path.join(self.disc, "sectors"), "-C", f"{last},{info['next_writable_address']}", self.addition)
        self.kelvanedisc("run", self.disc, "--", "cdrskin", "dev=/dev/sr0", "-multi", "-tao", image)
        self.check_that_it_is_edited()

    def test_a_session_appended_by_xorriso(self):
        self.kelvanedisc("run", self.disc, "--", "xorriso", "-dev", "/dev/sr0", "-joliet", "on", "-map",
                         os.path.join(self.addition, "added.txt"), "/added.txt", "-close", "off", "-commit")
        self.check_that_it_is_edited()


if __name__ == "__main__":
    unittest.main()
