// The pass-through transport against a folder laid out like /sys/class/block and /dev: which
// entries are drives and the handles they answer to. The nodes here are plain files, so SG_IO
// fails on them; the real kernel path is proved by the drive test bed.
#include "clsSPTI.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ScsiStatus.h"
#include "common/ScratchFolder.h"
#include "modMMC.h"

namespace fs = std::filesystem;
using namespace plattmix::scsi;

namespace {

class SptiTest : public ::testing::Test {
  protected:
    void SetUp() override {
        root = plattmix::test::ScratchFolder("spti");
        fs::create_directories(root / "dev");
        fs::create_directories(root / "devices");
    }
    // A block entry; optical ones get a node and a SCSI address.
    void AddBlock(const std::string& name, const std::string& hctl = "") {
        fs::create_directories(root / "block" / name);
        if (hctl.empty())
            return;
        fs::create_directories(root / "devices" / hctl);
        fs::create_symlink(root / "devices" / hctl, root / "block" / name / "device");
        std::ofstream(root / "dev" / name) << "node";
    }
    clsSPTI Make() { return clsSPTI((root / "block").string(), (root / "dev").string()); }
    fs::path root;
};

}  // namespace

TEST_F(SptiTest, DrivesInNumericOrderOthersIgnored) {
    AddBlock("sr10", "1:0:0:0");
    AddBlock("sr2", "0:0:5:1");
    for (const char* other : {"sda", "sr0x", "loop0"})
        AddBlock(other);
    clsSPTI spti = Make();
    ASSERT_EQ(spti.DriveCount(), 2);
    int16_t i = 1;
    EXPECT_EQ(spti.DriveHandle(i), (root / "dev" / "sr2").string());
    i = 2;
    EXPECT_EQ(spti.DriveHandle(i), (root / "dev" / "sr10").string());
    EXPECT_EQ(spti.DriveChar((root / "dev" / "sr10").string()), "sr10");
    // The address comes from the SCSI device; a handle in any case, not from another folder.
    EXPECT_EQ(spti.HostAdapter("sr10"), 1);
    EXPECT_EQ(spti.TargetId("SR2"), 5);
    EXPECT_EQ(spti.LUN((root / "dev" / "SR2").string()), 1);
    EXPECT_EQ(spti.LUN("/elsewhere/sr2"), 0);
    EXPECT_EQ(spti.HostAdapter("sr7"), 0);  // not a drive
}

TEST_F(SptiTest, HandlesAndStatusRules) {
    AddBlock("sr0", "0:0:0:0");
    clsSPTI spti = Make();
    const std::vector<uint8_t> tur(6, 0);
    uint8_t len = 6;
    int32_t direction = 0;

    // Not a drive: 24, and the time-out is left alone. A drive in any case: the node opens,
    // SG_IO on a plain file fails with 255, and the default time-out is written back.
    for (const auto& [name, status, written] :
         {std::tuple{std::string("sda"), kStatusNoDevice, int16_t{0}},
          std::tuple{std::string("/dev/null"), kStatusNoDevice, int16_t{0}},
          std::tuple{std::string("SR0"), kStatusNotDelivered, kSptiDefaultTimeOut},
          std::tuple{(root / "dev" / "sr0").string(), kStatusNotDelivered, kSptiDefaultTimeOut}}) {
        std::string handle = name;
        int16_t timeOut = 0;
        EXPECT_EQ(spti.ExecCMD(handle, tur, len, direction, nullptr, 0, timeOut), status) << name;
        EXPECT_EQ(timeOut, written) << name;
    }
    int16_t timeOut = 7;
    std::string handle = "sr0";
    spti.ExecCMD(handle, tur, len, direction, nullptr, 0, timeOut);
    EXPECT_EQ(timeOut, 7);
}

TEST_F(SptiTest, NoDriveToOpenMeansNotInstalled) {
    AddBlock("sda");
    EXPECT_FALSE(Make().Installed());
    AddBlock("sr0", "0:0:0:0");
    fs::remove(root / "dev" / "sr0");
    clsSPTI spti = Make();
    EXPECT_FALSE(spti.Installed());
    std::string handle = "sr0";
    EXPECT_EQ(plattmix::modMMC::TestUnitReady(spti, handle), kStatusNoDevice);
}
