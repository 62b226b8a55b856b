# SPDX-License-Identifier: GPL-2.0-or-later
"""What goes wrong with a drive or a disc during a burn: the application says so, comes to rest, and leaves the earlier
sessions as they were."""

import json
import os
import shutil
import signal
import unittest
from xml.etree import ElementTree

from growisofs_run import run_growisofs
from road import BIN, LIBEXEC, RoadTest, run, sha256_of_sectors

STRINGS = os.path.join(os.path.dirname(__file__), "..", "..", "resources", "strings", "kelvanefs_en.ts")
FIRST = {"docs/a.txt": "first", "docs/b.txt": "second", "c.txt": "third"}


def texts():
    """The texts of the strings table by their keys."""
    messages = ElementTree.parse(STRINGS).getroot().iter("message")
    return {message.get("id"): message.findtext("translation") for message in messages}


class Fault:
    """One row of the table: the script beside the disc, and what has to come of it."""

    def __init__(self, script, state="burn-failed", key="CDBurnError", detail="", log=(), disc="old"):
        self.script = script
        self.state = state
        # The message of the alert, by its key, and words that it has to hold.
        self.key = key
        self.detail = detail
        self.log = log
        # What is to be seen of the disc afterwards: "old" as before, "new" as edited, "broken" as edited with the last
        # file damaged, "read" as before and no further session can be added.
        self.disc = disc


FAILED = ("cd burn finished with state: DRStatusStateFailed", "CD burning failed: ")
DVD_BURNED = ("DVDBurn finished successfully!",)
DVD_FAILED = ("burnerrors: ",)
# Behind the error correction block of the volume descriptors.
FIRST_DATA_SECTOR = 32
BURNED = ("cd burn finished with state: DRStatusStateDone",)


class Faults(RoadTest):
    def setUp(self):
        super().setUp()
        self.texts = texts()
        self.discs = 0
        self.source = os.path.join(self.folder, "source")
        for name, content in FIRST.items():
            path = os.path.join(self.source, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "w", encoding="utf-8") as file:
                file.write(content)

    def put_script(self, disc, script):
        with open(os.path.join(disc, "faults"), "w", encoding="utf-8") as file:
            file.write(script)

    def take_script(self, disc):
        """Mends the drive: without the script, and plugged in again where it was gone."""
        for name in ("faults", "faults.state"):
            if os.path.exists(os.path.join(disc, name)):
                os.remove(os.path.join(disc, name))
        gone = os.path.join(disc, "disc.json.gone")
        if os.path.exists(gone):
            os.rename(gone, os.path.join(disc, "disc.json"))

    def disc_with_session(self, media):
        self.discs += 1
        return self.make_disc(name=f"disc{self.discs}", media=media, source=self.source, label="SAMPLE")

    def digest_of_sessions(self, disc):
        tracks = [session["tracks"][0] for session in self.sessions(disc)]
        return [sha256_of_sectors(disc, track["start"], track["start"] + track["sectors"]) for track in tracks]

    def check(self, media, fault):
        disc = self.disc_with_session(media)
        before = self.digest_of_sessions(disc)
        self.put_script(disc, fault.script)
        edit = "head -c 3000000 /dev/urandom > new.bin; rm docs/a.txt; mv c.txt d.txt"
        process = self.start_batch(disc, "sh", "-ec", edit)
        output, errors = process.communicate(timeout=300)
        with self.subTest(media=media, fault=fault.script):
            self.check_outcome(media, fault, output, errors)
        self.take_script(disc)
        with self.subTest(media=media, after=fault.script):
            self.assertEqual(self.digest_of_sessions(disc)[:len(before)], before)
            self.assert_nothing_is_left()
            if fault.disc == "read":
                self.batch(disc, "sh", "-c", "test -f docs/a.txt && test -f c.txt && cat docs/b.txt | grep second")
            else:
                self.check_next_edit(disc, fault.disc)

    def check_outcome(self, media, fault, output, errors):
        self.assertIn(f'"{fault.state}"', output, errors)
        # A CD has sessions that can be counted; this is its second, whatever the drive says of it yet.
        if fault.state == "burned" and media.startswith("cd"):
            self.assertEqual(json.loads(output)["session"], 2)
        if fault.state == "burn-failed":
            self.assertIn(self.texts[fault.key], errors)
        self.assertIn(fault.detail, errors)
        for line in fault.log:
            self.assertIn(line, errors)

    def check_next_edit(self, disc, state):
        # A file that is damaged on the disc is put there once more.
        repair = "head -c 3000000 /dev/urandom > new.bin; " if state == "broken" else ""
        shown, _ = self.edit(disc, repair + "echo mended > mended.txt")
        if state == "old":
            expected = {"docs", "docs/a.txt", "docs/b.txt", "c.txt", "mended.txt"}
        else:
            expected = {"docs", "docs/b.txt", "d.txt", "new.bin", "mended.txt"}
        self.assertEqual(set(shown), expected)
        self.assert_last_session_equals(disc, shown)


    def check_slow_loading(self, media):
        disc = self.disc_with_session(media)
        self.kelvanedisc("eject", disc)
        self.put_script(disc, "load: not ready 2500 ms")
        shown, _ = self.edit(disc, "echo new > new.txt")
        self.assert_last_session_equals(disc, shown)

    def check_endless_loading(self, media):
        disc = self.disc_with_session(media)
        self.kelvanedisc("eject", disc)
        self.put_script(disc, "load: never ready")
        process = self.start_batch(disc, "false")
        line = ""
        while "Waiting for the drive to find out what disc is in it." not in line:
            line = process.stderr.readline()
            self.assertTrue(line, "ended without waiting")
        process.send_signal(signal.SIGTERM)
        output, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 128 + signal.SIGTERM, errors)
        self.assertIn('"interrupted"', output)


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

    def test_on_a_dvd_the_session_lacks_the_file_and_the_log_names_it(self):
        disc = self.make_disc(media="dvd+rw")
        outcome = self.batch(disc, "sh", "-ec", self.SCRIPT, wrapper=self.wrapper)
        self.assertEqual(outcome["state"], "burned")
        named = [line for line in outcome["lines"] if line.startswith("kelvanefs: growisofs: ")]
        self.assertEqual(len(named), 1, outcome["lines"])
        self.assertIn("secret.txt is not readable", named[0])
        self.assertEqual(set(self.tree_by_our_mount(disc, 0)), {"open.txt"})


if __name__ == "__main__":
    unittest.main()
