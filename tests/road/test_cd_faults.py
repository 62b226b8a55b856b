# SPDX-License-Identifier: GPL-2.0-or-later
"""Faults while a CD is burned."""

import unittest

from fault_road import BURNED, FAILED, Fault, Faults


class FaultsOfCds(Faults):
    def check_all(self, fault):
        for media in ("cd-r", "cd-rw"):
            self.check(media, fault)

    def test_a_sector_cannot_be_written(self):
        self.check_all(Fault("on write 20: sense 3/0C/00", log=FAILED, disc="broken"))

    def test_the_laser_power_cannot_be_calibrated(self):
        # Whether only the data fails, or also what would fill the track up.
        self.check_all(Fault("on write: sense 3/73/03", log=FAILED))
        self.check_all(Fault("on write and later: sense 3/73/03", log=FAILED))

    def test_the_disc_is_full_in_the_middle(self):
        self.check_all(Fault("on write 20 and later: full", log=FAILED, disc="broken"))

    def test_the_drive_disappears_in_the_middle(self):
        self.check_all(Fault("on write 20: gone", log=FAILED, disc="read"))

    def test_nobody_gets_the_drive_alone(self):
        warning = ("WARNING! Exclusive access to burning device denied after CD imaging! Burn is likely to fail!",)
        self.check_all(Fault("exclusive: refused", log=warning + FAILED))

    def test_the_session_cannot_be_closed(self):
        self.check_all(Fault("on close and later: sense 3/0C/00", log=FAILED, disc="read"))

    def test_the_medium_may_have_changed(self):
        for media, number in (("cd-rw", 1), ("cd-rw", 5), ("cd-rw", 20), ("cd-rw", 40), ("cd-r", 1), ("cd-r", 20)):
            self.check(media, Fault(f"on command {number}: attention", state="burned", log=BURNED, disc="new"))

    def test_the_new_session_is_seen_after_loading_only(self):
        self.check_all(Fault("after close: stale", state="burned", log=BURNED, disc="new"))

    def test_the_drive_tells_of_the_new_session(self):
        self.check_all(Fault("after close: attention", state="burned", log=BURNED, disc="new"))

    def test_the_drive_takes_its_time_with_the_disc(self):
        for media in ("cd-r", "cd-rw"):
            with self.subTest(media=media):
                self.check_slow_loading(media)

    def test_the_drive_never_knows_the_disc(self):
        for media in ("cd-r", "cd-rw"):
            with self.subTest(media=media):
                self.check_endless_loading(media)

    def test_the_first_session_of_a_blank_disc_breaks_off(self):
        # Nothing that can be read has been written, and the disc has been begun: it can be erased, a CD-R cannot.
        for media in ("cd-r", "cd-rw"):
            disc = self.make_disc(media=media, name=f"blank-{media}")
            self.put_script(disc, "on write 20: sense 3/0C/00")
            outcome = self.batch(disc, "sh", "-c", "head -c 3000000 /dev/urandom > new.bin", status=4)
            with self.subTest(media=media):
                self.assertEqual(outcome["state"], "burn-failed")
                self.assertIn(self.texts["CDBurnError"], outcome["error"])


if __name__ == "__main__":
    unittest.main()
