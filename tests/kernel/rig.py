# SPDX-License-Identifier: GPL-2.0-or-later
"""What the tests in a guest share: the programs the guest is given, a guest's run, and discs made and read by other programs."""

import hashlib
import json
import os
import re
import shutil
import stat
import subprocess
import tempfile
import unittest

import images

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = os.environ["KELVANE_BUILD_DIR"]
# What the rig has of its own, in every guest as /programs/rig/bin.
TOOLS = [f"tests/kernel/{name}" for name in ["kernel_burner", "drive_probe", "window_text"]]
# What is tried, in the short tier only as /programs/kelvane: in the full tier it is what a package has installed.
OURS = [*(f"bin/{name}" for name in ["kelvanefs", "kelvanedisc"]),
        *(f"libexec/kelvanefs/{name}" for name in ["recorder", "isomount", "mkisofs", "growisofs", "df"])]
KELVANEDISC = os.path.join(BUILD, "bin/kelvanedisc")
OTHERS = ["/usr/bin/growisofs", "/usr/bin/genisoimage"]
PROGRAM_LIMIT = 120


def run(*command, check=True, **options):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=PROGRAM_LIMIT,
                            encoding="utf-8", errors="surrogateescape", check=False, **options)
    if check and result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}:\n{result.stdout}\n{result.stderr}")
    return result


def libraries_of(programs):
    """The files of the shared libraries that the programs need, with their loader."""
    found = set()
    for line in run("ldd", *programs).stdout.splitlines():
        found.update(re.findall(r"(?:=> |^\s+)(/\S+) \(0x", line))
    return found


def copy_if_newer(source, target):
    """Copies what a symbolic link leads to, not the link."""
    os.makedirs(os.path.dirname(target), exist_ok=True)
    status = os.stat(source)
    if os.path.exists(target) and os.stat(target).st_mtime_ns == status.st_mtime_ns:
        return
    shutil.copy2(source, target + ".new")
    os.rename(target + ".new", target)


def programs_folder(tier):
    """The folder that the guest has as /programs: the rig's tools in `rig`; for the short tier our programs in `kelvane`,
    and in `usr` others and all libraries, which the full tier's system has itself."""
    folder = os.path.join(images.cache_folder(), f"programs-{tier}")
    for path in TOOLS:
        copy_if_newer(os.path.join(BUILD, path), os.path.join(folder, "rig/bin", os.path.basename(path)))
    if tier == "full":
        return folder
    for path in OURS:
        copy_if_newer(os.path.join(BUILD, path), os.path.join(folder, "kelvane", path))
    for path in OTHERS:
        copy_if_newer(path, os.path.join(folder, path.lstrip("/")))
    for path in libraries_of([*(os.path.join(BUILD, path) for path in [*TOOLS, *OURS]), *OTHERS]):
        place = "usr" + path if not path.startswith("/usr/") else path.lstrip("/")
        copy_if_newer(path, os.path.join(folder, place))
    return folder


def tree_of(root):
    """What stands below a folder: a path with its kind and, of a file, its size and digest."""
    tree = {}
    for folder, folders, files in os.walk(root):
        for name in folders + files:
            path = os.path.join(folder, name)
            status = os.lstat(path)
            entry = ("dir",)
            if stat.S_ISREG(status.st_mode):
                with open(path, "rb") as file:
                    entry = ("file", status.st_size, hashlib.sha256(file.read()).hexdigest())
            tree[os.path.relpath(path, root)] = entry
    return tree


def make_tree(folder, seed, files=6):
    """A folder with files of different sizes and a deep directory, which are others for every seed."""
    deep = os.path.join(folder, "a", "directory in", "another")
    os.makedirs(deep)
    for number in range(files):
        name = os.path.join(deep if number % 2 else folder, f"file {seed} {number}.bin")
        block = hashlib.sha256(f"{seed} {number}".encode()).digest()
        with open(name, "wb") as file:
            file.write(block * (7 * number * number + number))
    return folder


