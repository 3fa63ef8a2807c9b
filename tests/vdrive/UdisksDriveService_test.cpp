// The udisks2 service over a private bus, with a scripted udisks (ScriptedUdisks.h): what udisks
// refuses, and what the program refuses at its link's place. The real udisksd is driven, and
// chosen by the program, in the drive test bed.
#include "UdisksDriveService.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "VirtualDrive.h"
#include "common/ScratchFolder.h"
#include "vdrive/PrivateBus.h"
#include "vdrive/ScriptedUdisks.h"
#include "vdrive/VirtualDriveTestFiles.h"

using namespace plattmix::vdrive;
using plattmix::test::ScriptedUdisks;
namespace fs = std::filesystem;

namespace {

class UdisksTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(bus_.ok()) << bus_.error();
        ASSERT_TRUE(udisks_.ok()) << udisks_.error();
        std::string why;
        auto connection = UdisksBus::Connect(bus_.address(), why);
        ASSERT_TRUE(connection) << why;
        service_ = std::make_unique<UdisksDriveService>(std::move(connection), link_.string());
        fs::create_directories(link_.parent_path());
    }

    const fs::path folder_ = plattmix::test::ScratchFolder();
    plattmix::test::PrivateBus bus_{folder_};
    ScriptedUdisks udisks_{bus_.address()};
    const fs::path link_ = folder_ / "run" / "plattmix" / "L";
    const std::string image_ = plattmix::test::WriteImageStub(folder_ / "Mein Abbild.iso");
    std::unique_ptr<UdisksDriveService> service_;
};

}  // namespace

TEST_F(UdisksTest, WhatUdisksRefuses) {
    udisks_.RefuseLoopSetup("org.freedesktop.UDisks2.Error.NotAuthorized");
    const DriveResult refused = MountIso(service_.get(), image_);
    EXPECT_EQ(refused.outcome, DriveOutcome::AttachFailed);
    ASSERT_EQ(refused.messages.size(), 1u);
    EXPECT_EQ(refused.messages[0].text,
              "Die ISO '" + image_ + "' konnte nicht als virtuelles Laufwerk geladen werden!");
    EXPECT_EQ(refused.messages[0].icon, MessageIcon::Exclamation);
    EXPECT_EQ(refused.detail, "LoopSetup: org.freedesktop.UDisks2.Error.NotAuthorized: scripted");
    EXPECT_TRUE(udisks_.Backing().empty());

    // Attached, not mounted: told so, no link; detaching works as ever.
    udisks_.RefuseLoopSetup("");
    const DriveResult unmountable = MountIso(service_.get(), image_);
    EXPECT_EQ(unmountable.outcome, DriveOutcome::Attached);
    EXPECT_EQ(unmountable.messages.front().text, "NIcht OK");
    EXPECT_EQ(unmountable.detail, "Mount: org.freedesktop.UDisks2.Error.Failed: scripted");
    EXPECT_FALSE(fs::exists(fs::symlink_status(link_)));
    EXPECT_EQ(UnmountIso(service_.get(), image_).outcome, DriveOutcome::Detached);
    EXPECT_TRUE(udisks_.Backing().empty());
}

TEST_F(UdisksTest, TheLinksPlace) {
    // A link to another volume is the user's: attached without a mount point, the link kept.
    const fs::path other = folder_ / "ANDERE";
    fs::create_directories(other);
    fs::create_symlink(other, link_);
    const DriveResult taken = MountIso(service_.get(), image_);
    EXPECT_EQ(taken.outcome, DriveOutcome::Attached);
    EXPECT_EQ(taken.detail, link_.string() + ": taken (leads to another folder)");
    EXPECT_EQ(UnmountIso(service_.get(), image_).outcome, DriveOutcome::Detached);
    EXPECT_EQ(fs::read_symlink(link_), other);

    // A link left from a volume that is gone is the program's own: not in the way of mounting
    // (which udisks refuses here).
    fs::remove(link_);
    fs::create_symlink(folder_ / "WEG", link_);
    EXPECT_EQ(MountIso(service_.get(), image_).detail,
              "Mount: org.freedesktop.UDisks2.Error.Failed: scripted");
}
