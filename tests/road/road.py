# SPDX-License-Identifier: GPL-2.0-or-later
"""What the tests of the whole road share: a disc, an edit in batch mode, and trees read back by different readers.

A tree is a dictionary from a path ("docs/a.txt", bytes decoded with surrogateescape) to what stands there:
("dir",), ("file", size, sha256, seconds of its modification time) or ("link", text).
"""

import hashlib
import json
import os
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

SECTOR = 2048
BIN = os.environ["KELVANE_BIN_DIR"]
LIBEXEC = os.environ["KELVANE_LIBEXEC_DIR"]
LIMIT = 300  # Seconds that no program of a test may need.


def run(*command, check=True, **options):
    """Runs a program and gives its result with both outputs as text."""
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=LIMIT,
                            encoding="utf-8", errors="surrogateescape", **options)
    if check and result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}:\n{result.stdout}\n{result.stderr}")
    return result


def sha256_of(path):
    digest = hashlib.sha256()
    with open(path, "rb") as file:
        while chunk := file.read(1 << 20):
            digest.update(chunk)
    return digest.hexdigest()


def tree_of(root):
    """The tree below a folder, whatever file system serves it."""
    tree = {}
    for folder, folders, files in os.walk(root):
        for name in folders + files:
            path = os.path.join(folder, name)
            status = os.lstat(path)
            if stat.S_ISLNK(status.st_mode):
                entry = ("link", os.readlink(path))
            elif stat.S_ISDIR(status.st_mode):
                entry = ("dir",)
            else:
                entry = ("file", status.st_size, sha256_of(path), int(status.st_mtime))
            tree[os.path.relpath(path, root)] = entry
    return tree


def sha256_of_sectors(disc, start, end):
    """The digest of the disc's sectors from `start` up to, not including, `end`."""
    digest = hashlib.sha256()
    with open(os.path.join(disc, "sectors"), "rb") as file:
        file.seek(start * SECTOR)
        left = (end - start) * SECTOR
        while left > 0 and (chunk := file.read(min(left, 1 << 20))):
            digest.update(chunk)
            left -= len(chunk)
    return digest.hexdigest()


