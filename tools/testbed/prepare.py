#!/usr/bin/env python3
"""Fetches what the drive test bed boots: a Debian kernel and the modules of the optical-drive
path, unpacked (not installed) into a cache folder, plus the static BusyBox of the host.

Idempotent: a kernel already unpacked is reused; when apt cannot name or fetch a kernel, the
last one prepared is used. Prints the folder of the prepared kernel.
"""

import argparse
import lzma
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

# The modules the test bed may load; their dependencies are added from the modules themselves.
WANTED = ["sr_mod", "sg", "cdrom", "isofs", "loop", "ata_piix", "ata_generic", "libata",
          "scsi_mod", "scsi_common"]
BUSYBOX = Path("/bin/busybox")


class PrepareError(Exception):
    pass


def default_cache() -> Path:
    if os.environ.get("PLATTMIX_TESTBED_CACHE"):
        return Path(os.environ["PLATTMIX_TESTBED_CACHE"])
    base = os.environ.get("XDG_CACHE_HOME") or str(Path.home() / ".cache")
    return Path(base) / "plattmix-testbed"


def run(args, cwd=None) -> str:
    done = subprocess.run(args, cwd=cwd, capture_output=True, text=True)
    if done.returncode != 0:
        raise PrepareError(f"{' '.join(args)} failed:\n{done.stderr.strip()}")
    return done.stdout


def kernel_package() -> str:
    """The kernel image package the metapackage linux-image-amd64 currently depends on."""
    out = run(["apt-cache", "depends", "linux-image-amd64"])
    match = re.search(r"Depends: (linux-image-\d\S*-amd64)\b", out)
    if not match:
        raise PrepareError("apt-cache names no kernel image for linux-image-amd64")
    return match.group(1)


def module_name(path: Path) -> str:
    name = path.name
    for suffix in (".ko.xz", ".ko"):
        if name.endswith(suffix):
            name = name[: -len(suffix)]
    return name.replace("-", "_")


def module_bytes(path: Path) -> bytes:
    data = path.read_bytes()
    # BusyBox insmod takes plain objects only.
    return lzma.decompress(data) if path.name.endswith(".xz") else data


def depends_of(data: bytes) -> list:
    match = re.search(rb"depends=([\w,-]*)\0", data)
    if not match or not match.group(1):
        return []
    return [d.decode().replace("-", "_") for d in match.group(1).split(b",")]


def unpack_kernel(package: str, target: Path) -> None:
    """Downloads the package, unpacks it and keeps the kernel and the wanted modules."""
    with tempfile.TemporaryDirectory(dir=target.parent) as tmp:
        tmp_path = Path(tmp)
        errors = []
        for candidate in (package, package + "-unsigned"):
            try:
                run(["apt-get", "download", candidate], cwd=tmp_path)
                break
            except PrepareError as error:
                errors.append(str(error))
        else:
            raise PrepareError("cannot download the kernel image:\n" + "\n".join(errors))
        deb = next(tmp_path.glob("*.deb"))
        root = tmp_path / "root"
        run(["dpkg-deb", "-x", str(deb), str(root)])

        vmlinuz = next((root / "boot").glob("vmlinuz-*"))
        moddir = next((root / "lib" / "modules").iterdir())
        builtin = {module_name(Path(line)) for line in
                   (moddir / "modules.builtin").read_text().split()}
        files = {module_name(p): p for p in moddir.rglob("*.ko*")}

        staging = tmp_path / "kernel"
        (staging / "modules").mkdir(parents=True)
        shutil.copy(vmlinuz, staging / "vmlinuz")
        deps_lines = []
        todo, seen = list(WANTED), set()
        while todo:
            name = todo.pop()
            if name in seen or name in builtin:
                continue
            seen.add(name)
            if name not in files:
                raise PrepareError(f"module {name} is neither built in nor in {package}")
            data = module_bytes(files[name])
            (staging / "modules" / f"{name}.ko").write_bytes(data)
            deps = [d for d in depends_of(data) if d not in builtin]
            deps_lines.append(f"{name}: {' '.join(deps)}".rstrip())
            todo.extend(deps)
        (staging / "modules" / "deps.txt").write_text("\n".join(sorted(deps_lines)) + "\n")
        (staging / "release").write_text(moddir.name + "\n")
        staging.rename(target)


def prepare(cache: Path) -> Path:
    cache.mkdir(parents=True, exist_ok=True)
    current = cache / "current"
    try:
        package = kernel_package()
    except PrepareError:
        if current.exists():
            return current.resolve()
        raise
    target = cache / package
    if not (target / "vmlinuz").exists():
        unpack_kernel(package, target)
    if not BUSYBOX.exists() or "insmod" not in run([str(BUSYBOX), "--list"]).split():
        raise PrepareError(f"{BUSYBOX} with insmod is missing: install busybox-static")
    shutil.copy(BUSYBOX, target / "busybox")
    # Older kernels are dropped once the new one is ready.
    for old in cache.glob("linux-image-*"):
        if old != target:
            shutil.rmtree(old, ignore_errors=True)
    tmp_link = cache / "current.tmp"
    tmp_link.unlink(missing_ok=True)
    tmp_link.symlink_to(target.name)
    tmp_link.replace(current)
    return target


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cache", type=Path, default=default_cache())
    args = parser.parse_args()
    try:
        print(prepare(args.cache))
    except (PrepareError, OSError, StopIteration) as error:
        print(f"testbed prepare: {error or 'unexpected package layout'}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
