# SPDX-License-Identifier: GPL-2.0-or-later
"""Erasing from a script: what is asked, what is refused, and that the disc is as good as new afterwards."""

import fcntl
import json
import os
import pty
import signal
import subprocess
import unittest

from road import BIN, LIBEXEC, LIMIT, RoadTest, run, sha256_of, wait_until

DECLINED = 1
USAGE = 2
NOT_ERASABLE = 3
FAILED = 4


class EraseTest(RoadTest):
    """A rewritable disc of one session, and the ways to have it erased."""

    def setUp(self):
        super().setUp()
        self.source = os.path.join(self.folder, "source")
        os.mkdir(self.source)
        for name in ("a.txt", "b.txt"):
            with open(os.path.join(self.source, name), "w", encoding="utf-8") as file:
                file.write(name)

    def make_sample(self, media="cd-rw", name="disc"):
        return self.make_disc(name=name, media=media, source=self.source, label="SAMPLE")

    def start_erase(self, disc, *options, **popen_options):
        popen_options.setdefault("stdin", subprocess.DEVNULL)
        return subprocess.Popen([os.path.join(BIN, "kelvanefs"), "erase", "--drive", disc, *options],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment,
                                encoding="utf-8", errors="surrogateescape", **popen_options)

    def erase(self, disc, *options, status=0):
        process = self.start_erase(disc, *options)
        output, errors = process.communicate(timeout=LIMIT)
        self.assertEqual(process.returncode, status, errors)
        self.assertEqual(output, "")
        return errors

    def state_of(self, disc):
        return sha256_of(os.path.join(disc, "sectors")), self.info(disc)["sessions"]

    def assert_blank(self, disc):
        info = self.info(disc)
        self.assertEqual([session for session in info["sessions"] if session["closed"]], [], info)
        self.assertEqual(info["state"], "blank", info)

    def read_until(self, process, text):
        line = ""
        while text not in line:
            line = process.stderr.readline()
            self.assertTrue(line, f"ended without saying: {text}")

    def recorders(self):
        """The recorders of this test."""
        found = []
        for process in filter(str.isdigit, os.listdir("/proc")):
            try:
                with open(f"/proc/{process}/cmdline", "rb") as line:
                    command = line.read().split(b"\0")
                with open(f"/proc/{process}/environ", "rb") as environment:
                    is_ours = os.fsencode(self.folder) in environment.read()
            except OSError:
                continue
            if is_ours and command[0] == os.fsencode(os.path.join(LIBEXEC, "recorder")):
                found.append(int(process))
        return found

    def wait_for_recorder(self):
        wait_until(self.recorders, lambda: "no recorder was started")
        return self.recorders()[0]


