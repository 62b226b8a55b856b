# SPDX-License-Identifier: GPL-2.0-or-later
"""Discs that are not what the application is made for, on a real kernel's drive: each ends as it should, with a plain word."""

import hashlib
import os
import unittest

from rig import KELVANEDISC, make_tree, run, tree_of
from system_test import SystemTest

SECTOR_OF_SOUND = 2352
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


class AudioDiscs(SystemTest):
    """Music alone, data before music in one session, and music before a session of data."""

    def sound(self, seed):
        """A file of sound that becomes a track of five seconds."""
        path = os.path.join(self.folder, f"sound {seed}")
        with open(path, "wb") as file:
            file.write(hashlib.sha512(str(seed).encode()).digest() * (375 * SECTOR_OF_SOUND // 64 + 1))
        return path

    def disc(self, name, *options):
        """A CD-R with two audio tracks; its folder."""
        disc = self.path(name + ".kvdisc")
        run(KELVANEDISC, "create", disc, "--media", "cd-r", "--audio", self.sound(1), "--audio", self.sound(2), *options)
        return disc

    def data(self):
        return ["--from", make_tree(self.path("tree"), 1), "--label", "DATA"]

    def kinds(self, disc):
        """Of each session, whether its tracks are audio."""
        return [[track["audio"] for track in session["tracks"]] for session in self.info(disc)["sessions"]]

    def samples(self, disc):
        with open(os.path.join(disc, "audio"), "rb") as file:
            return hashlib.sha256(file.read()).hexdigest()

    # knows_tracks AUDIO DATA: that udev has counted so many of them.
    WORDS = """
knows_tracks() {
  has_property ID_CDROM_MEDIA_TRACK_COUNT_AUDIO "$1" && has_property ID_CDROM_MEDIA_TRACK_COUNT_DATA "$2"
}
"""
    def test_a_disc_of_music_alone_is_left_out_of_the_list_and_the_next_disc_is_taken(self):
        self.disc("music", "--closed")
        self.with_session("next", "cd-r", make_tree(self.path("next"), 2), label="NEXT")
        self.guest(self.WORDS + """
start_desktop
agree
start_window
plug music.kvdisc
eventually "udev knows the music" knows_tracks 2 ""
eventually "nobody waits for a volume any longer" logged "unable to get mountpath. ignoring disk."
eventually "the window asks for a disc" shows "Insert a CD or DVD that can still be written to."
logged "Notified that Filesystem did mount." && fail "music has been opened"
key ctrl+o
swap next.kvdisc
await_open
as_user test -e "/Volumes/tarnwick/file 2 0.bin" || fail "what is open is not the next disc"
windows_are 1 || fail "there is something to say"
key ctrl+q
await_end kelvanefs
nothing_is_left
""")

    def keeps_its_music(self, disc, sessions):
        """A disc with data and two audio tracks is opened, changed and burned. `sessions` are the kinds of its tracks then."""
        name = os.path.basename(disc)
        self.guest(self.WORDS + f"""
plug {name}
eventually "udev knows music and data" knows_tracks 2 1
eventually "udev knows the volume" has_property ID_FS_LABEL DATA
as_user kelvanefs batch --drive "$DRIVE" --json -- \\
  sh -ec 'echo new > new.txt; rm -rf a; rm -rf /tmp/shown; cp -r . /tmp/shown' > /share/outcome 2> /share/words ||
  fail "batch ended with $?: $(cat /share/words /share/outcome)"
nothing_is_left
cp -r /tmp/shown /share/shown
drive_probe load "$DRIVE"
eventually "udev knows the new session" knows_tracks 2 2
show after
unplug
keep burned
""")
        shown, tree = tree_of(self.path("shown")), tree_of(self.path("tree"))
        kept = {path: entry for path, entry in tree.items() if path.split("/")[0] != "a"}
        self.assertEqual(shown, {**kept, "new.txt": shown["new.txt"]})
        self.assertEqual(tree_of(self.path("after")), shown)
        burned = self.path("burned.kvdisc")
        self.assertEqual(self.kinds(burned), sessions)
        self.assertEqual(self.samples(burned), self.samples(disc))

    def test_a_disc_of_data_with_music_behind_it_is_opened_changed_and_burned(self):
        self.keeps_its_music(self.disc("mixed", *self.data()), [[False, True, True], [False]])

    def test_a_disc_of_music_with_a_session_of_data_is_opened_changed_and_burned(self):
        self.keeps_its_music(self.disc("extra", *self.data(), "--audio-session"), [[True, True], [False], [False]])


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
