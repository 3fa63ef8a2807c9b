"""What the test bed's runs share: booting the guest through tools/testbed/testbed.py and the
names of the checks that passed, and the checks the drives side by side with the program's
disc-image drive report (SideBySideChecks.h), for the pass-through and the fall-back run."""

import subprocess
import sys
from pathlib import Path

TESTBED = Path(__file__).resolve().parent.parent.parent / "tools" / "testbed" / "testbed.py"

SIDE_BY_SIDE = ["same." + name for name in (
    "ready", "tur.empty", "tur.loaded", "capacity", "toc.lba", "toc.msf", "toc.session",
    "readcd.raw", "readcd.0", "readcd.1", "readcd.517", "readcd.1199", "read10",
    "read10.out-of-range", "gesn.loaded", "gesn.empty", "door.open", "tur.open", "gesn.open",
    "close", "insert", "toc.inserted", "read10.inserted", "tur.ejected", "gesn.ejected",
    "tur.emptied")]


class Failure(Exception):
    pass


def run(command: list, what: str) -> None:
    print("+ " + " ".join(str(c) for c in command), flush=True)
    done = subprocess.run(command, capture_output=True, text=True)
    output = (done.stdout + done.stderr).strip()
    if output:
        print("\n".join(output.splitlines()[-20:]), flush=True)
    if done.returncode != 0:
        raise Failure(f"{what} failed with exit status {done.returncode}")


def boot(variant: str, probe: Path, files: list, work: Path, images=(), extra=()) -> set:
    """Runs one boot with probe as the guest program (images into the drives, files into
    /testbed); the names of the checks that passed. Raises Failure when the boot failed."""
    command = [sys.executable, str(TESTBED), "--probe", str(probe), "--variant", variant,
               "--expect-checks", "--work", str(work / variant), *map(str, extra)]
    for image in images:
        command += ["--image", str(image)]
    print("+ " + " ".join(command) + f" ... ({len(files)} files)", flush=True)
    for path in files:
        command += ["--file", str(path)]
    harness = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                             text=True, errors="replace")
    print(harness.stdout, end="", flush=True)
    if harness.returncode != 0:
        raise Failure(f"the {variant} boot failed (exit status {harness.returncode})")
    return {line.split()[1] for line in harness.stdout.splitlines()
            if line.startswith("CHECK ") and len(line.split()) >= 3 and line.split()[2] == "PASS"}


def expect(passed: set, expected: list, what: str) -> None:
    missing = [name for name in expected if name not in passed]
    if missing:
        raise Failure(f"{what}: no passing check for: " + ", ".join(missing))
    print(f"{what}: every check passed ({len(passed)} names)", flush=True)
