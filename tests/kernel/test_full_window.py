# SPDX-License-Identifier: GPL-2.0-or-later
"""The window on a real kernel's drives, used by keyboard, and read as a screen reader does."""

import unittest

from rig import tree_of
from system_test import SystemTest, make_tree

# A drive that shows a new session when it is loaded anew, and one that tells of it.
RELOAD = "after close: stale\n"
NEWS = "after close: attention\n"


class Window(SystemTest):
    BEGIN = """
start_desktop
agree
start_window
"""

    def road(self, media, faults):
        """A disc is inserted, opened by itself, changed, closed, burned, ejected, loaded and opened once more."""
        first = make_tree(self.path("first"), 1)
        self.with_session("disc", media, first, faults=faults)
        self.guest(self.BEGIN + """
plug disc.kvdisc
await_open
edit "echo new > new.txt; rm -rf a"
close_and_burn
eventually "the disc comes out" tray_is_open
eventually "the window shows that nothing is open" nothing_is_open
kelvanedisc insert "$DISC"
await_open 2
as_user cp -r /Volumes/tarnwick /tmp/again && cp -r /tmp/again /share/again || fail "the volume cannot be read"
key ctrl+q
await_end kelvanefs
nothing_is_left
drive_probe load "$DRIVE"
show after
unplug
keep burned
""")
        shown = tree_of(self.path("shown"))
        self.assertIn("new.txt", shown)
        self.assertNotIn("a", shown)
        self.assertEqual(tree_of(self.path("again")), shown)
        self.assertEqual(tree_of(self.path("after")), shown)
        self.assertEqual(self.tree_on(self.path("burned.kvdisc")), shown)

    def test_a_cd_r_in_a_drive_to_be_loaded_anew(self):
        self.road("cd-r", RELOAD)

    def test_a_cd_r_in_a_drive_that_tells_of_the_new_session(self):
        self.road("cd-r", NEWS)

    def test_a_cd_rw_in_a_drive_to_be_loaded_anew(self):
        self.road("cd-rw", RELOAD)

    def test_a_cd_rw_in_a_drive_that_tells_of_the_new_session(self):
        self.road("cd-rw", NEWS)

    def test_a_dvd_rw_in_a_drive_to_be_loaded_anew(self):
        self.road("dvd-rw-ro", RELOAD)

    def test_a_dvd_rw_in_a_drive_that_tells_of_the_new_session(self):
        self.road("dvd-rw-ro", NEWS)

    def test_a_dvd_plus_rw_in_a_drive_to_be_loaded_anew(self):
        self.road("dvd+rw", RELOAD)

    def test_a_dvd_plus_rw_in_a_drive_that_tells_of_the_new_session(self):
        self.road("dvd+rw", NEWS)


if __name__ == "__main__":
    unittest.main()
