#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""make_corpus.py FOLDER: makes the inputs that the fuzzers begin with, from tiny trees and the builders of discs that
people use. What is kept in corpus/ is their merge with what the fuzzers found (see docs/fuzzing.md)."""
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile

BLOCK = 2048


def sparse(image, session_start=0):
    """The bytes of sparse_image.h for a disc image."""
    out = bytearray(struct.pack("<H", session_start))
    gap = 0
    for position in range(0, len(image), BLOCK):
        content = image[position:position + BLOCK].rstrip(b"\0")
        if not content and position + BLOCK < len(image):
            gap += 1
            continue
        out += b"\xff" * (gap // 255) + bytes([gap % 255]) + struct.pack("<H", len(content)) + content
        gap = 0
    return bytes(out)


def make_tree(folder):
    (folder / "sub").mkdir(parents=True)
    (folder / "sub" / "A file with spaces.txt").write_text("content of the file\n" * 3)
    (folder / "M\u00fcller [1].txt").write_bytes(b"m" * 3000)
    (folder / "empty").touch()
    (folder / ("long " + "n" * 200)).write_text("l")
    os.symlink("../else/./where", folder / "link")
    os.symlink("/" + "t" * 240 + "/" + "u" * 240, folder / "long link")


def make_deep_tree(folder):
    deep = folder / "1/2/3/4/5/6/7/8/9/10"
    deep.mkdir(parents=True)
    (deep / "bottom").write_text("deep down")
    (folder / "RR_MOVED.txt").write_text("not the directory")


def build(work, tree, *words, program="genisoimage"):
    image = work / "disc.iso"
    image.unlink(missing_ok=True)
    if program == "xorriso":
        command = ["xorriso", "-as", "mkisofs", "-quiet"]
    else:
        command = ["genisoimage", "-quiet", "-no-pad", "-input-charset", "utf-8"]
    result = subprocess.run([*command, *words, "-o", image, tree], stderr=subprocess.PIPE)
    if result.returncode != 0:
        sys.exit(f"{command[0]} {words}: {result.stderr}")
    return image.read_bytes()


def second_session(work, first, tree):
    """The disc with a further session, and where that starts."""
    start = (len(first) // BLOCK + 31) // 32 * 32
    (work / "first.iso").write_bytes(first)
    second = build(work, tree, "-R", "-J", "-joliet-long", "-M", work / "first.iso", "-C", f"0,{start}")
    return first.ljust(start * BLOCK, b"\0") + second, start


def in_two_sections(image):
    """Makes the two files AAAA and AAAB one file: the name becomes the same, and the first record says that it goes on."""
    image = bytearray(image)
    first = image.index(b"AAAA.;1") - 33
    second = image.index(b"AAAB.;1") - 33
    image[first + 25] |= 0x80
    image[second + 33:second + 40] = b"AAAA.;1"
    return bytes(image)


def with_device_nodes(work):
    folder = work / "devices"
    folder.mkdir()
    os.mkfifo(folder / "pipe")
    if os.geteuid() == 0:
        os.mknod(folder / "null", 0o20666, os.makedev(1, 3))
    return folder


def iso_volumes(work):
    tree, deep, many, parts = (work / name for name in ("tree", "deep", "many", "parts"))
    make_tree(tree)
    make_deep_tree(deep)
    many.mkdir()
    for index in range(40):
        (many / f"file number {index}").touch()
    parts.mkdir()
    (parts / "AAAA").write_bytes(b"a" * 2 * BLOCK)
    (parts / "AAAB").write_bytes(b"b" * 100)
    images = {
        "rock_ridge": build(work, tree, "-R"),
        "joliet": build(work, tree, "-J", "-joliet-long"),
        "both": build(work, tree, "-R", "-J", "-joliet-long"),
        "plain": build(work, tree, "-l"),
        "xorriso": build(work, tree, "-R", "-J", program="xorriso"),
        "relocated": build(work, deep, "-R"),
        "not_relocated": build(work, deep, "-R", "-D"),
        "xorriso_relocated": build(work, deep, "-R", "-rr_reloc_dir", "moved", program="xorriso"),
        "many": build(work, many, "-R"),
        "devices": build(work, with_device_nodes(work), "-R"),
        "sections": in_two_sections(build(work, parts)),
        "sections_rock_ridge": in_two_sections(build(work, parts, "-R")),
    }
    inputs = {name: sparse(image) for name, image in images.items()}
    inputs["second_session"] = sparse(*second_session(work, images["many"], deep))
    inputs["truncated"] = sparse(images["both"][:26 * BLOCK])
    return inputs


def hide_lists():
    umlauts = "\u00e4\u00f6\u00fc\u00c4\u00d6\u00dc\u00df\u1e9e"
    decomposed = "a\u0308o\u0308u\u0308A\u0308O\u0308U\u0308"
    texts = {
        "plain": "a.txt\0b/c.txt",
        "all": f"{umlauts}\0{decomposed}\0{{x}}[y]",
        "mixed": "docs/M\u00fcller[1].txt\0docs/Mu\u0308ller[1].txt",
        "line_feed": "two\nlines\0two\nlines/b",
        "wildcards": "*\0?\0[a-z]\0back\\slash",
        "housekeeping": ".Trashes\0._.Trashes\0.TemporaryItems/x",
        "nested": "a/b/c\0a/b\0a",
        "marks": "u\u0308\u0308\0\u0308\0a\u0323\u0308",
    }
    inputs = {}
    for index, (name, text) in enumerate(texts.items()):
        inputs[name] = bytes([index]) + text.encode()
    for bits in (1, 2, 4, 8, 15):
        inputs[f"nested_{bits}"] = bytes([bits]) + texts["nested"].encode()
    inputs["no_utf8"] = b"\0\xc3\0\xc3\xc3\xa4\xcc\x88\0a\xcc\0\xff\xfe/\x80"
    inputs["long"] = b"\0" + "\u00fc".encode() * 127 + b"/" + b"{" * 255
    return inputs


def main():
    target = pathlib.Path(sys.argv[1])
    work = pathlib.Path(tempfile.mkdtemp())
    try:
        for folder, inputs in (("iso_volume", iso_volumes(work)), ("hide_list", hide_lists())):
            (target / folder).mkdir(parents=True, exist_ok=True)
            for name, content in inputs.items():
                (target / folder / name).write_bytes(content)
    finally:
        shutil.rmtree(work)


if __name__ == "__main__":
    main()
