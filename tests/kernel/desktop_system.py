# SPDX-License-Identifier: GPL-2.0-or-later
"""The system of a guest of the full tier: a small Debian with a desktop's services, in which our package is installed."""

import glob
import os
import re
import shutil
import tempfile

from images import HERE, NotToBeHad, cache_folder, candidate_of, digest_of, kept, output_of

# What the full tier's system has besides Debian's smallest: the services of a desktop, a screen, and what tries them. What
# our programs need is not named here: their own package has to name it.
DESKTOP_PACKAGES = ["udev", "dbus", "udisks2", "polkitd", "pkexec", "kmod", "eject", "xvfb", "xdotool", "at-spi2-core",
                    "fonts-dejavu-core"]
SYSTEM_SIZE = "2000M"


def desktop_tree():
    """The folder with `root`, a small Debian with a desktop's services, made now where there is none."""

    def build(folder):
        print("Making the guest's system. This takes some minutes.", flush=True)
        output_of("mmdebstrap", "--quiet", "--mode=root", "--variant=minbase", "--include=" + ",".join(DESKTOP_PACKAGES),
                  *[f"--dpkgopt=path-exclude=/usr/share/{name}/*" for name in ["doc", "locale"]],
                  f"--customize-hook=sh '{HERE}/guest/customize' \"$1\"", codename(), os.path.join(folder, "root"),
                  *sources_of(codename()))

    versions = [f"{package} {candidate_of(package)}" for package in DESKTOP_PACKAGES]
    return kept("desktop", digest_of(os.path.join(HERE, "guest/customize"), *versions), build)


def install(package, root):
    """Installs our package below `root` as apt does for a user: with what it says it depends on, and nothing else. What is
    downloaded is kept for the next time."""
    downloads = os.path.join(cache_folder(), "downloads")
    lists = os.path.join(downloads, "lists")
    os.makedirs(os.path.join(lists, "partial"), exist_ok=True)
    # Below `root`, because dpkg runs there.
    archives = os.path.join(root, "var/cache/apt/archives")
    for name in glob.glob(os.path.join(downloads, "*.deb")):
        shutil.copy(name, archives)
    place = os.path.join(root, "root", os.path.basename(package))
    shutil.copy(package, place)
    with tempfile.NamedTemporaryFile("w", suffix=".conf") as settings:
        # How this machine reaches its sources is how the packages are had; all else is the guest's.
        settings.write(output_of("apt-config", "dump", "--format", '%F "%v";%n', "Acquire"))
        settings.write(f"""
Dir "{root}";
Dir::State::Lists "{lists}";
DPkg::Chroot-Directory "{root}";
APT::Sandbox::User "root";
APT::Install-Recommends "false";
Binary::apt-get::APT::Keep-Downloaded-Packages "true";
""")
        settings.flush()
        environment = dict(os.environ, APT_CONFIG=settings.name, TMPDIR=os.path.join(root, "tmp"), LC_ALL="C.UTF-8",
                           DEBIAN_FRONTEND="noninteractive")
        output_of("apt-get", "-q", "update", env=environment)
        output_of("apt-get", "-q", "-y", "install", place, env=environment)
    os.remove(place)
    for name in glob.glob(os.path.join(archives, "*.deb")):
        shutil.move(name, os.path.join(downloads, os.path.basename(name)))


def system_image(package):
    """The folder with `root.ext4`, the desktop with our package installed, made now where there is none."""
    if os.geteuid() != 0:
        raise NotToBeHad("the system of the full tier can be made by root only")
    desktop = desktop_tree()

    def build(folder):
        print(f"Installing {os.path.basename(package)} in the guest's system.", flush=True)
        root = os.path.join(folder, "root")
        output_of("cp", "-a", os.path.join(desktop, "root"), root)
        install(package, root)
        image = os.path.join(folder, "root.ext4")
        output_of("mke2fs", "-q", "-t", "ext4", "-O", "^has_journal", "-L", "system", "-d", root, image, SYSTEM_SIZE)
        shutil.rmtree(root)

    return kept("system", digest_of(os.path.basename(desktop), os.path.abspath(__file__), package), build)


def codename():
    with open("/etc/os-release", encoding="utf-8") as file:
        return re.search(r"^VERSION_CODENAME=(\w+)", file.read(), re.MULTILINE).group(1)


def sources_of(release):
    """The files in which apt on this machine has its sources of that release."""
    folder = "/etc/apt/sources.list"
    found = []
    for file in [folder, *glob.glob(folder + ".d/*.list"), *glob.glob(folder + ".d/*.sources")]:
        if os.path.isfile(file):
            with open(file, encoding="utf-8") as stream:
                if re.search(rf"\b{release}\b", stream.read()):
                    found.append(file)
    return found
