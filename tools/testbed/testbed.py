#!/usr/bin/env python3
"""Boots a Debian kernel in QEMU with two emulated IDE CD/DVD drives and runs the drive probe
inside it: drive 0 holds a generated disc image, drive 1 is empty. The probe reports one line
per check over a second serial port and asks the harness, over the same port, to work the
drives through the QEMU monitor (tray, medium). Exit status 0 only when every check passed.

Variants choose the drivers the guest loads: drives (sr and sg), sg-only, no-driver, and mount
(sr, sg, loop and isofs).

--image puts a given image into drive 0 instead of the generated disc (a second --image goes
into drive 1); --file copies a host file into the guest's /testbed folder under its own name,
for the probe to compare against.
"""

import argparse
import gzip
import json
import os
import random
import select
import shutil
import socket
import subprocess
import sys
import tempfile
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))
import prepare  # noqa: E402

SECTOR = 2048
# Guest files larger than this in all go into an uncompressed initramfs: compressing a program
# with its libraries (the window with Qt, say) takes longer than the boot itself.
COMPRESS_UP_TO = 64 << 20
# The two generated discs: drive 0 boots with A, B is inserted into drive 1 while the probe runs.
DISCS = {"disc-a": (b"A", 1200), "disc-b": (b"B", 700)}
VARIANTS = {
    "drives": (["ata_piix", "sr_mod", "sg"], ["sr0", "sr1"]),
    "sg-only": (["ata_piix", "sg"], ["sg0", "sg1"]),
    "no-driver": (["ata_piix"], []),
    "mount": (["ata_piix", "sr_mod", "sg", "loop", "isofs"], ["sr0", "sr1"]),
}


class TestbedError(Exception):
    pass


def drive_id(index: int) -> str:
    """QEMU's name for the IDE drive with this index (bus = index / 2, unit = index % 2)."""
    return f"ide{index // 2}-cd{index % 2}"


def write_disc(path: Path, tag: bytes, sectors: int) -> None:
    """Every sector: "PLATTMIX", the disc's tag, three zero bytes, its LBA (big-endian), then
    pseudo-random bytes seeded by tag and LBA, so that each sector differs from every other."""
    with path.open("wb") as out:
        for lba in range(sectors):
            head = b"PLATTMIX" + tag + bytes(3) + lba.to_bytes(4, "big")
            body = random.Random(tag[0] * 1_000_003 + lba).randbytes(SECTOR - len(head))
            out.write(head + body)


class Cpio:
    """An initramfs archive in the kernel's "newc" format."""

    def __init__(self):
        self.data = bytearray()
        self.inode = 1

    def _entry(self, name: str, mode: int, body: bytes = b"", rdev=(0, 0)) -> None:
        fields = [self.inode, mode, 0, 0, 1, 0, len(body), 0, 0, rdev[0], rdev[1],
                  len(name) + 1, 0]
        self.inode += 1
        self.data += b"070701" + b"".join(b"%08X" % f for f in fields)
        self.data += name.encode() + b"\0"
        self.data += bytes(-len(self.data) % 4)
        self.data += body
        self.data += bytes(-len(self.data) % 4)

    def directory(self, name: str) -> None:
        self._entry(name, 0o040755)

    def file(self, name: str, body: bytes, mode: int = 0o644) -> None:
        self._entry(name, 0o100000 | mode, body)

    def char_device(self, name: str, major: int, minor: int) -> None:
        self._entry(name, 0o020600, rdev=(major, minor))

    def finish(self, compress: bool) -> bytes:
        self._entry("TRAILER!!!", 0)
        return gzip.compress(bytes(self.data), mtime=0) if compress else bytes(self.data)


def load_order(kernel: Path, wanted: list) -> list:
    """The modules to insmod for wanted, each after its dependencies."""
    deps = {}
    for line in (kernel / "modules" / "deps.txt").read_text().splitlines():
        name, _, rest = line.partition(":")
        deps[name] = rest.split()
    order = []

    def visit(name):
        if name in order:
            return
        if name not in deps:
            raise TestbedError(f"module {name} was not prepared")
        for dep in deps[name]:
            visit(dep)
        order.append(name)

    for name in wanted:
        visit(name)
    return order


