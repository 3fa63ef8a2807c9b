// The pass-through transport against a folder laid out like /sys/class/block and /dev: which
// entries are drives, in which order. The handles' forms, the status rules and the addresses
// are proved on the real kernel in the drive test bed.
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
    // A handle from another folder is no drive of this one.
    EXPECT_EQ(spti.LUN("/elsewhere/sr2"), 0);
    EXPECT_EQ(spti.LUN((root / "dev" / "SR2").string()), 1);
}

// No drive at all: the test bed's fall-back run. A drive whose node cannot be opened:
TEST_F(SptiTest, NoDriveToOpenMeansNotInstalled) {
    AddBlock("sr0", "0:0:0:0");
    fs::remove(root / "dev" / "sr0");
    clsSPTI spti = Make();
    EXPECT_FALSE(spti.Installed());
    std::string handle = "sr0";
    EXPECT_EQ(plattmix::modMMC::TestUnitReady(spti, handle), kStatusNoDevice);
}
