#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""How fast the ISO volume is, measured side by side in one run.

walk   a disc of many files (genisoimage -R -J): by the reader alone (kv_bench_iso_walk), by `find` through the mount, and
       by xorriso, which loads the tree with libisofs. Processor time of the process, user and system, and its peak memory.
read   one big file from end to end through the mount, mounted anew each time, so that nothing of the volume is in memory
       but all of the image is; against libfuse's pass-through example over a folder with the same file (--passthrough), or
       against that folder itself. They take turns, and a row shows the median of the rounds.

A row: name, ours, baseline, ours/baseline, goal. A busy loop of the lowest priority runs on every core."""
import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

from overlay_bench import BusyCores

WALK_SECONDS = 0.3
WALK_MEGABYTES = 32
CHUNK = 1 << 20


def row(name, ours, baseline, goal):
    ratio = f"{ours / baseline:10.2f}" if baseline else f"{'-':>10}"
    base = f"{baseline:10.3f}" if baseline else f"{'-':>10}"
    print(f"{name:42}{ours:10.3f}{base}{ratio}  {goal}", flush=True)


def make_image(image, tree, *options):
    subprocess.run(["genisoimage", "-quiet", "-R", *options, "-o", image, tree], check=True, stderr=subprocess.DEVNULL)


class Mount:
    """A file system in user space, as long as the block lasts."""

    def __init__(self, command, mount_point):
        self.command = [*command, mount_point]
        self.mount_point = mount_point

    def __enter__(self):
        self.mount_point.mkdir(exist_ok=True)
        self.process = subprocess.Popen(self.command)
        while not os.path.ismount(self.mount_point):
            if self.process.poll() is not None:
                sys.exit(f"{self.command[0]} did not mount")
            time.sleep(0.01)
        return self

    def __exit__(self, *_):
        subprocess.run(["fusermount3", "-u", self.mount_point], check=True)
        self.process.wait()

    def cpu_seconds(self):
        fields = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def peak_megabytes(self):
        for line in pathlib.Path(f"/proc/{self.process.pid}/status").read_text().splitlines():
            if line.startswith("VmHWM"):
                return int(line.split()[1]) / 1024
        return 0


def with_usage(command):
    """Runs a program; its processor time in seconds and its peak memory in megabytes."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command[0]} failed")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def make_many_files(tree, count):
    for folder in range(count // 1000):
        directory = tree / f"{folder:03} directory"
        directory.mkdir(parents=True)
        for file in range(1000):
            (directory / f"{file:03} a usual name of a file.jpg").touch()


def bench_walk(options, root):
    image = root / "many.iso"
    make_many_files(root / "many", options.files)
    make_image(image, root / "many", "-J", "-joliet-long")
    loads = ["xorriso", "-indev", image, "-find", "/", "-type", "f"]
    walked, loaded = [], []
    for _ in range(options.rounds):
        if options.walker.exists():
            entries, seconds, megabytes = subprocess.check_output([options.walker, image], text=True).split()
            assert int(entries) >= options.files
            walked.append((float(seconds), float(megabytes)))
        loaded.append(with_usage(loads))
    base_seconds, base_megabytes = (statistics.median(column) for column in zip(*loaded))
    if walked:
        seconds, megabytes = (statistics.median(column) for column in zip(*walked))
        row(f"walk {options.files:,} files, reader alone, CPU s", seconds, base_seconds, f"< {WALK_SECONDS} s")
        row(f"walk {options.files:,} files, reader alone, MB", megabytes, base_megabytes, f"< {WALK_MEGABYTES} MB")
    with Mount([options.libexec / "isomount", "--foreground", "--source", image], root / "mount") as mount:
        found = subprocess.check_output(["find", mount.mount_point, "-type", "f", "-size", "-1"], text=True)
        assert found.count("\n") == options.files
        row("find through the mount, isomount's CPU s", mount.cpu_seconds(), base_seconds, f"< {WALK_SECONDS} s")
        row("find through the mount, isomount's MB", mount.peak_megabytes(), base_megabytes, f"< {WALK_MEGABYTES} MB")


def read_through(path):
    """Seconds that reading the file takes, with the kernel's usual read-ahead."""
    buffer = bytearray(CHUNK)
    start = time.perf_counter()
    descriptor = os.open(path, os.O_RDONLY)
    while os.readv(descriptor, [buffer]) > 0:
        pass
    os.close(descriptor)
    return time.perf_counter() - start


def bench_read(options, root):
    folder = root / "folder"
    folder.mkdir()
    with open(folder / "big", "wb") as big:
        block = os.urandom(CHUNK)
        for _ in range(options.megabytes):
            big.write(block)
    image = root / "big.iso"
    make_image(image, folder)
    os.sync()
    for file in (image, folder / "big"):
        read_through(file)
    mounts = {"ours": [options.libexec / "isomount", "--foreground", "--source", image]}
    if options.passthrough:
        mounts["pass-through"] = [options.passthrough, "-f", "-s", "-o", f"source={folder},cache=always,timeout=86400"]
    times = {}
    for turn in range(options.rounds):
        times.setdefault("plain", []).append(read_through(folder / "big"))
        order = list(mounts.items())
        for name, command in order if turn % 2 == 0 else reversed(order):
            with Mount(command, root / "mount") as mount:
                times.setdefault(name, []).append(read_through(mount.mount_point / "big"))
                times.setdefault(name + " again", []).append(read_through(mount.mount_point / "big"))
    median = {name: statistics.median(values) for name, values in times.items()}
    for again in ("", " again"):
        what = f"read {options.megabytes} MB{again or ' first'}"
        if options.passthrough:
            row(f"{what}, s (baseline: pass-through)", median["ours" + again], median["pass-through" + again], "<= 1")
        row(f"{what}, s (baseline: plain file)", median["ours" + again], median["plain"], "6" if not again else "2.2")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--libexec", type=pathlib.Path, required=True, help="folder of a release build's isomount")
    parser.add_argument("--walker", type=pathlib.Path, help="kv_bench_iso_walk (default: that of the same build)")
    parser.add_argument("--passthrough", help="libfuse's passthrough_ll, to compare with it too")
    parser.add_argument("--work", default=tempfile.gettempdir(), help="folder of a disk")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--megabytes", type=int, default=512)
    parser.add_argument("--files", type=int, default=100000)
    parser.add_argument("--rows", choices=("all", "walk", "read"), default="all")
    options = parser.parse_args()
    options.walker = options.walker or options.libexec.parent.parent / "bench/kv_bench_iso_walk"
    print(f"{'':42}{'ours':>10}{'baseline':>10}{'ratio':>10}  goal")
    with tempfile.TemporaryDirectory(dir=options.work) as root, BusyCores():
        if options.rows in ("all", "walk"):
            bench_walk(options, pathlib.Path(root))
        if options.rows in ("all", "read"):
            bench_read(options, pathlib.Path(root))


if __name__ == "__main__":
    main()
