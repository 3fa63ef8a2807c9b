#!/usr/bin/env python3
"""An image made by plattmix-cli, attached as a drive in a real kernel.

Writes the quirk tree with plattmix-mktree, lists it, builds an image of it with
`plattmix-cli iso` and boots the drive test bed (mount variant: loop and ISO 9660) with the image
and listing in the guest. There a program attaches the image, reads its files through the mount
point, and works through a second attach, a busy volume, detaching, a taken mount point and files
that are no image (MountChecks.h):

  --program P           the static program that does it with loop devices and mount(2);
  --udisks-program P    the program that does it through udisks2, with --udisks-script, the
                        guest script that starts udevd and a system bus that starts udisksd. The
                        host's udisksd, udevd and dbus-daemon go into the guest with their
                        libraries; without udisks2 on the host the test is skipped (exit 77).

Exit status 0 only when the harness passed and every expected check passed.
"""

import argparse
import shutil
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from harness import Failure, boot, expect, run  # noqa: E402
from iso_mount import listing  # noqa: E402

IMAGE = "Plattmix Abbild.iso"  # MountChecks.h
LISTING = "vdrive.manifest"
VOLUME = "Laufwerk-Probe"
STEPS = ["listing", "no-image", "mount", "read-only", "kept", "files", "again", "busy", "unmount",
         "unmount-again", "taken-by-mount", "taken-by-mount.unmount", "taken-by-file",
         "taken-by-file.unmount"]
SKIPPED = 77

UDISKSD = Path("/usr/libexec/udisks2/udisksd")
UDEVD = Path("/lib/systemd/systemd-udevd")
RULES = ["50-udev-default.rules", "60-block.rules", "60-persistent-storage.rules",
         "80-udisks2.rules"]
CONFIGS = [Path("/etc/libblockdev/conf.d/00-default.cfg"), Path("/etc/udisks2/udisks2.conf")]
BUS_CONFIG = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path=/run/dbus/system_bus_socket</listen>
  <auth>EXTERNAL</auth>
  <servicedir>/testbed</servicedir>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
"""
UDISKS_SERVICE = """[D-BUS Service]
Name=org.freedesktop.UDisks2
Exec=/testbed/udisksd
User=root
"""


def libraries(binary: Path) -> dict:
    """The shared libraries binary loads (name -> file), the dynamic loader among them."""
    done = subprocess.run(["ldd", str(binary)], capture_output=True, text=True)
    if done.returncode != 0:
        raise Failure(f"ldd {binary}: {done.stderr.strip()}")
    found = {}
    for line in done.stdout.splitlines():
        words = line.split()
        if len(words) >= 3 and words[1] == "=>" and words[2].startswith("/"):
            found[words[0]] = Path(words[2])
        elif words and words[0].startswith("/") and "/ld-linux" in words[0]:
            found[Path(words[0]).name] = Path(words[0])
    return found


def udisks_files(work: Path, program: Path) -> list:
    """The host's udisksd, udevd and dbus-daemon, the program, their libraries (libblockdev's
    plug-ins too), udev rules and configuration, as flat files for the guest's /testbed."""
    dbus = shutil.which("dbus-daemon")
    rules = next((d for d in (Path("/lib/udev/rules.d"), Path("/usr/lib/udev/rules.d"))
                  if (d / RULES[-1]).exists()), None)
    if not UDISKSD.exists() or not UDEVD.exists() or not dbus or rules is None:
        return []
    staged = work / "guest"
    staged.mkdir()
    binaries = {"udisksd": UDISKSD, "systemd-udevd": UDEVD, "dbus-daemon": Path(dbus),
                "testbed_udisks": program}
    libs = {}
    for binary in binaries.values():
        libs.update(libraries(binary))
    blockdev = libs.get("libblockdev.so.2")
    if blockdev is not None:  # plug-ins, loaded by name at run time
        for plugin in blockdev.parent.glob("libbd_*.so.2"):
            libs[plugin.name] = plugin
            libs.update(libraries(plugin))
    files = []
    for name, source in list(binaries.items()) + list(libs.items()):
        shutil.copyfile(source, staged / name)  # follows links: the file under its load name
        files.append(staged / name)
    files += [rules / name for name in RULES if (rules / name).exists()]
    files += [config for config in CONFIGS if config.exists()]
    (staged / "udisks-bus.conf").write_text(BUS_CONFIG)
    (staged / "org.freedesktop.UDisks2.service").write_text(UDISKS_SERVICE)
    files += [staged / "udisks-bus.conf", staged / "org.freedesktop.UDisks2.service"]
    return files


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--mktree", type=Path, required=True, help="plattmix-mktree")
    parser.add_argument("--cli", type=Path, required=True, help="plattmix-cli")
    parser.add_argument("--program", type=Path, help="the static loop-device program")
    parser.add_argument("--udisks-program", type=Path, help="the udisks2 program")
    parser.add_argument("--udisks-script", type=Path, help="the guest script for udisks2")
    parser.add_argument("--work", type=Path, required=True, help="folder for the tree and image")
    args = parser.parse_args()
    if bool(args.program) == bool(args.udisks_program) or \
            bool(args.udisks_program) != bool(args.udisks_script):
        parser.error("either --program or --udisks-program with --udisks-script")

    shutil.rmtree(args.work, ignore_errors=True)
    args.work.mkdir(parents=True)
    tree, image, manifest = args.work / "quirks", args.work / IMAGE, args.work / LISTING
    try:
        extra, probe, prefix = [], args.program, "vdrive"
        if args.udisks_program:
            extra = udisks_files(args.work, args.udisks_program)
            if not extra:
                print(f"SKIPPED: udisks2, udev or dbus-daemon is not installed ({UDISKSD})")
                return SKIPPED
            probe, prefix = args.udisks_script, "udisks"
        run([args.mktree, "quirks", tree], "plattmix-mktree quirks")
        manifest.write_bytes(listing(tree, VOLUME))
        run([args.cli, "iso", tree, image, "--volume", VOLUME], "the image")

        passed = boot("mount", probe, [image, manifest, *extra], args.work)
        expect(passed, [f"{prefix}.{step}" for step in STEPS], f"virtual drives ({prefix})")
        return 0
    except (Failure, OSError) as error:
        print(f"VIRTUAL DRIVE TEST FAILED: {error}", flush=True)
        return 1
    finally:
        shutil.rmtree(tree, ignore_errors=True)
        shutil.rmtree(args.work / "guest", ignore_errors=True)
        image.unlink(missing_ok=True)


if __name__ == "__main__":
    sys.exit(main())