class RoadTest(unittest.TestCase):
    """A test with a folder of its own, below which all fixed paths of the application lie."""

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="kvroad-")
        self.prefix = os.path.join(self.folder, "root")
        os.makedirs(os.path.join(self.prefix, "tmp"))
        os.makedirs(os.path.join(self.prefix, "Volumes"))
        self.environment = dict(os.environ, KELVANEFS_PREFIX=self.prefix, LC_ALL="C.UTF-8",
                                XDG_CONFIG_HOME=os.path.join(self.folder, "config"))

    def tearDown(self):
        try:
            self.assert_nothing_is_left()
        finally:
            for line in self.mounts():
                subprocess.run(["umount", "-l", line], check=False)
            shutil.rmtree(self.folder, ignore_errors=True)

    # What a run leaves behind.

    def mounts(self):
        with open("/proc/self/mountinfo", encoding="utf-8", errors="surrogateescape") as table:
            points = [line.split(" ")[4] for line in table]
        return [point for point in points if point.startswith(self.folder)]

    def processes(self):
        """The processes whose command line or environment names this test's folder, other than this one."""
        found = []
        for process in filter(str.isdigit, os.listdir("/proc")):
            if int(process) == os.getpid():
                continue
            try:
                with open(f"/proc/{process}/cmdline", "rb") as line:
                    command = line.read()
                with open(f"/proc/{process}/environ", "rb") as environment:
                    text = command + environment.read()
            except OSError:
                continue
            if command and os.fsencode(self.folder) in text:
                found.append(command.replace(b"\0", b" "))
        return found

    def assert_nothing_is_left(self):
        self.assertEqual(self.mounts(), [])
        wait_until(lambda: self.processes() == [], lambda: f"still running: {self.processes()}")
        self.assertEqual(os.listdir(os.path.join(self.prefix, "tmp")), [])
        if os.path.isdir(os.path.join(self.prefix, "Volumes")):
            self.assertEqual(os.listdir(os.path.join(self.prefix, "Volumes")), [])

    # Discs.

    def kelvanedisc(self, *arguments, **options):
        return run(os.path.join(BIN, "kelvanedisc"), *arguments, env=self.environment, **options)

    def make_disc(self, name="disc", media="cd-r", source=None, label=None, capacity=None):
        disc = os.path.join(self.folder, name + ".kvdisc")
        options = ["--media", media]
        if source:
            options += ["--from", source]
        if label:
            options += ["--label", label]
        if capacity:
            options += ["--capacity", str(capacity)]
        self.kelvanedisc("create", disc, *options)
        return disc

    def make_small_disc(self):
        """A CD-R with one session, whose only file is a.txt."""
        source = os.path.join(self.folder, "source")
        os.mkdir(source)
        with open(os.path.join(source, "a.txt"), "w", encoding="utf-8") as file:
            file.write("a")
        return self.make_disc(source=source, label="SAMPLE")

    def info(self, disc):
        return json.loads(self.kelvanedisc("info", disc, "--json").stdout)

    def sessions(self, disc):
        """The complete sessions, without the open one that waits for the next."""
        return [session for session in self.info(disc)["sessions"] if session["closed"]]

    def session_starts(self, disc):
        return [session["tracks"][0]["start"] for session in self.sessions(disc)]

    # Edits.

    def start_batch(self, disc, *command, options=(), wrapper=(), program=os.path.join(BIN, "kelvanefs"),
                    **popen_options):
        """`wrapper` is a program, with arguments, that runs the application."""
        arguments = [*wrapper, program, "batch", "--json"]
        arguments += ["--drive", disc, *options, "--", *command]
        return subprocess.Popen(arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment,
                                encoding="utf-8", errors="surrogateescape", **popen_options)

    def batch(self, disc, *command, status=0, **options):
        """Runs a batch edit and gives its JSON object, with the lines of standard error under "lines"."""
        process = self.start_batch(disc, *command, **options)
        try:
            output, errors = process.communicate(timeout=LIMIT)
        except subprocess.TimeoutExpired:
            process.kill()
            raise
        self.assertEqual(process.returncode, status, errors)
        outcome = json.loads(output)
        outcome["lines"] = errors.splitlines()
        return outcome

    def edit(self, disc, script, options=()):
        """Runs a shell script on the volume, burns, and gives the tree that the volume showed at the end of the script."""
        shown = os.path.join(self.folder, "shown.json")
        snapshot = f'{sys.executable} "{__file__}" "$KELVANEFS_VOLUME" "{shown}"'
        outcome = self.batch(disc, "sh", "-ec", script + "\n" + snapshot, options=options)
        self.assertEqual(outcome["state"], "burned", outcome)
        with open(shown, encoding="utf-8") as file:
            return {path: tuple(entry) for path, entry in json.load(file).items()}, outcome

    # The same session through different readers.

    def tree_by_our_mount(self, disc, start):
        point = os.path.join(self.folder, "mount")
        os.mkdir(point)
        run(os.path.join(LIBEXEC, "isomount"), "--source", os.path.join(disc, "sectors"), "--session", str(start),
            "--fsname", "test", point)
        try:
            return tree_of(point)
        finally:
            run("umount" if os.geteuid() == 0 else "fusermount3", *([] if os.geteuid() == 0 else ["-u"]), point)
            os.rmdir(point)

    def tree_by_xorriso(self, disc, start):
        target = os.path.join(self.folder, "extracted")
        # The attributes of directories would lock the extracting user out of those without write permission.
        run("xorriso", "-abort_on", "FAILURE", "-osirrox", "on:sort_lba_off", "-load", "lba", str(start),
            "-indev", "stdio:" + os.path.join(disc, "sectors"), "-extract", "/", target)
        try:
            return tree_of(target)
        finally:
            run("chmod", "-R", "u+rwx", target)
            shutil.rmtree(target)

    def paths_by_isoinfo(self, disc, start, kind):
        """The paths of the tree as isoinfo lists them; `kind` is "-R" for Rock Ridge, "-J" for Joliet.

        It gives Rock Ridge names as they are, and knows no UTF-8 for Joliet names: Latin 1 serves those of the tests.
        """
        joliet = kind == "-J"
        command = ["isoinfo", "-i", os.path.join(disc, "sectors"), "-T", str(start), kind, "-f"]
        result = subprocess.run(command + (["-j", "iso8859-1"] if joliet else []), capture_output=True, check=True,
                                timeout=LIMIT)
        listing = result.stdout.decode("latin-1" if joliet else "utf-8")
        return {line.lstrip("/") for line in listing.splitlines() if line.strip("/")}

    def assert_last_session_equals(self, disc, shown):
        """The last session, read by everybody, is the tree that the volume showed.

        A symbolic link that was made on the volume is stored with the path of the overlay directory before its text, and
        the volume leaves out as many characters as that path has. Its length is the same for every session made below
        this test's prefix.
        """
        start = self.session_starts(disc)[-1]
        cut = len(self.prefix + "/tmp/") + 9

        def as_shown(tree):
            return {path: ("link", entry[1][cut:]) if entry[0] == "link" else entry for path, entry in tree.items()}

        self.maxDiff = 4000
        self.assertEqual(as_shown(self.tree_by_our_mount(disc, start)), shown)
        self.assertEqual(as_shown(self.tree_by_xorriso(disc, start)), shown)
        self.assertEqual(self.paths_by_isoinfo(disc, start, "-R"), set(shown))
        # Joliet has no symbolic links; mkisofs puts an empty file in the place of one.
        self.assertEqual(self.paths_by_isoinfo(disc, start, "-J"), set(shown))


def wait_until(condition, what_is_wrong):
    """Waits for a condition; a time limit ends what would otherwise wait for ever."""
    import time
    deadline = time.monotonic() + LIMIT
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError(what_is_wrong())
        time.sleep(0.02)


if __name__ == "__main__":
    with open(sys.argv[2], "w", encoding="utf-8") as out:
        json.dump(tree_of(sys.argv[1]), out)
