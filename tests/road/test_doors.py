# SPDX-License-Identifier: GPL-2.0-or-later
"""Names in the folder of temporary files that others can foresee: what stands there is no door to anything."""

import os
import shutil
import unittest

from road import RoadTest, sha256_of

BURN_FAILED = 4


class Doors(RoadTest):
    def setUp(self):
        super().setUp()
        source = os.path.join(self.folder, "source")
        os.mkdir(source)
        for name in ("a.txt", "b.txt"):
            with open(os.path.join(source, name), "w", encoding="utf-8") as file:
                file.write(name)
        self.disc = self.make_disc(source=source, label="SAMPLE")
        self.before = sha256_of(os.path.join(self.disc, "sectors"))
        self.victim = os.path.join(self.folder, "victim")
        with open(self.victim, "w", encoding="utf-8") as file:
            file.write("precious")
        self.temporary = os.path.join(self.prefix, "tmp")

    def check_refusal(self, planted, names):
        """Plants a link while the disc is open, at a name formed from $n, the overlay directory's. `names` are then to be
        found in the folder of what is kept. Gives what the list beside it says was deleted, empty where there is none."""
        outcome = self.batch(self.disc, "sh", "-ec",
                             f'echo new > new.txt; rm a.txt; cd "{self.temporary}"; n=$(ls | grep "^[0-9]*$"); '
                             f'ln -s "{self.victim}" "{planted}"', status=BURN_FAILED)
        self.assertEqual(outcome["state"], "burn-failed")
        self.assertIn("is somebody else's", outcome["error"])
        kept = outcome["error"].rsplit("kept in ", 1)[1].rstrip(".")
        self.assertEqual(sorted(os.listdir(kept)), names)
        with open(self.victim, encoding="utf-8") as file:
            self.assertEqual(file.read(), "precious")
        self.assertEqual(sha256_of(os.path.join(self.disc, "sectors")), self.before)
        shutil.rmtree(kept)
        deleted = ""
        if os.path.exists(kept + ".hide"):
            with open(kept + ".hide", encoding="utf-8") as file:
                deleted = file.read()
            os.remove(kept + ".hide")
        for name in os.listdir(self.temporary):
            self.assertTrue(os.path.islink(os.path.join(self.temporary, name)), name)
            os.remove(os.path.join(self.temporary, name))
        return deleted

    def test_a_link_at_the_images_name_stops_the_burn_and_the_changes_are_kept(self):
        deleted = self.check_refusal("$n.iso", ["new.txt"])
        self.assertTrue(deleted.endswith("/a.txt"), deleted)

    def test_a_link_at_the_hide_lists_name_stops_the_burn_and_the_changes_are_kept(self):
        # The list could not be written; the deleted item's empty stand-in is all that tells of it.
        self.assertEqual(self.check_refusal(".$n.hide", ["a.txt", "new.txt"]), "")

    def run_that_loses_its_deletions(self, command_status=0, options=(), status=0):
        """Runs a command that deletes a file, and that puts things where deletions are noted, so that this one cannot be."""
        outcome = self.batch(self.disc, "sh", "-ec",
                             f'rm a.txt; cd "{self.temporary}"; n=$(ls | grep "^[0-9]*$"); rmdir "$n"; '
                             f'ln -s "{self.victim}" "$n"; ln -s "{self.victim}" ".$n.hide"; exit {command_status}',
                             options=options, status=status)
        told = [line for line in outcome["lines"] if "prepared: The list of deleted files" in line]
        self.assertEqual(len(told), 1, outcome["lines"])
        self.assertEqual(sha256_of(os.path.join(self.disc, "sectors")), self.before)
        with open(self.victim, encoding="utf-8") as file:
            self.assertEqual(file.read(), "precious")
        return outcome

    def test_deletions_that_cannot_be_noted_make_a_run_fail(self):
        outcome = self.run_that_loses_its_deletions(status=BURN_FAILED)
        self.assertEqual(outcome["state"], "burn-failed")

    def test_deletions_that_cannot_be_noted_do_not_make_a_run_fail_that_discards_them(self):
        outcome = self.run_that_loses_its_deletions(options=("--discard",))
        self.assertEqual((outcome["state"], outcome["error"]), ("discarded", None))

    def test_deletions_that_cannot_be_noted_leave_a_failed_command_its_own_status(self):
        outcome = self.run_that_loses_its_deletions(command_status=42, status=42)
        self.assertEqual(outcome["state"], "command-failed")
        self.assertIn("ended with status 42", outcome["error"])

    def test_what_is_new_can_be_read_by_its_owner_alone(self):
        outcome = self.batch(self.disc, "sh", "-ec",
                             f'umask 0; echo new > new.txt; rm a.txt; stat -c "%a %F" "{self.temporary}"/[0-9]*',
                             options=("--discard",))
        self.assertIn("700 directory", outcome["lines"])


if __name__ == "__main__":
    unittest.main()
