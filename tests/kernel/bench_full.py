# SPDX-License-Identifier: GPL-2.0-or-later
"""How long it takes in a guest from udev's news of a disc until it is listed and begins to be opened, and from there until the
writable volume is mounted. Prints medians of KELVANE_BENCH_ROUNDS (5) rounds; asserts nothing but that each disc is opened.

The processor is emulated, so the figures are many times those of a machine; how they compare with each other counts."""

import os
import re
import statistics
import unittest

from system_test import SystemTest

ROUNDS = int(os.environ.get("KELVANE_BENCH_ROUNDS", "5"))
FILES = 10000
# The disc's own volume is waited for so long after each try to unmount it; the log tells of the try then.
PAUSE_AFTER_UNMOUNTING = 0.1


def first_after(time, times):
    return next(found for found in times if found > time)


class Opening(SystemTest):
    limit = 900

    def make_tree_of_many(self):
        root = self.path("many")
        for number in range(FILES):
            folder = os.path.join(root, f"folder {number // 100}")
            os.makedirs(folder, exist_ok=True)
            with open(os.path.join(folder, f"file {number}"), "w", encoding="ascii") as file:
                file.write(str(number))
        return root

    def times_in_log(self, words):
        lines = [line.split(" ", 1) for line in self.text_of("window.log").splitlines()]
        return [float(time) for time, said in lines if words in said]

    def times_of_events(self):
        """When udev has told of a disc."""
        events = re.findall(r"^UDEV +\[([0-9.]+)\] change(.*?)^$", self.text_of("events"), re.MULTILINE | re.DOTALL)
        return [float(time) for time, properties in events if "ID_FS_LABEL=DISC" in properties]

    def measured(self, media):
        self.with_session("disc", media, self.make_tree_of_many())
        self.guest(f"""
start_desktop
agree
plug disc.kvdisc
eventually "udev knows the disc" has_property ID_FS_LABEL DISC
press_button
now() {{
  read -r seconds rest < /proc/uptime
  echo "$seconds"
}}
timed() {{
  while read -r line; do
    echo "$(now) $line"
  done
}}
udevadm monitor --udev --subsystem-match=block --property > /tmp/events &
(on_desktop kelvanefs 2>&1 | timed > $LOG) &
eventually "there is a window" windows_are 1
round=1
while [ $round -le {ROUNDS} ]; do
  now >> /share/inserted
  kelvanedisc insert "$DISC"
  await_open $round
  key ctrl+o
  eventually "the disc comes out" tray_is_open
  eventually "the window shows that nothing is open" nothing_is_open
  round=$((round + 1))
done
cp /tmp/events $LOG /share
key ctrl+q
await_end kelvanefs
""")
        events, begun = self.times_of_events(), self.times_in_log("unmount attempt 0")
        mounted = self.times_in_log("Notified that Filesystem did mount.")
        self.assertEqual(len(mounted), ROUNDS)
        told, listed, opened = [], [], []
        for inserted in map(float, self.text_of("inserted").split()):
            event = first_after(inserted, events)
            beginning = first_after(event, begun) - PAUSE_AFTER_UNMOUNTING
            told.append(event - inserted)
            listed.append(beginning - event)
            opened.append(first_after(beginning, mounted) - beginning)
        print(f"\n{media}, {FILES} files, medians of {ROUNDS}:")
        for what, times in [("from the closing of the tray to udev's event", told),
                            ("from the event to the listed disc, which is being opened", listed),
                            ("from there to the mounted volume", opened)]:
            print(f"  {what}: {statistics.median(times):.2f} s ({min(times):.2f} to {max(times):.2f})", flush=True)

    def test_a_cd(self):
        self.measured("cd-r")

    def test_a_dvd(self):
        self.measured("dvd+rw")


if __name__ == "__main__":
    unittest.main()
