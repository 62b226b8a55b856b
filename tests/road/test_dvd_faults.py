# SPDX-License-Identifier: GPL-2.0-or-later
"""Faults while a DVD is prepared or burned that is overwritten at will."""

import os
import shutil
import unittest

from fault_road import DVD_BURNED, DVD_FAILED, FIRST_DATA_SECTOR, Fault, Faults
from road import BIN, LIBEXEC, run, sha256_of_sectors


class FaultsOfDvds(Faults):
    """Media that are overwritten at will: the new session is found only once the volume descriptors, which come last, are
    written."""

    def disc_with_session(self, media):
        if media != "dvd-rw":
            return super().disc_with_session(media)
        self.discs += 1
        disc = self.make_disc(name=f"disc{self.discs}", media=media)
        # The application itself makes it one that is overwritten.
        self.edit(disc, f'cp -r "{self.source}"/. .')
        return disc

    def digest_of_sessions(self, disc):
        """There is one session, which grows; its beginning is replaced."""
        if self.ends.get(disc) is None:
            self.ends[disc] = self.sessions(disc)[0]["tracks"][0]["sectors"]
        return [sha256_of_sectors(disc, FIRST_DATA_SECTOR, self.ends[disc])]

    def setUp(self):
        super().setUp()
        self.ends = {}

    def check_all(self, fault):
        for media in ("dvd-rw", "dvd+rw"):
            self.check(media, fault)

    def test_a_sector_cannot_be_written(self):
        self.check_all(Fault("on write 20: sense 3/0C/00", key="DVDBurnError", log=DVD_FAILED))

    def test_the_laser_power_cannot_be_calibrated(self):
        self.check_all(Fault("on write and later: sense 3/73/03", key="DVDBurnError", log=DVD_FAILED))

    def test_the_laser_power_cannot_be_calibrated_beforehand(self):
        # Only for a DVD-RW growisofs asks for it. It gives up, and the verdict misses that.
        self.check("dvd-rw", Fault("on opc: sense 3/73/03", state="burned",
                                   log=[*DVD_BURNED, "growisofs: :-[ PERFORM OPC failed"]))

    def test_the_disc_is_full_in_the_middle(self):
        self.check_all(Fault("on write 20 and later: full", key="DVDBurnError", log=DVD_FAILED))

    def test_the_drive_disappears_in_the_middle(self):
        self.check_all(Fault("on write 20: gone", key="DVDBurnError", log=DVD_FAILED))

    def test_nobody_gets_the_drive_alone(self):
        self.check_all(Fault("exclusive: refused", key="DVDBurnError", log=DVD_FAILED))

    def test_the_session_cannot_be_closed(self):
        # To growisofs that is no failure: all data is there. The log has its words.
        self.check_all(Fault("on close and later: sense 3/0C/00", state="burned", disc="new",
                             log=[*DVD_BURNED, "growisofs: :-[ CLOSE SESSION failed"]))

    def test_the_new_session_is_seen_after_loading_only(self):
        self.check_all(Fault("after close: stale", state="burned", disc="new", log=DVD_BURNED))

    def test_the_drive_tells_of_the_new_session(self):
        self.check_all(Fault("after close: attention", state="burned", disc="new", log=DVD_BURNED))

    def test_the_medium_may_have_changed(self):
        for number in (1, 20):
            self.check_all(Fault(f"on command {number}: attention", state="burned", disc="new", log=DVD_BURNED))

    def test_the_progress_until_then_is_told_in_every_language(self):
        for language in ("C.UTF-8", "de_DE.UTF-8"):
            with self.subTest(language=language):
                disc = self.disc_with_session("dvd+rw")
                # In the middle of the file.
                self.put_script(disc, "on write 500: sense 3/0C/00")
                self.environment["LC_ALL"] = language
                outcome = self.batch(disc, "sh", "-c", "head -c 30000000 /dev/urandom > new.bin", status=4)
                self.assertIn("30% written.", "\n".join(outcome["lines"]))

    def test_the_drive_takes_its_time_with_the_disc(self):
        for media in ("dvd-rw", "dvd+rw"):
            with self.subTest(media=media):
                self.check_slow_loading(media)

    def test_the_drive_never_knows_the_disc(self):
        for media in ("dvd-rw", "dvd+rw"):
            with self.subTest(media=media):
                self.check_endless_loading(media)


