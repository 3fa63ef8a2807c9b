#!/bin/busybox sh
# The guest's first process: mounts the kernel's file systems, loads the drive modules the
# harness chose (in dependency order), waits for the drive nodes, runs the probe, powers off.
/bin/busybox --install -s /bin
export PATH=/bin
mount -t devtmpfs devtmpfs /dev
mount -t proc proc /proc
mount -t sysfs sysfs /sys

while read -r module; do
    [ -n "$module" ] || continue
    insmod "/lib/modules/$module.ko" || echo "TESTBED insmod $module failed"
done < /testbed/modules

# Drive discovery runs while the modules load; wait (bounded) for the nodes the variant expects.
for node in $(cat /testbed/nodes); do
    tries=0
    while [ ! -e "/dev/$node" ] && [ $tries -lt 100 ]; do
        sleep 0.1
        tries=$((tries + 1))
    done
    [ -e "/dev/$node" ] || echo "TESTBED node /dev/$node did not appear"
done

echo "TESTBED probe start"
/testbed/probe --control /dev/ttyS1 --data /testbed --variant "$(cat /testbed/variant)"
echo "TESTBED probe exit $?"
sync
poweroff -f
