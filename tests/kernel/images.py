# SPDX-License-Identifier: GPL-2.0-or-later
"""What a guest is made of: Debian's kernel, a first file system with its modules, busybox and guest/init.

Packages come from where apt on this machine has them, and are not installed on it. Images are kept, and made anew when a
package has a new version or the recipe has changed.
"""

import fcntl
import hashlib
import lzma
import os
import re
import shutil
import subprocess
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
KERNEL = "linux-image-amd64"

# Loaded by guest/init in this order, what they need by itself before them.
MODULES = ["virtio_pci", "9pnet_virtio", "9p", "configfs", "target_core_mod", "target_core_user", "tcm_loop", "sr_mod",
           "sg", "isofs", "udf", "nls_utf8", "fuse", "virtio_blk", "crc32c_generic", "ext4", "overlay"]
# Folders of the first file system.
FOLDERS = ["bin", "dev", "etc", "etc/target", "lib", "programs", "proc", "root", "run", "system", "share", "sys", "tmp", "usr"]


class NotToBeHad(Exception):
    """A package cannot be had on this machine, so there can be no guest."""


def cache_folder():
    base = os.environ.get("XDG_CACHE_HOME") or os.path.join(os.path.expanduser("~"), ".cache")
    return os.environ.get("KELVANE_KERNEL_RIG") or os.path.join(base, "kelvanefs", "kernel-rig")


def output_of(*command, **options):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", check=False,
                            **options)
    if result.returncode != 0:
        raise NotToBeHad(f"{' '.join(command)}: {result.stdout.strip()}")
    return result.stdout


def candidate_of(package):
    """The version that apt would download."""
    found = re.search(r"Candidate: (\S+)", output_of("apt-cache", "policy", package))
    if not found or found.group(1) == "(none)":
        raise NotToBeHad(f"apt knows no package {package}")
    return found.group(1)


def kernel_package():
    """The package that holds the kernel: the one of no version depends on it."""
    found = re.search(r"Depends: (linux-image-\S+)", output_of("apt-cache", "depends", KERNEL))
    if not found:
        raise NotToBeHad(f"apt knows no package behind {KERNEL}")
    return found.group(1)


def unpack(package, target):
    """Downloads a package and unpacks it below `target`."""
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o755)
        download = ["apt-get", "-q", "-o", "APT::Sandbox::User=root", "-o", "Acquire::http::Timeout=20",
                    "-o", "Acquire::Retries=1", "download", package]
        try:
            output_of(*download, cwd=folder)
        except NotToBeHad:
            # The lists may name a version that has been superseded. Only root may have them made anew.
            if os.geteuid() == 0:
                output_of("apt-get", "-q", "update")
            output_of(*download, cwd=folder)
        output_of("dpkg-deb", "-x", os.path.join(folder, os.listdir(folder)[0]), target)


def uncompressed(kernel):
    """The kernel out of its self-extracting form. It starts faster so."""
    with open(kernel, "rb") as file:
        data = file.read()
    start = data.find(b"\xfd7zXZ\0")
    image = lzma.LZMADecompressor().decompress(data[start:]) if start >= 0 else b""
    if not image.startswith(b"\x7fELF"):
        raise NotToBeHad("the kernel is not packed as expected")
    return image


def with_what_they_need(modules, dependencies):
    """The modules' files, by the lines of modules.dep: "kernel/a/b.ko: kernel/c/d.ko …"."""
    needs = {}
    for line in dependencies.splitlines():
        file, _, others = line.partition(":")
        needs[os.path.basename(file).removesuffix(".ko").replace("-", "_")] = (file, others.split())
    files = set()
    for module in modules:
        if module in needs:
            files.update([needs[module][0], *needs[module][1]])
    return files


def add_modules(root, unpacked):
    """The modules named above. What is built into the kernel has no file."""
    version = os.listdir(os.path.join(unpacked, "lib/modules"))[0]
    source = os.path.join(unpacked, "lib/modules", version)
    output_of("busybox", "depmod", "-b", unpacked, version)
    with open(os.path.join(source, "modules.dep"), encoding="utf-8") as file:
        files = with_what_they_need(MODULES, file.read())
    target = os.path.join(root, "lib/modules", version)
    for file in files:
        os.makedirs(os.path.dirname(os.path.join(target, file)), exist_ok=True)
        shutil.copy(os.path.join(source, file), os.path.join(target, file))
    for file in ["modules.builtin", "modules.order"]:
        shutil.copy(os.path.join(source, file), target)
    output_of("busybox", "depmod", "-b", root, version)


def first_file_system(unpacked, target):
    """An archive that the kernel unpacks into memory."""
    with tempfile.TemporaryDirectory() as root:
        os.chmod(root, 0o755)
        for folder in FOLDERS:
            os.mkdir(os.path.join(root, folder))
        shutil.copy("/bin/busybox", os.path.join(root, "bin/busybox"))
        shutil.copy(os.path.join(HERE, "guest/init"), os.path.join(root, "init"))
        os.chmod(os.path.join(root, "init"), 0o755)
        os.symlink("usr/lib64", os.path.join(root, "lib64"))
        with open(os.path.join(root, "etc/modules"), "w", encoding="utf-8") as file:
            file.write("\n".join(MODULES) + "\n")
        add_modules(root, unpacked)
        with open(target, "wb") as archive:
            names = subprocess.run(["find", "."], cwd=root, stdout=subprocess.PIPE, check=True).stdout
            subprocess.run(["busybox", "cpio", "-o", "-H", "newc", "-R", "0:0"], cwd=root, input=names, stdout=archive,
                           stderr=subprocess.DEVNULL, check=True)


def digest_of(*parts):
    """Of files, by their absolute paths, and of texts."""
    digest = hashlib.sha256()
    for part in parts:
        if os.path.isabs(part):
            with open(part, "rb") as stream:
                part = hashlib.sha256(stream.read()).hexdigest()
        digest.update(part.encode() + b"\n")
    return digest.hexdigest()[:16]


def kept(kind, key, build):
    """The folder that build(folder) fills, unless it has been filled with the same key before."""
    cache = cache_folder()
    os.makedirs(cache, exist_ok=True)
    with open(os.path.join(cache, "lock"), "w", encoding="utf-8") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        folder = os.path.join(cache, f"{kind}-{key}")
        if not os.path.isdir(folder):
            for name in os.listdir(cache):
                if name.startswith((kind + "-", "making-")):
                    shutil.rmtree(os.path.join(cache, name))
            making = tempfile.mkdtemp(prefix="making-", dir=cache)
            build(making)
            os.rename(making, folder)
    return folder


def kernel_images():
    """The folder with `vmlinux` and `initramfs`, made now where there is none. Raises NotToBeHad."""
    if os.uname().machine != "x86_64":
        raise NotToBeHad("the guest is an x86-64 machine, and so has to be this one")
    package = kernel_package()

    def build(folder):
        print(f"Making the guest's kernel from {package}.", flush=True)
        unpacked = os.path.join(folder, "unpacked")
        unpack(package, unpacked)
        kernel = [name for name in os.listdir(os.path.join(unpacked, "boot")) if name.startswith("vmlinuz")]
        with open(os.path.join(folder, "vmlinux"), "wb") as file:
            file.write(uncompressed(os.path.join(unpacked, "boot", kernel[0])))
        first_file_system(unpacked, os.path.join(folder, "initramfs"))
        shutil.rmtree(unpacked)

    key = digest_of(os.path.abspath(__file__), os.path.join(HERE, "guest/init"), "/bin/busybox", package,
                    candidate_of(package))
    return kept("kernel", key, build)
