# SPDX-License-Identifier: GPL-2.0-or-later
"""The built application on a screen and a session bus of its own, worked by real key presses and looked at as a screen
reader does, over AT-SPI.

The reader asks the bus named in the environment of this process, so the bus is started before the reader is loaded, and
serves all tests of the process."""

import atexit
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

BIN = pathlib.Path(os.environ["KELVANE_BIN_DIR"])
LIMIT = int(os.environ.get("KELVANE_WINDOW_LIMIT", "120"))  # Seconds that nothing here may take, on a slow machine either.

# Nobody asks for these by name: they hold others, or divide them.
CONTAINERS = {"filler", "panel", "scroll pane", "separator", "layered pane", "viewport", "scroll bar"}


class Desktop:
    """A screen without a window manager, a session bus, and the accessibility services on it."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kvdesktop-"))
        atexit.register(self.end)
        self.programs = []
        display = self.start("Xvfb", "-displayfd", "{}", "-screen", "0", "1000x700x24")
        runtime = self.folder / "run"
        runtime.mkdir(mode=0o700)
        # What the bus starts has these from it: a second accessibility bus at the same place would take the first one's.
        os.environ.update(DISPLAY=f":{display}", XDG_RUNTIME_DIR=str(runtime), QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                          NO_AT_BRIDGE="0")
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self.start("dbus-daemon", "--session", "--nofork", "--print-address={}")
        # Nobody decides for these tests what the desktop looks like.
        for name in ("XDG_CURRENT_DESKTOP", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR", "WAYLAND_DISPLAY"):
            os.environ.pop(name, None)

    def start(self, *command):
        """Starts a program that writes one line to a descriptor once it is ready, and gives the line."""
        reader, writer = os.pipe()
        arguments = [argument.format(writer) for argument in command]
        self.programs.append(subprocess.Popen(arguments, pass_fds=[writer], stderr=subprocess.DEVNULL))
        os.close(writer)
        with os.fdopen(reader) as lines:
            return lines.readline().strip()

    def end(self):
        for program in reversed(self.programs):
            program.terminate()
            program.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


def mount_points_below(folder):
    """Where something is mounted, the innermost first. A mount whose program was killed cannot be looked at, only listed."""
    with open("/proc/self/mountinfo", encoding="utf-8", errors="surrogateescape") as table:
        points = [line.split()[4].encode("latin-1", "surrogateescape").decode("unicode_escape") for line in table]
    return sorted((point for point in points if point.startswith(f"{folder}/")), key=len, reverse=True)


class TestFolder:
    """A folder of a test. Goes with the test, also where that is interrupted, and with it what was left mounted in it."""

    def __init__(self):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="kvwindow-"))
        atexit.register(self.remove)

    def remove(self):
        atexit.unregister(self.remove)
        for point in mount_points_below(self.path):
            subprocess.run(["fusermount3", "-u", "-z", point], check=False)
        shutil.rmtree(self.path, ignore_errors=True)


def wait_until(what, condition):
    """The condition's first true value."""
    deadline = time.monotonic() + LIMIT
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain for {what}")
        time.sleep(0.05)


# Whoever ends these tests early has them cleaned up as well.
signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
DESKTOP = Desktop()
import pyatspi  # noqa: E402  It connects to the bus that the desktop has made.
from gi.repository import GLib  # noqa: E402

# An application that has something else to do for a second is still there. Left to itself, the reader gives a call up after
# 0.8 s, and believes from then on that the application hangs.
pyatspi.setTimeout(LIMIT * 1000, LIMIT * 1000)


def why_nothing_can_be_read():
    """Empty where the accessibility bus runs."""
    try:
        pyatspi.Registry.getDesktop(0).childCount
    except Exception as problem:  # Whatever its library raises.
        return f"the accessibility bus cannot be started: {problem}"
    return ""


def tree(item):
    """The item and all below it that is shown."""
    yield item
    for index in range(item.childCount):
        child = item.getChildAtIndex(index)
        if child is not None and child.getState().contains(pyatspi.STATE_SHOWING):
            yield from tree(child)


