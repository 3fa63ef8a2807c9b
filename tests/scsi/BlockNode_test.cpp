// Which block node a drive handle stands for, read from a sysfs tree built here, and the tray
// state of a fall-back drive without one, asked through its transport.
#include <gtest/gtest.h>

#include <filesystem>

#include "BlockNode.h"
#include "TrayState.h"
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

TEST(GetTrayState, AFallBackDriveWithoutBlockNodeIsAskedThroughItsTransport) {
    test::StubTransport transport;  // every command GOOD: ready, so closed
    transport.name = "ASPI";
    EXPECT_EQ(scsi::GetTrayState(transport, "plattmix-no-such-sg"), scsi::kTrayClosed);
    EXPECT_EQ(transport.cdb, std::vector<uint8_t>(6, 0));  // TEST UNIT READY
    EXPECT_EQ(transport.timeOut, scsi::kTrayTimeOut);
}
