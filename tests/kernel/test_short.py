# SPDX-License-Identifier: GPL-2.0-or-later
"""The kernel and our emulated drive: reading, changing and burning discs, in a guest with nothing else."""

import os
import unittest

from rig import GuestTest, make_tree, tree_of

# linux/cdrom.h
NO_DISC, TRAY_OPEN, DISC_OK = 1, 2, 4
DATA_DISC = 101
# MMC-5, 5.3.1
CD_R, DVD_PLUS_RW = 0x0009, 0x001A


class KernelReads(GuestTest):
    def test_a_disc_of_two_sessions_is_bound_and_mounted(self):
        first, second = make_tree(self.path("first"), 1), make_tree(self.path("second"), 2)
        disc = self.make_disc("disc", "cd-r", first, second)
        self.guest("""
plug disc.kvdisc
probe disc
show shown
unplug
""")
        self.assertEqual(tree_of(self.path("shown")), {**tree_of(first), **tree_of(second)})
        starts = self.starts_on(disc)
        info = self.info(disc)
        kernel = self.probed("disc", "kernel")
        self.assertEqual(kernel["driveStatus"], DISC_OK)
        self.assertEqual(kernel["discStatus"], DATA_DISC)
        self.assertEqual(kernel["toc"]["tracks"], starts)
        self.assertEqual(kernel["toc"]["leadOut"], info["sessions"][-1]["lead_out"])
        self.assertEqual(kernel["lastSession"], starts[-1])
        for ability in ["writesCD", "writesCDRW", "readsDVD", "writesDVD"]:
            self.assertTrue(kernel[ability], ability)

        program = self.probed("disc", "program")
        self.assertEqual(program["name"], "KELVANE SOFTWARE BURNER")
        self.assertEqual((program["ready"], program["present"], program["blank"]), (True, True, False))
        self.assertEqual((program["profile"], program["appendable"]), (CD_R, True))
        self.assertEqual([track["start"] for track in program["tracks"]], [*starts, info["next_writable_address"]])
        self.assertEqual(program["nextWritableAddress"], info["next_writable_address"])

    def test_a_changed_disc_is_seen_and_a_locked_tray_stays_closed(self):
        first, second = make_tree(self.path("first"), 1), make_tree(self.path("second"), 2)
        self.make_disc("one", "cd-r", first)
        self.make_disc("other", "cd-r", second)
        self.make_disc("blank", "cd-r")
        self.guest("""
plug one.kvdisc
show one
swap other.kvdisc
probe changed
probe again
show other

refused_while_locked() {
  kelvanedisc eject "$DISC" && fail "the tray opens while the disc is mounted"
  drive_probe eject "$DRIVE" && fail "the kernel lets a mounted disc go"
}
with_disc refused_while_locked
drive_probe eject "$DRIVE" || fail "the tray does not open"
drive_probe kernel "$DRIVE" > /share/open.kernel
drive_probe program "$DRIVE" > /share/open.program
drive_probe load "$DRIVE" || fail "the tray does not close"
show loaded

swap blank.kvdisc
probe blank
mount -t iso9660 -o ro "$DRIVE" /tmp/disc && fail "a blank disc is mounted"
unplug
""")
        self.assertEqual(tree_of(self.path("one")), tree_of(first))
        self.assertEqual(tree_of(self.path("other")), tree_of(second))
        self.assertEqual(tree_of(self.path("loaded")), tree_of(second))
        self.assertEqual(self.probed("changed", "kernel")["mediaChanged"], 1)
        self.assertEqual(self.probed("again", "kernel")["mediaChanged"], 0)
        self.assertEqual(self.probed("open", "kernel")["driveStatus"], TRAY_OPEN)
        program = self.probed("open", "program")
        self.assertEqual((program["ready"], program["present"], program["tracks"]), (False, False, None))
        self.assertEqual(self.probed("blank", "kernel")["toc"], None)
        program = self.probed("blank", "program")
        self.assertEqual((program["present"], program["blank"], program["sessions"]), (True, True, 1))
        self.assertEqual(program["nextWritableAddress"], 0)

    def test_a_drive_pulled_out_while_its_disc_is_mounted_leaves_nothing_hanging(self):
        tree = make_tree(self.path("tree"), 1, files=40)
        self.make_disc("disc", "cd-r", tree)
        self.guest("""
plug disc.kvdisc
mkdir /tmp/disc
mount -t iso9660 -o ro "$DRIVE" /tmp/disc || fail "the kernel mounts nothing"
unplug
cat /tmp/disc/*.bin > /dev/null && fail "files of a disc that is gone can be read"
umount /tmp/disc || fail "busy"
drive_probe program "$DRIVE" && fail "the drive is still there"
rm -r "$DISC"
plug disc.kvdisc
show back
unplug
""")
        self.assertEqual(tree_of(self.path("back")), tree_of(tree))