class GuestTest(unittest.TestCase):
    """A test with a folder of its own, which is the guest's /share."""

    tier = "short"
    # Seconds. A guest on a quiet machine needs ten.
    limit = 150
    # For the virtual machine, and for its kernel.
    machine_options = []
    memory = "512"
    kernel_words = ""
    guest_files = ["steps"]
    # Those of them that each test reads.
    words = ["steps"]

    @classmethod
    def setUpClass(cls):
        cls.kernel = images.kernel_images()
        cls.programs = programs_folder(cls.tier)

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="kvkernel-")
        self.share = os.path.join(self.folder, "share")
        os.mkdir(self.share)

    def tearDown(self):
        subprocess.run(["chmod", "-R", "u+rwx", self.folder], check=False)
        shutil.rmtree(self.folder, ignore_errors=True)

    def path(self, *names):
        return os.path.join(self.share, *names)

    # The guest.

    def guest(self, steps):
        """Runs the shell script `steps` in a guest. A guest that does not end, or not well, fails the test."""
        limit = int(os.environ.get("KELVANE_GUEST_LIMIT", self.limit))
        for name in self.guest_files:
            shutil.copy(os.path.join(HERE, "guest", name), self.share)
        with open(self.path("test"), "w", encoding="utf-8") as file:
            # Of its time, what one step may wait for something to come true.
            file.write(f"WAIT_LIMIT={limit * 2 // 5}\n" + "".join(f". /share/{name}\n" for name in self.words) + steps)
        # The kernel's test of its timer fails on an emulated processor that is held up, and it does not start then.
        command = ["timeout", "--foreground", "-s", "KILL", str(limit), "nice", "-n", "10", "qemu-system-x86_64",
                   "-accel", "tcg", "-cpu", "qemu64", "-m", self.memory, "-nographic", "-no-reboot", "-nodefaults",
                   "-serial", "stdio", "-kernel", os.path.join(self.kernel, "vmlinux"),
                   "-initrd", os.path.join(self.kernel, "initramfs"),
                   "-append", "console=ttyS0 no_timer_check panic=-1 quiet mitigations=off " + self.kernel_words,
                   "-virtfs", f"local,path={self.programs},mount_tag=programs,security_model=none,readonly=on",
                   "-virtfs", f"local,path={self.share},mount_tag=share,security_model=none", *self.machine_options]
        console_file = os.path.join(self.folder, "console")
        with open(console_file, "wb") as file:
            subprocess.run(command, stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.STDOUT, check=False)
        with open(console_file, encoding="utf-8", errors="replace") as file:
            console = file.read()
        if os.environ.get("KELVANE_GUEST_CONSOLE"):
            print(console)
        marker = self.path("result")
        if not os.path.exists(marker):
            self.fail(f"The guest left no result. Its console:\n{console}")
        with open(marker, encoding="ascii") as file:
            self.assertEqual(file.read().strip(), "0", f"the steps failed. The guest's console:\n{console}")

    def probed(self, name, whom):
        with open(self.path(f"{name}.{whom}"), encoding="utf-8") as file:
            return json.load(file)

    # Discs.

    def make_disc(self, name, media, *trees, label="DISC"):
        """A disc on the share with one session a tree, each holding what the ones before hold, by genisoimage and cdrskin."""
        disc = self.path(name + ".kvdisc")
        run(KELVANEDISC, "create", disc, "--media", media)
        for tree in trees:
            self.add_session(disc, tree, label)
        return disc

    def make_dvd(self, name, media, tree, label="DISC"):
        """A DVD with one session, by growisofs."""
        disc = self.path(name + ".kvdisc")
        run(KELVANEDISC, "create", disc, "--media", media)
        run(KELVANEDISC, "run", disc, "--", "growisofs", "-Z", "/dev/sr0", "-quiet", "-R", "-J", "-V", label,
            "-use-the-force-luke=tty", tree)
        return disc

    def add_session(self, disc, tree, label):
        image = os.path.join(self.folder, "session.iso")
        info = self.info(disc)
        starts = [session["tracks"][0]["start"] for session in info["sessions"]]
        next_start = info["next_writable_address"]
        merge = ["-C", f"{starts[-1]},{next_start}", "-M", os.path.join(disc, "sectors")] if starts else []
        run("genisoimage", "-quiet", "-R", "-J", "-V", label, *merge, "-o", image, tree)
        run(KELVANEDISC, "run", disc, "--", "cdrskin", "dev=/dev/sr0", "-multi", "-tao", image)
        os.remove(image)

    def info(self, disc):
        return json.loads(run(KELVANEDISC, "info", disc, "--json").stdout)

    def starts_on(self, disc):
        """Where the complete sessions of a disc begin."""
        return [session["tracks"][0]["start"] for session in self.info(disc)["sessions"] if session["closed"]]

    def tree_on(self, disc):
        """The tree of the last session as xorriso reads it from the sectors."""
        target = os.path.join(self.folder, "extracted")
        run("xorriso", "-abort_on", "FAILURE", "-osirrox", "on:sort_lba_off", "-load", "lba",
            str(self.starts_on(disc)[-1]), "-indev", "stdio:" + os.path.join(disc, "sectors"), "-extract", "/",
            target)
        run("chmod", "-R", "u+rwx", target)
        try:
            return tree_of(target)
        finally:
            shutil.rmtree(target)
