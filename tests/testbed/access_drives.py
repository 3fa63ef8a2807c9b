#!/usr/bin/env python3
"""Drives the user may not open, in a real kernel: the drive test bed (drives variant) with the
nodes given to root:cdrom, mode 0660, as Debian does. plattmix-cli and the window (offscreen)
run as a user outside the group and must name the node and the group, the CLI on stderr with
exit status 1; a member of the group gets the drives (AccessChecks.h).

The guest program (with the window), plattmix-cli, the layer library and Qt's offscreen
platform go into the guest with every library they load, flat in /testbed; the programs' debug
information is left behind.

Exit status 0 only when the boot passed and every expected check passed.
"""

import argparse
import shutil
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))
from harness import Failure, boot, expect  # noqa: E402
from vdrive_mount import libraries  # noqa: E402

EXPECTED = ["access.nodes", "access.cli.drives", "access.cli.named", "access.window",
            "access.fall-back", "access.member.cli", "access.member.window"]


def guest_files(staged: Path, binaries: dict) -> list:
    """The binaries under their guest names, without debug information, and their libraries."""
    shutil.rmtree(staged, ignore_errors=True)
    staged.mkdir(parents=True)
    libs = {}
    for binary in binaries.values():
        libs.update(libraries(binary))
    files = []
    for name, source in binaries.items():
        done = subprocess.run(["objcopy", "--strip-debug", str(source), str(staged / name)],
                              capture_output=True, text=True)
        if done.returncode != 0:
            raise Failure(f"objcopy {source}: {done.stderr.strip()}")
        files.append(staged / name)
    for name, source in libs.items():
        if name not in binaries:
            shutil.copyfile(source, staged / name)  # follows links: the file under its load name
            files.append(staged / name)
    return files


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    for name, what in (("program", "the guest program"), ("cli", "plattmix-cli"),
                       ("layer", "libplattmix_aspi.so"), ("platform", "Qt's libqoffscreen.so"),
                       ("script", "the guest script"), ("work", "folder for the boot")):
        parser.add_argument("--" + name, type=Path, required=True, help=what)
    args = parser.parse_args()

    shutil.rmtree(args.work, ignore_errors=True)
    args.work.mkdir(parents=True)
    try:
        files = guest_files(args.work / "guest", {
            "testbed_access": args.program, "plattmix-cli": args.cli,
            args.layer.name: args.layer, "libqoffscreen.so": args.platform})
        expect(boot("drives", args.script, files, args.work), EXPECTED,
               "drives the user may not open")
        return 0
    except (Failure, OSError) as error:
        print(f"ACCESS TEST FAILED: {error}", flush=True)
        return 1
    finally:
        shutil.rmtree(args.work / "guest", ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
