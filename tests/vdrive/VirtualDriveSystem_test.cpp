// What the loop-device service reads from the system: the mount table and the loop devices'
// backing files in sysfs, on recorded and made-up texts.
#include <gtest/gtest.h>
#include <sys/sysmacros.h>

#include <filesystem>
#include <fstream>

#include "LoopDevices.h"
#include "MountTable.h"
#include "common/ScratchFolder.h"

using namespace plattmix::vdrive;
namespace fs = std::filesystem;

TEST(MountTable, ReadsMountInfoAsTheKernelWritesIt) {
    const std::string text =
        "22 1 0:21 / /proc rw,nosuid,nodev,noexec,relatime shared:12 - proc proc rw\n"
        "93 29 7:3 / /run/plattmix/L ro,nosuid,nodev,relatime shared:48 master:1 - iso9660 "
        "/dev/loop3 ro,nojoliet,check=s,map=n,blocksize=2048,iocharset=utf8\n"
        "94 29 7:3 / /media/anna/Mein\\040Abbild ro,relatime - iso9660 /dev/loop3 ro\n"
        "95 29 7:3 /ordner /mnt/nur-ein-ordner ro,relatime - iso9660 /dev/loop3 ro\n"
        "kaputt\n"
        "96 29 7:30 / /mnt/x ro - iso9660\n"  // no source: cut short
        "97 29 7:30 / /mnt/back\\134slash/ ro - iso9660 /dev/loop30 ro";
    const auto table = ParseMountInfo(text);
    ASSERT_EQ(table.size(), 5u);
    EXPECT_EQ(table[1].mountPoint, "/run/plattmix/L");
    EXPECT_EQ(table[1].type, "iso9660");
    EXPECT_EQ(table[1].source, "/dev/loop3");
    EXPECT_EQ(table[2].mountPoint, "/media/anna/Mein Abbild");
    EXPECT_EQ(table[4].mountPoint, "/mnt/back\\slash/");

    // Only whole file systems of that device count, in mount order; a bind of a folder does not.
    EXPECT_EQ(MountPointsOfDevice(table, makedev(7, 3)),
              (std::vector<std::string>{"/run/plattmix/L", "/media/anna/Mein Abbild"}));
    EXPECT_TRUE(MountPointsOfDevice(table, makedev(7, 4)).empty());
    EXPECT_TRUE(IsMountPoint(table, "/run/plattmix/L/"));
    EXPECT_TRUE(IsMountPoint(table, "/mnt/back\\slash"));
    EXPECT_FALSE(IsMountPoint(table, "/run/plattmix"));
    EXPECT_TRUE(ReadMountTable("/nonexistent/mountinfo").empty());
    EXPECT_FALSE(ReadMountTable().empty());  // this process's own table
}

TEST(LoopDevices, FoundByTheirBackingFileInNumberOrder) {
    const fs::path sys = plattmix::test::ScratchFolder();
    const auto device = [&](const std::string& name, const std::string* backing) {
        fs::create_directories(sys / name / "loop");
        if (backing != nullptr)
            std::ofstream(sys / name / "loop" / "backing_file") << *backing << "\n";
    };
    const std::string image = "/home/anna/Mein Abbild.iso";
    const std::string other = "/home/anna/Mein Abbild.iso.alt";
    device("loop0", &other);
    device("loop10", &image);
    device("loop2", &image);
    device("loop3", nullptr);  // not bound: no backing file
    device("loopy", &image);   // no loop device
    device("sda", &image);
    EXPECT_EQ(LoopDevicesBackedBy(image, sys.string()),
              (std::vector<std::string>{"/dev/loop2", "/dev/loop10"}));
    EXPECT_EQ(LoopDevicesBackedBy(other, sys.string()), std::vector<std::string>{"/dev/loop0"});
    EXPECT_TRUE(LoopDevicesBackedBy("/home/anna", sys.string()).empty());
    EXPECT_TRUE(LoopDevicesBackedBy(image, (sys / "fehlt").string()).empty());
}
