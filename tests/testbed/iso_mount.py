#!/usr/bin/env python3
"""Images made by plattmix-cli, mounted by a real kernel.

Writes two source trees with plattmix-mktree (the quirk trees: deep folders, non-ASCII names,
empty folders, long names, symbolic links; and one sparse 5 GiB file), lists each of them
(folders, files with size and SHA-256, links with their target text; for the large file its
size and the bytes at its data regions, its end and inside a hole), builds an image of each
with `plattmix-cli iso`, and boots the drive test bed with the two images in drives 0 and 1 and
the listings in the guest. The probe mounts each drive read-only as ISO 9660, once with Rock
Ridge and once through Joliet (-o norock), and reports one check per top-level name and view.

Exit status 0 only when the harness passed and every top-level name got its passing checks.
Images and trees are deleted afterwards unless --keep is given.
"""

import argparse
import hashlib
import os
import shutil
import stat
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from harness import Failure, boot, expect, run  # noqa: E402

# Files this large are sampled, not hashed: reading 5 GiB in the guest would take minutes.
SAMPLED_FROM = 256 << 20
SAMPLE = 4096
# The quirk image gets a volume name of exactly 16 characters (Joliet's room) with an umlaut;
# the large one keeps the program's default.
QUIRK_VOLUME = "Plattmix-Prüfung"
DEFAULT_VOLUME = "PlattmixDisk"


def field(raw: bytes, what: str) -> bytes:
    if b"\t" in raw or b"\n" in raw:
        raise Failure(f"{what} {raw!r} cannot be listed (tab or line break)")
    return raw


def samples(path: Path, size: int) -> list:
    """(offset, bytes) at the start of every data region, at the start, middle and end of the
    file, and in the middle of the first hole found, each up to SAMPLE bytes."""
    offsets = {0, max(0, (size // 2) // SAMPLE * SAMPLE), max(0, size - SAMPLE)}
    with path.open("rb") as f:
        fd = f.fileno()
        position = 0
        hole_middle = None
        while position < size and len(offsets) < 32:
            try:
                data = os.lseek(fd, position, os.SEEK_DATA)
            except OSError:  # no data after position
                if hole_middle is None and position < size:
                    hole_middle = (position + size) // 2
                break
            if hole_middle is None and data > position:
                hole_middle = (position + data) // 2
            hole = os.lseek(fd, data, os.SEEK_HOLE)
            offsets.add(data)
            offsets.add(max(data, hole - SAMPLE))
            position = hole
        if hole_middle is not None:
            offsets.add(hole_middle // SAMPLE * SAMPLE)
        found = []
        for offset in sorted(offsets):
            found.append((offset, os.pread(fd, min(SAMPLE, size - offset), offset)))
    return found


def listing(root: Path, volume: str) -> bytes:
    """The probe's listing of the tree below root (see tests/testbed/TreeChecks.h)."""
    # The volume name as the Joliet descriptor holds it: 32 bytes of UCS-2, padded with spaces.
    units = volume.encode("utf-16-be")
    units += " ".encode("utf-16-be") * ((32 - len(units)) // 2)
    lines = [b"# listing of " + os.fsencode(root), b"V\t" + units.hex().upper().encode()]

    def walk(folder: Path, relative: bytes):
        for entry in sorted(os.scandir(folder), key=lambda e: os.fsencode(e.name)):
            name = field(os.fsencode(entry.name), "name")
            path = relative + b"/" + name if relative else name
            info = entry.stat(follow_symlinks=False)
            if stat.S_ISLNK(info.st_mode):
                target = field(os.fsencode(os.readlink(entry.path)), "link target")
                lines.append(b"L\t" + path + b"\t" + target)
            elif stat.S_ISDIR(info.st_mode):
                lines.append(b"D\t" + path)
                walk(Path(entry.path), path)
            elif stat.S_ISREG(info.st_mode) and info.st_size >= SAMPLED_FROM:
                taken = ",".join(f"{offset}:{data.hex()}"
                                 for offset, data in samples(Path(entry.path), info.st_size))
                lines.append(b"S\t" + path + b"\t%d\t" % info.st_size + taken.encode())
            elif stat.S_ISREG(info.st_mode):
                digest = hashlib.sha256(Path(entry.path).read_bytes()).hexdigest()
                lines.append(b"F\t" + path + b"\t%d\t" % info.st_size + digest.encode())
            else:
                raise Failure(f"{entry.path}: neither folder, file nor link")

    walk(root, b"")
    return b"\n".join(lines) + b"\n"


def top_names(manifest: bytes) -> list:
    names = []
    for line in manifest.decode().splitlines():
        if line[:1] in ("D", "F", "L", "S") and line[1:2] == "\t":
            top = line.split("\t")[1].split("/")[0]
            if top not in names:
                names.append(top)
    return names


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--mktree", type=Path, required=True, help="plattmix-mktree")
    parser.add_argument("--cli", type=Path, required=True, help="plattmix-cli")
    parser.add_argument("--probe", type=Path, required=True, help="the static probe program")
    parser.add_argument("--work", type=Path, required=True, help="folder for trees and images")
    parser.add_argument("--keep", action="store_true", help="keep trees and images")
    args = parser.parse_args()

    shutil.rmtree(args.work, ignore_errors=True)
    args.work.mkdir(parents=True)
    quirks, large = args.work / "quirks", args.work / "large"
    images = [args.work / "quirks.iso", args.work / "large.iso"]
    manifests = [args.work / "tree-sr0.manifest", args.work / "tree-sr1.manifest"]
    try:
        run([args.mktree, "quirks", quirks], "plattmix-mktree quirks")
        run([args.mktree, "sparse", large], "plattmix-mktree sparse")
        manifests[0].write_bytes(listing(quirks, QUIRK_VOLUME))
        manifests[1].write_bytes(listing(large, DEFAULT_VOLUME))
        run([args.cli, "iso", quirks, images[0], "--volume", QUIRK_VOLUME], "the quirk image")
        run([args.cli, "iso", large, images[1]], "the large image")
        print(f"images: {images[0].stat().st_size} and {images[1].stat().st_size} bytes",
              flush=True)

        passed = boot("mount", args.probe, manifests, args.work, images)
        # Each top-level name of each tree must have been checked in both views.
        wanted = []
        for drive, manifest in zip(("sr0", "sr1"), manifests):
            wanted.append(f"{drive}.joliet.volume-name")
            for view in ("rock", "joliet"):
                wanted += [f"{drive}.{view}.{top}" for top in top_names(manifest.read_bytes())]
        expect(passed, wanted, "mounted trees")
        return 0
    except (Failure, OSError) as error:
        print(f"ISO MOUNT TEST FAILED: {error}", flush=True)
        return 1
    finally:
        if not args.keep:
            for image in images:
                image.unlink(missing_ok=True)
            shutil.rmtree(quirks, ignore_errors=True)
            shutil.rmtree(large, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
