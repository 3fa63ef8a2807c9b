#!/bin/sh
# Runs in the test bed's guest in place of the drive probe (same arguments), drives variant:
# the drive nodes belong to root:cdrom with mode 0660 as on Debian, "hans" is a user outside the
# group and "dora" one in it. The program, plattmix-cli, the layer library, Qt's offscreen
# platform and every library they load lie flat in /testbed (access_drives.py put them there).
T=/testbed
# The harness copies files without their modes.
chmod 755 "$T/testbed_access" "$T/plattmix-cli" "$T/ld-linux-x86-64.so.2"
mkdir -p /lib64 /etc /tmp /home/hans /home/dora "$T/plugins/platforms"
ln -sf "$T/ld-linux-x86-64.so.2" /lib64/ld-linux-x86-64.so.2
ln -sf "$T/libqoffscreen.so" "$T/plugins/platforms/libqoffscreen.so"
chmod 1777 /tmp
cat > /etc/passwd <<'END'
root:x:0:0:root:/root:/bin/sh
hans:x:1000:1000::/home/hans:/bin/sh
dora:x:1001:1001::/home/dora:/bin/sh
END
cat > /etc/group <<'END'
root:x:0:
cdrom:x:24:dora
hans:x:1000:
dora:x:1001:
END
chown hans:hans /home/hans
chown dora:dora /home/dora
for node in sr0 sr1 sg0 sg1; do
    chown root:cdrom "/dev/$node" && chmod 0660 "/dev/$node"
done
export LD_LIBRARY_PATH="$T" QT_QPA_PLATFORM=offscreen QT_PLUGIN_PATH="$T/plugins"
exec "$T/testbed_access" "$@"