def build_initramfs(kernel: Path, probe: Path, cli, work: Path, variant: str,
                    extra_files=(), with_discs=True) -> Path:
    modules, nodes = VARIANTS[variant]
    order = load_order(kernel, modules)
    archive = Cpio()
    for folder in ("bin", "dev", "proc", "sys", "lib", "lib/modules", "testbed"):
        archive.directory(folder)
    archive.char_device("dev/console", 5, 1)
    archive.file("init", (HERE / "init.sh").read_bytes(), 0o755)
    archive.file("bin/busybox", (kernel / "busybox").read_bytes(), 0o755)
    for name in order:
        archive.file(f"lib/modules/{name}.ko", (kernel / "modules" / f"{name}.ko").read_bytes())
    archive.file("testbed/modules", ("\n".join(order) + "\n").encode())
    archive.file("testbed/nodes", (" ".join(nodes) + "\n").encode())
    archive.file("testbed/variant", (variant + "\n").encode())
    archive.file("testbed/probe", probe.read_bytes(), 0o755)
    if cli:
        archive.file("testbed/plattmix-cli", cli.read_bytes(), 0o755)
    # The probe's disc-image drive reads these copies, to answer side by side with QEMU's.
    if with_discs:
        for disc in DISCS:
            archive.file(f"testbed/{disc}.iso", (work / f"{disc}.iso").read_bytes())
    extra_size = 0
    for extra in extra_files:
        body = extra.read_bytes()
        extra_size += len(body)
        archive.file(f"testbed/{extra.name}", body)
    path = work / "initramfs.gz"
    path.write_bytes(archive.finish(extra_size <= COMPRESS_UP_TO))
    return path


class Qmp:
    """The QEMU machine protocol on a connected socket: one JSON object per line."""

    def __init__(self, sock: socket.socket, deadline: float):
        self.sock = sock
        self.deadline = deadline
        self.buffer = b""
        self._read()  # the greeting
        self.command("qmp_capabilities")

    def _read(self) -> dict:
        while b"\n" not in self.buffer:
            self.sock.settimeout(max(0.1, self.deadline - time.monotonic()))
            chunk = self.sock.recv(65536)
            if not chunk:
                raise TestbedError("QEMU closed the monitor")
            self.buffer += chunk
        line, _, self.buffer = self.buffer.partition(b"\n")
        return json.loads(line)

    def command(self, name: str, **arguments):
        message = {"execute": name}
        if arguments:
            message["arguments"] = arguments
        self.sock.sendall(json.dumps(message).encode() + b"\n")
        while True:
            reply = self._read()
            if "return" in reply:
                return reply["return"]
            if "error" in reply:
                raise TestbedError(reply["error"].get("desc", str(reply["error"])))
            # Anything else is an event (tray moved and the like): skip it.


def monitor_action(qmp: Qmp, work: Path, words: list) -> str:
    """Runs one request of the probe; answers a short text, raises on failure."""
    action, drive = words[0], drive_id(int(words[1]))
    if action == "open-tray":
        qmp.command("blockdev-open-tray", device=drive, force=True)
    elif action == "close-tray":
        qmp.command("blockdev-close-tray", device=drive)
    elif action == "eject":  # the monitor's "eject -f": open the tray, take the medium out
        qmp.command("eject", device=drive, force=True)
    elif action == "change":  # the monitor's "change": a new medium, tray closed again
        qmp.command("blockdev-change-medium", device=drive, format="raw",
                    filename=str(work / (words[2] + ".iso")))
    elif action != "tray":
        raise TestbedError(f"unknown request {action}")
    for block in qmp.command("query-block"):
        if block["device"] == drive:
            tray = "open" if block.get("tray_open") else "closed"
            medium = "medium" if "inserted" in block else "no-medium"
            return f"{tray} {medium}"
    raise TestbedError(f"QEMU has no drive {drive}")


def accelerators() -> list:
    # Software emulation unless asked otherwise: KVM inside a virtual machine is often present
    # but broken, and a guest boot takes only seconds without it.
    return ["-accel", os.environ.get("PLATTMIX_TESTBED_ACCEL", "tcg")]


def listener(path: Path) -> socket.socket:
    path.unlink(missing_ok=True)
    sock = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    sock.bind(str(path))
    sock.listen(1)
    return sock