class FaultsOfPreparation(Faults):
    """A blank DVD-RW is formatted before its first session."""

    def test_a_disc_that_cannot_be_formatted_is_written_all_the_same(self):
        # As a sequential one, which the application takes for blank afterwards.
        disc = self.make_disc(media="dvd-rw")
        self.put_script(disc, "on format and later: sense 3/31/01")
        shown, outcome = self.edit(disc, f'cp -r "{self.source}"/. .')
        self.assertTrue(any("preparing finished with status: " in line for line in outcome["lines"]))
        self.assertEqual(self.info(disc)["mode"], "sequential")
        self.assert_last_session_equals(disc, shown)

    def check_first_session(self, script, detail):
        """A fault while a DVD-RW that could not be formatted gets its first session."""
        self.discs += 1
        disc = self.make_disc(name=f"disc{self.discs}", media="dvd-rw")
        self.put_script(disc, "on format and later: sense 3/31/01\n" + script)
        outcome = self.batch(disc, "sh", "-c", "head -c 3000000 /dev/urandom > new.bin", status=4)
        with self.subTest(fault=script):
            self.assertEqual(outcome["state"], "burn-failed")
            self.assertIn(self.texts["DVDBurnError"], outcome["error"])
            self.assertIn(detail, outcome["error"])
        self.take_script(disc)
        with self.subTest(after=script):
            self.assert_nothing_is_left()
            # Nothing was lost with it.
            run(os.path.join(BIN, "kelvanefs"), "erase", "--yes", "--drive", disc, env=self.environment)
            shown, _ = self.edit(disc, "echo new > new.txt")
            self.assert_last_session_equals(disc, shown)

    def test_the_first_session_of_a_sequential_one_breaks_off(self):
        self.check_first_session("on write 20: sense 3/0C/00", "WRITE ERROR")
        self.check_first_session("on write and later: sense 3/73/03", "POWER CALIBRATION AREA ERROR")
        self.check_first_session("on write 20 and later: full", self.texts["ReasonDiscFull"])
        self.check_first_session("on write 20: gone", "No such device")

    def test_a_drive_that_does_not_find_its_way_back_to_the_prepared_disc_is_told(self):
        # One that takes the formatted disc out and in by itself. The formatter does not; so one that does stands in its
        # place in a copy of the installation.
        disc = self.make_disc(media="dvd-rw")
        installation = os.path.join(self.folder, "installation")
        libexec = os.path.join(installation, "libexec", "kelvanefs")
        shutil.copytree(LIBEXEC, libexec, ignore=shutil.ignore_patterns("df"))
        shutil.copytree(BIN, os.path.join(installation, "bin"))
        formatter = os.path.join(libexec, "df")
        tray = os.path.join(BIN, "kelvanedisc")
        with open(formatter, "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\n"{LIBEXEC}/df" "$@"\n"{tray}" eject "{disc}"\n"{tray}" insert "{disc}"\n')
        os.chmod(formatter, 0o755)
        self.put_script(disc, "load: never ready")
        outcome = self.batch(disc, "sh", "-c", "echo x > new", status=4,
                             program=os.path.join(installation, "bin", "kelvanefs"))
        self.assertEqual(outcome["state"], "burn-failed")
        self.assertIn(self.texts["DVDDeviceNotResponding"], outcome["error"])
        self.assertFalse(any(self.texts["burningchangesdvd"] in line for line in outcome["lines"]))
        self.take_script(disc)
        shown, _ = self.edit(disc, "echo new > new.txt")
        self.assert_last_session_equals(disc, shown)


if __name__ == "__main__":
    unittest.main()
