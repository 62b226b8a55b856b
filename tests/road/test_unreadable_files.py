# SPDX-License-Identifier: GPL-2.0-or-later
"""Files of the volume that cannot be read when it is burned."""

import os
import unittest

from road import RoadTest, run


class UnreadableFiles(RoadTest):
    """A file that nobody may read, which for root is no obstacle."""

    WITHOUT_ROOTS_EYES = ("setpriv", "--inh-caps=-dac_override,-dac_read_search",
                          "--bounding-set=-dac_override,-dac_read_search")
    SCRIPT = "echo x > open.txt; echo x > secret.txt; chmod 000 secret.txt"

    def setUp(self):
        super().setUp()
        self.wrapper = self.WITHOUT_ROOTS_EYES if os.geteuid() == 0 else ()
        if self.wrapper and run(*self.wrapper, "true", check=False).returncode != 0:
            self.skipTest("root's right to read everything cannot be taken away here")

    def test_on_a_cd_the_file_is_named_and_nothing_is_burned(self):
        disc = self.make_disc(media="cd-r")
        outcome = self.batch(disc, "sh", "-ec", self.SCRIPT, wrapper=self.wrapper, status=4)
        self.assertEqual(outcome["state"], "burn-failed")
        self.assertIn("“secret.txt”", outcome["error"])
        self.assertEqual(self.sessions(disc), [])
        # The image of a failed imaging stays for whoever wants to see it.
        for name in os.listdir(os.path.join(self.prefix, "tmp")):
            self.assertTrue(name.endswith(".iso"), name)
            os.remove(os.path.join(self.prefix, "tmp", name))

    def test_on_a_dvd_the_session_lacks_the_file_and_the_user_is_told(self):
        disc = self.make_disc(media="dvd+rw")
        outcome = self.batch(disc, "sh", "-ec", self.SCRIPT, wrapper=self.wrapper)
        self.assertEqual(outcome["state"], "burned")
        self.assertIn("look at it before you rely on it", outcome["warning"])
        self.assertIn("“secret.txt”", outcome["warning"])
        self.assertIn("“secret.txt”", outcome["summary"]["problem"], "it was foretold, too")
        named = [line for line in outcome["lines"] if line.startswith("kelvanefs: growisofs: ")]
        self.assertEqual(len(named), 1, outcome["lines"])
        self.assertIn("secret.txt is not readable", named[0])
        self.assertEqual(set(self.tree_by_our_mount(disc, 0)), {"open.txt"})


if __name__ == "__main__":
    unittest.main()
