# SPDX-License-Identifier: GPL-2.0-or-later
"""Six sessions on one disc, one after the other: what the volume showed is what everybody reads from the disc."""

import os

from road import BIN, RoadTest, run, sha256_of_sectors

LONG = "n" * 96 + ".txt"  # 100 characters.

# Each a shell script on the volume.
EDITS = [
    # The first session, on a blank disc.
    f"""
    mkdir -p "Ordner mit Umlauten äöüß" "brackets [x] {{y}}" empty docs/deep/er pictures
    echo one > docs/one.txt
    echo two > docs/two.txt
    echo deep > docs/deep/er/deep.txt
    echo "Müller" > "Ordner mit Umlauten äöüß/Müller [1].txt"
    echo braces > "brackets [x] {{y}}/a {{b}}.txt"
    echo long > {LONG}
    head -c 3000000 /dev/urandom > pictures/random.bin
    : > empty-file
    """,
    # A large file; an addition, a replacement, a rename and a deletion.
    """
    head -c 300000000 /dev/urandom > "large file.bin"
    echo "one, replaced" > docs/one.txt
    mv docs/two.txt docs/zwei.txt
    rm empty-file
    ln -s target link
    """,
    # Whole directories: added, renamed, deleted.
    f"""
    mkdir "new directory"
    cp -r docs "new directory/copy of docs"
    mv pictures "Bilder"
    rm -r "brackets [x] {{y}}"
    mv {LONG} "x{LONG[1:]}"
    """,
    # Replacing a file by writing elsewhere and renaming, as editors do; umlauts deleted; an empty directory removed.
    """
    echo "one, again" > docs/one.tmp
    mv docs/one.tmp docs/one.txt
    rm "Ordner mit Umlauten äöüß/Müller [1].txt"
    rmdir empty
    mkdir "empty again"
    """,
    # What was deleted comes back; a renamed directory is edited further; the large file goes.
    """
    rm "large file.bin"
    echo back > empty-file
    echo more > Bilder/more.txt
    mv "new directory" "old directory"
    """,
    # Deep changes only.
    """
    rm -r docs/deep
    mkdir -p docs/deep/er
    echo fresh > docs/deep/er/fresh.txt
    mv "old directory/copy of docs/one.txt" .
    """,
]


class SessionRoad(RoadTest):
    """How a session shows on the disc depends on the kind of the medium; the rest of the road does not."""

    def span_of_session(self, disc, number, earlier):
        """Checks that the disc has `number` sessions, and gives the first sector of the last one and the one after its
        end. `earlier` has the spans of the sessions before it, in their order."""
        raise NotImplementedError

    def check_outcome(self, outcome, number):
        """Checks what the batch run tells of session `number`."""

    def check_road(self, media):
        disc = self.make_disc(media=media)
        self.check_sessions(disc, EDITS)
        if media.endswith("rw"):
            run(os.path.join(BIN, "kelvanefs"), "erase", "--yes", "--drive", disc, env=self.environment)
            self.check_sessions(disc, EDITS[:1] + EDITS[2:4])

    def check_sessions(self, disc, edits):
        earlier = []  # Of each earlier session: its span, and the digest of that.
        for number, script in enumerate(edits, start=1):
            with self.subTest(session=number):
                shown, outcome = self.edit(disc, script)
                self.check_outcome(outcome, number)
                self.assert_last_session_equals(disc, shown)
                for start, end, digest in earlier:
                    self.assertEqual(sha256_of_sectors(disc, start, end), digest)
                span = self.span_of_session(disc, number, earlier)
                earlier.append((*span, sha256_of_sectors(disc, *span)))
                self.assert_nothing_is_left()
