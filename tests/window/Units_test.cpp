// The window's small rules: the mount table and the dialog filters.
#include <gtest/gtest.h>

#include "Dialogs.h"
#include "MountPoint.h"

using namespace plattmix::window;

TEST(MountPoint, DiscFileSystemIsFoundByItsNodeOrDeviceNumber) {
    const char* const mountInfo =
        "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
        "40 22 11:0 / /media/ich/MEINE\\040CD ro,nosuid shared:20 - iso9660 /dev/sr0 ro\n"
        "41 22 11:1 / /mnt/zwei ro - udf /dev/sr1 ro\n";
    EXPECT_EQ(MountPointFromMountInfo(mountInfo, "/dev/sr0", ""), "/media/ich/MEINE CD/");
    EXPECT_EQ(MountPointFromMountInfo(mountInfo, "/dev/sr1", ""), "/mnt/zwei/");
    EXPECT_EQ(MountPointFromMountInfo(mountInfo, "/dev/cdrom", "11:1"), "/mnt/zwei/");
    // Unmounted, unreadable, or an image: no root.
    EXPECT_EQ(MountPointFromMountInfo(mountInfo, "/dev/sr2", "11:2"), "");
    EXPECT_EQ(MountPointFromMountInfo("kaputt\n\n", "/dev/sr0", ""), "");
    EXPECT_EQ(DriveRootOf("/tmp/demo.cue"), "");
}

TEST(DialogFilters, PairsBecomeTheDialogsFilters) {
    EXPECT_EQ(QtNameFilters(QStringLiteral("ISO Dateien|*.iso")),
              QStringList{QStringLiteral("ISO Dateien (*.iso)")});
    EXPECT_EQ(
        QtNameFilters(QStringLiteral("Bilder|*.iso;*.img|Text|*.txt")),
        (QStringList{QStringLiteral("Bilder (*.iso *.img)"), QStringLiteral("Text (*.txt)")}));
}
