#!/usr/bin/env python3
"""The drive test bed's main run: the probe (testbed_probe.cpp) with plattmix-cli's drive and
tray commands in the guest, against QEMU's two drives (drives variant): the command line as the
user sees it, and the drives side by side with the program's disc-image drive.

Exit status 0 only when the boot passed and every expected check passed.
"""

import argparse
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from harness import SIDE_BY_SIDE, Failure, boot, expect  # noqa: E402

EXPECTED = ["cli." + name for name in (
    "drives", "toc", "toc.sr0", "toc.empty", "not-a-drive", "tray.closed", "tray.open",
    "tray.opened", "tray.close", "tray.shut", "tray.monitor-open", "tray.monitor-close",
    "tray.empty-open", "tray.empty-closed", "tray.not-a-drive", "tray.no-door")]
EXPECTED += SIDE_BY_SIDE


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--probe", type=Path, required=True, help="the static probe program")
    parser.add_argument("--cli", type=Path, required=True, help="the static plattmix-cli")
    parser.add_argument("--work", type=Path, required=True, help="folder for the boot")
    args = parser.parse_args()
    try:
        passed = boot("drives", args.probe, [], args.work, extra=["--cli", args.cli])
        expect(passed, EXPECTED, "drives")
        return 0
    except (Failure, OSError) as error:
        print(f"DRIVE TEST FAILED: {error}", flush=True)
        return 1


if __name__ == "__main__":
    sys.exit(main())
