#!/bin/sh
# Runs in the test bed's guest in place of the drive probe (same arguments): makes the guest a
# small system with udevd and a system message bus that starts udisksd on demand, all taken from
# the host and copied into /testbed with their libraries by vdrive_mount.py, then runs the
# virtual-drive checks against that real udisksd.
T=/testbed
# The harness copies files without their modes.
chmod 755 "$T/udisksd" "$T/systemd-udevd" "$T/dbus-daemon" "$T/testbed_udisks" \
    "$T/ld-linux-x86-64.so.2"
mkdir -p /lib64 /etc/udisks2 /etc/libblockdev/conf.d /lib/udev/rules.d /run/dbus /run/user/0 \
    /media /tmp /root
ln -sf "$T/ld-linux-x86-64.so.2" /lib64/ld-linux-x86-64.so.2
echo 'root:x:0:0:root:/root:/bin/sh' > /etc/passwd
echo 'root:x:0:' > /etc/group
cp "$T"/*.rules /lib/udev/rules.d/
[ -e "$T/00-default.cfg" ] && cp "$T/00-default.cfg" /etc/libblockdev/conf.d/
[ -e "$T/udisks2.conf" ] && cp "$T/udisks2.conf" /etc/udisks2/
export LD_LIBRARY_PATH="$T" XDG_RUNTIME_DIR=/run/user/0

# udevd probes the block devices (blkid) for udisks; udevadm is the same program.
ln -sf "$T/systemd-udevd" /bin/udevadm
"$T/systemd-udevd" --daemon --resolve-names=never || echo "TESTBED udevd failed"
udevadm trigger --action=add --subsystem-match=block
udevadm settle --timeout=60 || echo "TESTBED udevadm settle failed"

# The bus starts udisksd when the program first calls it, as a desktop system does.
"$T/dbus-daemon" --config-file="$T/udisks-bus.conf" --fork || echo "TESTBED dbus-daemon failed"
"$T/testbed_udisks" "$@"
status=$?
[ -e /run/udisks2 ] || echo "TESTBED udisksd left no state folder"
exit $status
