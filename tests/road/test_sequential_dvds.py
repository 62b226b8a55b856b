# SPDX-License-Identifier: GPL-2.0-or-later
"""Session after session on DVDs that are written track by track. The application refuses a DVD-R and formats a DVD-RW
before; so growisofs is run with the application's arguments, on folders like those that the volume leaves behind."""

import os
import shutil
import unittest

from growisofs_run import run_growisofs
from road import BIN, RoadTest, run, sha256_of_sectors, tree_of


class Edit:
    """Changes of a volume, made to a mirror of it, and what the volume would hand over to be burned: a folder of what is
    new, and the list of what is hidden."""

    def __init__(self, mirror, folder):
        self.mirror = mirror
        self.folder = folder
        self.new = []
        self.hidden = []

    def add(self, path, content):
        target = os.path.join(self.mirror, path)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(target, "wb") as file:
            file.write(content)
        self.new.append(path)

    def make_folder(self, path):
        os.makedirs(os.path.join(self.mirror, path))
        self.new.append(path)

    def delete(self, path):
        target = os.path.join(self.mirror, path)
        if os.path.isdir(target):
            for name in os.listdir(target):
                self.delete(os.path.join(path, name))
            os.rmdir(target)
        else:
            os.remove(target)
        self.hidden.append(path)

    def rename(self, path, other):
        os.rename(os.path.join(self.mirror, path), os.path.join(self.mirror, other))
        self.hidden.append(path)
        self.new.append(other)

    def hand_over(self):
        """The folder and the hide list."""
        for path in self.new:
            self.copy(path)
        for path in self.hidden:
            stand_in = os.path.join(self.folder, path)
            if os.path.isdir(stand_in):
                shutil.rmtree(stand_in)
            os.makedirs(os.path.dirname(stand_in), exist_ok=True)
            with open(stand_in, "wb"):
                pass
        hide_list = self.folder + ".hide"
        with open(hide_list, "w", encoding="utf-8") as file:
            file.write("\n".join(os.path.join(self.folder, path) for path in self.hidden))
        return self.folder, hide_list

    def copy(self, path):
        source = os.path.join(self.mirror, path)
        target = os.path.join(self.folder, path)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        if os.path.isdir(source):
            shutil.copytree(source, target)
        else:
            shutil.copy2(source, target)  # A renamed file keeps its time.


def first(edit):
    edit.add("docs/one.txt", b"one")
    edit.add("docs/two.txt", b"two")
    edit.add("docs/deep/er/deep.txt", b"deep")
    edit.add("Müller & Söhne.txt", "Müller".encode())
    edit.add("big.bin", os.urandom(3000000))
    edit.add("empty-file", b"")


def second(edit):
    edit.add("new.bin", os.urandom(1000000))
    edit.add("docs/one.txt", b"one, replaced")
    edit.rename("docs/two.txt", "docs/zwei.txt")
    edit.delete("empty-file")


def third(edit):
    edit.add("more/a.txt", b"a")
    edit.make_folder("more/empty")
    edit.delete("docs/deep")
    edit.rename("big.bin", "large.bin")


def fourth(edit):
    edit.rename("more", "less")
    edit.add("empty-file", b"back again")
    edit.add("docs/one.txt", b"one, once more")


def fifth(edit):
    edit.delete("new.bin")
    edit.delete("less/a.txt")
    edit.add("less/b.txt", b"b")


class SequentialDvds(RoadTest):
    def add_session(self, disc, number, change):
        edit = Edit(self.mirror, os.path.join(self.folder, f"session{number}"))
        os.mkdir(edit.folder)
        change(edit)
        option = "-Z" if number == 1 else "-M"
        lines = run_growisofs(self.environment, disc, option, *edit.hand_over())
        self.assertEqual([line for line in lines if line.startswith(":-")], [])

    def check_sessions(self, disc, changes):
        self.mirror = os.path.join(self.folder, "mirror")
        shutil.rmtree(self.mirror, ignore_errors=True)
        os.mkdir(self.mirror)
        earlier = []  # Of each earlier session: its span, and the digest of that.
        for number, change in enumerate(changes, start=1):
            with self.subTest(session=number):
                self.add_session(disc, number, change)
                self.assert_last_session_equals(disc, tree_of(self.mirror))
                sessions = self.sessions(disc)
                self.assertEqual(len(sessions), number)
                for start, end, digest in earlier:
                    self.assertEqual(sha256_of_sectors(disc, start, end), digest)
                track = sessions[-1]["tracks"][0]
                span = (track["start"], track["start"] + track["sectors"])
                earlier.append((*span, sha256_of_sectors(disc, *span)))
            shutil.rmtree(os.path.join(self.folder, f"session{number}"))

    def test_five_sessions_on_a_dvd_r(self):
        self.check_sessions(self.make_disc(media="dvd-r"), [first, second, third, fourth, fifth])

    def test_five_sessions_on_a_sequential_dvd_rw_and_again_after_erasing(self):
        disc = self.make_disc(media="dvd-rw")
        self.check_sessions(disc, [first, second, third, fourth, fifth])
        run(os.path.join(BIN, "kelvanefs"), "erase", "--yes", "--drive", disc, env=self.environment)
        # growisofs writes a disc that was blanked quickly as a whole and closes it. The application formats it.
        self.check_sessions(disc, [first])


if __name__ == "__main__":
    unittest.main()
