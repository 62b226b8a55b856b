# SPDX-License-Identifier: GPL-2.0-or-later
"""The application on a system with a desktop's services: udev, D-Bus, polkit, UDisks2, and an ordinary user."""

import json
import os
import unittest

import images
from rig import GuestTest, make_tree, tree_of


class SystemTest(GuestTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        image = os.path.join(images.system_image(), "root.ext4")
        # What a guest writes goes when it does.
        cls.machine_options = ["-drive", f"file={image},format=raw,if=virtio,snapshot=on"]
        cls.kernel_words = "system=/dev/vda"
        cls.guest_files = ["steps", "desktop"]


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
        with open(self.path("udev"), encoding="utf-8") as file:
            properties = file.read()
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
WHO=
"""
    BY_DESKTOP = """
as_user udisksctl mount -b "$DRIVE" || fail "the user cannot mount the disc"
WHO=as_user
"""

    def edit(self, media, mount):
        first = make_tree(self.path("first"), 1)
        if media.startswith("cd"):
            self.make_disc("disc", media, first)
        else:
            self.make_dvd("disc", media, first)
        self.guest(f"""
plug disc.kvdisc
eventually "udev knows the disc" has_property ID_FS_LABEL DISC
{mount}
$WHO kelvanefs batch --drive "$DRIVE" --json -- \\
  sh -ec 'echo new > new.txt; rm -r a; cp -r . /tmp/shown' > /share/outcome 2> /share/words ||
  fail "batch ended with $?: $(cat /share/words /share/outcome)"
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
        self.edit("cd-r", self.BY_DESKTOP)

    def test_a_cd_rw_is_opened_changed_and_burned(self):
        self.edit("cd-rw", self.BY_KERNEL)

    def test_a_dvd_rw_is_opened_changed_and_burned(self):
        self.edit("dvd-rw-ro", self.BY_KERNEL)

    def test_a_dvd_plus_rw_is_opened_changed_and_burned(self):
        self.edit("dvd+rw", self.BY_DESKTOP)

    def test_a_dvd_r_is_refused(self):
        first = make_tree(self.path("first"), 1)
        self.make_dvd("disc", "dvd-r", first)
        self.guest(f"""
plug disc.kvdisc
eventually "udev knows the disc" has_property ID_FS_LABEL DISC
{self.BY_DESKTOP}
as_user kelvanefs batch --drive "$DRIVE" --json -- true > /share/outcome 2> /share/words
equal "the exit status" 3 $?
show after
""")
        self.assertEqual(tree_of(self.path("after")), tree_of(first))
        with open(self.path("outcome"), encoding="utf-8") as file:
            self.assertEqual(json.load(file)["state"], "not-opened")


if __name__ == "__main__":
    unittest.main()
