# SPDX-License-Identifier: GPL-2.0-or-later
"""What the benchmarks of burning share: the programs of a build, discs for them, and a look at running processes."""
import os
import pathlib
import subprocess
import sys
import time
from xml.etree import ElementTree

MEGABYTE = 1 << 20
STRINGS = pathlib.Path(__file__).parents[2] / "resources/strings/kelvanefs_en.ts"


class Programs:
    """The programs of a release build, with all their fixed paths below a folder."""

    def __init__(self, build, root):
        self.bin = build / "bin"
        self.libexec = build / "libexec/kelvanefs"
        self.bench = build / "bench"
        self.root = root
        self.prefix = root / "prefix"
        self.temporary = self.prefix / "tmp"
        self.volumes = self.prefix / "Volumes"
        for folder in (self.temporary, self.volumes):
            folder.mkdir(parents=True, exist_ok=True)
        self.environment = dict(os.environ, KELVANEFS_PREFIX=str(self.prefix), LC_ALL="C.UTF-8",
                                XDG_CONFIG_HOME=str(root / "config"), QT_QPA_PLATFORM="offscreen")
        self.agree_to_license()

    def agree_to_license(self):
        version = subprocess.run([self.bin / "kelvanefs", "--version"], check=True, env=self.environment,
                                 capture_output=True, text=True).stdout.strip()
        defaults = self.root / "config/kelvanefs/kelvanefs.ini"
        defaults.parent.mkdir(parents=True, exist_ok=True)
        defaults.write_text(f"[General]\nlicenseShownForVersion={version}\n")

    def make_disc(self, name, media, *options):
        disc = self.root / f"{name}.kvdisc"
        subprocess.run([self.bin / "kelvanedisc", "create", disc, "--media", media, *options], check=True,
                       env=self.environment, stdout=subprocess.DEVNULL)
        return disc


def texts():
    """The texts that the application shows, by their keys."""
    messages = ElementTree.parse(STRINGS).getroot().iter("message")
    return {message.get("id"): message.findtext("translation") for message in messages}


def make_file(path, megabytes):
    """A file of bytes that cannot be compressed."""
    block = os.urandom(MEGABYTE)
    with open(path, "wb") as file:
        for _ in range(megabytes):
            file.write(block)


def load():
    return " ".join(pathlib.Path("/proc/loadavg").read_text().split()[:3])


def row(name, figure, unit, goal):
    print(f"{name:58}{figure:>10} {unit:8}goal: {goal}", flush=True)


def status_of(path):
    """A status file below /proc as a dictionary; empty where the process has gone."""
    try:
        lines = pathlib.Path(path).read_text().splitlines()
    except OSError:
        return {}
    return dict(line.split(":", 1) for line in lines)


def with_descendants(process):
    """The identifiers of a process and of all that it has started, and these in their turn."""
    parents = {}
    for entry in filter(str.isdigit, os.listdir("/proc")):
        parent = status_of(f"/proc/{entry}/status").get("PPid")
        if parent is not None:
            parents.setdefault(int(parent), []).append(int(entry))
    found = [process]
    for each in found:
        found += parents.get(each, [])
    return found


def wait_until(condition, what):
    deadline = time.monotonic() + 60
    while not condition():
        if time.monotonic() > deadline:
            sys.exit(f"waited in vain: {what}")
        time.sleep(0.02)
