# SPDX-License-Identifier: GPL-2.0-or-later
"""DVDs on the whole road: session after session, and what cannot be opened or burned."""

import json
import os
import shutil
import signal
import unittest

from road import SECTOR, RoadTest, sha256_of, sha256_of_sectors, wait_until
from session_road import SessionRoad

# Where data begins on a disc whose volume descriptors are replaced by every session: behind their error correction block.
FIRST_DATA_SECTOR = 32


class DvdSessions(SessionRoad):
    """DVD+RW and DVD-RW are overwritten at will: one session grows, and only its volume descriptors are replaced."""

    def check_outcome(self, outcome, number):
        self.assertIsNone(outcome["session"])

    def span_of_session(self, disc, number, earlier):
        sessions = self.sessions(disc)
        self.assertEqual(len(sessions), 1)
        track = sessions[0]["tracks"][0]
        self.assertEqual(track["start"], 0)
        start = earlier[-1][1] if earlier else FIRST_DATA_SECTOR
        # An erased DVD+RW still has the sectors behind its volume; the volume tells how long it is (ECMA-119 8.4.8).
        with open(os.path.join(disc, "sectors"), "rb") as file:
            file.seek(16 * SECTOR + 80)
            end = int.from_bytes(file.read(4), "little")
        self.assertGreater(end, start)
        self.assertLessEqual(end, track["sectors"])
        return start, end

    def test_six_sessions_on_a_dvd_rw(self):
        self.check_road("dvd-rw")

    def test_six_sessions_on_a_dvd_plus_rw(self):
        self.check_road("dvd+rw")


