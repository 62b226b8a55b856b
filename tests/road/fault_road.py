# SPDX-License-Identifier: GPL-2.0-or-later
"""What goes wrong with a drive or a disc during a burn, as a table: the application says so, comes to rest, and leaves the
earlier sessions as they were."""

import json
import os
import signal
from xml.etree import ElementTree

from road import RoadTest, sha256_of_sectors

STRINGS = os.path.join(os.path.dirname(__file__), "..", "..", "resources", "strings", "kelvanefs_en.ts")
FIRST = {"docs/a.txt": "first", "docs/b.txt": "second", "c.txt": "third"}


def texts():
    """The texts of the strings table by their keys."""
    messages = ElementTree.parse(STRINGS).getroot().iter("message")
    return {message.get("id"): message.findtext("translation") for message in messages}


class Fault:
    """One row of the table: the script beside the disc, and what has to come of it."""

    def __init__(self, script, state="burn-failed", key="CDBurnError", detail="", log=(), disc="old"):
        self.script = script
        self.state = state
        # The message of the alert, by its key, and words that it has to hold.
        self.key = key
        self.detail = detail
        self.log = log
        # What is to be seen of the disc afterwards: "old" as before, "new" as edited, "broken" as edited with the last
        # file damaged, "read" as before and no further session can be added.
        self.disc = disc


FAILED = ("cd burn finished with state: DRStatusStateFailed", "CD burning failed: ")
DVD_BURNED = ("DVDBurn finished successfully!",)
DVD_FAILED = ("burnerrors: ",)
# Behind the error correction block of the volume descriptors.
FIRST_DATA_SECTOR = 32
BURNED = ("cd burn finished with state: DRStatusStateDone",)


class Faults(RoadTest):
    def setUp(self):
        super().setUp()
        self.texts = texts()
        self.discs = 0
        self.source = os.path.join(self.folder, "source")
        for name, content in FIRST.items():
            path = os.path.join(self.source, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "w", encoding="utf-8") as file:
                file.write(content)

    def put_script(self, disc, script):
        with open(os.path.join(disc, "faults"), "w", encoding="utf-8") as file:
            file.write(script)

    def take_script(self, disc):
        """Mends the drive: without the script, and plugged in again where it was gone."""
        for name in ("faults", "faults.state"):
            if os.path.exists(os.path.join(disc, name)):
                os.remove(os.path.join(disc, name))
        gone = os.path.join(disc, "disc.json.gone")
        if os.path.exists(gone):
            os.rename(gone, os.path.join(disc, "disc.json"))

    def disc_with_session(self, media):
        self.discs += 1
        return self.make_disc(name=f"disc{self.discs}", media=media, source=self.source, label="SAMPLE")

    def digest_of_sessions(self, disc):
        tracks = [session["tracks"][0] for session in self.sessions(disc)]
        return [sha256_of_sectors(disc, track["start"], track["start"] + track["sectors"]) for track in tracks]

    def check(self, media, fault):
        disc = self.disc_with_session(media)
        before = self.digest_of_sessions(disc)
        self.put_script(disc, fault.script)
        edit = "head -c 3000000 /dev/urandom > new.bin; rm docs/a.txt; mv c.txt d.txt"
        process = self.start_batch(disc, "sh", "-ec", edit)
        output, errors = process.communicate(timeout=300)
        with self.subTest(media=media, fault=fault.script):
            self.check_outcome(media, fault, output, errors)
        self.take_script(disc)
        with self.subTest(media=media, after=fault.script):
            self.assertEqual(self.digest_of_sessions(disc)[:len(before)], before)
            self.assert_nothing_is_left()
            if fault.disc == "read":
                self.batch(disc, "sh", "-c", "test -f docs/a.txt && test -f c.txt && cat docs/b.txt | grep second")
            else:
                self.check_next_edit(disc, fault.disc)

    def check_outcome(self, media, fault, output, errors):
        self.assertIn(f'"{fault.state}"', output, errors)
        # A CD has sessions that can be counted; this is its second, whatever the drive says of it yet.
        if fault.state == "burned" and media.startswith("cd"):
            self.assertEqual(json.loads(output)["session"], 2)
        if fault.state == "burn-failed":
            self.assertIn(self.texts[fault.key], errors)
        self.assertIn(fault.detail, errors)
        for line in fault.log:
            self.assertIn(line, errors)

    def check_next_edit(self, disc, state):
        # A file that is damaged on the disc is put there once more.
        repair = "head -c 3000000 /dev/urandom > new.bin; " if state == "broken" else ""
        shown, _ = self.edit(disc, repair + "echo mended > mended.txt")
        if state == "old":
            expected = {"docs", "docs/a.txt", "docs/b.txt", "c.txt", "mended.txt"}
        else:
            expected = {"docs", "docs/b.txt", "d.txt", "new.bin", "mended.txt"}
        self.assertEqual(set(shown), expected)
        self.assert_last_session_equals(disc, shown)


    def check_slow_loading(self, media):
        disc = self.disc_with_session(media)
        self.kelvanedisc("eject", disc)
        self.put_script(disc, "load: not ready 2500 ms")
        shown, _ = self.edit(disc, "echo new > new.txt")
        self.assert_last_session_equals(disc, shown)

    def check_endless_loading(self, media):
        disc = self.disc_with_session(media)
        self.kelvanedisc("eject", disc)
        self.put_script(disc, "load: never ready")
        process = self.start_batch(disc, "false")
        line = ""
        while "Waiting for the drive to find out what disc is in it." not in line:
            line = process.stderr.readline()
            self.assertTrue(line, "ended without waiting")
        process.send_signal(signal.SIGTERM)
        output, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 128 + signal.SIGTERM, errors)
        self.assertIn('"interrupted"', output)
