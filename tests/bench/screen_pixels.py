# SPDX-License-Identifier: GPL-2.0-or-later
"""What stands on an X screen, by Xlib itself: no tool is fast enough to be asked every millisecond."""
import ctypes
import ctypes.util
import os
import subprocess
import tempfile

ALL_PLANES = 0xFFFFFFFFFFFFFFFF
Z_PIXMAP = 2


class Screen:
    """An Xvfb of its own, black where no window has drawn."""

    def __init__(self, width=1000, height=700):
        self.size = width, height
        with tempfile.TemporaryFile() as number:
            self.server = subprocess.Popen(["Xvfb", "-displayfd", str(number.fileno()), "-screen", "0", f"{width}x{height}x24"],
                                           pass_fds=[number.fileno()], stderr=subprocess.DEVNULL)
            text = b""
            while not text.endswith(b"\n"):
                # Not by reading on: the server writes at the same place in the file.
                text = os.pread(number.fileno(), 16, 0)
                if self.server.poll() is not None:
                    raise SystemExit("Xvfb does not start")
        self.name = f":{int(text)}"
        self.x11 = ctypes.CDLL(ctypes.util.find_library("X11"))
        for function in ("XOpenDisplay", "XGetImage"):
            getattr(self.x11, function).restype = ctypes.c_void_p
        self.x11.XGetPixel.restype = ctypes.c_ulong
        self.x11.XDefaultRootWindow.restype = ctypes.c_ulong
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(self.name.encode()))
        self.root = ctypes.c_ulong(self.x11.XDefaultRootWindow(self.display))

    def pixel(self, x, y):
        image = ctypes.c_void_p(self.x11.XGetImage(self.display, self.root, x, y, 1, 1, ctypes.c_ulong(ALL_PLANES), Z_PIXMAP))
        value = self.x11.XGetPixel(image, 0, 0)
        self.x11.XDestroyImage(image)
        return value & 0xFFFFFF

    def end(self):
        self.x11.XCloseDisplay(self.display)
        self.server.terminate()
        self.server.wait()
