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

    # Leaves what the kernel mounts of the new session then.
    BURN_AND_QUIT = """
close_and_burn
eventually "the disc comes out" tray_is_open
eventually "the window shows that nothing is open" nothing_is_open
key ctrl+q
await_end kelvanefs
nothing_is_left
drive_probe load "$DRIVE"
show after
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

    def test_a_cd_r_without_udisks2(self):
        self.without_udisks2()
        self.road("cd-r", NEWS)

    def refused_dvd_r(self, faults, then):
        """A DVD-R is listed with the reason why it is not opened, also once another program has added a session to it."""
        first, second = make_tree(self.path("first"), 1), make_tree(self.path("second"), 2)
        self.with_session("disc", "dvd-r", first, label="FIRST", faults=faults)
        self.guest(self.BEGIN + f"""
plug disc.kvdisc
eventually "the disc is listed with the reason" eval "shows 'FIRST, DVDR in' && shows 'Disc type not supported'"
key ctrl+o
key Return
growisofs -use-the-force-luke=tty -M "$DRIVE" -quiet -R -J -V SECOND /share/second > /tmp/growisofs 2>&1 ||
  fail "$(cat /tmp/growisofs)"
{then}
eventually "the disc is listed with the reason again" shows "Disc type not supported"
logged "Notified that Filesystem did mount." && fail "a DVD-R has been opened"
windows_are 1 || fail "there is something to say"
key ctrl+q
await_end kelvanefs
unplug
keep burned
""")
        self.assertEqual(self.tree_on(self.path("burned.kvdisc")), {**tree_of(first), **tree_of(second)})

    def test_a_dvd_r_in_a_drive_to_be_loaded_anew(self):
        # growisofs leaves that to others.
        self.refused_dvd_r(RELOAD, """
press_button
kelvanedisc insert "$DISC" || fail "the tray does not close"
eventually "the new session is listed" shows "SECOND, DVDR in"
""")

    def test_a_dvd_r_in_a_drive_that_tells_of_the_new_session(self):
        # The name in the list is that under which the desktop has mounted the disc. Where the drive tells of the session while
        # growisofs still has it, the desktop has been seen to mount it under the name of the first one.
        self.refused_dvd_r(NEWS, """
eventually "growisofs has let the drive go" eval "! pidof growisofs"
eventually "the disc is listed again" eval "shows 'FIRST, DVDR in' || shows 'SECOND, DVDR in'"
""")

    def test_a_volume_in_use_stays_open_and_the_window_says_by_whom(self):
        self.guest(self.BEGIN + self.plugged("cd-r") + """
await_open
edit "echo new > new.txt"
as_user sh -c 'exec tail -f /dev/null < /Volumes/tarnwick/new.txt' &
eventually "the volume is in use" pidof tail
key ctrl+o
eventually "it is told by whom" shows "tail ("
keep_text busy
key Return
eventually "the report is closed" windows_are 1
as_user test -e /Volumes/tarnwick/new.txt || fail "changes are gone"
shows "Close Disc" || fail "the disc counts as closed"
kill "$(pidof tail)"
""" + self.BURN_AND_QUIT)
        self.assertIn("/Volumes/tarnwick/new.txt", self.text_of("busy"))
        self.assertEqual(tree_of(self.path("after")), tree_of(self.path("shown")))

    def own_button_while_open(self, plug):
        """The button is pressed between two changes of an open disc, which the steps `plug` bring."""
        self.guest(self.BEGIN + plug + """
await_open
edit "echo before > before.txt"
udevadm monitor --property --subsystem-match=block > /tmp/events 2>&1 &
eventually "the events are listened to" grep -q "the kernel uevent" /tmp/events
kelvanedisc eject "$DISC" && fail "the tray was not locked"
eventually "the kernel tells of the button" grep -q DISK_EJECT_REQUEST=1 /tmp/events
eventually "udev has acted on it" sed -n '/DISK_EJECT_REQUEST=1/,$ { /^UDEV.* change /q 0 }; $ q 1' /tmp/events
kelvanedisc info "$DISC" --json | grep -q '"tray": "closed"' || fail "the tray is not closed"
eventually "it is told why" shows "The disc stays in the drive while it is open"
key Return
eventually "the report is closed" windows_are 1
edit "echo after > after.txt"
logged "unexpected disk ejection" && fail "the disc was taken for gone"
""" + self.BURN_AND_QUIT)
        self.assertIn("before.txt", tree_of(self.path("shown")))
        self.assertEqual(tree_of(self.path("after")), tree_of(self.path("shown")))

    def test_the_drives_own_button_has_no_effect_while_a_disc_is_open(self):
        self.own_button_while_open(self.plugged("cd-rw"))

    def test_the_drives_own_button_has_no_effect_while_a_blank_disc_is_open(self):
        self.make_disc("disc", "cd-r")
        self.own_button_while_open("plug disc.kvdisc\n")

    def test_the_licence_is_shown_at_the_first_start_and_agreed_to_by_keyboard(self):
        self.guest("""
start_desktop
DEFAULTS=/home/user/.config/kelvanefs/kelvanefs.ini
start_window
eventually "the licence is shown" shows "Licence Agreement"
keep_text licence
key Escape
await_end kelvanefs
[ ! -e $DEFAULTS ] || ! grep licenseShownForVersion $DEFAULTS || fail "it counts as agreed to"

start_window
eventually "it is shown again" shows "Licence Agreement"
key Return
eventually "that is kept" grep -q "licenseShownForVersion=$(kelvanefs --version)" $DEFAULTS
eventually "the window asks for a disc" shows "Insert a CD or DVD that can still be written to."
""" + self.plugged("cd-rw") + """
await_open
key ctrl+q
await_end kelvanefs

start_window
eventually "the window asks for a disc again" shows "Insert a CD or DVD that can still be written to."
lacks "Licence Agreement" || fail "it is shown a third time"
key ctrl+q
await_end kelvanefs
nothing_is_left
""")
        self.assertIn("Agree", self.text_of("licence"))


if __name__ == "__main__":
    unittest.main()
