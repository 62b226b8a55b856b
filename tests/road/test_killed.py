# SPDX-License-Identifier: GPL-2.0-or-later
"""The application is killed while a disc is open: the next start finds what it left mounted, and takes it away."""

import os
import shutil
import signal
import unittest

from road import RoadTest, sha256_of, wait_until


class Killed(RoadTest):
    def setUp(self):
        super().setUp()
        self.disc = self.make_small_disc()
        self.volume = os.path.join(self.prefix, "Volumes", "tarnwick")
        self.before = sha256_of(os.path.join(self.disc, "sectors"))

    def kill_while_open(self, script):
        """Kills the application once the script has made the file "started", and then what it had started."""
        started = os.path.join(self.folder, "started")
        process = self.start_batch(self.disc, "sh", "-c", f'echo $$ > "{started}.pid"; {script}; touch "{started}"; '
                                                          "exec sleep 1000")
        wait_until(lambda: os.path.exists(started), lambda: "the command has not been run")
        process.send_signal(signal.SIGKILL)
        # What the command holds open is the test's affair: it reads from pipes that the command has inherited.
        with open(started + ".pid", encoding="utf-8") as file:
            command = int(file.read())
        process.wait(timeout=120)
        return process, command

    def end(self, process, command):
        os.kill(command, signal.SIGKILL)
        process.communicate(timeout=120)

    def changes_left(self):
        """The overlay directories that a killed instance has left: nobody but the user may delete them."""
        temporary = os.path.join(self.prefix, "tmp")
        return [os.path.join(temporary, name) for name in os.listdir(temporary) if name.isdigit()]

    def check_next_start(self, changed):
        left = self.changes_left()
        self.assertEqual([os.path.exists(os.path.join(folder, "new")) for folder in left], [changed])
        # The volume's directory answers nobody; nothing may hang.
        self.assertIn(self.volume, self.mounts())
        with self.assertRaises(OSError):
            os.listdir(self.volume)
        shown, _ = self.edit(self.disc, "echo second > second.txt; ! test -e new")
        self.assertEqual(set(shown), {"a.txt", "second.txt"})
        self.assert_last_session_equals(self.disc, shown)
        self.assertEqual(self.changes_left(), left)
        for folder in left:
            self.assertEqual(os.stat(folder).st_mode & 0o777, 0o700)
            shutil.rmtree(folder)

    def test_the_next_start_opens_the_disc_as_it_was(self):
        process, command = self.kill_while_open("echo x > new")
        self.end(process, command)
        self.assertEqual(sha256_of(os.path.join(self.disc, "sectors")), self.before)
        self.check_next_start(changed=True)

    def test_the_next_start_is_not_stopped_by_a_program_that_still_stands_on_the_dead_volume(self):
        process, command = self.kill_while_open("echo x > new")
        try:
            self.check_next_start(changed=True)
        finally:
            self.end(process, command)


if __name__ == "__main__":
    unittest.main()
