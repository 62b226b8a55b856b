# SPDX-License-Identifier: GPL-2.0-or-later
"""A whole session of the real application on emulated drives, by nothing but key presses."""

import json
import re

from real_window import RealWindowTest


class KeyboardSession(RealWindowTest):
    def sessions_of(self, disc):
        return sum(session["closed"] for session in json.loads(self.disc_tool("info", disc, "--json"))["sessions"])

    def name_of_second_session(self, disc):
        """The volume identifier in the primary volume descriptor (ECMA-119, 8.4.7), 16 sectors behind the session's start."""
        start = int(re.search(r"Track 2: start (\d+)", self.disc_tool("info", disc))[1])
        with open(disc / "sectors", "rb") as sectors:
            sectors.seek((start + 16) * 2048 + 40)
            return sectors.read(32).decode().strip()

    def open_selected_disc(self):
        self.keys("Return")
        self.wait_until("the volume", lambda: self.logged("Notified that Filesystem did mount.") and self.volume.is_dir())
        self.wait_for("Close Disc", "push button")

    def test_licence_list_opening_change_closing_naming_burn_and_back(self):
        holiday = self.make_disc("HOLIDAY", "cd-rw")
        music = self.make_disc("MUSIC", "cd-r")
        self.start(holiday, music)
        self.wait_for("Licence Agreement")
        self.keys("Return")
        self.wait_for("Discs")
        self.wait_until("both discs", lambda: self.find("HOLIDAY, CDRW in KELVANE SOFTWARE BURNER") and
                   self.find("MUSIC, CDR in KELVANE SOFTWARE BURNER"))
        self.wait_for_focus("HOLIDAY, CDRW in KELVANE SOFTWARE BURNER")
        self.keys("Down")
        self.wait_for_focus("MUSIC, CDR in KELVANE SOFTWARE BURNER")
        self.open_selected_disc()
        (self.volume / "second.txt").write_text("added by hand")
        (self.volume / "first.txt").unlink()
        self.keys("ctrl+o")
        self.wait_for("Burn your changes to the disc?")
        self.wait_for_focus("Disc name")
        self.type("LETTERS")
        self.keys("Return")
        self.wait_until("the end of the burn", lambda: self.logged("cd burn finished with state:"))
        # The other disc is the only one now, and opens by itself.
        self.wait_for("HOLIDAY", "label")
        self.wait_until("the new session", lambda: self.sessions_of(music) == 2)
        self.assertEqual(self.sessions_of(holiday), 1)
        listed = self.disc_tool("ls", music)
        self.assertIn("second.txt", listed)
        self.assertNotIn("first.txt", listed)
        self.assertEqual(self.name_of_second_session(music), "LETTERS")
        self.keys("ctrl+q")
        self.assertEqual(self.process.wait(timeout=60), 0)

    def test_erasing_preferences_and_licence(self):
        old = self.make_disc("OLD", "cd-rw")
        music = self.make_disc("MUSIC", "cd-r")
        self.agree_to_license()
        self.start(music, old)
        self.wait_for_focus("MUSIC, CDR in KELVANE SOFTWARE BURNER")

        self.keys("ctrl+comma")
        self.wait_for("Show the files as soon as a disc is open", "check box")
        self.wait_for_focus("Show the files as soon as a disc is open")
        self.keys("Tab", "space", "Escape")
        self.wait_until("the preference on the disk", lambda: "noappledoublefiles=true" in self.defaults.read_text())
        self.wait_until("the panel's end", lambda: len(self.windows()) == 1)

        self.keys("F10")
        self.keys_in_menu("l")
        self.wait_until("the agreement", lambda: len(self.windows()) == 2)
        self.keys("Escape")
        self.wait_until("the agreement's end", lambda: len(self.windows()) == 1)

        self.keys("Down")
        self.wait_for_focus("OLD, CDRW in KELVANE SOFTWARE BURNER")
        self.keys("ctrl+e")
        self.wait_for("Erase this disc?")
        self.wait_for_focus("Cancel")
        self.keys("Return")
        self.wait_until("the question's end", lambda: len(self.windows()) == 1)
        self.assertEqual(self.sessions_of(old), 1)
        self.keys("ctrl+e")
        self.wait_for_focus("Cancel")
        self.keys("alt+e")
        self.wait_until("the blank disc", lambda: self.sessions_of(old) == 0)
