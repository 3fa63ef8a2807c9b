// The window's small rules: the tab width per screen, the mount table, the dialog filters.
#include <gtest/gtest.h>

#include "Dialogs.h"
#include "MountPoint.h"
#include "TabSize.h"

using namespace plattmix::window;

TEST(TabSize, FollowsTheScreensTwipsPerPixel) {
    const std::pair<double, int> sizes[] = {
        {15, 0},  // the usual 96-DPI screen
        {14.4, 30}, {16, 30}, {6, 50},    {3, 50},  {6.5, 45},
        {7, 40},    {8, 38},  {9.99, 35}, {10, 32}, {12, 30},
    };
    for (const auto& [twips, size] : sizes)
        EXPECT_EQ(TabSizeForTwipsPerPixel(twips), size) << twips;
    EXPECT_DOUBLE_EQ(TwipsPerPixel(96), 15);
    EXPECT_DOUBLE_EQ(TwipsPerPixel(144), 10);
    EXPECT_DOUBLE_EQ(TwipsPerPixel(0), 15);
}

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
    EXPECT_EQ(QtNameFilters(QStringLiteral("alle Dateien (*.*)|*.*")),
              QStringList{QStringLiteral("alle Dateien (*.*)")});
    EXPECT_EQ(
        QtNameFilters(QStringLiteral("Bilder|*.iso;*.img|Text|*.txt")),
        (QStringList{QStringLiteral("Bilder (*.iso *.img)"), QStringLiteral("Text (*.txt)")}));
}
