# SPDX-License-Identifier: GPL-2.0-or-later
"""The installed tree and the Debian package: complete, valid, and running from wherever they lie."""

import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap
import unittest

SOURCE = os.environ["KELVANE_SOURCE_DIR"]
BUILD = os.environ["KELVANE_BUILD_DIR"]
sys.path.insert(0, os.path.join(SOURCE, "tests", "road"))

from road import BIN, RoadTest, run  # noqa: E402

PACKAGING = os.path.join(SOURCE, "packaging")
ICON_SIZES = (16, 22, 24, 32, 48, 64, 128, 256)
PROGRAMS = ["bin/kelvanedisc", "bin/kelvanefs"] + ["libexec/kelvanefs/" + name for name in (
    "df", "growisofs", "isomount", "kelvane-drive-shim.so", "mkisofs", "recorder")] + [
        "lib/udev/kelvanefs-drive-is-claimed"]
DATA = [
    "lib/tmpfiles.d/kelvanefs.conf",
    "lib/udev/rules.d/59-kelvanefs.rules",
    "libexec/kelvanefs/MacFUSE.pkg",  # A script.
    "share/applications/kelvanefs.desktop",
    *(f"share/icons/hicolor/{size}x{size}/apps/kelvanefs.png" for size in ICON_SIZES),
    "share/metainfo/kelvanefs.metainfo.xml",
]


def files_below(root):
    return sorted(os.path.relpath(os.path.join(folder, name), root)
                  for folder, _, names in os.walk(root) for name in names)


class Installed(RoadTest):
    """An installation somewhere below the test's folder."""

    def assert_runs(self, bin_folder):
        kelvanefs = os.path.join(bin_folder, "kelvanefs")
        version = run(kelvanefs, "--version", env=self.environment).stdout.strip()
        self.assertRegex(version, r"^\d+\.\d+\.\d+$")
        disc = os.path.join(self.folder, "disc.kvdisc")
        source = os.path.join(self.folder, "source")
        os.mkdir(source)
        with open(os.path.join(source, "old.txt"), "w", encoding="utf-8") as file:
            file.write("old")
        kelvanedisc = os.path.join(bin_folder, "kelvanedisc")
        run(kelvanedisc, "create", disc, "--media", "cd-r", "--from", source, env=self.environment)
        outcome = self.batch(disc, "sh", "-ec", "rm old.txt; echo new > new.txt", program=kelvanefs)
        self.assertEqual(outcome["state"], "burned", outcome)
        listed = run(kelvanedisc, "ls", disc, env=self.environment).stdout
        self.assertIn("new.txt", listed)
        self.assertNotIn("old.txt", listed)

    def assert_names_no_path_of_this_machine(self, root):
        foreign = [os.fsencode(folder) for folder in {SOURCE, BUILD, os.path.expanduser("~")} if len(folder) > 6]
        for name in files_below(root):
            with open(os.path.join(root, name), "rb") as file:
                content = file.read()
            for folder in foreign:
                self.assertFalse(folder + b"/" in content, f"{name} names {folder}")

    def assert_needs_libraries_of_the_system_only(self, root):
        for name in PROGRAMS:
            head = run("readelf", "-d", os.path.join(root, name)).stdout
            self.assertNotRegex(head, "RPATH|RUNPATH", name)


class Files(unittest.TestCase):
    """What a desktop reads, judged by the desktop's own tools."""

    def test_the_desktop_entry_is_valid_and_claims_blank_discs(self):
        entry = os.path.join(PACKAGING, "kelvanefs.desktop")
        self.assertEqual(run("desktop-file-validate", entry).stdout, "")
        with open(entry, encoding="utf-8") as file:
            text = file.read()
        self.assertIn("\nMimeType=x-content/blank-cd;x-content/blank-dvd;\n", text)
        # Types that no desktop knows would be claimed in vain.
        with open("/usr/share/mime/packages/freedesktop.org.xml", encoding="utf-8") as file:
            known = file.read()
        for mime_type in re.search("^MimeType=(.*);$", text, re.MULTILINE).group(1).split(";"):
            self.assertIn(f'<mime-type type="{mime_type}">', known)

    def test_the_metadata_is_valid_and_names_the_desktop_entry(self):
        metadata = os.path.join(BUILD, "packaging", "kelvanefs.metainfo.xml")
        result = run("appstreamcli", "validate", "--no-net", "--pedantic", metadata, check=False)
        self.assertEqual(result.returncode, 0, result.stdout)
        with open(metadata, encoding="utf-8") as file:
            self.assertIn('<launchable type="desktop-id">kelvanefs.desktop</launchable>', file.read())

    def test_the_icons_have_the_sizes_of_their_folders(self):
        for size in ICON_SIZES:
            icon = os.path.join(SOURCE, f"resources/icons/hicolor/{size}x{size}/apps/kelvanefs.png")
            with open(icon, "rb") as file:
                head = file.read(24)
            self.assertEqual(head[:8], b"\x89PNG\r\n\x1a\n")
            # Width and height stand in the header that comes first, as big-endian numbers.
            self.assertEqual((int.from_bytes(head[16:20], "big"), int.from_bytes(head[20:24], "big")), (size, size))

    @unittest.skipIf(os.geteuid() != 0 or shutil.which("systemd-tmpfiles") is None, "root gives the folder to root")
    def test_systemd_makes_the_folder_of_volumes_for_everybody(self):
        with tempfile.TemporaryDirectory() as root:
            place = os.path.join(root, "usr/lib/tmpfiles.d")
            os.makedirs(place)
            shutil.copy(os.path.join(PACKAGING, "kelvanefs.tmpfiles.conf"), os.path.join(place, "kelvanefs.conf"))
            run("systemd-tmpfiles", "--root=" + root, "--create", "kelvanefs.conf")
            self.assertEqual(os.stat(os.path.join(root, "Volumes")).st_mode & 0o7777, 0o1777)


