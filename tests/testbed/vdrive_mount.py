#!/usr/bin/env python3
"""An image made by plattmix-cli, attached as a drive by the loop-device service in a real kernel.

Writes the quirk tree with plattmix-mktree, lists it, builds an image of it with
`plattmix-cli iso` and boots the drive test bed (mount variant: loop and ISO 9660) with the
virtual-drive program in place of the probe and the image and listing in the guest. The program
attaches the image, reads its files through the mount point, and works through a second attach,
a busy volume, detaching, a taken mount point and files that are no image (MountChecks.h).

Exit status 0 only when the harness passed and every expected check passed.
"""

import argparse
import shutil
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
TESTBED = HERE.parent.parent / "tools" / "testbed" / "testbed.py"
sys.path.insert(0, str(HERE))
from iso_mount import Failure, listing, run  # noqa: E402

IMAGE = "Plattmix Abbild.iso"  # MountChecks.h
LISTING = "vdrive.manifest"
VOLUME = "Laufwerk-Probe"
EXPECTED = ["vdrive.listing", "vdrive.no-image", "vdrive.mount", "vdrive.read-only",
            "vdrive.kept", "vdrive.files", "vdrive.again", "vdrive.busy", "vdrive.unmount",
            "vdrive.unmount-again", "vdrive.taken-by-mount", "vdrive.taken-by-mount.unmount",
            "vdrive.taken-by-file", "vdrive.taken-by-file.unmount"]


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--mktree", type=Path, required=True, help="plattmix-mktree")
    parser.add_argument("--cli", type=Path, required=True, help="plattmix-cli")
    parser.add_argument("--program", type=Path, required=True,
                        help="the static virtual-drive program for the guest")
    parser.add_argument("--work", type=Path, required=True, help="folder for the tree and image")
    args = parser.parse_args()

    shutil.rmtree(args.work, ignore_errors=True)
    args.work.mkdir(parents=True)
    tree, image, manifest = args.work / "quirks", args.work / IMAGE, args.work / LISTING
    try:
        run([args.mktree, "quirks", tree], "plattmix-mktree quirks")
        manifest.write_bytes(listing(tree, VOLUME))
        run([args.cli, "iso", tree, image, "--volume", VOLUME], "the image")

        command = [sys.executable, str(TESTBED), "--probe", str(args.program), "--variant",
                   "mount", "--expect-checks", "--work", str(args.work / "run"),
                   "--file", str(image), "--file", str(manifest)]
        print("+ " + " ".join(command), flush=True)
        harness = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                 text=True, errors="replace")
        print(harness.stdout, end="", flush=True)
        passed = {line.split()[1] for line in harness.stdout.splitlines()
                  if line.startswith("CHECK ") and len(line.split()) >= 3
                  and line.split()[2] == "PASS"}
        if harness.returncode != 0:
            raise Failure(f"the test bed failed (exit status {harness.returncode})")
        missing = [name for name in EXPECTED if name not in passed]
        if missing:
            raise Failure("no passing check for: " + ", ".join(missing))
        print(f"virtual drives: every check passed ({len(passed)} names)")
        return 0
    except (Failure, OSError) as error:
        print(f"VIRTUAL DRIVE TEST FAILED: {error}", flush=True)
        return 1
    finally:
        shutil.rmtree(tree, ignore_errors=True)
        image.unlink(missing_ok=True)


if __name__ == "__main__":
    sys.exit(main())
