# SPDX-License-Identifier: GPL-2.0-or-later
"""Drives in number, and drives that go: the window's list, and what is left when a drive is pulled out."""

import unittest

from rig import make_tree, tree_of
from system_test import SystemTest


class TwoDrives(SystemTest):
    def test_two_discs_are_listed_and_the_chosen_one_is_burned_then_the_other_is_opened(self):
        trees = {name: make_tree(self.path(name.lower()), number)
                 for number, name in enumerate(["ONE", "OTHER", "THIRD"])}
        for name, tree in trees.items():
            self.with_session("disc" + name.lower(), "cd-r", tree, label=name)
        self.guest("""
start_desktop
agree
plug discone.kvdisc
ONE=$DISC
plug discother.kvdisc
start_window
eventually "both discs are listed" eval "shows 'ONE, CDR in' && shows 'OTHER, CDR in'"
shows "Open Disc" || fail "a disc cannot be opened"
logged "Notified that Filesystem did mount." && fail "one of two discs has been opened by itself"

as_user udisksctl unmount -b /dev/sr0 || fail "the user cannot unmount the disc"
SECOND=$DISC DISC=$ONE
swap discthird.kvdisc
eventually "the other disc is listed" eval "shows 'THIRD, CDR in' && ! shows 'ONE, CDR in'"
shows "OTHER, CDR in" || fail "the disc that has stayed is listed no more"

key Home
key Down
key Return
await_open
edit "test ! -e 'file 2 0.bin'; echo new > new.txt"
DISC=$SECOND
close_and_burn
eventually "the disc comes out" tray_is_open
await_open 2
as_user test -e "/Volumes/tarnwick/file 2 0.bin" || fail "not the other disc has been opened"
key ctrl+q
await_end kelvanefs
nothing_is_left
keep burned
""")
        shown = tree_of(self.path("shown"))
        self.assertIn("new.txt", shown)
        self.assertEqual(self.tree_on(self.path("burned.kvdisc")), shown)


class PulledOut(SystemTest):
    def test_a_drive_pulled_out_while_its_disc_is_open_in_the_window_and_plugged_in_again(self):
        self.guest("""
start_desktop
agree
start_window
""" + self.plugged("cd-r") + """
await_open
edit "echo new > new.txt"
unplug
eventually "it is noticed" logged "unexpected disk ejection. emergency of unmounting fuse without burning."
eventually "the window shows that nothing is open" nothing_is_open
keep_text gone
nothing_is_left
rm -r "$DISC"
plug disc.kvdisc
await_open 2
as_user test ! -e /Volumes/tarnwick/new.txt || fail "changes of before are there"
key ctrl+q
await_end kelvanefs
nothing_is_left
""")

    def test_a_drive_pulled_out_while_it_takes_a_disc_in(self):
        self.guest(self.plugged("cd-r", "load: never ready\n") + """
drive_probe eject "$DRIVE" || fail "the tray does not open"
kelvanedisc insert "$DISC" || fail "the tray does not close"
as_user kelvanefs batch --drive "$DRIVE" --json -- true > /share/outcome 2> /tmp/words &
BATCH=$!
eventually "the disc is waited for" grep -q "Waiting for the drive" /tmp/words
unplug
wait $BATCH
equal "the exit status" 3 $?
nothing_is_left
""")
        self.assertEqual(self.outcome()["state"], "not-opened")


if __name__ == "__main__":
    unittest.main()
