#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""How long it takes from the start of the program until its window has been drawn, on a screen of its own (Xvfb) without a
window manager. Everything that is read lies in the cache: some starts before are not counted.

no disc   no drive at all
two discs two discs in emulated drives, of which neither is opened by itself

The screen is black and the window is in its middle, so the first pixel there that is not black ends the time. It begins
before the fork."""
import argparse
import pathlib
import signal
import statistics
import subprocess
import tempfile
import time

from emulated_discs import Programs, load, row
from screen_pixels import Screen

GOAL = "300 ms"


def start_once(programs, screen, discs):
    command = [programs.bin / "kelvanefs"]
    for disc in discs:
        command += ["--drive", disc]
    middle = screen.size[0] // 2, screen.size[1] // 2
    begin = time.perf_counter()
    process = subprocess.Popen(command, env=programs.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    while screen.pixel(*middle) == 0:
        if process.poll() is not None or time.perf_counter() - begin > 30:
            raise SystemExit("the window does not appear")
        time.sleep(0.0005)
    taken = time.perf_counter() - begin
    process.send_signal(signal.SIGTERM)
    process.wait(timeout=60)
    while screen.pixel(*middle) != 0:
        time.sleep(0.01)
    return taken


def measure(what, programs, screen, discs, options):
    taken = [1000 * start_once(programs, screen, discs) for _ in range(options.warm + options.starts)][options.warm:]
    row(f"{what}: median of {options.starts} starts", f"{statistics.median(taken):.0f}", "ms", GOAL)
    print(f"  fastest {min(taken):.0f} ms, slowest {max(taken):.0f} ms")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="folder of a release build")
    parser.add_argument("--work", default=tempfile.gettempdir())
    parser.add_argument("--starts", type=int, default=20)
    parser.add_argument("--warm", type=int, default=3, help="starts before those that count")
    options = parser.parse_args()
    screen = Screen()
    try:
        with tempfile.TemporaryDirectory(dir=options.work, prefix="kvbench-") as root:
            programs = Programs(options.build.resolve(), pathlib.Path(root))
            programs.environment.update(DISPLAY=screen.name, QT_QPA_PLATFORM="xcb")
            source = programs.root / "source"
            source.mkdir()
            (source / "a.txt").write_text("a")
            discs = [programs.make_disc(name, "cd-rw", "--from", source, "--label", name) for name in ("ONE", "TWO")]
            print(f"load averages {load()}")
            measure("no disc", programs, screen, [], options)
            measure("two discs", programs, screen, discs, options)
            print(f"load averages {load()}")
    finally:
        screen.end()


if __name__ == "__main__":
    main()
