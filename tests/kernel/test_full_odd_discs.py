# SPDX-License-Identifier: GPL-2.0-or-later
"""Discs that are not what the application is made for, on a real kernel's drive: each ends as it should, with a plain word."""

import os
import unittest

from rig import KELVANEDISC, make_tree, run, tree_of
from system_test import SystemTest

USED, NOT_OPENED, BURN_FAILED = 0, 3, 4


class OddDiscs(SystemTest):
    # What the desktop mounts of the disc is not looked for: there may be nothing.
    RUN = """
{begin}
as_user kelvanefs batch --drive "$DRIVE" --json -- sh -ec 'echo new > new.txt; rm -rf /tmp/shown; cp -r . /tmp/shown' \\
  > /share/{name}.outcome 2> /share/{name}.words
equal "the exit status of {name}" {status} $?
test -d /tmp/shown && mv /tmp/shown /share/{name}.shown
! grep -E "kelvane|tarnwick" /proc/self/mounts || fail "something of {name} is still mounted"
drive_probe load "$DRIVE" 2> /dev/null
cp -r "$DISC" /share/{name}.left.kvdisc
# What the desktop has mounted at the application's wish stays the desktop's.
! grep -q "^$DRIVE " /proc/self/mounts || as_user udisksctl unmount -b "$DRIVE" || fail "{name} cannot be unmounted"
"""

    def tried(self, name, status, begin):
        return self.RUN.format(name=name, status=status, begin=begin)

    def image(self, name, *options):
        path = os.path.join(self.folder, name + ".iso")
        run("genisoimage", "-quiet", "-R", "-J", "-V", name.upper(), *options, "-o", path, self.tree)
        return path

    def burned(self, name, media, *command):
        disc = self.path(name + ".kvdisc")
        run(KELVANEDISC, "create", disc, "--media", media)
        run(KELVANEDISC, "run", disc, "--", *command)
        return disc

    def udf_disc(self):
        """A disc with a UDF volume that has no ISO-9660 volume beside it."""
        image = os.path.join(self.folder, "udf.img")
        with open(image, "wb") as file:
            file.truncate(32 << 20)
        run("mkudffs", "--blocksize=2048", "--media-type=dvdram", "--label=UDF", image)
        return self.burned("udf", "dvd+rw", "growisofs", "-use-the-force-luke=tty", "-Z", "/dev/sr0=" + image)

    def make_discs(self):
        self.tree = make_tree(self.path("tree"), 1)
        self.udf_disc()
        self.burned("hybrid", "cd-r", "cdrskin", "dev=/dev/sr0", "-multi", "-tao",
                    self.image("hybrid", "-hfs", "-hfs-volid", "HYBRID"))
        self.burned("closed", "cd-r", "cdrskin", "dev=/dev/sr0", "-tao", self.image("closed"))
        self.make_dvd("plusr", "dvd+r", self.tree)
        self.make_dvd("minusr", "dvd-r", self.tree)

    def error_of(self, name):
        return self.outcome(f"{name}.outcome")["error"]

    def test_each_is_opened_or_refused_with_its_reason(self):
        self.make_discs()
        self.guest(self.tried("udf", NOT_OPENED, "plug udf.kvdisc")
                   + self.tried("hybrid", USED, "swap hybrid.kvdisc")
                   + self.tried("closed", BURN_FAILED, "swap closed.kvdisc")
                   + self.tried("plusr", NOT_OPENED, "swap plusr.kvdisc")
                   + self.tried("minusr", NOT_OPENED, "swap minusr.kvdisc"))
        self.assertIn("UDF: Format not supported", self.error_of("udf"))
        self.assertIn("Disc type not supported", self.error_of("plusr"))
        self.assertIn("Disc type not supported", self.error_of("minusr"))
        # The ISO-9660 side of a hybrid disc is the one that counts.
        shown = tree_of(self.path("hybrid.shown"))
        self.assertEqual(shown, {**tree_of(self.tree), "new.txt": shown["new.txt"]})
        self.assertEqual(self.tree_on(self.path("hybrid.left.kvdisc")), shown)
        # A closed disc is open to changes, which it cannot take then; it is as it was.
        self.assertEqual(self.outcome("closed.outcome")["state"], "burn-failed")
        self.assertEqual(self.tree_on(self.path("closed.left.kvdisc")), tree_of(self.tree))


class Erasing(SystemTest):
    def erase(self, media):
        self.guest(self.plugged(media) + """
as_user kelvanefs erase --drive "$DRIVE" --yes --json > /share/outcome 2> /share/words || fail "$(cat /share/words)"
# udev has nothing to hear of: a drive tells of another disc, not of one that has become another.
press_button
kelvanedisc insert "$DISC" || fail "the tray does not close"
eventually "udev finds no volume" has_property ID_FS_LABEL ""
as_user kelvanefs batch --drive "$DRIVE" --json -- sh -ec 'echo new > new.txt' > /share/second 2>&1 ||
  fail "the erased disc cannot be written to: $(cat /share/second)"
drive_probe load "$DRIVE"
show after
""")
        self.assertEqual(self.outcome()["state"], "erased")
        self.assertEqual(list(tree_of(self.path("after"))), ["new.txt"])

    def test_a_cd_rw_is_erased_and_written_to_again(self):
        self.erase("cd-rw")

    def test_a_dvd_plus_rw_is_erased_and_written_to_again(self):
        self.erase("dvd+rw")


if __name__ == "__main__":
    unittest.main()
