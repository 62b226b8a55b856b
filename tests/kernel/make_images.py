# SPDX-License-Identifier: GPL-2.0-or-later
"""make_images.py short|full: makes what the guests of that tier start from, unless it is there. Exit status 77: it cannot be
made on this machine."""

import os
import sys

import desktop_system
import images

try:
    images.kernel_images()
    if sys.argv[1:] == ["full"]:
        desktop_system.system_image(os.environ["KELVANE_PACKAGE"])
except images.NotToBeHad as problem:
    print(problem)
    raise SystemExit(77) from None
