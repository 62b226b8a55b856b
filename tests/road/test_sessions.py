# SPDX-License-Identifier: GPL-2.0-or-later
"""Session after session on one CD, and one session with all that batch mode can be told."""

import os
import unittest

from road import RoadTest
from session_road import SessionRoad


class Sessions(SessionRoad):
    def check_outcome(self, outcome, number):
        self.assertEqual(outcome["session"], number)

    def span_of_session(self, disc, number, earlier):
        sessions = self.sessions(disc)
        self.assertEqual(len(sessions), number)
        track = sessions[-1]["tracks"][0]
        return track["start"], track["start"] + track["sectors"]

    def test_six_sessions_on_a_cd_r(self):
        self.check_road("cd-r")

    def test_six_sessions_on_a_cd_rw(self):
        self.check_road("cd-rw")


class OneSession(RoadTest):
    def setUp(self):
        super().setUp()
        source = os.path.join(self.folder, "source")
        os.makedirs(os.path.join(source, "docs"))
        for name in ("a.txt", "docs/b.txt"):
            with open(os.path.join(source, name), "w", encoding="utf-8") as file:
                file.write(name)
        self.disc = self.make_disc(source=source, label="SAMPLE")

    def test_nothing_changed_means_nothing_is_burned(self):
        outcome = self.batch(self.disc, "true")
        self.assertEqual((outcome["state"], outcome["session"], outcome["error"]), ("unchanged", None, None))
        self.assertEqual(len(self.sessions(self.disc)), 1)

    def test_discard_throws_the_changes_away(self):
        outcome = self.batch(self.disc, "sh", "-c", "echo x > new", options=["--discard"])
        self.assertEqual(outcome["state"], "discarded")
        self.assertEqual(len(self.sessions(self.disc)), 1)

    def test_a_failing_command_discards_the_changes_and_gives_its_status(self):
        outcome = self.batch(self.disc, "sh", "-c", "echo x > new; exit 42", status=42)
        self.assertEqual(outcome["state"], "command-failed")
        self.assertEqual(len(self.sessions(self.disc)), 1)

    def test_a_command_that_does_not_exist_has_the_shells_status(self):
        outcome = self.batch(self.disc, "no-such-command-anywhere", status=127)
        self.assertEqual(outcome["state"], "command-failed")

    def test_the_command_runs_in_the_volume_and_is_told_its_path(self):
        self.batch(self.disc, "sh", "-ec", 'test "$(pwd)" = "$KELVANEFS_VOLUME"; test -e docs/b.txt')

    def test_the_volume_name_is_the_discs_unless_another_is_given(self):
        def volume_id():
            sectors = os.path.join(self.disc, "sectors")
            with open(sectors, "rb") as file:
                file.seek((self.session_starts(self.disc)[-1] + 16) * 2048 + 40)
                return file.read(32).decode().rstrip()

        self.edit(self.disc, "echo 1 > one")
        self.assertEqual(volume_id(), "SAMPLE")
        self.edit(self.disc, "echo 2 > two", options=["--name", "Second"])
        self.assertEqual(volume_id(), "Second")

    def test_the_outcome_tells_the_session_and_its_bytes(self):
        _, outcome = self.edit(self.disc, "head -c 1000000 /dev/urandom > big")
        self.assertEqual(outcome["session"], 2)
        track = self.sessions(self.disc)[1]["tracks"][0]
        self.assertGreater(outcome["bytes"], 1000000)
        self.assertLessEqual(outcome["bytes"], track["sectors"] * 2048)

    def test_only_a_deletion_is_a_change_too(self):
        shown, _ = self.edit(self.disc, "rm a.txt")
        self.assertNotIn("a.txt", shown)
        self.assert_last_session_equals(self.disc, shown)

    def test_a_requested_speed_burns_as_well(self):
        shown, _ = self.edit(self.disc, "echo 1 > one", options=["--speed", "2"])
        self.assert_last_session_equals(self.disc, shown)

    def test_of_two_usable_discs_the_first_is_opened(self):
        other = self.make_disc(name="other")
        outcome = self.batch(self.disc, "test", "-e", "a.txt", options=["--drive", other])
        self.assertEqual(outcome["state"], "unchanged")


if __name__ == "__main__":
    unittest.main()
