# SPDX-License-Identifier: GPL-2.0-or-later
"""Our Debian package on a system that has nothing of ours otherwise."""

import re
import shutil
import unittest

from rig import run
from system_test import SystemTest

FILES = ["/usr/bin/kelvanefs", "/usr/bin/kelvanedisc", "/usr/libexec/kelvanefs/recorder",
         "/usr/share/applications/kelvanefs.desktop", "/usr/share/metainfo/kelvanefs.metainfo.xml",
         "/usr/share/icons/hicolor/48x48/apps/kelvanefs.png", "/usr/lib/tmpfiles.d/kelvanefs.conf",
         "/usr/share/man/man1/kelvanefs.1.gz", "/usr/share/man/man1/kelvanedisc.1.gz",
         "/usr/share/doc/kelvanefs/copyright"]


class Package(SystemTest):
    def test_the_package_is_installed_with_what_it_needs_and_leaves_nothing_behind(self):
        shutil.copy(self.package, self.path("kelvanefs.deb"))
        self.guest("""
state() {
  dpkg-query -W -f '${db:Status-Status}' kelvanefs 2> /dev/null
}
# What the package brings along, and what the folder of volumes is.
look() {
  equal "the package" installed "$(state)"
  equal "what is wrong with its files" "" "$(dpkg --verify kelvanefs)"
  equal "the program" /usr/bin/kelvanefs "$(command -v kelvanefs)"
  equal "the folder of volumes" "1777 root root" "$(stat -c '%a %U %G' /Volumes)"
  kelvanefs --version > /share/version || fail "it does not run"
}
everything_of_ours() {
  find / -xdev \\( -path /programs -o -path /share -o -path /proc -o -path /tmp \\) -prune -o -iname '*kelvane*' -print
}

look
dpkg -L kelvanefs > /share/files
dpkg-query -W -f '${Package}\\n' > /share/packages
rmdir /Volumes
systemd-tmpfiles --create kelvanefs.conf || fail "the folder of volumes is not made at a start of the machine"
look

dpkg --purge kelvanefs || fail "it cannot be removed"
equal "what is left" "" "$(everything_of_ours)"
test ! -e /Volumes || fail "the folder of volumes is left"

dpkg -i /share/kelvanefs.deb || fail "it cannot be installed"
look
touch /Volumes/others
dpkg --purge kelvanefs || fail "it cannot be removed"
test -e /Volumes/others || fail "what is another's is gone"
""")
        self.assertRegex(self.text_of("version"), r"^\d+\.\d+\.\d+$")
        installed = self.text_of("files").splitlines()
        for file in FILES:
            self.assertIn(file, installed)
        # They came because the package names them: the system is made without.
        packages = self.text_of("packages").splitlines()
        depends = run("dpkg-deb", "--field", self.package, "Depends").stdout
        for name in [re.split(r"[ |:]", entry.strip())[0] for entry in depends.split(",")]:
            self.assertIn(name, packages)


if __name__ == "__main__":
    unittest.main()
