#!/usr/bin/env python3
"""The fall-back transport in a real kernel: the drive test bed booted without the sr driver
(sg-only: the drives are /dev/sg0 and /dev/sg1), without either driver (no-driver), and with
both (mount, an ISO 9660 image made by plattmix-cli in drive 0).

The guest program, plattmix-cli's drive commands and the layer library are linked dynamically
(the transport loads its layer at run time); they go into the guest with their shared libraries
and the dynamic loader, flat in /testbed, and the guest script (aspi_guest.sh) runs the program
in place of the probe. With sg-only the program's start must choose the fall-back transport,
list both drives with their INQUIRY identification, the drives must answer through it as the
program's disc-image drive does (AspiChecks.h), and the window's tray and door must work
on the drives
(AspiWindowChecks.h); with no-driver it must show the two-line message and end; with both
drivers the fall-back's drive must lead to /dev/sr0 and its mount point.

Exit status 0 only when every boot passed and every expected check passed.
"""

import argparse
import shutil
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))
from harness import SIDE_BY_SIDE, Failure, boot, expect  # noqa: E402
from vdrive_mount import libraries  # noqa: E402

EXPECTED = {
    "sg-only": ["aspi.start", "aspi.cli.drives", "aspi.cli.toc", "aspi.cli.toc.sg0",
                "aspi.cli.toc.empty", "aspi.tray", "aspi.door.open", "aspi.door.close"]
    + ["aspi." + n for n in SIDE_BY_SIDE],
    "no-driver": ["aspi.start.none", "aspi.cli.none"],
    "mount": ["aspi.sr.node", "aspi.sr.root"],
}


def guest_files(work: Path, program: Path, cli: Path, layer: Path) -> list:
    """The programs under their guest names, the layer, and every library they load."""
    staged = work / "guest"
    shutil.rmtree(staged, ignore_errors=True)
    staged.mkdir(parents=True)
    binaries = {"testbed_aspi": program, "testbed_cli_shared": cli, layer.name: layer}
    libs = {}
    for binary in binaries.values():
        libs.update(libraries(binary))
    files = []
    for name, source in list(binaries.items()) + list(libs.items()):
        shutil.copyfile(source, staged / name)  # follows links: the file under its load name
        files.append(staged / name)
    return files


def iso_image(cli: Path, work: Path) -> Path:
    """A small ISO 9660 image with one file, LIESMICH.txt, made by plattmix-cli."""
    source = work / "disc-source"
    source.mkdir()
    (source / "LIESMICH.txt").write_text("Plattmix im Prüfstand\n", encoding="utf-8")
    image = work / "disc.iso"
    made = subprocess.run([str(cli), "iso", str(source), str(image)], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace")
    if made.returncode != 0 or not image.is_file():
        raise Failure(f"plattmix-cli iso failed ({made.returncode}): {made.stdout.strip()}")
    return image


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", type=Path, required=True, help="the guest program")
    parser.add_argument("--cli", type=Path, required=True, help="the drive commands' program")
    parser.add_argument("--layer", type=Path, required=True, help="libplattmix_aspi.so")
    parser.add_argument("--iso-cli", type=Path, required=True,
                        help="plattmix-cli, which makes the image for the boot with both drivers")
    parser.add_argument("--script", type=Path, required=True, help="the guest script")
    parser.add_argument("--work", type=Path, required=True, help="folder for the boots")
    args = parser.parse_args()

    shutil.rmtree(args.work, ignore_errors=True)
    args.work.mkdir(parents=True)
    try:
        files = guest_files(args.work, args.program, args.cli, args.layer)
        image = iso_image(args.iso_cli, args.work)
        for variant, expected in EXPECTED.items():
            passed = boot(variant, args.script, files, args.work,
                          [image] if variant == "mount" else [])
            expect(passed, expected, f"fall-back transport ({variant})")
        return 0
    except (Failure, OSError) as error:
        print(f"FALL-BACK TRANSPORT TEST FAILED: {error}", flush=True)
        return 1
    finally:
        shutil.rmtree(args.work / "guest", ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
