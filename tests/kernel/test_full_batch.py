# SPDX-License-Identifier: GPL-2.0-or-later
"""The application on a system with a desktop's services: udev, D-Bus, polkit, UDisks2, and an ordinary user."""

import unittest

from rig import make_tree, tree_of
from system_test import SystemTest


class Desktop(SystemTest):
    def test_udev_and_udisks2_know_the_drive_and_follow_its_discs(self):
        first, second = make_tree(self.path("first"), 1), make_tree(self.path("second"), 2)
        self.make_disc("one", "cd-r", first, label="ONE")
        self.make_disc("other", "cd-rw", second, label="OTHER")
        self.make_disc("blank", "cd-r")
        self.guest("""
plug one.kvdisc
eventually "udev knows the disc" has_property ID_FS_LABEL ONE
udevadm info "$DRIVE" > /share/udev
eventually "UDisks2 knows the drive" eval 'udisksctl info -b "$DRIVE" | grep -q "Drive:.*drives/KELVANE"'
udisksctl info -b "$DRIVE" > /share/udisks
udisksctl status > /share/udisks.status
as_user udisksctl mount -b "$DRIVE" > /share/mounted || fail "the user cannot mount the disc"
cp -a "$(sed 's/^Mounted .* at //' /share/mounted)" /share/shown || fail "the files cannot be read"
as_user udisksctl unmount -b "$DRIVE" || fail "the user cannot unmount the disc"
as_user drive_probe program "$DRIVE" > /share/user.program || fail "the user cannot ask the drive"

swap other.kvdisc
eventually "udev sees the other disc" has_property ID_FS_LABEL OTHER
equal "the medium" 1 "$(property ID_CDROM_MEDIA_CD_RW)"
swap blank.kvdisc
eventually "udev sees the blank disc" has_property ID_CDROM_MEDIA_STATE blank
press_button
eventually "udev sees that there is none" has_property ID_CDROM_MEDIA ""
""")
        self.assertEqual(tree_of(self.path("shown")), tree_of(first))
        properties = self.text_of("udev")
        for line in ["ID_CDROM_MEDIA_STATE=appendable", "ID_CDROM_MEDIA_CD_R=1", "ID_CDROM_DVD_PLUS_RW=1",
                     "ID_SERIAL_SHORT=KELVANE_SOFTWARE_BURNER_", "ID_FS_TYPE=iso9660"]:
            self.assertIn(line, properties)
        self.assertEqual(self.probed("user", "program")["appendable"], True)


class Application(SystemTest):
    """The whole road of a disc on /dev/sr0, with the kernel's own mount of the new session at the end."""

    # The disc's own volume, as it is visible before.
    BY_KERNEL = """
mkdir /Volumes/DISC
mount -t iso9660 -o ro "$DRIVE" /Volumes/DISC || fail "the kernel mounts nothing"
"""
    BY_DESKTOP = """
as_user udisksctl mount -b "$DRIVE" || fail "the user cannot mount the disc"
"""
    # What the user does on the volume, and how its end is noted.
    EDIT = """
{who} kelvanefs batch --drive "$DRIVE" --json -- \\
  sh -ec 'echo new > new.txt; rm -rf a; rm -rf /tmp/shown; cp -r . /tmp/shown; {command}' \\
  > /share/outcome 2> /share/words
status=$?
"""

    def edit(self, media, mount, who, faults=""):
        self.guest(self.plugged(media, faults) + mount + self.EDIT.format(who=who, command=":") + """
[ $status = 0 ] || fail "batch ended with $status: $(cat /share/words /share/outcome)"
cp -r /tmp/shown /share/shown
drive_probe load "$DRIVE"
show after
unplug
keep burned
""")
        shown = tree_of(self.path("shown"))
        self.assertIn("new.txt", shown)
        self.assertNotIn("a", shown)
        self.assertEqual(tree_of(self.path("after")), shown)
        self.assertEqual(self.tree_on(self.path("burned.kvdisc")), shown)

    def test_a_cd_r_is_opened_changed_and_burned(self):
        self.edit("cd-r", self.BY_DESKTOP, "as_user")

    def test_a_cd_rw_is_opened_changed_and_burned_by_root(self):
        self.edit("cd-rw", self.BY_KERNEL, "")

    def test_a_cd_rw_in_a_drive_that_shows_the_new_session_when_it_is_loaded_anew(self):
        self.edit("cd-rw", self.BY_DESKTOP, "as_user", "after close: stale\n")

    def test_a_cd_rw_in_a_drive_that_tells_of_the_new_session(self):
        self.edit("cd-rw", self.BY_DESKTOP, "as_user", "after close: attention\n")

    def test_a_dvd_rw_is_opened_changed_and_burned(self):
        self.edit("dvd-rw-ro", self.BY_DESKTOP, "as_user")

    def test_a_dvd_plus_rw_is_opened_changed_and_burned(self):
        self.edit("dvd+rw", self.BY_DESKTOP, "as_user")

    def test_a_disc_that_nobody_has_mounted(self):
        self.edit("cd-r", "", "as_user")

    def test_a_dvd_r_is_refused(self):
        self.guest(self.plugged("dvd-r") + self.BY_DESKTOP + self.EDIT.format(who="as_user", command=":") + """
equal "the exit status" 3 $status
as_user udisksctl unmount -b "$DRIVE" || fail "the desktop's mount is gone"
show after
""")
        self.assertEqual(tree_of(self.path("after")), tree_of(self.first))
        self.assertEqual(self.outcome()["state"], "not-opened")

    def test_a_user_who_may_not_use_the_drive_is_told_so(self):
        self.guest(self.plugged("cd-r") + self.EDIT.format(who="as_stranger", command=":") + """
equal "the exit status" 3 $status
show after
""")
        self.assertEqual(tree_of(self.path("after")), tree_of(self.first))
        self.assertIn("cdrom", self.outcome()["error"])

    def test_a_drive_pulled_out_while_the_volume_is_open_ends_the_run(self):
        self.guest(self.plugged("cd-r") + self.BY_DESKTOP + """
pull() {
  eventually "the volume is changed" test -e /tmp/shown/new.txt
  kill "$BURNER"
}
pull &
""" + self.EDIT.format(who="as_user", command="sleep 1000") + """
eventually "the drive is gone" test ! -e "$DRIVE"
equal "the exit status" 4 $status
eventually "the volumes are gone" eval '! grep -Eq "kelvane|tarnwick" /proc/self/mounts'
""")
        self.assertEqual(self.outcome()["state"], "disc-gone")

    def test_a_drive_pulled_out_while_it_burns_ends_the_run_with_a_failed_burn(self):
        self.guest(self.plugged("cd-r", "on write 5: gone\n") + self.BY_DESKTOP
                   + self.EDIT.format(who="as_user", command="head -c 2000000 /dev/urandom > large") + """
equal "the exit status" 4 $status
eventually "the drive is gone" test ! -e "$DRIVE"
wait "$BURNER" || fail "the burner ended with $?"
""")
        self.assertEqual(self.outcome()["state"], "burn-failed")


if __name__ == "__main__":
    unittest.main()