class Erase(EraseTest):
    def test_a_disc_is_burned_erased_and_burned_again(self):
        disc = self.make_sample()
        self.edit(disc, "echo second > second.txt; rm a.txt")
        lines = self.erase(disc, "--yes")
        self.assertIn("SAMPLE (CDRW in ", lines)
        self.assertIn("2 sessions", lines)
        self.assertIn("b.txt", lines)
        self.assertIn("The disc is blank now.", lines)
        self.assert_blank(disc)
        shown, _ = self.edit(disc, "echo new > new.txt; mkdir -p d; echo deep > d/deep.txt")
        self.assertEqual(set(shown), {"new.txt", "d", "d/deep.txt"})
        self.assertEqual(self.session_starts(disc), [0])
        self.assert_last_session_equals(disc, shown)
        shown, _ = self.edit(disc, "echo more > more.txt")
        self.assert_last_session_equals(disc, shown)

    def test_a_blank_disc_stays_blank(self):
        disc = self.make_disc(media="cd-rw")
        self.assertIn(", blank.", self.erase(disc, "--yes"))
        self.assert_blank(disc)

    def test_a_disc_without_a_volume_is_erased_too(self):
        disc = self.make_disc(media="cd-rw")
        noise = os.path.join(self.folder, "noise")
        with open(noise, "wb") as file:
            file.write(os.urandom(700 * 2048))
        self.kelvanedisc("run", disc, "--", "cdrskin", "dev=/dev/sr0", "-tao", "-multi", noise)
        self.assertEqual(len(self.sessions(disc)), 1)
        self.assertIn("without a readable volume", self.erase(disc, "--yes"))
        self.assert_blank(disc)

    def test_a_write_once_disc_is_refused(self):
        disc = self.make_sample(media="cd-r")
        before = self.state_of(disc)
        self.assertIn("not rewritable", self.erase(disc, "--yes", status=NOT_ERASABLE))
        self.assertEqual(self.state_of(disc), before)

    def test_without_a_terminal_nobody_can_be_asked(self):
        disc = self.make_sample()
        before = self.state_of(disc)
        self.assertIn("--yes", self.erase(disc, status=USAGE))
        self.assertEqual(self.state_of(disc), before)

    def test_a_disc_that_cannot_be_erased_is_as_good_as_before(self):
        disc = self.make_sample()
        before = self.state_of(disc)
        faults = os.path.join(disc, "faults")
        with open(faults, "w", encoding="utf-8") as file:
            file.write("on blank: sense 3/51/00\n")
        lines = self.erase(disc, "--yes", status=FAILED)
        self.assertIn("The disc could not be erased: ", lines)
        self.assertIn("[3 51 00]", lines)
        self.assertEqual(self.state_of(disc), before)
        os.remove(faults)
        shown, _ = self.edit(disc, "echo new > new.txt")
        self.assertEqual(set(shown), {"a.txt", "b.txt", "new.txt"})
        self.assert_last_session_equals(disc, shown)

    def test_a_disc_has_to_be_named(self):
        result = run(os.path.join(BIN, "kelvanefs"), "erase", "--yes", check=False, env=self.environment)
        self.assertEqual(result.returncode, USAGE)

    def test_a_disc_that_is_not_there_is_named(self):
        self.assertIn("nowhere.kvdisc", self.erase(os.path.join(self.folder, "nowhere.kvdisc"), "--yes",
                                                   status=NOT_ERASABLE))


class EraseAsJson(EraseTest):
    """One object on standard output at the end, whatever it is."""

    def outcome(self, disc, *options, status):
        process = self.start_erase(disc, "--json", *options)
        output, errors = process.communicate(timeout=LIMIT)
        self.assertEqual(process.returncode, status, errors)
        outcome = json.loads(output)
        self.assertEqual(set(outcome), {"state", "error"})
        if outcome["error"] is not None:
            self.assertIn(outcome["error"], errors)
        return outcome

    def test_an_erased_disc(self):
        disc = self.make_sample()
        self.assertEqual(self.outcome(disc, "--yes", status=0), {"state": "erased", "error": None})
        self.assert_blank(disc)

    def test_a_disc_that_may_not_be_erased(self):
        outcome = self.outcome(self.make_sample(media="cd-r"), "--yes", status=NOT_ERASABLE)
        self.assertEqual(outcome["state"], "not-erasable")
        self.assertIn("not rewritable: SAMPLE", outcome["error"])

    def test_no_disc(self):
        outcome = self.outcome(os.path.join(self.folder, "nowhere.kvdisc"), "--yes", status=NOT_ERASABLE)
        self.assertEqual(outcome["state"], "not-erasable")
        self.assertIn("nowhere.kvdisc", outcome["error"])

    def test_an_erase_that_fails(self):
        disc = self.make_sample()
        with open(os.path.join(disc, "faults"), "w", encoding="utf-8") as file:
            file.write("on blank: sense 3/51/00\n")
        outcome = self.outcome(disc, "--yes", status=FAILED)
        self.assertEqual(outcome["state"], "erase-failed")
        self.assertIn("[3 51 00]", outcome["error"])

    def answered(self, answer, status):
        master, terminal = pty.openpty()
        try:
            process = self.start_erase(self.make_sample(), "--json", stdin=terminal)
            shown = ""
            while not shown.endswith("erase it: "):
                character = process.stderr.read(1)
                self.assertTrue(character, shown)
                shown += character
            if isinstance(answer, signal.Signals):
                process.send_signal(answer)
            else:
                os.write(master, answer)
            output, errors = process.communicate(timeout=LIMIT)
            self.assertEqual(process.returncode, status, errors)
            return json.loads(output)["state"]
        finally:
            os.close(master)
            os.close(terminal)

    def test_the_answer_no(self):
        self.assertEqual(self.answered(b"no\n", DECLINED), "declined")

    def test_a_signal_before_the_answer(self):
        self.assertEqual(self.answered(signal.SIGTERM, 128 + signal.SIGTERM), "interrupted")


