// Which block node a drive handle stands for, read from a sysfs tree built here. A fall-back
// drive without one is asked for its tray through its transport in the drive test bed.
#include <gtest/gtest.h>

#include <filesystem>

#include "BlockNode.h"
#include "common/ScratchFolder.h"
#include "scsi/StubTransport.h"

using namespace plattmix;
using scsi::BlockNodeOf;
namespace fs = std::filesystem;

TEST(BlockNodeOf, PassThroughHandlesAreNodesFallBackDrivesFindTheirsInSysfs) {
    const fs::path sys = test::ScratchFolder();
    fs::create_directories(sys / "scsi_generic/sg1/device/block/sr0");
    fs::create_directories(sys / "scsi_generic/sg2/device");  // no sr driver

    test::StubTransport transport;  // DriveChar answers the handle
    transport.name = "SPTI";
    EXPECT_EQ(BlockNodeOf(transport, "/dev/sr3", sys.string()), "/dev/sr3");
    transport.name = "ASPI";
    EXPECT_EQ(BlockNodeOf(transport, "sg1", sys.string()), "/dev/sr0");
    EXPECT_EQ(BlockNodeOf(transport, "sg2", sys.string()), "");
    EXPECT_EQ(BlockNodeOf(transport, "", sys.string()), "");
    transport.name = "IMAGE";
    EXPECT_EQ(BlockNodeOf(transport, "sg1", sys.string()), "");
}
