# SPDX-License-Identifier: GPL-2.0-or-later
"""Systems on which something is missing: services, rights, devices, folders."""

import unittest

from rig import tree_of
from system_test import SystemTest


class Missing(SystemTest):
    # The exit status of batch mode becomes $status.
    BATCH = """
kelvanefs batch --drive "$DRIVE" --json -- sh -ec 'echo new > new.txt; rm -rf /tmp/shown; cp -r . /tmp/shown' \\
  > /share/outcome 2> /share/words
status=$?
"""

    def test_without_udisks2_a_disc_is_opened_and_burned_all_the_same(self):
        self.without_udisks2()
        self.guest(self.plugged("cd-r") + """
pidof udisksd && fail "UDisks2 is there"
as_user """ + self.BATCH.lstrip() + """
[ $status = 0 ] || fail "batch ended with $status: $(cat /share/words /share/outcome)"
nothing_is_left
cp -r /tmp/shown /share/shown
drive_probe load "$DRIVE"
show after
""")
        self.assertIn("new.txt", tree_of(self.path("shown")))
        self.assertEqual(tree_of(self.path("after")), tree_of(self.path("shown")))

    def test_what_stands_against_opening_a_disc_is_said_in_the_window_and_without(self):
        self.guest(self.plugged("cd-r") + """
# tried NAME STATUS: what batch mode says, as NAME.outcome.
tried() {
  equal "the exit status: $1" "$2" "$status"
  mv /share/outcome "/share/$1.outcome"
}
# window_says NAME TEXT: that the window of the user $WHO says that.
window_says() {
  on_desktop kelvanefs > $LOG 2>&1 &
  eventually "$1 is told in the window" shows "$2"
  keep_text "$1.window"
  kill "$(pidof kelvanefs)"
  await_end kelvanefs
  nothing_is_left
}
start_desktop stranger
agree
window_says rights cdrom
sit_down user
agree

rm /dev/fuse
as_user """ + self.BATCH.lstrip() + """
tried fuse 3
window_says fuse /dev/fuse
mknod -m 666 /dev/fuse c 10 229

rmdir /Volumes
as_user """ + self.BATCH.lstrip() + """
tried volumes 3
as_user env XDG_RUNTIME_DIR="/run/user/$(id -u user)" """ + self.BATCH.lstrip() + """
tried runtime 0
""")
        self.assertIn("/dev/fuse", self.outcome("fuse.outcome")["error"])
        self.assertIn("install -d -m 1777 /Volumes", self.outcome("volumes.outcome")["error"])
        self.assertEqual(self.outcome("runtime.outcome")["state"], "burned")


if __name__ == "__main__":
    unittest.main()
