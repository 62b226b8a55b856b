# SPDX-License-Identifier: GPL-2.0-or-later
"""Signals in batch mode: before the burn they discard everything, during a burn they wait for its end."""

import json
import os
import signal
import unittest

from road import RoadTest, sha256_of, wait_until


class Signals(RoadTest):
    def setUp(self):
        super().setUp()
        self.disc = self.make_small_disc()
        self.started = os.path.join(self.folder, "started")

    def check_interruption(self, signal_number, last, beforehand="true"):
        """Interrupts a run when its command has done what is to be done beforehand, and is at the last thing it does."""
        before = sha256_of(os.path.join(self.disc, "sectors"))
        process = self.start_batch(self.disc, "sh", "-c", f'echo x > new; {beforehand}; touch "{self.started}"; {last}')
        wait_until(lambda: os.path.exists(self.started), lambda: "the command has not been run")
        process.send_signal(signal_number)
        output, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 128 + signal_number, errors)
        self.assertEqual(json.loads(output)["state"], "interrupted")
        self.assertEqual(sha256_of(os.path.join(self.disc, "sectors")), before)

    def test_sigterm_ends_the_command_and_discards_the_changes(self):
        self.check_interruption(signal.SIGTERM, "exec sleep 1000")

    def test_sigint_ends_the_command_and_discards_the_changes(self):
        self.check_interruption(signal.SIGINT, "exec sleep 1000")

    def test_what_the_command_has_left_running_does_not_hold_the_volume(self):
        left = os.path.join(self.folder, "left.pid")
        try:
            # The shell ends; what it has started stays in the volume.
            self.check_interruption(signal.SIGTERM, "wait",
                                    beforehand=f'{{ sleep 1000 <&- >&- 2>&- & echo $! > "{left}"; }}')
        finally:
            with open(left, encoding="utf-8") as file:
                os.kill(int(file.read()), signal.SIGKILL)

    def test_nobody_reading_the_messages_does_not_end_the_burn(self):
        process = self.start_batch(self.disc, "sh", "-c", "echo x > new")
        process.stderr.readline()
        process.stderr.close()
        output = process.stdout.read()
        self.assertEqual(process.wait(timeout=120), 0)
        process.stdout.close()
        self.assertEqual(json.loads(output)["state"], "burned")

    def test_an_image_builder_that_is_killed_has_not_built_the_image(self):
        programs = os.path.join(self.folder, "programs")
        os.mkdir(programs)
        script = os.path.join(programs, "genisoimage")
        with open(script, "w", encoding="utf-8") as file:
            file.write('#!/bin/sh\n/usr/bin/genisoimage "$@"\nkill -KILL $$\n')
        os.chmod(script, 0o755)
        self.environment["PATH"] = programs + ":" + self.environment["PATH"]
        before = sha256_of(os.path.join(self.disc, "sectors"))
        outcome = self.batch(self.disc, "sh", "-c", "echo x > new", status=4)
        self.assertEqual(outcome["state"], "burn-failed")
        self.assertIn("mkisofs was killed", outcome["error"])
        self.assertEqual(sha256_of(os.path.join(self.disc, "sectors")), before)
        # A failed imaging leaves the image file.
        for name in os.listdir(os.path.join(self.prefix, "tmp")):
            self.assertTrue(name.endswith(".iso"), name)
            os.remove(os.path.join(self.prefix, "tmp", name))

    def line_with(self, process, words):
        """Reads on until the run has said these words."""
        line = ""
        while words not in line:
            line = process.stderr.readline()
            self.assertTrue(line, f"ended without '{words}'")
        return line

    def leave_the_volume_in_use(self):
        """A run whose command has ended, with a change made, and has left a program on the volume. Gives the run, once it
        waits for that, what it says of it, and the program's process."""
        left = os.path.join(self.folder, "left.pid")
        # The shell's child bears the shell's name until it has become the other program.
        process = self.start_batch(self.disc, "sh", "-c",
                                   f'echo x > new; sleep 1000 <&- >&- 2>&- & echo $! > "{left}"; '
                                   'until [ "$(cat /proc/$!/comm)" = sleep ]; do :; done')
        line = self.line_with(process, "Waiting for the volume")
        with open(left, encoding="utf-8") as file:
            return process, line, int(file.read())

    def test_a_volume_in_use_is_waited_for_and_the_user_is_told_by_whom(self):
        process, line, user = self.leave_the_volume_in_use()
        self.assertIn("sleep", line)
        os.kill(user, signal.SIGKILL)
        output, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual(json.loads(output)["state"], "burned")

    def test_a_disc_that_disappears_while_the_command_runs_is_no_success(self):
        process = self.start_batch(self.disc, "sh", "-c", "echo x > new; echo written >&2; exec sleep 1000")
        self.line_with(process, "written")
        self.kelvanedisc("eject", "--force", self.disc)
        output, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 4, errors)
        outcome = json.loads(output)
        self.assertEqual(outcome["state"], "disc-gone")
        self.assertIn("The changes are lost", outcome["error"])
        self.assertEqual(len(self.sessions(self.disc)), 1)

    def test_a_disc_that_disappears_while_its_volume_is_waited_for_is_no_success(self):
        process, _, user = self.leave_the_volume_in_use()
        self.kelvanedisc("eject", "--force", self.disc)
        output, errors = process.communicate(timeout=120)
        os.kill(user, signal.SIGKILL)
        self.assertEqual(process.returncode, 4, errors)
        self.assertEqual(json.loads(output)["state"], "disc-gone")

    def test_during_a_burn_a_signal_waits_for_its_end(self):
        process = self.start_batch(self.disc, "sh", "-c", "head -c 60000000 /dev/urandom > big")
        line = ""
        while "preparing" not in line.lower() and "burn" not in line.lower():
            line = process.stderr.readline()
            self.assertTrue(line, "ended without a burn")
        process.send_signal(signal.SIGTERM)
        process.send_signal(signal.SIGINT)
        output, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual(json.loads(output)["state"], "burned")
        self.assertEqual(len(self.sessions(self.disc)), 2)
        shown_by_mount = self.tree_by_our_mount(self.disc, self.session_starts(self.disc)[-1])
        self.assertEqual(set(shown_by_mount), {"a.txt", "big"})


if __name__ == "__main__":
    unittest.main()