class Burning(GuestTest):
    """A second session on a real kernel's drive, on both kinds of drives: one that tells of the new session, which the
    kernel sees then, and one that shows it only when the disc is loaded anew."""

    RELOAD = "after close: stale\n"
    NEWS = "after close: attention\n"

    def set_faults(self, disc, text):
        with open(os.path.join(disc, "faults"), "w", encoding="ascii") as file:
            file.write(text)

    def burn_cd(self, faults, between):
        first, second = make_tree(self.path("first"), 1), make_tree(self.path("second"), 2)
        disc = self.make_disc("disc", "cd-r", first)
        self.set_faults(disc, faults)
        self.guest(f"""
plug disc.kvdisc
show before
add_session_image second SECOND
$PARTS/recorder --device "$DRIVE" --image /tmp/session.iso --appendable > /share/recorder || fail "$(cat /share/recorder)"
{between}
probe after
show after
unplug
keep burned
""")
        self.assertEqual(tree_of(self.path("before")), tree_of(first))
        both = {**tree_of(first), **tree_of(second)}
        self.assertEqual(tree_of(self.path("after")), both)
        burned = self.path("burned.kvdisc")
        self.assertEqual(self.tree_on(burned), both)
        starts = self.starts_on(burned)
        self.assertEqual(len(starts), 2)
        self.assertEqual(self.probed("after", "kernel")["lastSession"], starts[-1])
        program = self.probed("after", "program")
        self.assertEqual([track["start"] for track in program["tracks"]],
                         [*starts, self.info(burned)["next_writable_address"]])

    def test_the_recorder_adds_a_session_to_a_cd_r_in_a_drive_to_be_loaded_anew(self):
        self.burn_cd(self.RELOAD, "reload")

    def test_the_recorder_adds_a_session_to_a_cd_r_in_a_drive_that_tells_of_it(self):
        self.burn_cd(self.NEWS, "")

    def grow_dvd(self, faults, between):
        first, second = make_tree(self.path("first"), 1), make_tree(self.path("second"), 2)
        disc = self.make_dvd("disc", "dvd+rw", first)
        self.set_faults(disc, faults)
        self.guest(f"""
plug disc.kvdisc
show before
growisofs -overburn -M "$DRIVE" -joliet-long -D -J -r -use-the-force-luke=tty -V SECOND /share/second \\
  > /share/growisofs 2>&1
grep -q ':-[([]' /share/growisofs && fail "$(cat /share/growisofs)"
{between}
probe after
show after
unplug
keep burned
""")
        self.assertEqual(tree_of(self.path("before")), tree_of(first))
        both = {**tree_of(first), **tree_of(second)}
        self.assertEqual(tree_of(self.path("after")), both)
        self.assertEqual(self.tree_on(self.path("burned.kvdisc")), both)
        program = self.probed("after", "program")
        self.assertEqual((program["profile"], program["blank"], len(program["tracks"])), (DVD_PLUS_RW, False, 1))

    def test_growisofs_grows_a_dvd_plus_rw_in_a_drive_to_be_loaded_anew(self):
        self.grow_dvd(self.RELOAD, "reload")

    def test_growisofs_grows_a_dvd_plus_rw_in_a_drive_that_tells_of_it(self):
        self.grow_dvd(self.NEWS, "")


if __name__ == "__main__":
    unittest.main()
