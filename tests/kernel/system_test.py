# SPDX-License-Identifier: GPL-2.0-or-later
"""What the tests in a guest with a desktop's services share."""

import json
import os
import shutil

import desktop_system
import images
from rig import GuestTest, make_tree, run


class SystemTest(GuestTest):
    """A guest of the full tier, in which our package is installed."""

    tier = "full"
    limit = 450  # A road by the window takes a quarter of that on a quiet machine.
    kernel_words = "system=/dev/vda"
    guest_files = ["steps", "desktop", "window"]
    words = ["steps", "window"]
    memory = "768"

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.package = os.environ["KELVANE_PACKAGE"]
        image = os.path.join(desktop_system.system_image(cls.package), "root.ext4")
        # What a guest writes goes when it does.
        cls.machine_options = ["-drive", f"file={image},format=raw,if=virtio,snapshot=on"]

    def guest(self, steps):
        try:
            super().guest(steps)
        except AssertionError as failure:
            raise AssertionError(f"{failure}\n{self.last_picture()}") from None

    def last_picture(self):
        """What the screen showed when the steps failed, kept, and where."""
        picture = self.path("screen.xwd")
        if not os.path.exists(picture):
            return "There is no picture of the screen."
        folder = os.path.join(images.cache_folder(), "failures")
        os.makedirs(folder, exist_ok=True)
        place = os.path.join(folder, self.id() + ".png")
        if shutil.which("convert") and run("convert", "xwd:" + picture, place, check=False).returncode == 0:
            return f"The screen: {place}"
        shutil.copy(picture, place.removesuffix("png") + "xwd")
        return f"The screen: {place.removesuffix('png')}xwd"

    # Discs.

    def with_session(self, name, media, tree, label="DISC", faults=""):
        """A disc on the share with one session, in a drive of which the fault script `faults` is true."""
        make = self.make_disc if media.startswith("cd") else self.make_dvd
        disc = make(name, media, tree, label=label)
        self.set_faults(disc, faults)
        return disc

    def set_faults(self, disc, text):
        if text:
            with open(os.path.join(disc, "faults"), "w", encoding="ascii") as file:
                file.write(text)

    def without_udisks2(self):
        """The guest is to come up without that service."""
        with open(self.path("no-udisks"), "w", encoding="ascii"):
            pass

    def plugged(self, media, faults=""):
        """A disc with one session, whose files are `first`, and the steps that plug in its drive."""
        self.first = make_tree(self.path("first"), 1)
        self.with_session("disc", media, self.first, faults=faults)
        return """
plug disc.kvdisc
eventually "udev knows the disc" has_property ID_FS_LABEL DISC
"""

    # What the guest has left.

    def text_of(self, name):
        with open(self.path(name), encoding="utf-8", errors="surrogateescape") as file:
            return file.read()

    def outcome(self, name="outcome"):
        return json.loads(self.text_of(name))