class ManPages(unittest.TestCase):
    """The manual tells of each command and option, and of none that does not exist."""

    def options_in(self, text):
        return set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", text))

    def help_of(self, program, *command):
        return run(os.path.join(BIN, program), *command, "--help").stdout

    def check(self, program, commands):
        page = os.path.join(BUILD, "packaging", program + ".1")
        shown = run("man", "--warnings", "-l", page, env=dict(os.environ, MANWIDTH="100", LC_ALL="C.UTF-8"))
        self.assertEqual(shown.stderr, "")
        with open(page, encoding="utf-8") as file:
            manual = file.read().replace("\\-", "-")
        parts = re.split(r"^\.SS ", manual.split("\n.SH EXIT STATUS\n")[0], flags=re.MULTILINE)
        sections = {part.split("\n", 1)[0]: part for part in parts[1:]}
        self.assertEqual(set(sections), set(commands))
        # "--help" and "--version" are every command's own affair and told once.
        for command, section in sections.items():
            options = self.options_in(self.help_of(program, command)) - {"--help"}
            self.assertEqual(self.options_in("\n".join(re.findall(r"^\.B.*$", section, re.MULTILINE))), options, command)
        general = self.options_in(re.split(r"^\.SH COMMANDS$", manual, flags=re.MULTILINE)[0].split(".SH OPTIONS")[1])
        self.assertEqual(general, self.options_in(self.help_of(program).split("\n\n")[0] + self.options_part(program)))

    def options_part(self, program):
        return self.help_of(program).split("Options:")[1].split("\n\n")[0]

    def test_kelvanefs(self):
        self.check("kelvanefs", ["batch", "erase"])

    def test_kelvanedisc(self):
        subcommands = self.help_of("kelvanedisc").split("Subcommands:")[1].split("\n\n")[0]
        names = re.findall(r"^  ([a-z]+) ", subcommands, re.MULTILINE)
        self.assertGreater(len(names), 5)
        self.check("kelvanedisc", names)


class InstalledTree(Installed):
    def test_an_installed_tree_is_complete_and_runs_where_it_is_staged(self):
        stage = os.path.join(self.folder, "stage")
        run("cmake", "--install", BUILD, "--prefix", "/opt/kelvanefs", "--strip",
            env=dict(os.environ, DESTDIR=stage))
        root = os.path.join(stage, "opt/kelvanefs")
        self.assertEqual(files_below(root),
                         sorted(PROGRAMS + DATA + ["share/man/man1/kelvanedisc.1", "share/man/man1/kelvanefs.1"]))
        self.assertEqual(os.listdir(stage), ["opt"], "nothing is installed outside the prefix")
        self.assert_names_no_path_of_this_machine(root)
        self.assert_needs_libraries_of_the_system_only(root)
        self.assert_runs(os.path.join(root, "bin"))