def accept(server: socket.socket, qemu: subprocess.Popen, deadline: float, what: str):
    while time.monotonic() < deadline:
        if qemu.poll() is not None:
            raise TestbedError(f"QEMU did not start (exit status {qemu.returncode})")
        ready, _, _ = select.select([server], [], [], 0.2)
        if ready:
            return server.accept()[0]
    raise TestbedError(f"QEMU did not connect its {what} in time")


class Run:
    def __init__(self):
        self.checks = []  # (name, passed, detail)
        self.infos = []
        self.done = None
        self.console_lines = []


def converse(qemu, control: socket.socket, qmp: Qmp, work: Path, deadline: float, log) -> Run:
    """Reads the probe's lines until it says DONE, answering its requests."""
    result = Run()
    buffer = b""
    while result.done is None:
        if time.monotonic() >= deadline:
            raise TestbedError("time limit reached before the probe finished")
        ready, _, _ = select.select([control], [], [], 0.5)
        if not ready:
            if qemu.poll() is not None:
                raise TestbedError(f"QEMU ended before the probe finished "
                                   f"(exit status {qemu.returncode})")
            continue
        chunk = control.recv(65536)
        if not chunk:
            raise TestbedError("the guest closed the control port before the probe finished")
        buffer += chunk
        while b"\n" in buffer:
            raw, _, buffer = buffer.partition(b"\n")
            line = raw.decode(errors="replace").strip()
            if not line:
                continue
            print(line, file=log, flush=True)
            words = line.split()
            if words[0] == "CHECK" and len(words) >= 3:
                result.checks.append((words[1], words[2] == "PASS", " ".join(words[3:])))
            elif words[0] == "INFO":
                result.infos.append(" ".join(words[1:]))
            elif words[0] == "DONE":
                result.done = line
            elif words[0] == "REQUEST" and len(words) >= 4:
                try:
                    answer = "ok " + monitor_action(qmp, work, words[2:])
                except (TestbedError, ValueError, OSError) as error:
                    answer = f"error {error}".replace("\n", " ")
                print(f"  -> {answer}", file=log, flush=True)
                control.sendall(f"ACK {words[1]} {answer}\n".encode())
    return result


def option_path(path: Path) -> str:
    """A path inside a QEMU option list, where a comma is written twice."""
    return str(path).replace(",", ",,")


def boot(args, kernel: Path, work: Path, deadline: float, log) -> Run:
    initramfs = build_initramfs(kernel, args.probe, args.cli, work, args.variant, args.file,
                                not args.image)
    # The guest holds the initramfs twice while unpacking it, then its files.
    memory = max(args.memory, 512 + 2 * (initramfs.stat().st_size >> 20))
    # Drive 0 holds disc A unless images were given; drive 1 is empty unless a second was.
    images = args.image or [work / "disc-a.iso"]
    drives = [f"if=ide,index={i},media=cdrom,format=raw,file={option_path(image.resolve())}"
              for i, image in enumerate(images)]
    if len(drives) == 1:
        drives.append("if=ide,index=1,media=cdrom")
    # Socket paths are short-lived and must stay short (108 bytes), whatever the build folder.
    sockets = Path(tempfile.mkdtemp(prefix="plattmix-tb-"))
    control_server = listener(sockets / "control")
    qmp_server = listener(sockets / "qmp")
    command = [
        args.qemu, "-nographic", "-no-reboot", "-m", str(memory), *accelerators(),
        "-kernel", str(kernel / "vmlinuz"), "-initrd", str(initramfs),
        # no_timer_check: on a busy host the emulated timer lags, and the kernel's IO-APIC timer
        # check would stop the boot with a panic.
        "-append", "console=ttyS0 panic=-1 loglevel=4 scsi_mod.scan=sync no_timer_check",
        # Drive 0 is the first channel's master, drive 1 its slave.
        "-drive", drives[0], "-drive", drives[1],
        # ttyS0 is the guest console, ttyS1 the probe's control port.
        "-chardev", f"file,id=console,path={option_path(work / 'console.log')}",
        "-serial", "chardev:console",
        "-chardev", f"socket,id=control,path={sockets / 'control'}", "-serial", "chardev:control",
        "-chardev", f"socket,id=qmp,path={sockets / 'qmp'}", "-mon", "chardev=qmp,mode=control",
        "-nodefaults", "-monitor", "none",
    ]
    print("qemu: " + " ".join(command), file=log, flush=True)
    errors = (work / "qemu.err").open("w")
    try:
        qemu = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=errors, stderr=errors)
    except OSError as error:
        raise TestbedError(f"QEMU could not be started: {error}") from error
    try:
        control = accept(control_server, qemu, min(deadline, time.monotonic() + 30), "serial port")
        qmp = Qmp(accept(qmp_server, qemu, min(deadline, time.monotonic() + 30), "monitor"),
                  deadline)
        result = converse(qemu, control, qmp, work, deadline, log)
        try:
            qemu.wait(timeout=max(1.0, min(20.0, deadline - time.monotonic())))
        except subprocess.TimeoutExpired:
            pass
        return result
    except TestbedError as error:
        err = (work / "qemu.err").read_text(errors="replace").strip()
        raise TestbedError(f"{error}\n{err}" if err else str(error)) from error
    finally:
        if qemu.poll() is None:
            qemu.kill()
            qemu.wait()
        errors.close()
        control_server.close()
        qmp_server.close()
        shutil.rmtree(sockets, ignore_errors=True)


