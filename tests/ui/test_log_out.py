# SPDX-License-Identifier: GPL-2.0-or-later
"""The user logs out while the real application runs: a session manager asks it, or the desktop's portal does.

Where the application keeps the session from ending, nothing of an open disc is lost, and the user is told why."""

import json
import os
import pathlib
import signal
import subprocess
import threading

from real_window import RealWindowTest

MANAGER = os.environ["KELVANE_SESSION_MANAGER"]
PORTAL = pathlib.Path(__file__).parent / "portal.py"


class Service:
    """A program that prints a line for whatever happens to it, and takes commands, a line each."""

    def __init__(self, *command):
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.first = self.process.stdout.readline().strip()
        self.lines = []
        self.reader = threading.Thread(target=self.read)
        self.reader.start()

    def read(self):
        self.lines.extend(line.strip() for line in iter(self.process.stdout.readline, ""))

    def tell(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()

    def end(self):
        self.process.stdin.close()
        self.process.wait()
        self.reader.join()
        self.process.stdout.close()


class LogOut(RealWindowTest):
    def setUp(self):
        super().setUp()
        self.agree_to_license()
        self.disc = self.make_disc("MUSIC", "cd-rw")

    def serve(self, *command):
        service = Service(*command)
        self.addCleanup(service.end)
        return service

    def start_under_session_manager(self):
        self.manager = self.serve(MANAGER)
        self.environment["SESSION_MANAGER"] = self.manager.first
        self.start(self.disc)

    def start_under_portal(self):
        self.portal = self.serve("/usr/bin/python3", "-B", PORTAL)
        self.start(self.disc)

    def wait_until_open(self):
        self.wait_for("Close Disc", "push button")
        self.wait_until("the volume", lambda: self.logged("Notified that Filesystem did mount.") and self.volume.is_dir())

    def change(self):
        self.wait_until("a volume that can be written", lambda: os.path.ismount(self.volume))
        (self.volume / "second.txt").write_text("added by hand")

    def sessions(self):
        return sum(session["closed"] for session in json.loads(self.disc_tool("info", self.disc, "--json"))["sessions"])

    def wait_for_lines(self, service, *lines):
        self.wait_until(f"{lines} in {service.lines}", lambda: service.lines[-len(lines):] == list(lines))

    def burn(self):
        self.wait_for("Burn your changes to the disc?")
        self.wait_for_focus("Disc name")
        self.keys("Return")

    def stop_in_the_middle_of_a_burn(self):
        """Closes the disc and lets it be burned. The burn stands still then, until the test goes on with it or ends."""
        self.keys("ctrl+o")
        self.burn()
        return self.stop_recorder()

    def stop_in_the_middle_of_an_erase(self):
        """The same for the erase of the disc."""
        self.keys("ctrl+e")
        self.wait_for("Erase this disc?")
        self.wait_for_focus("Cancel")
        self.keys("alt+e")
        return self.stop_recorder()

    def stop_recorder(self):
        def recorder():
            for entry in pathlib.Path("/proc").glob("[0-9]*"):
                try:
                    parent = int((entry / "stat").read_text().rpartition(")")[2].split()[1])
                    if parent == self.process.pid and os.path.basename(os.readlink(entry / "exe")) == "recorder":
                        os.kill(int(entry.name), signal.SIGSTOP)
                        return int(entry.name)
                except OSError:
                    continue
            return None
        number = self.wait_until("the recorder", recorder)
        self.addCleanup(self.go_on, number)
        return number

    def go_on(self, number):
        try:
            os.kill(number, signal.SIGCONT)
        except ProcessLookupError:
            pass

    # By a session manager.

    def test_nothing_holds_it_up_where_no_disc_is_open(self):
        self.disc_tool("eject", self.disc)
        self.start_under_session_manager()
        self.wait_until("the window", self.windows)
        self.wait_for_lines(self.manager, "client")
        self.manager.tell("log out")
        self.assertEqual(self.process.wait(timeout=60), 0)
        self.wait_for_lines(self.manager, "client", "saved", "logged out", "gone")

    def test_an_open_disc_without_changes_is_closed_first(self):
        self.start_under_session_manager()
        self.wait_until_open()
        self.manager.tell("log out")
        self.assertEqual(self.process.wait(timeout=60), 0)
        self.wait_for_lines(self.manager, "client", "interacts", "goes on", "saved", "logged out", "gone")
        self.assertFalse(self.volume.is_dir())
        self.assertEqual(self.sessions(), 1)

    def test_it_waits_for_the_answer_and_for_the_burn(self):
        self.start_under_session_manager()
        self.wait_until_open()
        self.change()
        self.manager.tell("log out")
        self.wait_for("Burn your changes to the disc?")
        self.wait_for_lines(self.manager, "client", "interacts")
        self.burn()
        self.assertEqual(self.process.wait(timeout=120), 0)
        self.wait_for_lines(self.manager, "client", "interacts", "goes on", "saved", "logged out", "gone")
        self.assertEqual(self.sessions(), 2)
        self.assertIn("second.txt", self.disc_tool("ls", self.disc))

    def test_a_burn_that_fails_meanwhile_is_told_before_the_session_ends(self):
        (self.disc / "faults").write_text("on write: sense 3/73/03\n")
        self.start_under_session_manager()
        self.wait_until_open()
        self.change()
        self.manager.tell("log out")
        self.burn()
        self.wait_until("the end of the burn", lambda: self.logged("cd burn finished with state:"))
        self.wait_for("OK", "push button")
        self.wait_for_lines(self.manager, "client", "interacts")
        self.keys("Return")
        self.assertEqual(self.process.wait(timeout=60), 0)
        self.wait_for_lines(self.manager, "client", "interacts", "goes on", "saved", "logged out", "gone")

    def test_a_volume_in_use_stops_it_and_the_disc_stays_open(self):
        self.start_under_session_manager()
        self.wait_until_open()
        self.change()
        with open(self.volume / "second.txt", encoding="utf-8"):
            self.manager.tell("log out")
            self.wait_for("The disc is still in use")
            self.wait_for_lines(self.manager, "client", "interacts", "cancels", "not saved", "log-out cancelled")
        self.keys("Return")
        self.assertEqual((self.volume / "second.txt").read_text(), "added by hand")

    def test_a_burn_stops_it_in_words_and_the_next_try_succeeds(self):
        self.start_under_session_manager()
        self.wait_until_open()
        self.change()
        recorder = self.stop_in_the_middle_of_a_burn()
        self.manager.tell("log out")
        self.wait_for("You are still logged in: a disc is being burned")
        self.wait_for_lines(self.manager, "client", "interacts", "cancels", "not saved", "log-out cancelled")
        self.go_on(recorder)
        self.wait_until("the end of the burn", lambda: self.logged("cd burn finished with state:"))
        self.wait_until("the new session", lambda: self.sessions() == 2)
        self.keys("Return")
        self.wait_until("the alert's end", lambda: len(self.windows()) == 1)
        self.manager.tell("log out")
        self.assertEqual(self.process.wait(timeout=60), 0)
        self.wait_for_lines(self.manager, "saved", "logged out", "gone")

    def test_an_erase_is_brought_to_its_end_first(self):
        self.start_under_session_manager()
        self.wait_until_open()
        recorder = self.stop_in_the_middle_of_an_erase()
        self.manager.tell("log out")
        self.wait_for_lines(self.manager, "client", "interacts")
        self.go_on(recorder)
        self.assertEqual(self.process.wait(timeout=120), 0)
        self.wait_for_lines(self.manager, "client", "interacts", "goes on", "saved", "logged out", "gone")
        self.assertEqual(self.sessions(), 0)

    # By the portal, where no session manager is to be reached.

    def test_the_portal_hears_at_once_that_nothing_is_in_the_way(self):
        self.disc_tool("eject", self.disc)
        self.start_under_portal()
        self.wait_for_lines(self.portal, "monitor")
        self.portal.tell("2")
        self.wait_for_lines(self.portal, "monitor", "acknowledged")

    def test_the_portal_holds_it_off_until_the_disc_is_burned(self):
        self.start_under_portal()
        self.wait_until_open()
        self.wait_for_lines(self.portal, "monitor")
        self.change()
        self.portal.tell("2")
        self.wait_for("Burn your changes to the disc?")
        self.wait_for_lines(self.portal, "monitor", "held: A disc is open, and its changes are not burned yet.",
                            "acknowledged")
        self.burn()
        self.wait_until("the new session", lambda: self.sessions() == 2)
        self.wait_until("the end of the inhibitions", lambda: self.portal.lines.count("released") == sum(
            line.startswith("held") for line in self.portal.lines))
        self.assertIsNone(self.process.poll(), "the log-out may have been given up meanwhile")
        self.portal.tell("3")

    def test_the_portal_lets_go_where_the_log_out_is_given_up(self):
        self.start_under_portal()
        self.wait_until_open()
        self.wait_for_lines(self.portal, "monitor")
        self.change()
        self.portal.tell("2")
        self.wait_for("Burn your changes to the disc?")
        self.wait_until("the acknowledgement", lambda: "acknowledged" in self.portal.lines)
        self.portal.tell("1")
        self.wait_until("the end of the inhibition", lambda: "released" in self.portal.lines)
        self.assertIsNotNone(self.find("Burn your changes to the disc?"))

    def test_the_portal_hears_of_a_burn_and_so_does_the_user(self):
        self.start_under_portal()
        self.wait_until_open()
        self.wait_for_lines(self.portal, "monitor")
        self.change()
        recorder = self.stop_in_the_middle_of_a_burn()
        self.portal.tell("2")
        self.wait_for("You are still logged in: a disc is being burned")
        self.wait_until("the acknowledgement", lambda: "acknowledged" in self.portal.lines)
        self.assertEqual(self.portal.lines.count("released"), 0)
        self.portal.tell("1")
        self.go_on(recorder)
        self.wait_until("the new session", lambda: self.sessions() == 2)
