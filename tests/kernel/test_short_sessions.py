# SPDX-License-Identifier: GPL-2.0-or-later
"""What the kernel shows of the sessions that the application adds to a disc."""

import os
import unittest

from rig import BUILD, KELVANEDISC, GuestTest, make_tree, run


@unittest.skipUnless(os.access("/dev/fuse", os.R_OK | os.W_OK), "no volume can be mounted here")
class LaterSessions(GuestTest):
    LONG = "a name that is longer than the sixty-four characters which the kernel shows of a name of Joliet"

    def change(self, disc, commands):
        """What a user does with the disc on this machine, in an emulated drive."""
        prefix = self.path("prefix")
        for folder in ["tmp", "Volumes"]:
            os.makedirs(os.path.join(prefix, folder), exist_ok=True)
        environment = dict(os.environ, KELVANEFS_PREFIX=prefix, XDG_CONFIG_HOME=self.path("config"), LC_ALL="C.UTF-8")
        run(os.path.join(BUILD, "bin/kelvanefs"), "batch", "--drive", disc, "--", "sh", "-ec", commands, env=environment)
        run(KELVANEDISC, "insert", disc)

    def test_links_rights_and_long_names_are_those_of_rock_ridge(self):
        disc = self.make_disc("disc", "cd-r", make_tree(self.path("first"), 1))
        numbers = [2, 3]
        for number in numbers:
            self.change(disc, f"echo {number} > file{number}; ln -s file{number} link{number}; echo > '{self.LONG} {number}'")
        self.guest("""
plug disc.kvdisc
look() {
  (cd /tmp/disc && stat -c '%n:%F:%a' -- *) > /share/seen
}
with_disc look
unplug
""")
        with open(self.path("seen"), encoding="utf-8") as file:
            seen = file.read().splitlines()
        for number in numbers:
            for line in [f"file{number}:regular file:444", f"link{number}:symbolic link:555",
                         f"{self.LONG} {number}:regular file:444"]:
                self.assertIn(line, seen)


if __name__ == "__main__":
    unittest.main()