def console_tail(work: Path, lines: int = 40) -> str:
    path = work / "console.log"
    if not path.exists():
        return "(no console output)"
    return "\n".join(path.read_text(errors="replace").splitlines()[-lines:])


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--probe", type=Path, required=True, help="the static probe program")
    parser.add_argument("--cli", type=Path, help="the static plattmix-cli to run in the guest")
    parser.add_argument("--variant", choices=sorted(VARIANTS), default="drives")
    parser.add_argument("--cache", type=Path, default=prepare.default_cache())
    parser.add_argument("--work", type=Path, help="folder for images and logs (default: temporary)")
    parser.add_argument("--timeout", type=float, default=300, help="seconds for the whole run")
    parser.add_argument("--memory", type=int, default=512,
                        help="MiB for the guest; raised for a large initramfs")
    parser.add_argument("--qemu", default="qemu-system-x86_64")
    parser.add_argument("--image", type=Path, action="append", default=[],
                        help="an image for drive 0 instead of disc A; given twice, for drive 1")
    parser.add_argument("--file", type=Path, action="append", default=[],
                        help="a file for the guest's /testbed folder (repeatable)")
    parser.add_argument("--expect-checks", action="store_true",
                        help="fail when the probe reports no check at all")
    args = parser.parse_args()
    if len(args.image) > 2:
        parser.error("there are two drives: --image at most twice")
    deadline = time.monotonic() + args.timeout
    started = time.monotonic()

    if args.work:
        shutil.rmtree(args.work, ignore_errors=True)
        args.work.mkdir(parents=True)
        work = args.work
    else:
        work = Path(tempfile.mkdtemp(prefix="plattmix-testbed-"))
    log = sys.stdout
    try:
        if not shutil.which(args.qemu):
            raise TestbedError(f"{args.qemu} is not installed (package qemu-system-x86)")
        if not args.probe.is_file():
            raise TestbedError(f"probe {args.probe} not found")
        for given in args.image + args.file:
            if not given.is_file():
                raise TestbedError(f"{given} not found")
        try:
            kernel = prepare.prepare(args.cache)
        except (prepare.PrepareError, OSError, StopIteration) as error:
            raise TestbedError(f"the kernel could not be prepared: {error}") from error
        print(f"kernel: {kernel}", file=log, flush=True)
        if not args.image:
            for disc, (tag, sectors) in DISCS.items():
                write_disc(work / f"{disc}.iso", tag, sectors)
        result = boot(args, kernel, work, deadline, log)
    except (TestbedError, OSError) as error:
        print(f"TESTBED FAILED: {error}", file=log)
        print("--- guest console (last lines) ---\n" + console_tail(work), file=log)
        return 1

    failed = [c for c in result.checks if not c[1]]
    print(f"\n{len(result.checks)} checks, {len(failed)} failed, "
          f"{time.monotonic() - started:.0f} s; work folder {work}", file=log)
    for name, _, detail in failed:
        print(f"FAILED {name}: {detail}", file=log)
    if failed or ((args.variant == "drives" or args.expect_checks) and not result.checks):
        print(f"guest console: {work / 'console.log'}", file=log)
        return 1
    if not args.work:
        shutil.rmtree(work, ignore_errors=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