class EraseDVD(EraseTest):
    def check_road(self, media, kind, state):
        """Erased twice, burned between and after; `state` is what the drive calls the erased disc."""
        disc = self.make_sample(media=media)
        for number in (1, 2):
            with self.subTest(round=number):
                lines = self.erase(disc, "--yes")
                self.assertIn(f" ({kind} in ", lines)
                self.assertIn("a.txt" if number == 1 else "new1.txt", lines)
                self.assertIn("The disc is blank now.", lines)
                self.assertEqual(self.info(disc)["state"], state)
                self.assertIn(", blank.", self.erase(disc, "--yes"))
                shown, _ = self.edit(disc, f"echo new > new{number}.txt; mkdir d; echo deep > d/deep.txt")
                self.assertEqual(set(shown), {f"new{number}.txt", "d", "d/deep.txt"})
                self.assertEqual(self.tree_by_our_mount(disc, 0), shown)
                self.assertEqual(self.tree_by_xorriso(disc, 0), shown)
                self.assertEqual(self.paths_by_isoinfo(disc, 0, "-R"), set(shown))

    def test_a_sequential_dvd_rw(self):
        self.check_road("dvd-rw", "DVDRW", "blank")

    def test_a_formatted_dvd_rw(self):
        self.check_road("dvd-rw-ro", "DVDRW", "blank")

    def test_a_dvd_plus_rw(self):
        self.check_road("dvd+rw", "DVDPlusRW", "overwritable")

    def test_write_once_dvds_are_refused(self):
        for media in ("dvd-r", "dvd+r"):
            with self.subTest(media=media):
                disc = self.make_sample(media=media, name=media)
                before = self.state_of(disc)
                self.assertIn("not rewritable", self.erase(disc, "--yes", status=NOT_ERASABLE))
                self.assertEqual(self.state_of(disc), before)


class EraseAsks(EraseTest):
    def answer(self, disc, answer, status):
        """Erases at a terminal on which `answer` is typed once the question stands there."""
        master, terminal = pty.openpty()
        try:
            process = self.start_erase(disc, stdin=terminal)
            shown = ""
            while not shown.endswith("erase it: "):
                character = process.stderr.read(1)
                self.assertTrue(character, shown)
                shown += character
            self.assertEqual(len(self.sessions(disc)), 1, "erased before the answer")
            if callable(answer):
                answer()
            elif isinstance(answer, signal.Signals):
                process.send_signal(answer)
            else:
                os.write(master, answer)
            _, errors = process.communicate(timeout=LIMIT)
            self.assertEqual(process.returncode, status, shown + errors)
            return shown + errors
        finally:
            os.close(master)
            os.close(terminal)

    def test_the_disc_is_named_with_what_is_on_it_and_yes_erases_it(self):
        disc = self.make_sample()
        shown = self.answer(disc, b"yes\n", 0)
        self.assertIn("SAMPLE (CDRW in ", shown)
        self.assertIn("1 session,", shown)
        self.assertIn("a.txt", shown)
        self.assert_blank(disc)

    def check_declined(self, answer, status=DECLINED):
        disc = self.make_sample()
        before = self.state_of(disc)
        self.assertIn("othing has been erased", self.answer(disc, answer, status))
        self.assertEqual(self.state_of(disc), before)

    def test_no_leaves_the_disc_alone(self):
        self.check_declined(b"no\n")

    def test_return_alone_leaves_the_disc_alone(self):
        self.check_declined(b"\n")

    def test_the_end_of_the_input_leaves_the_disc_alone(self):
        self.check_declined(b"\x04")

    def test_a_signal_leaves_the_disc_alone(self):
        self.check_declined(signal.SIGINT, 128 + signal.SIGINT)

    def test_a_disc_that_is_taken_out_during_the_question_ends_it(self):
        disc = self.make_sample()
        shown = self.answer(disc, lambda: self.kelvanedisc("eject", disc), NOT_ERASABLE)
        self.assertIn("There is no disc", shown)


