# SPDX-License-Identifier: GPL-2.0-or-later
"""A desktop that mounts discs by itself, and mounts them again whenever they are not."""

import unittest

from rig import tree_of
from system_test import SystemTest


class Automounter(SystemTest):
    # It mounts a disc whenever it is not mounted, which is more than any desktop does.
    BEGIN = """
automounter() {
  while :; do
    grep -q "^$DRIVE " /proc/self/mounts || as_user udisksctl mount -b "$DRIVE" >> /tmp/automounter.log 2>&1
    sleep 0.1
  done
}
automounter &
AUTOMOUNTER=$!
eventually "the automounter has mounted the disc" grep -q "^$DRIVE " /proc/self/mounts
"""

    def road(self, media):
        self.guest(self.plugged(media) + self.BEGIN + """
as_user kelvanefs batch --drive "$DRIVE" --json -- \\
  sh -ec 'echo new > new.txt
    until grep -q "rror mounting" /tmp/automounter.log; do sleep 0.1; done
    cat "a/directory in/another"/* > /dev/null
    cp -r . /tmp/shown' \\
  > /share/outcome 2> /share/words
status=$?
cp /tmp/automounter.log /share/
[ $status = 0 ] || fail "batch ended with $status: $(cat /share/words /share/outcome)"
cp -r /tmp/shown /share/shown
drive_probe load "$DRIVE"
eventually "the desktop has its disc again" grep -q "^$DRIVE " /proc/self/mounts
kill $AUTOMOUNTER
as_user udisksctl unmount -b "$DRIVE" || fail "the user cannot unmount the disc"
show after
unplug
keep burned
""")
        shown = tree_of(self.path("shown"))
        self.assertIn("new.txt", shown)
        self.assertEqual(tree_of(self.path("after")), shown)
        self.assertEqual(self.tree_on(self.path("burned.kvdisc")), shown)
        # Otherwise nothing would have been tried.
        self.assertIn("rror mounting", self.text_of("automounter.log"))

    def test_a_cd_r_is_opened_changed_and_burned_all_the_same(self):
        self.road("cd-r")

    def test_a_dvd_plus_rw_is_opened_changed_and_burned_all_the_same(self):
        self.road("dvd+rw")


if __name__ == "__main__":
    unittest.main()
