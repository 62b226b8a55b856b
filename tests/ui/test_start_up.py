# SPDX-License-Identifier: GPL-2.0-or-later
"""How the real application starts where something is missing."""

import os
import subprocess
import unittest

from real_window import BIN, RealWindowTest

# A namespace of mounts of its own, in which a plain file lies over the device of user-space file systems.
WITHOUT_FUSE = ["unshare", "--mount", "--map-root-user", "sh", "-c", 'mount --bind "$1" /dev/fuse && shift && exec "$@"', "sh"]


class StartUp(RealWindowTest):
    def start_without_fuse(self):
        plain = self.folder / "plain"
        plain.touch()
        covered = [*WITHOUT_FUSE, str(plain)]
        if subprocess.run([*covered, "true"], capture_output=True, check=False).returncode != 0:
            self.skipTest("no namespace of mounts can be made here")
        self.note = self.folder / "note"
        programs = self.folder / "programs"
        programs.mkdir()
        installer = programs / "gnome-software"
        installer.write_text(f'#!/bin/sh\necho "$*" > "{self.note}.new" && mv "{self.note}.new" "{self.note}"\n')
        installer.chmod(0o700)
        self.environment["PATH"] = f"{programs}:{os.environ['PATH']}"
        self.agree_to_license()
        self.start_program(*covered, BIN / "kelvanefs")
        self.wait_for("KelvaneFS cannot use FUSE on this computer")

    def test_install_leads_to_the_installer_and_the_application_ends(self):
        self.start_without_fuse()
        self.press("Install")
        self.assertEqual(self.process.wait(timeout=60), 0)
        self.wait_until("the installer", self.note.exists)
        self.assertEqual(self.note.read_text(), "--details-pkg=fuse3\n")

    def test_quit_installs_nothing(self):
        self.start_without_fuse()
        self.check("missing facility")
        self.press("Quit")
        self.assertEqual(self.process.wait(timeout=60), 0)
        self.assertFalse(self.note.exists())

    def test_a_disc_that_is_none_is_named_and_nothing_starts(self):
        self.agree_to_license()
        self.start(self.folder / "nothing.kvdisc")
        words = self.wait_until("the words", lambda: next(
            (item.name for item in self.items() if item.getRoleName() == "label" and "nothing.kvdisc" in item.name), None))
        self.assertTrue(words.endswith("."), words)
        self.press("OK")
        self.assertEqual(self.process.wait(timeout=60), 3)

    def test_where_no_volume_can_be_mounted_it_says_what_helps(self):
        (self.folder / "root/Volumes").rmdir()
        (self.folder / "root/Volumes").write_text("in the way")
        self.environment.pop("XDG_RUNTIME_DIR")  # The folder of volumes would stand there instead.
        self.agree_to_license()
        self.start()
        self.wait_until("the words", lambda: any("No volume can be mounted in" in item.name for item in self.items()))
        self.press("OK")
        self.assertEqual(self.process.wait(timeout=60), 3)


if __name__ == "__main__":
    unittest.main()
