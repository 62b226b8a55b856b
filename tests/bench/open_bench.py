#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""How long it takes from a disc that is put into an emulated drive to its writable volume.

The window runs on a platform without a screen, with nothing in its drive; then the tray is closed on a disc of many files.
Told are the medians of the times from there until its own volume is mounted, which is when it can be listed, and until the
writable volume is. A tenth of a second of the second is a pause of the application's own."""
import argparse
import pathlib
import select
import signal
import statistics
import subprocess
import tempfile
import time

from emulated_discs import Programs, load, row

FILES_IN_A_FOLDER = 100
LIMIT_SECONDS = 60


class MountTable:
    """The mount table as the kernel tells of its changes."""

    def __init__(self):
        self.file = open("/proc/self/mountinfo", encoding="utf-8")
        self.changes = select.poll()
        self.changes.register(self.file, select.POLLPRI)

    def mount_points(self):
        self.file.seek(0)
        return {line.split()[4] for line in self.file}

    def time_of(self, path, wanted=True):
        """The moment at which something is mounted at the path, or nothing any more."""
        deadline = time.monotonic() + LIMIT_SECONDS
        while (str(path) in self.mount_points()) != wanted:
            if time.monotonic() > deadline:
                raise TimeoutError(f"{path} never {'came' if wanted else 'went'}")
            self.changes.poll(1000)
        return time.monotonic()


def make_sample(folder, files):
    for number in range(files):
        place = folder / f"folder {number // FILES_IN_A_FOLDER}"
        place.mkdir(parents=True, exist_ok=True)
        (place / f"file {number}").write_text("content")
    return folder


def measure(programs, disc):
    """Seconds until the disc's own volume and until the writable one."""
    subprocess.run([programs.bin / "kelvanedisc", "eject", disc], check=True, stdout=subprocess.DEVNULL)
    application = subprocess.Popen([programs.bin / "kelvanefs", "--drive", disc], env=programs.environment,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        table = MountTable()
        # Naming a drive on the command line closes its tray; the first opening is not measured.
        table.time_of(programs.volumes / "tarnwick")
        subprocess.run([programs.bin / "kelvanedisc", "eject", disc], check=True, stdout=subprocess.DEVNULL)
        table.time_of(programs.volumes / "tarnwick", wanted=False)
        table.time_of(programs.volumes / "SAMPLE", wanted=False)
        time.sleep(2)
        start = time.monotonic()
        subprocess.run([programs.bin / "kelvanedisc", "insert", disc], check=True, stdout=subprocess.DEVNULL)
        listed = table.time_of(programs.volumes / "SAMPLE")
        opened = table.time_of(programs.volumes / "tarnwick")
        return listed - start, opened - start
    finally:
        application.send_signal(signal.SIGTERM)
        application.wait(timeout=LIMIT_SECONDS)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="folder of a release build")
    parser.add_argument("--work", type=pathlib.Path)
    parser.add_argument("--files", type=int, default=10000)
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="kvopen-", dir=options.work) as folder:
        root = pathlib.Path(folder)
        programs = Programs(options.build.resolve(), root)
        sample = make_sample(root / "sample", options.files)
        disc = programs.make_disc("disc", "cd-r", "--from", sample, "--label", "SAMPLE")
        print(f"load average {load()}")
        times = [measure(programs, disc) for _ in range(options.rounds)]
        row(f"{options.files} files: inserted to listed", f"{statistics.median(t[0] for t in times) * 1000:.0f}", "ms", "-")
        row(f"{options.files} files: inserted to opened", f"{statistics.median(t[1] for t in times) * 1000:.0f}", "ms",
            "500")


if __name__ == "__main__":
    main()