class EraseInUse(EraseTest):
    def test_a_signal_during_the_erase_waits_for_its_end(self):
        disc = self.make_sample()
        process = self.start_erase(disc, "--yes")
        self.wait_for_recorder()
        process.send_signal(signal.SIGINT)
        process.send_signal(signal.SIGTERM)
        _, errors = process.communicate(timeout=LIMIT)
        self.assertEqual(process.returncode, 0, errors)
        self.assertIn("cannot be stopped", errors)
        self.assert_blank(disc)

    def test_a_recorder_that_is_killed_is_reported_and_the_disc_can_be_erased_again(self):
        disc = self.make_sample()
        process = self.start_erase(disc, "--yes")
        os.kill(self.wait_for_recorder(), signal.SIGKILL)
        _, errors = process.communicate(timeout=LIMIT)
        self.assertEqual(process.returncode, FAILED, errors)
        self.assertIn("signal 9", errors)
        self.erase(disc, "--yes")
        self.assert_blank(disc)

    def test_an_application_that_is_killed_does_not_stop_the_erase(self):
        disc = self.make_sample()
        process = self.start_erase(disc, "--yes")
        recorder = self.wait_for_recorder()
        process.send_signal(signal.SIGKILL)
        process.communicate(timeout=LIMIT)
        wait_until(lambda: recorder not in self.recorders(), lambda: "the recorder does not end")
        self.assert_blank(disc)
        shown, _ = self.edit(disc, "echo new > new.txt")
        self.assert_last_session_equals(disc, shown)

    @staticmethod
    def stands_still(process):
        with open(f"/proc/{process}/stat", encoding="utf-8") as stat:
            return stat.read().rpartition(")")[2].split()[0] == "T"

    def stop_between_commands(self, recorder, disc):
        """Stops the recorder where it does not just carry out a command: nobody else could ask the drive then."""
        while True:
            os.kill(recorder, signal.SIGSTOP)
            # It may go on for a moment, and begin a command.
            wait_until(lambda: self.stands_still(recorder), lambda: "the recorder does not stop")
            with open(os.path.join(disc, "lock"), "r+b") as file:
                try:
                    fcntl.lockf(file, fcntl.LOCK_EX | fcntl.LOCK_NB, 1, 1)
                    fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
                    return
                except BlockingIOError:
                    os.kill(recorder, signal.SIGCONT)

    def test_a_disc_that_is_being_erased_is_not_erased_twice_at_once(self):
        disc = self.make_sample()
        process = self.start_erase(disc, "--yes")
        recorder = self.wait_for_recorder()
        self.stop_between_commands(recorder, disc)
        try:
            process.send_signal(signal.SIGKILL)
            process.communicate(timeout=LIMIT)
            self.assertIn("The drive is busy", self.erase(disc, "--yes", status=NOT_ERASABLE))
        finally:
            os.kill(recorder, signal.SIGCONT)
        wait_until(lambda: recorder not in self.recorders(), lambda: "the recorder does not end")
        self.assert_blank(disc)

    def test_a_volume_in_use_keeps_its_disc_from_being_erased(self):
        disc = self.make_sample()
        before = self.state_of(disc)
        master, terminal = pty.openpty()
        try:
            process = self.start_erase(disc, stdin=terminal)
            volume = os.path.join(self.prefix, "Volumes", "SAMPLE")
            wait_until(lambda: os.path.isdir(volume) and os.listdir(volume), lambda: "the disc is not mounted")
            with open(os.path.join(volume, "a.txt"), encoding="utf-8"):
                os.write(master, b"yes\n")
                _, errors = process.communicate(timeout=LIMIT)
            self.assertEqual(process.returncode, NOT_ERASABLE, errors)
            self.assertIn("uses " + os.path.join(volume, "a.txt"), errors)
            self.assertEqual(self.state_of(disc), before)
        finally:
            os.close(master)
            os.close(terminal)

    def test_a_disc_that_is_open_for_changes_is_not_erased(self):
        disc = self.make_sample()
        started = os.path.join(self.folder, "started")
        finish = os.path.join(self.folder, "finish")
        batch = self.start_batch(disc, "sh", "-c", f'echo new > new.txt; touch "{started}"; '
                                                   f'until test -e "{finish}"; do sleep 0.1; done')
        wait_until(lambda: os.path.exists(started), lambda: "the command has not been run")
        self.assertIn("Nothing has been erased", self.erase(disc, "--yes", status=NOT_ERASABLE))
        self.assertEqual(len(self.sessions(disc)), 1)
        with open(finish, "w", encoding="utf-8"):
            pass
        _, errors = batch.communicate(timeout=LIMIT)
        self.assertEqual(batch.returncode, 0, errors)
        self.assertEqual(len(self.sessions(disc)), 2)


if __name__ == "__main__":
    unittest.main()