class Dvds(RoadTest):
    def make_sample(self, media, **options):
        source = os.path.join(self.folder, "source")
        os.makedirs(os.path.join(source, "docs"), exist_ok=True)
        for name in ("a.txt", "docs/b.txt"):
            with open(os.path.join(source, name), "w", encoding="utf-8") as file:
                file.write(name)
        return self.make_disc(media=media, source=source, label="SAMPLE", **options)

    def failed(self, disc, script):
        """A burn that fails; gives the batch run's outcome. The changes are gone with it."""
        outcome = self.batch(disc, "sh", "-ec", script, status=4)
        self.assertEqual(outcome["state"], "burn-failed")
        self.assertTrue(any("burnerrors: " in line for line in outcome["lines"]), outcome)
        self.assert_nothing_is_left()
        return outcome

    def test_a_blank_dvd_rw_is_prepared_and_one_with_content_is_not(self):
        disc = self.make_disc(media="dvd-rw")
        _, outcome = self.edit(disc, "echo 1 > one")
        self.assertIn("kelvanefs: preparing finished with status: 0", outcome["lines"])
        _, outcome = self.edit(disc, "echo 2 > two")
        self.assertFalse(any("preparing finished" in line for line in outcome["lines"]))

    def test_a_dvd_rw_that_was_only_prepared_is_still_blank(self):
        disc = self.make_disc(media="dvd-rw")
        self.failed(disc, r"""touch "$(printf 'bad\377name')" """)
        shown, _ = self.edit(disc, "echo 1 > one")
        self.assert_last_session_equals(disc, shown)

    def test_a_dvd_plus_rw_is_not_prepared(self):
        disc = self.make_disc(media="dvd+rw")
        _, outcome = self.edit(disc, "echo 1 > one")
        self.assertFalse(any("preparing finished" in line for line in outcome["lines"]))
        self.assertIn("kelvanefs: DVDBurn finished successfully!", outcome["lines"])

    def test_the_volume_name_and_the_speed_reach_the_disc(self):
        disc = self.make_sample("dvd+rw")
        shown, _ = self.edit(disc, "echo 1 > one", options=["--name", "Second", "--speed", "4"])
        self.assert_last_session_equals(disc, shown)
        with open(os.path.join(disc, "sectors"), "rb") as file:
            file.seek(16 * SECTOR + 40)
            self.assertEqual(file.read(32).decode().rstrip(), "Second")

    def test_only_a_deletion_is_a_change_too(self):
        disc = self.make_sample("dvd+rw")
        shown, _ = self.edit(disc, "rm a.txt")
        self.assertNotIn("a.txt", shown)
        self.assert_last_session_equals(disc, shown)

    def test_nothing_changed_and_discarded_changes_are_not_burned(self):
        disc = self.make_sample("dvd+rw")
        before = sha256_of(os.path.join(disc, "sectors"))
        self.assertEqual(self.batch(disc, "true")["state"], "unchanged")
        outcome = self.batch(disc, "sh", "-c", "echo x > new", options=["--discard"])
        self.assertEqual(outcome["state"], "discarded")
        self.assertEqual(sha256_of(os.path.join(disc, "sectors")), before)

    def test_media_that_are_refused(self):
        for media in ("dvd-r", "dvd+r"):
            for disc in (self.make_disc(name=f"blank-{media}", media=media),
                         self.make_sample(media, name=f"written-{media}")):
                with self.subTest(disc=disc):
                    before = sha256_of(os.path.join(disc, "sectors"))
                    outcome = self.batch(disc, "true", status=3)
                    self.assertEqual(outcome["state"], "not-opened")
                    self.assertIn("type not supported", outcome["error"])
                    self.assertEqual(sha256_of(os.path.join(disc, "sectors")), before)

    def test_names_that_cannot_be_put_on_the_disc_are_named_and_nothing_is_written(self):
        disc = self.make_sample("dvd+rw")
        before = sha256_of(os.path.join(disc, "sectors"))
        outcome = self.failed(disc, r"""touch "$(printf 'bad\377name')" """)
        self.assertIn("is not written in UTF-8", outcome["error"])
        self.assertIn("ncorrectly encoded string", outcome["error"])
        name = "n" * 103
        outcome = self.failed(disc, f"touch {name}1 {name}2")
        self.assertIn(f"“{name}1”", outcome["error"])
        self.assertIn("have the same Joliet name", outcome["error"])
        self.assertEqual(sha256_of(os.path.join(disc, "sectors")), before)

    def test_a_file_of_4_gib_is_named_and_nothing_is_written(self):
        disc = self.make_sample("dvd+rw")
        before = sha256_of(os.path.join(disc, "sectors"))
        # Truncating costs the volume nothing, so the size can be had without the room.
        outcome = self.failed(disc, "truncate -s 4294967296 huge.bin")
        self.assertIn("“huge.bin” has 4 GB", outcome["error"])
        self.assertIn("huge.bin is larger than 4GiB-1", outcome["error"])
        self.assertEqual(sha256_of(os.path.join(disc, "sectors")), before)

    def test_a_session_that_does_not_fit_fails_and_what_the_disc_held_can_still_be_read(self):
        disc = self.make_sample("dvd+rw", capacity=50)
        shown, _ = self.edit(disc, "echo first > first.txt")
        outcome = self.failed(disc, "head -c 60000000 /dev/urandom > big")
        self.assertIn("to be written!", outcome["error"])
        self.assert_last_session_equals(disc, shown)

    def test_a_session_beyond_4_gb_is_refused_with_the_limit_and_nothing_is_written(self):
        disc = self.make_sample("dvd+rw")
        sectors = os.path.join(disc, "sectors")
        # The next session is put behind the last one, whose end the volume descriptor tells: it says 4.1 GiB (ECMA-119
        # 8.4.8), without anybody having to write that much.
        blocks = 2119328
        with open(sectors, "r+b") as file:
            file.seek(16 * SECTOR + 80)
            file.write(blocks.to_bytes(4, "little") + blocks.to_bytes(4, "big"))
            file.truncate(blocks * SECTOR)
        description = os.path.join(disc, "disc.json")
        with open(description, encoding="utf-8") as file:
            state = json.load(file)
        state["formatted"]["sectors"] = blocks
        with open(description, "w", encoding="utf-8") as file:
            json.dump(state, file)
        before = sha256_of_sectors(disc, 0, 192)
        outcome = self.failed(disc, "echo x > new")
        self.assertIn("beyond 4 GB", outcome["summary"]["problem"])
        self.assertIn("beyond 4 GB", outcome["error"])
        self.assertIn("4GB boundary", outcome["error"])
        self.assertEqual(sha256_of_sectors(disc, 0, 192), before)
        self.assertEqual(os.path.getsize(sectors), blocks * SECTOR)

    def test_a_dvd_rw_with_sessions_of_its_own_counts_as_blank_and_keeps_them(self):
        # It is not blank to growisofs, which cannot begin it anew.
        disc = self.make_sample("dvd-rw")
        self.assertEqual(self.info(disc)["state"], "appendable")
        end = self.sessions(disc)[-1]["tracks"][0]["sectors"]
        before = sha256_of_sectors(disc, 0, end)
        self.failed(disc, "test ! -e a.txt; echo x > new")
        self.assertEqual(sha256_of_sectors(disc, 0, end), before)
        self.assertEqual(self.info(disc)["state"], "appendable")


