#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""How fast the writable volume is, side by side with other file systems in user space and with the plain directory.

Every figure is a ratio to the plain directory's time, measured in the same run: the file systems take turns within each
round, and a row shows the median of the rounds. All see the same lower tree. Reading and `find` use a folder of the
disk (--work), whose files are in memory already; writing, and making, renaming and removing names, one in memory (--memory).
A busy loop of the lowest priority runs on every core, since on an idle machine the times of waking up drown everything.
"""
import argparse
import os
import pathlib
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

PLAIN = "plain"
OURS = "kelvanefs"

# What we want to be at most, as a multiple of the plain directory's time.
GOALS = {
    "read, first": 6, "read, again": 2.2, "random 4 KiB": 12, "write, fsync": 2.0,
    "find, first": 4.3, "find, again": 1.1, "create": 10, "rename": 10, "unlink": 10,
}


class BusyCores:
    """A loop on each core that takes only what nobody else wants."""

    def __enter__(self):
        self.loops = [subprocess.Popen(["nice", "-n", "19", sys.executable, "-c", "while True: pass"])
                      for _ in range(os.cpu_count())]

    def __exit__(self, *_):
        for loop in self.loops:
            loop.kill()
            loop.wait()


class FileSystem:
    """One that is measured; `command` gives how it is started for a set of folders."""

    def __init__(self, name, command):
        self.name = name
        self.command = command
        self.process = None

    def mount(self, folders):
        """Returns the folder in which the work is done."""
        if self.command is None:
            return folders.plain
        self.process = subprocess.Popen(self.command(folders), stdout=subprocess.PIPE, text=True)
        self.mount_point = folders.mount_point
        while not os.path.ismount(self.mount_point):
            if self.process.poll() is not None:
                sys.exit(f"{self.name} did not mount")
            time.sleep(0.01)
        return self.mount_point

    def unmount(self):
        """Ends it, and returns what it printed."""
        if self.process is None:
            return ""
        subprocess.run(["fusermount3", "-u", str(self.mount_point)], check=True)
        printed = self.process.communicate()[0]
        self.process = None
        return printed

    def abandon(self):
        """Ends one that is still mounted after a failure."""
        if self.process is None:
            return
        subprocess.run(["fusermount3", "-u", "-z", str(self.mount_point)], check=False)
        self.process.kill()
        self.process.wait()

    def user_seconds(self):
        fields = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rpartition(")")[2].split()
        return int(fields[11]) / os.sysconf("SC_CLK_TCK")

    def peak_megabytes(self):
        for line in pathlib.Path(f"/proc/{self.process.pid}/status").read_text().splitlines():
            if line.startswith("VmHWM"):
                return int(line.split()[1]) / 1024
        return 0


class Folders:
    """A lower tree, and an upper folder, work folder and mount point of one mount, below `root`."""

    def __init__(self, root, lower):
        self.lower = lower
        self.root = pathlib.Path(tempfile.mkdtemp(dir=root))
        self.upper = self.root / "upper"
        self.work = self.root / "work"
        self.mount_point = self.root / "volume"
        self.plain = self.lower
        for folder in (self.upper, self.work, self.mount_point):
            folder.mkdir()

    def remove(self):
        shutil.rmtree(self.root)


def file_systems(options):
    volume = options.build / "bench/kv_bench_volume"
    listed = [
        FileSystem(PLAIN, None),
        FileSystem(OURS, lambda f: [volume, f.upper, f.lower, f.mount_point]),
        FileSystem("fuse-overlayfs", lambda f: [
            "fuse-overlayfs", "-f", "-o", f"lowerdir={f.lower},upperdir={f.upper},workdir={f.work}", f.mount_point]),
        FileSystem("unionfs-fuse", lambda f: [
            "unionfs", "-f", "-o", "cow", f"{f.upper}=RW:{f.lower}=RO", f.mount_point]),
    ]
    if options.passthrough:
        listed.append(FileSystem("pass-through", lambda f: [
            options.passthrough, "-f", "-s", "-o", f"source={f.lower},cache=always,timeout=86400", f.mount_point]))
    return [each for each in listed if not options.only or each.name in (PLAIN, *options.only)]


class Bench:
    def __init__(self, options):
        self.options = options
        self.seconds = {}  # row -> file system -> the rounds' times
        self.environment = dict(os.environ)

    def note(self, row, system, seconds):
        self.seconds.setdefault(row, {}).setdefault(system.name, []).append(seconds)

    def work(self, row, system, operation, path, count):
        done = subprocess.run([self.options.build / "bench/kv_bench_workload", operation, path, str(count)],
                              capture_output=True, text=True, check=system.name in (PLAIN, OURS))
        if done.returncode == 0:
            self.note(row, system, float(done.stdout))

    def find(self, row, system, path):
        start = time.perf_counter()
        done = subprocess.run(["find", path, "-type", "f"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              check=system.name in (PLAIN, OURS))
        if done.returncode == 0:
            self.note(row, system, time.perf_counter() - start)

    def reading_round(self, system, root, lower):
        """Reading and finding; mounted anew for each, so that nothing is known yet."""
        options = self.options
        folders = Folders(root, lower)
        volume = system.mount(folders)
        self.work("random 4 KiB", system, "random", volume / "big", options.reads)
        system.unmount()
        volume = system.mount(folders)
        for row in ("read, first", "read, again"):
            self.work(row, system, "read", volume / "big", options.megabytes)
        system.unmount()
        volume = system.mount(folders)
        for row in ("find, first", "find, again"):
            self.find(row, system, volume / "tree")
        system.unmount()
        folders.remove()

    def writing_round(self, system, memory):
        """New content and names, in memory: of a disk, its own times would be most of what is measured."""
        lower = pathlib.Path(tempfile.mkdtemp(dir=memory))
        folders = Folders(memory, lower)
        volume = system.mount(folders)
        (volume / "work").mkdir()
        for row in ("create", "rename", "unlink"):
            self.work(row, system, row, volume / "work", self.options.names)
        self.work("write, fsync", system, "write", volume / "work/written", self.options.megabytes)
        system.unmount()
        folders.remove()
        shutil.rmtree(lower)

    def print_table(self, systems):
        others = [system.name for system in systems if system.name != PLAIN]
        print("times the plain directory's, medians of", self.options.rounds)
        print(f"{'':14}{'plain':>10}" + "".join(f"{name:>16}" for name in others) + f"{'goal':>8}")
        for row, goal in GOALS.items():
            if row not in self.seconds:
                continue
            plain = statistics.median(self.seconds[row][PLAIN])
            line = f"{row:14}{plain * 1000:7.1f} ms"
            for name in others:
                times = self.seconds[row].get(name)
                line += f"{statistics.median(times) / plain:16.2f}" if times else f"{'failed':>16}"
            print(line + f"{goal:8}")


def make_tree(lower, options):
    """100 files in each of many directories, and one big file."""
    for directory in range(options.files // 100):
        folder = lower / f"tree/directory {directory}"
        folder.mkdir(parents=True)
        for file in range(100):
            (folder / f"a usual name of a file {file}.jpg").touch()
    with open(lower / "big", "wb") as big:
        block = os.urandom(1 << 20)
        for _ in range(options.megabytes):
            big.write(block)
    os.sync()
    subprocess.run(["find", lower, "-size", "0"], stdout=subprocess.DEVNULL, check=True)
    subprocess.run(["cat", lower / "big"], stdout=subprocess.DEVNULL, check=True)


def print_own_figures(ours, options, root, lower):
    """What only our volume is asked: memory, and that nothing costs more than linearly."""
    folders = Folders(root, lower)
    volume = ours.mount(folders)
    subprocess.run(["find", volume / "tree", "-type", "f", "-size", "0"], stdout=subprocess.DEVNULL, check=True)
    print(f"{options.files:,} known files: {ours.peak_megabytes():.0f} MB (goal 32)")
    before = ours.user_seconds()
    subprocess.run(["rm", "-r", volume / "tree"], check=True)
    after = ours.user_seconds()
    print(f"{options.files:,} deletions: {after - before:.2f} s of its own CPU (goal 1)")
    print(f"hide list at the unmount: {float(ours.unmount()) - after:.2f} s of its own CPU (goal 1)")
    folders.remove()

    volume_of = {}
    for names in (5000, 50000):
        disc = pathlib.Path(tempfile.mkdtemp(dir=root))
        for index in range(names):
            (disc / f"name {index}").touch()
        folders = Folders(root, disc)
        volume = ours.mount(folders)
        before = ours.user_seconds()
        start = time.perf_counter()
        listed = len(os.listdir(volume))
        taken = time.perf_counter() - start
        assert listed == names
        volume_of[names] = (taken, ours.user_seconds() - before)
        ours.unmount()
        folders.remove()
        shutil.rmtree(disc)
    for names, (taken, own) in volume_of.items():
        print(f"listing {names:,} names: {taken / names * 1e6:.2f} µs a name, {own:.2f} s of its own CPU in all")


def raise_descriptor_limit():
    """Some of the others keep every file that they know open, and fail where they may not."""
    limit = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit))


def measure(systems, options, root, memory):
    os.environ["KELVANEFS_PREFIX"] = root  # Where the hide list goes.
    os.mkdir(os.path.join(root, "tmp"))
    lower = pathlib.Path(root) / "lower"
    lower.mkdir()
    if options.rows != "writing":
        make_tree(lower, options)
    bench = Bench(options)
    for _ in range(options.rounds):
        for system in systems:
            if options.rows in ("all", "reading"):
                bench.reading_round(system, root, lower)
            if options.rows in ("all", "writing"):
                bench.writing_round(system, memory)
    bench.print_table(systems)
    if options.rows in ("all", "own"):
        print_own_figures(next(each for each in systems if each.name == OURS), options, root, lower)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="folder of a release build with benchmarks")
    parser.add_argument("--passthrough", help="libfuse's passthrough_ll, to compare with it too")
    parser.add_argument("--work", default=tempfile.gettempdir(), help="folder of a disk")
    parser.add_argument("--memory", default="/dev/shm", help="folder in memory")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--megabytes", type=int, default=512)
    parser.add_argument("--reads", type=int, default=20000)
    parser.add_argument("--files", type=int, default=100000)
    parser.add_argument("--names", type=int, default=20000)
    parser.add_argument("--only", action="append", help="a file system to measure besides the plain directory")
    parser.add_argument("--rows", choices=("all", "reading", "writing", "own"), default="all")
    options = parser.parse_args()
    systems = file_systems(options)
    raise_descriptor_limit()
    with tempfile.TemporaryDirectory(dir=options.work) as root, \
            tempfile.TemporaryDirectory(dir=options.memory) as memory, BusyCores():
        try:
            measure(systems, options, root, memory)
        finally:
            for system in systems:
                system.abandon()


if __name__ == "__main__":
    main()
