# SPDX-License-Identifier: GPL-2.0-or-later
"""What a screen reader finds in each state of the real application, over AT-SPI."""

import http.server
import os
import pathlib
import threading

from real_window import BIN, RealWindowTest

LIBEXEC = pathlib.Path(os.environ["KELVANE_LIBEXEC_DIR"])
UPDATING_BUILD = os.environ["KELVANE_UPDATING_BUILD"]


class NewerVersion(http.server.BaseHTTPRequestHandler):
    """Answers as the endpoint does once a newer version is out."""

    def do_GET(self):
        self.send_response(200)
        self.end_headers()
        self.wfile.write(b"1601")

    def log_message(self, *_):
        pass


class AccessibleTree(RealWindowTest):
    def let_recorder_wait(self):
        """What starts as the recorder waits for a file, which is given, before it becomes the real one."""
        sign = self.folder / "go on"
        programs = self.folder / "installation/libexec/kelvanefs"
        programs.mkdir(parents=True)
        for program in LIBEXEC.iterdir():
            if program.name != "recorder":
                (programs / program.name).symlink_to(program)
        recorder = programs / "recorder"
        recorder.write_text("#!/bin/sh\n"
                            f"while [ -d '{self.folder}' ] && ! [ -e '{sign}' ]; do sleep 0.01; done\n"
                            f"exec '{LIBEXEC}/recorder' \"$@\"\n")
        recorder.chmod(0o755)
        self.environment["KELVANEFS_EXECUTABLE"] = str(self.folder / "installation/bin/kelvanefs")
        return sign

    def test_states_of_a_session(self):
        music = self.make_disc("MUSIC", "cd-r")
        old = self.make_disc("OLD", "cd-rw")
        self.start(music, old)
        self.wait_for("Licence Agreement")
        self.check("licence")
        self.press("Agree")
        self.wait_for("OLD, CDRW in KELVANE SOFTWARE BURNER")
        self.check("list")
        self.keys("ctrl+comma")
        self.wait_for("Show the files as soon as a disc is open")
        self.check("preferences")
        self.keys("Escape")
        self.wait_until("the panel's end", lambda: len(self.windows()) == 1)
        self.press("Open Disc")
        self.wait_for("Close Disc")
        self.wait_for("MUSIC")
        self.check("opened")
        (self.volume / "new.txt").write_text("new")
        self.press("Close Disc")
        self.wait_for("Burn your changes to the disc?")
        self.check("confirming")
        changes = self.listen("object:property-change:accessible-value", "object:value-changed")
        self.press("Burn")
        bar = self.wait_for("Progress of the burn", "progress bar")
        self.check("burning")
        value = bar.queryValue()
        self.assertLessEqual(value.minimumValue, value.currentValue)
        self.wait_until("the announcement of progress", lambda: "Progress of the burn" in changes())
        # The other disc is the only one now, and opens by itself.
        self.wait_for("OLD", "label")

    def test_alert_of_a_change_that_cannot_be_burned(self):
        disc = self.make_disc("LETTERS", "cd-rw")
        self.agree_to_license()
        self.start(disc)
        self.wait_for("Close Disc")
        (self.volume / "not text \udcff").write_text("x")
        self.press("Close Disc")
        self.wait_for("Burn your changes to the disc?")
        self.press("Burn")
        self.wait_for("The new session could not be prepared")
        self.check("alert")
        self.press("OK")
        self.wait_until("the alert's end", lambda: len(self.windows()) == 1)
        self.check("empty")

    def test_question_before_erasing(self):
        discs = [self.make_disc(name, "cd-rw") for name in ("ONE", "TWO")]
        self.agree_to_license()
        self.start(*discs)
        self.wait_for("ONE, CDRW in KELVANE SOFTWARE BURNER")
        self.press("Erase Disc…")
        self.wait_for("Erase this disc?")
        self.check("erase")

    def test_erasing(self):
        discs = [self.make_disc(name, "cd-rw") for name in ("ONE", "TWO")]
        self.agree_to_license()
        sign = self.let_recorder_wait()
        self.start(*discs)
        self.wait_for("ONE, CDRW in KELVANE SOFTWARE BURNER")
        self.press("Erase Disc…")
        self.wait_for("Erase this disc?")
        self.press("Erase")
        self.wait_for("Progress of the erasing", "progress bar")
        self.wait_for("Erasing the disc…", "label")
        self.check("erasing")
        sign.touch()
        self.wait_until("the sheet's end", lambda: len(self.windows()) == 1)

    def test_copying_and_the_question_about_a_name_that_is_taken(self):
        disc = self.make_disc("LETTERS", "cd-rw")
        self.agree_to_license()
        self.start(disc)
        self.wait_until("the volume", lambda: (self.volume / "first.txt").exists())
        new = self.folder / "first.txt"
        new.write_text("new")
        self.wait_for("Close Disc", "push button")
        self.keys("ctrl+shift+a")
        self.wait_for("Choose files for the disc")
        self.type(str(new))
        self.press("Add")
        self.wait_for("“first.txt” is on the disc already")
        self.wait_for("Progress of the copying", "progress bar")
        self.check("copying")
        self.press("Keep Both")
        self.wait_until("the end of the copying", lambda: len(self.windows()) == 1)
        self.assertEqual((self.volume / "first (2).txt").read_text(), "new")

    def test_a_disc_that_the_drive_is_still_loading(self):
        disc = self.make_disc("SLOW", "cd-rw")
        self.disc_tool("eject", disc)
        (disc / "faults").write_text("load: never ready", encoding="utf-8")
        self.agree_to_license()
        self.start(disc)
        self.wait_until("the disc", lambda: any("Loading disc…" in item.name for item in self.items()))
        self.check("loading")

    def test_a_newer_version(self):
        server = http.server.HTTPServer(("127.0.0.1", 0), NewerVersion)
        thread = threading.Thread(target=server.serve_forever)
        thread.start()
        self.addCleanup(server.server_close)
        self.addCleanup(thread.join)
        self.addCleanup(server.shutdown)
        self.environment.update(KELVANEFS_EXECUTABLE=str(BIN / "kelvanefs"),
                                KELVANE_TEST_ENDPOINT=f"http://127.0.0.1:{server.server_port}/version")
        self.agree_to_license()
        self.start_program(UPDATING_BUILD)
        self.wait_for("A newer version of KelvaneFS is available")
        self.check("update")
        self.press("Not Now")
        self.wait_until("the question's end", lambda: len(self.windows()) == 1)
        self.check("empty")