class DebianPackage(Installed):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        place = tempfile.TemporaryDirectory(prefix="kvpackage-")
        cls.addClassCleanup(place.cleanup)
        cls.package = run(os.path.join(PACKAGING, "deb", "build-deb"), BUILD, place.name).stdout.strip()

    def setUp(self):
        super().setUp()
        self.root = os.path.join(self.folder, "unpacked")

    @unittest.skipIf(os.geteuid() != 0, "only root can install a package")
    def test_the_package_is_installed_used_and_removed_by_dpkg(self):
        # A copy of this machine to write in, which is gone with the last process of its mount namespace.
        prepare = textwrap.dedent("""
            # Of a volume of another test, its copy here would be served after it is unmounted, and that test waits.
            umount --all --lazy --types fuse.kelvanefs,fuse.cd9660,fuse.cd9660-damaged
            mount -t tmpfs none /mnt && mkdir /mnt/new /mnt/work /mnt/machine || exit 77
            mount -t overlay overlay -o lowerdir=/,upperdir=/mnt/new,workdir=/mnt/work /mnt/machine || exit 77
            mount --bind /dev /mnt/machine/dev && mount -t proc proc /mnt/machine/proc || exit 77
            mount -t tmpfs none /mnt/machine/tmp && chmod 1777 /mnt/machine/tmp || exit 77
            cp "$1" /mnt/machine/root/kelvanefs.deb
            exec chroot /mnt/machine sh -ec "$2"
        """)
        use = textwrap.dedent("""
            if dpkg-query -W kelvanefs >/dev/null 2>&1; then dpkg --purge kelvanefs; fi
            dpkg -i /root/kelvanefs.deb
            stat -c 'volumes %a %U' /Volumes
            cd /root
            kelvanedisc create disc.kvdisc --media cd-r
            kelvanefs batch --drive disc.kvdisc -- sh -ec 'echo "mounted at $(pwd)"; echo new > new.txt'
            kelvanedisc ls disc.kvdisc
            man -w kelvanefs kelvanedisc
            dpkg --verify kelvanefs
            dpkg --purge kelvanefs
            if [ -e /Volumes ]; then echo "the folder of volumes is left"; fi
        """)
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "HOME": "/root"}
        result = run("unshare", "--mount", "sh", "-c", prepare, "sh", self.package, use, env=environment, check=False)
        if result.returncode == 77:
            self.skipTest("this machine lets nobody make a copy of itself: " + result.stderr)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        for words in ("volumes 1777 root", "mounted at /Volumes/tarnwick", "new.txt", "/man1/kelvanedisc.1.gz"):
            self.assertIn(words, result.stdout)
        self.assertNotIn("is left", result.stdout)

    def field(self, name):
        return run("dpkg-deb", "--field", self.package, name).stdout.strip()

    def test_the_package_holds_everything_depends_on_all_it_runs_and_runs_unpacked(self):
        self.check_description()
        self.check_content()
        self.check_by_lintian()
        self.assert_names_no_path_of_this_machine(os.path.join(self.root, "usr"))
        self.assert_runs(os.path.join(self.root, "usr/bin"))

    def check_description(self):
        self.assertEqual(self.field("Package"), "kelvanefs")
        self.assertRegex(os.path.basename(self.package), rf"^kelvanefs_{re.escape(self.field('Version'))}_\w+\.deb$")
        depends = {entry.split(" ")[0] for entry in self.field("Depends").split(", ")}
        self.assertLessEqual({"dvd+rw-tools", "fuse3", "genisoimage", "growisofs", "libburn4", "libfuse3-3", "libc6",
                              "libqt6widgets6", "libqt6dbus6"}, depends)
        for package in depends:
            self.assertEqual(run("dpkg-query", "-W", "-f", "${db:Status-Status}", package).stdout, "installed", package)

    def check_content(self):
        run("dpkg-deb", "--extract", self.package, self.root)
        documents = ["share/doc/kelvanefs/changelog.gz", "share/doc/kelvanefs/copyright",
                     "share/man/man1/kelvanedisc.1.gz", "share/man/man1/kelvanefs.1.gz"]
        self.assertEqual(files_below(os.path.join(self.root, "usr")), sorted(PROGRAMS + DATA + documents))
        self.assertEqual(os.listdir(self.root), ["usr"])
        sums = run("dpkg-deb", "--ctrl-tarfile", self.package).stdout
        for name in files_below(self.root):
            with open(os.path.join(self.root, name), "rb") as file:
                self.assertIn(f"{hashlib.md5(file.read()).hexdigest()}  {name}\n", sums)
        for line in run("dpkg-deb", "--contents", self.package).stdout.splitlines():
            self.assertIn(" root/root ", line)

    def check_by_lintian(self):
        result = run("lintian", "--allow-root", "--fail-on", "error,warning", "--suppress-tags",
                     ",".join(self.accepted_tags()), self.package, check=False)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)

    @staticmethod
    def accepted_tags():
        """What the checker holds against a package that is not one of the distribution's."""
        return [
            # Nobody has asked the distribution for the package.
            "initial-upload-closes-no-bugs",
            # A desktop that has a blank disc starts the program, which looks into the drives itself.
            "desktop-mime-but-no-exec-code",
        ]


if __name__ == "__main__":
    unittest.main()