class KilledDvdBurns(RoadTest):
    """What becomes of a DVD when a program is killed while growisofs writes."""

    def make_burned_disc(self, media):
        disc = self.make_disc(media=media)
        self.edit(disc, "echo a > a.txt")
        return disc

    def start_large_burn(self, disc):
        """Starts a batch run and waits until growisofs writes."""
        process = self.start_batch(disc, "sh", "-c", "head -c 100000000 /dev/urandom > big")
        line = ""
        while "% written" not in line:
            line = process.stderr.readline()
            self.assertTrue(line, "ended without a burn")
        return process

    def writers(self):
        found = []
        for process in filter(str.isdigit, os.listdir("/proc")):
            try:
                with open(f"/proc/{process}/comm", encoding="utf-8") as comm:
                    name = comm.read().strip()
                with open(f"/proc/{process}/environ", "rb") as environment:
                    text = environment.read()
            except OSError:
                continue
            if name == "growisofs" and os.fsencode(self.folder) in text:
                found.append(int(process))
        return found

    def test_the_session_is_finished_without_the_application(self):
        disc = self.make_burned_disc("dvd+rw")
        process = self.start_large_burn(disc)
        process.kill()
        process.communicate(timeout=120)
        wait_until(lambda: not self.processes(), lambda: f"still running: {self.processes()}")
        self.assertEqual(set(self.tree_by_xorriso(disc, 0)), {"a.txt", "big"})
        self.edit(disc, "test -e big; echo x > new")
        self.assertEqual(set(self.tree_by_xorriso(disc, 0)), {"a.txt", "big", "new"})
        # What the clean-up would have removed is still there.
        temporary = os.path.join(self.prefix, "tmp")
        for name in os.listdir(temporary):
            path = os.path.join(temporary, name)
            shutil.rmtree(path) if os.path.isdir(path) else os.remove(path)

    def check_killed_growisofs(self, media):
        disc = self.make_burned_disc(media)
        process = self.start_large_burn(disc)
        for writer in self.writers():
            os.kill(writer, signal.SIGKILL)
        output, errors = process.communicate(timeout=120)
        # Neither an exit status nor a signal decides; only what growisofs says does, and it said nothing.
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual(json.loads(output)["state"], "burned")
        # The user can see it by looking at the disc, and mostly in the log. It holds what it held, and can be gone on with.
        self.assertEqual(set(self.tree_by_xorriso(disc, 0)), {"a.txt"})
        shown, _ = self.edit(disc, "test -e a.txt; test ! -e big; echo x > new")
        self.assert_last_session_equals(disc, shown)

    def test_a_killed_growisofs_counts_as_a_success_and_a_dvd_plus_rw_holds_what_it_held(self):
        self.check_killed_growisofs("dvd+rw")

    def test_a_killed_growisofs_counts_as_a_success_and_a_dvd_rw_holds_what_it_held(self):
        self.check_killed_growisofs("dvd-rw")


if __name__ == "__main__":
    unittest.main()
