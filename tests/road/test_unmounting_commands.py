# SPDX-License-Identifier: GPL-2.0-or-later
"""A command of batch mode that unmounts the volume itself: what becomes of its changes is decided when it ends."""

import os
import unittest

from road import BIN, RoadTest, sha256_of

# Nobody but the command uses the volume, so its first try has to succeed.
UNMOUNT = 'cd /; fusermount3 -u "$KELVANEFS_VOLUME" || exit 99'


class UnmountingCommands(RoadTest):
    def setUp(self):
        super().setUp()
        self.disc = self.make_small_disc()

    def until_the_burn_is_in_question(self):
        """A piece of a script that waits for the image builder to be asked for the size of the new session."""
        asked = os.path.join(self.folder, "asked")
        programs = os.path.join(self.folder, "programs")
        os.mkdir(programs)
        script = os.path.join(programs, "genisoimage")
        with open(script, "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\n: > "{asked}"\nexec /usr/bin/genisoimage "$@"\n')
        os.chmod(script, 0o755)
        self.environment["PATH"] = programs + ":" + self.environment["PATH"]
        return f'until [ -e "{asked}" ]; do sleep 0.02; done'

    def until_the_disc_is_ejected(self):
        return f'until "{BIN}/kelvanedisc" info "{self.disc}" --json | grep -Eq \'"tray": *"open"\'; do sleep 0.02; done'

    def run_on_the_volume(self, *steps, **options):
        return self.batch(self.disc, "sh", "-c", "; ".join(steps), **options)

    def test_the_changes_of_one_that_fails_are_discarded(self):
        before = sha256_of(os.path.join(self.disc, "sectors"))
        outcome = self.run_on_the_volume("echo x > new", UNMOUNT, self.until_the_burn_is_in_question(), "exit 7",
                                         status=7)
        self.assertEqual((outcome["state"], outcome["summary"]), ("command-failed", None))
        self.assertEqual(sha256_of(os.path.join(self.disc, "sectors")), before)

    def test_the_changes_of_one_that_succeeds_are_burned(self):
        outcome = self.run_on_the_volume("echo x > new", UNMOUNT, self.until_the_burn_is_in_question(),
                                         options=("--name", "RENAMED"))
        self.assertEqual((outcome["state"], outcome["session"]), ("burned", 2))
        self.assertEqual(outcome["summary"]["added"]["files"], 1)
        tree = self.tree_by_our_mount(self.disc, self.session_starts(self.disc)[-1])
        self.assertEqual(set(tree), {"a.txt", "new"})

    def test_one_that_ends_at_once_is_burned_too(self):
        outcome = self.run_on_the_volume("echo x > new", UNMOUNT)
        self.assertEqual((outcome["state"], outcome["session"]), ("burned", 2))

    def test_one_without_changes_is_waited_for(self):
        outcome = self.run_on_the_volume(UNMOUNT, self.until_the_disc_is_ejected(), "exit 7", status=7)
        self.assertEqual(outcome["state"], "command-failed")

    def test_another_disc_is_not_opened_while_one_without_changes_is_waited_for(self):
        other = self.make_disc(name="other", source=os.path.join(self.folder, "source"), label="OTHER")
        outcome = self.run_on_the_volume(UNMOUNT, self.until_the_disc_is_ejected(), options=("--drive", other))
        self.assertEqual(outcome["state"], "unchanged")
        # Opening a disc begins with the unmounting of its visible volume.
        opened = [line for line in outcome["lines"] if "unmount attempt" in line]
        self.assertEqual(len(opened), 1, outcome["lines"])
        self.assertEqual(len(self.sessions(other)), 1)

    def test_one_without_changes_that_succeeds_has_burned_nothing(self):
        outcome = self.run_on_the_volume(UNMOUNT, self.until_the_disc_is_ejected())
        self.assertEqual(outcome["state"], "unchanged")
        self.assertEqual(len(self.sessions(self.disc)), 1)


if __name__ == "__main__":
    unittest.main()