class RealWindowTest(unittest.TestCase):
    """A test that starts the application, with all its fixed paths below a folder of the test."""

    @classmethod
    def setUpClass(cls):
        if reason := why_nothing_can_be_read():
            raise unittest.SkipTest(reason)

    def setUp(self):
        folder = TestFolder()
        self.addCleanup(folder.remove)
        self.folder = folder.path
        prefix = self.folder / "root"
        (prefix / "tmp").mkdir(parents=True)
        (prefix / "Volumes").mkdir()
        self.volume = prefix / "Volumes/tarnwick"
        self.defaults = self.folder / "config/kelvanefs/kelvanefs.ini"
        self.log = self.folder / "log"
        self.environment = dict(os.environ, KELVANEFS_PREFIX=str(prefix), LC_ALL="C.UTF-8",
                                XDG_CONFIG_HOME=str(self.folder / "config"))
        self.process = None

    def make_disc(self, name, media):
        content = self.folder / f"content-{name}"
        content.mkdir()
        (content / "first.txt").write_text("burned first")
        disc = self.folder / f"{name}.kvdisc"
        self.disc_tool("create", disc, "--media", media, "--from", content, "--label", name)
        return disc

    def disc_tool(self, *arguments):
        return subprocess.run([BIN / "kelvanedisc", *arguments], check=True, env=self.environment, capture_output=True,
                              text=True).stdout

    def agree_to_license(self):
        version = subprocess.run([BIN / "kelvanefs", "--version"], check=True, env=self.environment, capture_output=True,
                                 text=True).stdout.strip()
        self.defaults.parent.mkdir(parents=True)
        self.defaults.write_text(f"[General]\nlicenseShownForVersion={version}\n")

    def start(self, *discs):
        arguments = [argument for disc in discs for argument in ("--drive", disc)]
        self.start_program(BIN / "kelvanefs", *arguments)

    def start_program(self, *command):
        with open(self.log, "w", encoding="utf-8") as log:
            self.process = subprocess.Popen(command, env=self.environment, stdout=log, stderr=log)
        atexit.register(self.end)
        self.addCleanup(self.end)

    def end(self):
        """Ends the application where it still runs: it must not ask whether to burn now. What it has mounted stays."""
        atexit.unregister(self.end)
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.process.wait()

    def logged(self, line):
        return line in self.log.read_text(encoding="utf-8", errors="replace")

    # What a screen reader finds.

    def application(self):
        desktop = pyatspi.Registry.getDesktop(0)
        for index in range(desktop.childCount):
            child = desktop.getChildAtIndex(index)
            if child is not None and child.get_process_id() == self.process.pid:
                return child
        return None

    def windows(self):
        """The windows that are shown, as they were opened."""
        application = self.application()
        if application is None:
            return []
        found = [application.getChildAtIndex(index) for index in range(application.childCount)]
        return [window for window in found if window and window.getState().contains(pyatspi.STATE_SHOWING)]

    def items(self):
        for window in self.windows():
            try:
                yield from list(tree(window))
            except Exception:  # What was there a moment ago may have gone.
                continue

    def find(self, name, role=None):
        """The item that is shown under this name, or None."""
        for item in self.items():
            try:
                if item.name == name and role in (None, item.getRoleName()):
                    return item
            except Exception:
                continue
        return None

    def wait_until(self, what, condition):
        try:
            return wait_until(what, condition)
        except AssertionError as problem:
            shown = [f"  {item.getRoleName()} “{item.name}”" for item in self.items()]
            raise AssertionError("\n".join([f"{problem}; shown is", *shown, self.log.read_text(errors="replace")])) from None

    def wait_for(self, name, role=None):
        return self.wait_until(f"“{name}”", lambda: self.find(name, role))

    def check(self, state):
        """Everything that is shown has a role, and a name where it is for the user."""
        wrong = []
        count = 0
        for window in self.windows():
            for item in tree(window):
                count += 1
                role = item.getRoleName()
                focusable = item.getState().contains(pyatspi.STATE_FOCUSABLE)
                if role in ("unknown", "invalid", ""):
                    wrong.append(f"no role: “{item.name}”")
                if not item.name and (focusable or role not in CONTAINERS):
                    wrong.append(f"no name: {role}")
        self.assertEqual(wrong, [], state)
        self.assertGreater(count, 4, state)

    def wait_for_focus(self, name):
        def focused():
            item = self.find(name)
            return item is not None and item.getState().contains(pyatspi.STATE_FOCUSED)
        self.wait_until(f"the focus on “{name}”", focused)

    def listen(self, *kinds):
        """From now on notes of what events of these kinds tell. Gives what gives the names of the items so far."""
        names = []
        pyatspi.Registry.registerEventListener(lambda event: names.append(event.source.name), *kinds)

        def heard():
            while GLib.MainContext.default().iteration(False):
                pass
            return names
        return heard

    # What a user does.

    def press(self, name):
        self.wait_for(name, "push button").queryAction().doAction(0)

    def on_screen(self):
        """The windows on the screen, menus among them, by their numbers."""
        return sorted(map(int, subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--pid", str(self.process.pid)], capture_output=True, text=True,
            check=False).stdout.split()))

    def keys(self, *keys):
        """Presses keys in the window that was opened last."""
        newest = str(self.wait_until("a window", self.on_screen)[-1])
        for key in keys:
            subprocess.run(["xdotool", "windowfocus", "--sync", newest, "key", "--clearmodifiers", key], check=True)

    def keys_in_menu(self, *keys):
        """Presses keys while a menu is open, which has the keyboard whatever window has the focus."""
        self.wait_until("the menu", lambda: len(self.on_screen()) > len(self.windows()))
        subprocess.run(["xdotool", "key", "--clearmodifiers", *keys], check=True)

    def type(self, text):
        subprocess.run(["xdotool", "type", "--delay", "20", text], check=True)
