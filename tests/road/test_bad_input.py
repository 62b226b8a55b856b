# SPDX-License-Identifier: GPL-2.0-or-later
"""What cannot be opened or burned ends with a clear message, the right status, and nothing left behind."""

import os
import shutil
import stat
import subprocess
import unittest

from road import BIN, SECTOR, RoadTest, run, sha256_of, wait_until


class BadInput(RoadTest):
    def make_sample(self, **options):
        source = os.path.join(self.folder, "source")
        os.makedirs(source, exist_ok=True)
        with open(os.path.join(source, "a.txt"), "w", encoding="utf-8") as file:
            file.write("a")
        return self.make_disc(source=source, label="SAMPLE", **options)

    def refused(self, disc, words, options=()):
        """A run that must not open the disc, and whose message must hold these words."""
        outcome = self.batch(disc, "true", options=options, status=3)
        self.assertEqual(outcome["state"], "not-opened")
        for word in words:
            self.assertIn(word, outcome["error"])
        self.assertTrue(any(outcome["error"] in line for line in outcome["lines"]), outcome)

    def test_no_such_disc(self):
        self.refused(os.path.join(self.folder, "nowhere.kvdisc"), ["nowhere.kvdisc"])

    def test_a_folder_that_is_no_disc(self):
        folder = os.path.join(self.folder, "plain.kvdisc")
        os.mkdir(folder)
        self.refused(folder, ["plain.kvdisc"])
        os.rmdir(folder)  # Nothing was put into it.

    def test_a_file_instead_of_a_folder(self):
        path = os.path.join(self.folder, "file.kvdisc")
        with open(path, "w", encoding="utf-8") as file:
            file.write("no disc")
        self.refused(path, ["file.kvdisc"])

    def test_a_damaged_description_of_the_disc(self):
        disc = self.make_sample()
        path = os.path.join(disc, "disc.json")
        with open(path, "w", encoding="utf-8") as file:
            file.write('{"version": 1, "medium":')
        self.refused(disc, ["disc.kvdisc"])

    def test_a_disc_of_another_format(self):
        disc = self.make_disc()
        foreign = os.path.join(self.folder, "foreign.img")
        with open(foreign, "wb") as file:
            file.write(os.urandom(400 * SECTOR))
        self.kelvanedisc("run", disc, "--", "cdrskin", "dev=/dev/sr0", "-multi", "-tao", foreign)
        before = sha256_of(os.path.join(disc, "sectors"))
        self.refused(disc, ["disc"])
        self.assertEqual(sha256_of(os.path.join(disc, "sectors")), before)

    def test_a_damaged_first_sector_of_the_volume(self):
        disc = self.make_sample()
        with open(os.path.join(disc, "sectors"), "r+b") as file:
            file.seek(16 * SECTOR)
            file.write(bytes(SECTOR))
        self.refused(disc, ["SAMPLE"])

    def test_a_full_disc(self):
        # More than the nominal 680 MB are in use; the file is a hole and costs nothing here.
        source = os.path.join(self.folder, "large")
        os.mkdir(source)
        with open(os.path.join(source, "hole"), "wb") as file:
            file.truncate(690 << 20)
        disc = self.make_disc(source=source, label="LARGE", capacity=700)
        self.refused(disc, ["LARGE"])

    def test_a_disc_that_is_closed_for_further_sessions_is_not_burned(self):
        disc = self.make_disc()
        image = os.path.join(self.folder, "closed.iso")
        source = os.path.join(self.folder, "source")
        os.mkdir(source)
        run("genisoimage", "-quiet", "-r", "-J", "-V", "CLOSED", "-o", image, source)
        self.kelvanedisc("run", disc, "--", "cdrskin", "dev=/dev/sr0", "-tao", image)
        before = sha256_of(os.path.join(disc, "sectors"))
        outcome = self.batch(disc, "sh", "-c", "echo x > new", status=4)
        self.assertEqual(outcome["state"], "burn-failed")
        self.assertTrue(outcome["error"])
        self.assertEqual(sha256_of(os.path.join(disc, "sectors")), before)

    def test_a_session_that_does_not_fit_is_not_begun(self):
        disc = self.make_sample(capacity=60)
        before = sha256_of(os.path.join(disc, "sectors"))
        outcome = self.batch(disc, "sh", "-c", "head -c 80000000 /dev/urandom > big", status=4)
        self.assertEqual(outcome["state"], "burn-failed")
        self.assertIn("not enough room on the disc", outcome["error"])
        self.assertEqual(sha256_of(os.path.join(disc, "sectors")), before)
        self.assertEqual(len(self.sessions(disc)), 1)

    def check_refused_by_the_image_builder(self, edit, *reasons):
        disc = self.make_sample()
        outcome = self.batch(disc, "sh", "-c", edit, status=4)
        self.assertEqual(outcome["state"], "burn-failed")
        for reason in reasons:
            self.assertIn(reason, outcome["error"])
        self.assertEqual(len(self.sessions(disc)), 1)
        # The image of a failed imaging stays for whoever wants to see it.
        for name in os.listdir(os.path.join(self.prefix, "tmp")):
            self.assertTrue(name.endswith(".iso"), name)
            os.remove(os.path.join(self.prefix, "tmp", name))

    def test_a_name_that_is_no_text_is_named(self):
        self.check_refused_by_the_image_builder(r"""touch "$(printf 'bad\377name')" """,
                                                "is not written in UTF-8", "ncorrectly encoded string")

    def test_names_that_are_too_much_alike_are_named(self):
        name = "n" * 103
        self.check_refused_by_the_image_builder(f"touch {name}1 {name}2", f"“{name}1”", f"“{name}2”", "103")

    def test_a_file_of_4_gib_is_named(self):
        # Truncating costs the volume nothing, so the size can be had without the room.
        self.check_refused_by_the_image_builder("truncate -s 4294967296 huge.bin", "“huge.bin” has 4 GB")

    def test_a_volume_name_longer_than_a_disc_can_have_is_cut(self):
        name = "N" * 32
        taken = os.path.join(self.prefix, "Volumes", name)
        os.mkdir(taken)  # So the visible volume gets a number, and two bytes too many.
        disc = self.make_disc(source=os.path.dirname(__file__), label=name)
        shown, outcome = self.edit(disc, "echo x > new")
        self.assertEqual(outcome["state"], "burned")
        self.assert_last_session_equals(disc, shown)
        os.rmdir(taken)

    def test_a_folder_of_volumes_that_cannot_be_used(self):
        disc = self.make_sample()
        volumes = os.path.join(self.prefix, "Volumes")
        os.rmdir(volumes)
        with open(volumes, "w", encoding="utf-8") as file:
            file.write("in the way")
        self.environment.pop("XDG_RUNTIME_DIR", None)
        self.refused(disc, ["Volumes"])
        os.remove(volumes)

    @unittest.skipIf(os.geteuid() == 0 and shutil.which("unshare") is None, "needs unshare to take /dev/fuse away")
    def test_without_fuse_the_message_says_what_is_missing(self):
        if os.geteuid() != 0:
            self.skipTest("only root can take /dev/fuse away for one process")
        disc = self.make_sample()
        # A mount namespace of its own, in which an empty file stands at /dev/fuse.
        empty = os.path.join(self.folder, "empty")
        with open(empty, "w", encoding="utf-8"):
            pass
        command = [os.path.join(BIN, "kelvanefs"), "batch", "--drive", disc, "--", "true"]
        script = f'mount --bind "{empty}" /dev/fuse && exec "$@"'
        result = subprocess.run(["unshare", "--mount", "sh", "-c", script, "sh", *command], env=self.environment,
                                capture_output=True, encoding="utf-8", timeout=120, check=False)
        self.assertEqual(result.returncode, 3, result.stderr)
        self.assertIn("/dev/fuse", result.stderr)

    @unittest.skipIf(os.geteuid() != 0, "only root can give a process another /dev/fuse and another user")
    def test_a_user_who_may_not_use_fuse_is_told_the_rule(self):
        disc = self.make_sample()
        os.chmod(os.path.join(self.prefix, "Volumes"), 0o1777)
        closed = os.path.join(self.folder, "closed")
        os.mknod(closed, 0o600 | stat.S_IFCHR, os.makedev(10, 229))
        result = self.as_ordinary_user(disc, f'mount --bind "{closed}" /dev/fuse')
        self.assertEqual(result.returncode, 3, result.stderr)
        self.assertIn("The device /dev/fuse cannot be opened: Permission denied.", result.stderr)
        self.assertIn('KERNEL=="fuse", MODE="0666"', result.stderr)

    @unittest.skipIf(os.geteuid() != 0, "root makes what an ordinary user may not write to")
    def test_a_folder_of_volumes_that_others_may_not_use_is_named_with_what_helps(self):
        disc = self.make_sample()
        volumes = os.path.join(self.prefix, "Volumes")
        os.chmod(volumes, 0o755)
        result = self.as_ordinary_user(disc, "true")
        self.assertEqual(result.returncode, 3, result.stderr)
        self.assertIn(f"No volume can be mounted in {volumes}: Permission denied.", result.stderr)
        self.assertIn(f"install -d -m 1777 {volumes}", result.stderr)

    def as_ordinary_user(self, disc, preparation):
        """Runs a batch as an ordinary user, in a mount namespace of its own that root has prepared."""
        user = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
        kelvanefs = os.path.join(BIN, "kelvanefs")
        if run(*user, "test", "-x", kelvanefs, check=False).returncode != 0:
            self.skipTest("others may not run the programs of this build")
        for folder in (self.folder, self.prefix):
            os.chmod(folder, 0o755)
        os.chmod(os.path.join(self.prefix, "tmp"), 0o1777)
        for folder, _, files in os.walk(disc):
            for path in [folder] + [os.path.join(folder, name) for name in files]:
                os.chown(path, 65534, 65534)
        command = [*user, kelvanefs, "batch", "--drive", disc, "--", "true"]
        return subprocess.run(["unshare", "--mount", "sh", "-ec", preparation + '; exec "$@"', "sh", *command],
                              env=self.environment, capture_output=True, encoding="utf-8", timeout=120, check=False)

    def test_a_second_run_at_the_same_time_says_so(self):
        first_disc = self.make_sample()
        second_disc = self.make_disc(name="second")
        go_on = os.path.join(self.folder, "go-on")
        started = os.path.join(self.folder, "started")
        wait = f'touch "{started}"; while [ ! -e "{go_on}" ]; do sleep 0.05; done'
        first = self.start_batch(first_disc, "sh", "-c", wait)
        try:
            wait_until(lambda: os.path.exists(started), lambda: "the first run has not opened its disc")
            self.refused(second_disc, ["already"])
        finally:
            with open(go_on, "w", encoding="utf-8"):
                pass
            _, errors = first.communicate(timeout=120)
        self.assertEqual(first.returncode, 0, errors)

    def test_wrong_usage(self):
        for arguments in ([], ["--drive", "x"], ["--", "true"], ["--drive", "x", "--speed", "fast", "--", "true"],
                          ["--drive", "x", "--name", "", "--", "true"], ["--drive", "x", "--name", "n" * 33, "--", "true"]):
            with self.subTest(arguments=arguments):
                result = run(os.path.join(BIN, "kelvanefs"), "batch", *arguments, check=False, env=self.environment)
                self.assertEqual(result.returncode, 2, result.stderr)
                self.assertTrue(result.stderr)


if __name__ == "__main__":
    unittest.main()
