#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""How often the application wakes up while nobody does anything, with its window on a platform without a screen.

listed  two discs in emulated drives, of which neither is opened by itself
open    one disc, opened as the writable volume

A row is a thread of the application or of a program that it has started: how often a second it gave up the processor by
itself, and so was woken up again, and its processor time."""
import argparse
import os
import pathlib
import signal
import subprocess
import tempfile
import time

from emulated_discs import Programs, load, row, status_of, wait_until


def command_line_of(process):
    try:
        return pathlib.Path(f"/proc/{process}/cmdline").read_bytes()
    except OSError:
        return b""


class Application:
    def __init__(self, programs, discs):
        command = [programs.bin / "kelvanefs"]
        for disc in discs:
            command += ["--drive", disc]
        self.root = os.fsencode(programs.root)
        self.process = subprocess.Popen(command, env=programs.environment, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)

    def processes(self):
        """The application, and the mounts of discs, which are nobody's children any more."""
        mounts = [process for process in filter(str.isdigit, os.listdir("/proc")) if self.root in command_line_of(process)]
        return [self.process.pid] + [int(process) for process in mounts if int(process) != self.process.pid]

    def threads(self):
        """(process, thread) -> its name, voluntary changes of context, and seconds of processor time."""
        found = {}
        for process in self.processes():
            for thread in os.listdir(f"/proc/{process}/task"):
                folder = f"/proc/{process}/task/{thread}"
                status = status_of(f"{folder}/status")
                fields = pathlib.Path(f"{folder}/stat").read_text().rpartition(")")[2].split()
                seconds = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
                program = status_of(f"/proc/{process}/status")["Name"].strip()
                name = program if thread == str(process) else f"{program}, thread {status['Name'].strip()}"
                found[process, thread] = (name, int(status["voluntary_ctxt_switches"]), seconds)
        return found

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(timeout=60)


def measure(what, application, options):
    time.sleep(options.settle)
    before = application.threads()
    start = time.perf_counter()
    time.sleep(options.seconds)
    taken = time.perf_counter() - start
    wakes = cpu = 0
    for thread, (name, changes, seconds) in application.threads().items():
        _, changes_before, seconds_before = before.get(thread, (name, 0, 0))
        each = (changes - changes_before) / taken
        wakes += each
        cpu += seconds - seconds_before
        print(f"  {name:56}{each:>10.2f} /s")
    row(f"{what}: all threads", f"{wakes:.2f}", "/s", "no polling")
    row(f"{what}: processor time in {options.seconds} s", f"{cpu:.2f}", "s", "0")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="folder of a release build")
    parser.add_argument("--work", default=tempfile.gettempdir())
    parser.add_argument("--seconds", type=int, default=30, help="how long it is looked at")
    parser.add_argument("--settle", type=int, default=5, help="how long it is left alone before")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=options.work, prefix="kvbench-") as root:
        programs = Programs(options.build.resolve(), pathlib.Path(root))
        source = programs.root / "source"
        source.mkdir()
        (source / "a.txt").write_text("a")
        discs = [programs.make_disc(name, "cd-rw", "--from", source, "--label", name) for name in ("ONE", "TWO")]
        print(f"load average {load()}")
        for what, inserted, mounted in (("two discs listed", discs, ("ONE", "TWO")), ("a disc open", discs[:1], ("tarnwick",))):
            application = Application(programs, inserted)
            wait_until(lambda names=mounted: all(os.path.ismount(programs.volumes / name) for name in names), what)
            measure(what, application, options)
            application.end()


if __name__ == "__main__":
    main()
