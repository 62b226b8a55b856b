#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""How fast sessions are built and written, and what memory that takes, on emulated discs that keep no pace of a drive.

producer  the Producer alone, from the kernel's page cache, in requests of several sizes; libburn asks for a block at a time.
cd        the recorder (libburn) writes an image to a blank CD-R.
dvd       growisofs, by our launcher with the application's arguments, writes files to a blank DVD+RW.
imaging   from the beginning to the end of imaging in `kelvanefs batch`, and mkisofs alone with the same arguments.
memory    resident memory of kelvanefs and of the recorder while they burn a full CD and a DVD.

Figures are medians of the rounds; the load average of the machine is printed with them."""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time

from emulated_discs import MEGABYTE, Programs, load, make_file, row, status_of, texts, with_descendants

FILE_MEGABYTES = 50


def megabytes_a_second(size, seconds):
    """Of 1000 x 1000 bytes, as the speeds of drives are given."""
    return f"{size * MEGABYTE / 1e6 / statistics.median(seconds):.0f}"


def timed(command, **options):
    start = time.perf_counter()
    done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False, **options)
    if done.returncode != 0 or ":-(" in done.stderr:
        sys.exit(f"{command[0]} failed:\n{done.stderr}")
    return time.perf_counter() - start


def make_tree(folder, megabytes):
    """Files of equal size."""
    folder.mkdir()
    first = folder / "file 0.bin"
    make_file(first, FILE_MEGABYTES)
    for number in range(1, megabytes // FILE_MEGABYTES):
        shutil.copyfile(first, folder / f"file {number}.bin")
    os.sync()


def bench_producer(programs, options):
    image = programs.root / "image"
    make_file(image, options.cd_megabytes)
    os.sync()
    for request in (2048, 32768, MEGABYTE):
        seconds = []
        for _ in range(options.rounds):
            subprocess.run(["cat", image], stdout=subprocess.DEVNULL, check=True)
            seconds.append(float(subprocess.check_output([programs.bench / "kv_bench_producer", image, str(request)])))
        row(f"Producer alone, requests of {request} bytes", megabytes_a_second(options.cd_megabytes, seconds), "MB/s",
            ">= 1000")
    image.unlink()


def bench_cd(programs, options):
    image = programs.root / "image"
    make_file(image, options.cd_megabytes)
    os.sync()
    seconds = []
    for _ in range(options.rounds):
        subprocess.run(["cat", image], stdout=subprocess.DEVNULL, check=True)
        disc = programs.make_disc("cd", "cd-r")
        seconds.append(timed([programs.bin / "kelvanedisc", "run", disc, "--", programs.libexec / "recorder", "--device",
                              "/dev/sr0", "--image", image, "--appendable"], env=programs.environment))
        shutil.rmtree(disc)
    row(f"a CD session of {options.cd_megabytes} MB by libburn", megabytes_a_second(options.cd_megabytes, seconds), "MB/s",
        ">= 100")
    image.unlink()


def bench_dvd(programs, options):
    tree = programs.root / "tree"
    make_tree(tree, options.dvd_megabytes)
    (programs.root / "list.hide").touch()
    seconds = []
    for _ in range(options.rounds):
        disc = programs.make_disc("dvd", "dvd+rw")
        environment = dict(programs.environment, KELVANEFS_EMULATED_DRIVES=f"kv0={disc}",
                           MKISOFS=str(programs.libexec / "mkisofs"))
        hide_list = programs.root / "list.hide"
        command = [programs.libexec / "growisofs", "-overburn", "-Z", "/dev/rkv0", "-hide-list", hide_list,
                   "-hide-joliet-list", hide_list, "-joliet-long", "-D", "-J", "-r", "-input-charset", "utf-8",
                   "-use-the-force-luke=tty", "-V", "SAMPLE", tree]
        seconds.append(timed(command, env=environment))
        shutil.rmtree(disc)
    row(f"a DVD session of {options.dvd_megabytes} MB by growisofs", megabytes_a_second(options.dvd_megabytes, seconds),
        "MB/s", ">= 100")
    shutil.rmtree(tree)


class Samples:
    """The resident memory of a program and of those it starts, by their names, taken all the time."""

    INTERVAL = 0.1

    def __init__(self, process):
        self.process = process
        self.taken = {}  # name -> [(seconds, megabytes)]
        self.ended = threading.Event()
        self.thread = threading.Thread(target=self.run)
        self.thread.start()

    def run(self):
        while not self.ended.wait(self.INTERVAL):
            for each in with_descendants(self.process):
                status = status_of(f"/proc/{each}/status")
                if "VmRSS" in status:
                    megabytes = int(status["VmRSS"].split()[0]) / 1024
                    self.taken.setdefault(status["Name"].strip(), []).append((time.perf_counter(), megabytes))

    def end(self):
        self.ended.set()
        self.thread.join()

    def between(self, name, begin, end):
        return [(at, megabytes) for at, megabytes in self.taken.get(name, []) if begin <= at <= end]


def slope(samples):
    """Megabytes a minute, by least squares."""
    if len(samples) < 3:
        return 0
    mean_at = statistics.fmean(at for at, _ in samples)
    mean = statistics.fmean(megabytes for _, megabytes in samples)
    spread = sum((at - mean_at) ** 2 for at, _ in samples)
    return 60 * sum((at - mean_at) * (megabytes - mean) for at, megabytes in samples) / spread


class Batch:
    """A run of `kelvanefs batch`, with the moments at which it said something."""

    def __init__(self, programs, disc, script, *arguments, takes_samples=False):
        command = [programs.bin / "kelvanefs", "batch", "--drive", disc, "--", "sh", "-ec", script, "sh", *arguments]
        process = subprocess.Popen(command, env=programs.environment, stderr=subprocess.PIPE, text=True)
        # Looking costs time, of which there is little to spare where time is measured.
        self.samples = Samples(process.pid) if takes_samples else None
        self.lines = [(time.perf_counter(), line) for line in process.stderr]
        process.wait()
        if self.samples:
            self.samples.end()
        if process.returncode != 0:
            sys.exit("kelvanefs batch failed:\n" + "".join(line for _, line in self.lines))

    def moment(self, text):
        return next(at for at, line in self.lines if text in line)


# On the volume, with the overlay directory as mkisofs sees it. The application makes the file of the image beforehand.
# ext4 puts a file that was emptied on the disk when it is closed, and a new one later: that costs time of which mkisofs
# knows nothing.
IMAGING = """
cp -r "$1"/. .
overlay=$(ls -d "$2"/[0-9]*)
build() {
  sync
  echo "$1 begins" >&2
  genisoimage -quiet -D -r -J -joliet-long -input-charset utf-8 -V SAMPLE -o "$2/alone" "$overlay"
  echo "$1 ends" >&2
  rm "$2/alone"
}
: > "$2/alone"
build "an empty file" "$2"
build "a new file" "$2"
sync
"""


def bench_imaging(programs, options):
    tree = programs.root / "tree"
    make_tree(tree, options.cd_megabytes)
    words = texts()
    ours = []
    alone = {"an empty file": [], "a new file": []}
    for _ in range(options.rounds):
        disc = programs.make_disc("cd", "cd-r")
        batch = Batch(programs, disc, IMAGING, tree, programs.temporary)
        ours.append(batch.moment(words["burningchangescd"]) - batch.moment(words["preparingdata"]))
        for how, seconds in alone.items():
            seconds.append(batch.moment(f"{how} ends") - batch.moment(f"{how} begins"))
        shutil.rmtree(disc)
    what = f"imaging {options.cd_megabytes} MB"
    row(f"{what} within kelvanefs", f"{statistics.median(ours):.3f}", "s", "-")
    for how, seconds in alone.items():
        row(f"{what} by mkisofs alone into {how}", f"{statistics.median(seconds):.3f}", "s", "-")
        # Neighbours in time are compared, since the machine's own disk is not always equally fast.
        ratio = statistics.median(one / other for one, other in zip(ours, seconds))
        row("  ratio to that", f"{ratio:.3f}", "", "<= 1.05")
    shutil.rmtree(tree)


def print_memory(batch, what, program, begin, end):
    # A program that has just begun to run is still growing.
    samples = batch.samples.between(program, begin + 1, end)
    if not samples:
        sys.exit(f"{program} was never seen while it wrote {what}")
    row(f"{what}: memory of {program}, most", f"{max(megabytes for _, megabytes in samples):.1f}", "MB", "< 100")
    row(f"{what}: memory of {program}, growth", f"{slope(samples):+.1f}", "MB/min", "0")


def bench_memory(programs, options):
    words = texts()
    tree = programs.root / "tree"
    make_tree(tree, options.cd_megabytes)
    disc = programs.make_disc("cd", "cd-r")
    batch = Batch(programs, disc, f'cp -r "{tree}"/. .; sync', takes_samples=True)
    what = f"a CD of {options.cd_megabytes} MB"
    end = batch.moment("cd burn finished with state: ")
    print_memory(batch, what, "kelvanefs", batch.moment(words["preparingdata"]), end)
    print_memory(batch, what, "recorder", batch.moment(words["burningchangescd"]), end)
    shutil.rmtree(disc)
    shutil.rmtree(tree)

    block = programs.root / "block"
    make_file(block, FILE_MEGABYTES)
    disc = programs.make_disc("dvd", "dvd+rw")
    count = options.full_megabytes // FILE_MEGABYTES
    batch = Batch(programs, disc, f'for n in $(seq {count}); do cp "{block}" "file $n.bin"; done; sync', takes_samples=True)
    begin, end = batch.moment(words["burningchangesdvd"]), batch.moment("DVDBurn finished successfully!")
    what = f"a DVD of {count * FILE_MEGABYTES} MB"
    print_memory(batch, what, "kelvanefs", begin, end)
    row(f"{what}: in the application", megabytes_a_second(count * FILE_MEGABYTES, [end - begin]), "MB/s", ">= 100")
    shutil.rmtree(disc)


BENCHMARKS = {"producer": bench_producer, "cd": bench_cd, "dvd": bench_dvd, "imaging": bench_imaging, "memory": bench_memory}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="folder of a release build with benchmarks")
    parser.add_argument("--work", default=tempfile.gettempdir(), help="folder with room for three times the full DVD")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--cd-megabytes", type=int, default=600)
    parser.add_argument("--dvd-megabytes", type=int, default=2000)
    parser.add_argument("--full-megabytes", type=int, default=4000, help="the DVD burned to see the memory")
    parser.add_argument("--rows", choices=("all", *BENCHMARKS), default="all")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=options.work, prefix="kvbench-") as root:
        programs = Programs(options.build.resolve(), pathlib.Path(root))
        for name, benchmark in BENCHMARKS.items():
            if options.rows in ("all", name):
                before = load()
                benchmark(programs, options)
                print(f"({name}: load average {before} before, {load()} after)", flush=True)


if __name__ == "__main__":
    main()
