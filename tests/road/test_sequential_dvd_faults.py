# SPDX-License-Identifier: GPL-2.0-or-later
"""Faults while growisofs adds a session to a sequential DVD."""

import os
import shutil
import unittest

from fault_road import Faults
from growisofs_run import run_growisofs


class FaultsOfSequentialDvds(Faults):
    """DVDs to which growisofs adds session after session. The application refuses a DVD-R, and formats a DVD-RW before;
    so growisofs is run as the application runs it, and judged by the application's rule: an error is a line that begins
    with ":-("."""

    FIRST = {"docs", "docs/a.txt", "docs/b.txt", "c.txt"}

    def burn(self, disc, tree):
        """Adds a session, and gives the lines of standard error."""
        hide_list = os.path.join(self.folder, "list.hide")
        with open(hide_list, "w", encoding="utf-8"):
            pass
        return run_growisofs(self.environment, disc, "-M", tree, hide_list)

    def tree_with(self, name):
        tree = os.path.join(self.folder, name)
        os.makedirs(tree, exist_ok=True)
        with open(os.path.join(tree, name), "wb") as file:
            file.write(os.urandom(3000000))
        return tree

    def check_last_session(self, disc, names):
        # By name: where a fault was in the middle, the content of the last file is not all there.
        self.assertEqual(self.paths_by_isoinfo(disc, self.session_starts(disc)[-1], "-R"), self.FIRST | names)

    def check_fault(self, script, words, *, failed=True, shows=frozenset(), then=frozenset(("third",))):
        """`shows` is what the disc has afterwards of the session in which the fault happened, `then` what it has once
        another one was added."""
        for media in ("dvd-r", "dvd-rw"):
            disc = self.disc_with_session(media)
            before = self.digest_of_sessions(disc)
            self.put_script(disc, script)
            lines = self.burn(disc, self.tree_with("second"))
            with self.subTest(media=media, fault=script):
                self.assertEqual(any(line.startswith(":-(") for line in lines), failed, lines)
                self.assertIn(words, "\n".join(lines))
            self.take_script(disc)
            with self.subTest(media=media, after=script):
                self.assertEqual(self.digest_of_sessions(disc)[:1], before)
                self.check_last_session(disc, shows)
                self.burn(disc, self.tree_with("third"))
                self.assertEqual(self.digest_of_sessions(disc)[:1], before)
                self.check_last_session(disc, shows | then)
            shutil.rmtree(disc)

    def test_a_sector_cannot_be_written(self):
        # The session is closed all the same; its last file is damaged.
        self.check_fault("on write 20: sense 3/0C/00", ":-[ WRITE@LBA=41f0h failed with SK=3h/WRITE ERROR]",
                         shows={"second"})

    def test_the_disc_is_full_in_the_middle(self):
        self.check_fault("on write 20 and later: full", "END OF USER AREA", shows={"second"})

    def test_the_laser_power_cannot_be_calibrated(self):
        self.check_fault("on write and later: sense 3/73/03", "POWER CALIBRATION AREA ERROR")

    def test_the_laser_power_cannot_be_calibrated_beforehand(self):
        # Nothing is written, and the verdict misses it.
        self.check_fault("on opc: sense 3/73/03", ":-[ PERFORM OPC failed", failed=False)

    def test_the_drive_disappears_in_the_middle(self):
        # The next run goes on with the open track, whose beginning is that of the session before.
        self.check_fault("on write 20: gone", ":-( unable to WRITE@LBA=41f0h: No such device", then={"second"})

    def test_nobody_gets_the_drive_alone(self):
        self.check_fault("exclusive: refused", ":-( unable to O_EXCL")

    def test_the_session_cannot_be_closed(self):
        # Its track stays open; the next run has nothing to add to it, and says so.
        self.check_fault("on close and later: sense 3/0C/00", ":-[ CLOSE SESSION failed", failed=False,
                         then=frozenset())

    def test_the_cache_cannot_be_flushed(self):
        self.check_fault("on sync: sense 3/0C/00", ":-[ FLUSH CACHE failed", failed=False, shows={"second"})

    def test_the_new_session_is_seen_after_loading_only(self):
        self.check_fault("after close: stale", "closing session", failed=False, shows={"second"})

    def test_the_drive_tells_of_the_new_session(self):
        self.check_fault("after close: attention", "closing session", failed=False, shows={"second"})

    def test_the_medium_may_have_changed_before_the_burn(self):
        self.check_fault("on command 5: attention", ":-[ READ SESSION INFO failed", failed=False)

    def test_the_medium_may_have_changed_during_the_burn(self):
        self.check_fault("on write 10: attention", ":-( write failed", shows={"second"})


if __name__ == "__main__":
    unittest.main()
