#!/bin/sh
# Runs in the test bed's guest in place of the drive probe (same arguments): the fall-back
# transport's checks with the program, plattmix-cli and the layer library linked dynamically,
# their shared libraries copied flat into /testbed by aspi_fallback.py.
T=/testbed
# The harness copies files without their modes.
chmod 755 "$T/testbed_aspi" "$T/testbed_cli_shared" "$T/ld-linux-x86-64.so.2"
mkdir -p /lib64
ln -sf "$T/ld-linux-x86-64.so.2" /lib64/ld-linux-x86-64.so.2
export LD_LIBRARY_PATH="$T"
exec "$T/testbed_aspi" "$@"
