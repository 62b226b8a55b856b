# SPDX-License-Identifier: GPL-2.0-or-later
"""Drives in number, and drives that go: the window's list, and what is left when a drive is pulled out."""

import unittest

from rig import make_tree, tree_of
from system_test import SystemTest


class TwoDrives(SystemTest):
    def both_listed(self):
        """Two drives with a disc each, and the steps that have the window list both."""
        for number, name in enumerate(["ONE", "OTHER"]):
            self.with_session("disc" + name.lower(), "cd-r", make_tree(self.path(name.lower()), number), label=name)
        return """
start_desktop
agree
plug discone.kvdisc
eventually "udev knows the first disc" has_property ID_FS_LABEL ONE
plug discother.kvdisc
eventually "udev knows the second disc" has_property ID_FS_LABEL OTHER
start_window
eventually "both discs are listed" eval "shows 'ONE, CDR in' && shows 'OTHER, CDR in'"
"""

    def test_two_discs_are_listed_and_none_of_them_is_opened_by_itself(self):
        self.guest(self.both_listed() + """
shows "Open Disc" || fail "a disc cannot be opened"
logged "Notified that Filesystem did mount." && fail "one of two discs has been opened by itself"
key ctrl+q
await_end kelvanefs
nothing_is_left
""")

    def test_where_one_of_two_listed_discs_is_taken_out_the_other_is_the_only_one_and_is_opened(self):
        self.guest(self.both_listed() + """
press_button
await_open
as_user test -e "/Volumes/tarnwick/file 0 0.bin" || fail "what is open is not the disc that stayed"
key ctrl+q
await_end kelvanefs
nothing_is_left
""")

    def test_a_disc_that_is_swapped_while_the_list_is_shown(self):
        # Of three discs, so that without the one that is swapped there are still two, and none of them is opened by itself.
        self.with_session("discthird", "cd-rw", make_tree(self.path("third"), 2), label="THIRD")
        self.with_session("discfourth", "cd-rw", make_tree(self.path("fourth"), 3), label="FOURTH")
        self.guest(self.both_listed() + """
# A screen reader finds what is scrolled into view.
last_is() {
  key End
  shows "$1"
}
plug discthird.kvdisc
eventually "the third disc is listed" last_is "THIRD, CDRW in"
press_button
# As long as a hand needs: a disc that is put in before it is seen that the one before has gone is shown under that one's name.
eventually "what the desktop has mounted of the third disc is gone" eval '! grep -q "^$DRIVE " /proc/self/mounts'
key End
eventually "the third disc is no longer listed" lacks "THIRD, CDRW in"
swap discfourth.kvdisc
eventually "the fourth disc is listed" last_is "FOURTH, CDRW in"
lacks "THIRD, CDRW in" || fail "the third disc is still listed"
key Home
shows "ONE, CDR in" && shows "OTHER, CDR in" || fail "the other discs are not listed"
logged "Notified that Filesystem did mount." && fail "a disc has been opened by itself"
key End
key Return
await_open
as_user test -e "/Volumes/tarnwick/file 3 0.bin" || fail "what is open is not the disc that was put in"
key ctrl+q
await_end kelvanefs
nothing_is_left
""")

    def test_of_two_discs_the_chosen_one_is_burned_and_then_the_other(self):
        self.guest(self.both_listed() + """
key Down
key Return
await_open
as_user test -e "/Volumes/tarnwick/file 1 0.bin" || fail "what is open is not the disc that was chosen"
edit "echo second > second.txt"
mv /share/shown /share/shown.other
close_and_burn
eventually "the chosen disc comes out" tray_is_open
# It is the only one now.
await_open 2
as_user test -e "/Volumes/tarnwick/file 0 0.bin" || fail "what is open is not the other disc"
edit "echo first > first.txt"
mv /share/shown /share/shown.one
close_and_burn
OTHER=$DISC
DISC=/tmp/discone.kvdisc
eventually "the other disc comes out" tray_is_open
eventually "the window shows that nothing is open" nothing_is_open
key ctrl+q
await_end kelvanefs
nothing_is_left
cp -r "$DISC" /share/burned.one.kvdisc && cp -r "$OTHER" /share/burned.other.kvdisc || fail "the discs cannot be kept"
""")
        for name, file in [("one", "first.txt"), ("other", "second.txt")]:
            shown = tree_of(self.path("shown." + name))
            self.assertIn(file, shown)
            self.assertEqual(self.tree_on(self.path(f"burned.{name}.kvdisc")), shown)


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
windows_are 1 || fail "there is something to say of a drive that works"
as_user test ! -e /Volumes/tarnwick/new.txt || fail "changes of before are there"
key ctrl+q
await_end kelvanefs
nothing_is_left
""")

    # While files are written: before the twentieth write come what a session begins with, and behind it the files.
    GONE_AMID_THE_FILES = "on write 20: gone\n"

    def pulled_out_while_it_burns(self, media, alert):
        """A drive disappears in the middle of a burn: that is told, and the next disc is opened."""
        self.with_session("next", "cd-r", make_tree(self.path("next"), 2), label="NEXT")
        self.guest("""
start_desktop
agree
start_window
""" + self.plugged(media, self.GONE_AMID_THE_FILES) + f"""
await_open
edit "head -c 3000000 /dev/urandom > large"
close_and_burn
eventually "the drive is gone" test ! -e "$DRIVE"
wait "$BURNER" || fail "the burner ended with $?"
eventually "the burn is reported as failed" shows "{alert}"
keep_text failed
key Return
eventually "the report is closed" windows_are 1
eventually "the window asks for a disc" shows "Insert a CD or DVD that can still be written to."
nothing_is_left
plug next.kvdisc
await_open 2
as_user test -e "/Volumes/tarnwick/file 2 0.bin" || fail "what is open is not the next disc"
key ctrl+q
await_end kelvanefs
nothing_is_left
""")

    def test_a_drive_pulled_out_while_a_cd_is_burned_in_the_window(self):
        self.pulled_out_while_it_burns("cd-r", "The CD could not be burned completely")

    def test_a_drive_pulled_out_while_a_dvd_is_burned_in_the_window(self):
        self.pulled_out_while_it_burns("dvd+rw", "The DVD could not be burned")

    def test_a_drive_pulled_out_while_it_takes_a_disc_in(self):
        self.guest(self.plugged("cd-r", "load: never ready\n") + """
press_button
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
