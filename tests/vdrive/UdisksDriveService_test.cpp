// The udisks2 service over a private bus, with a scripted udisks answering (ScriptedUdisks.h):
// what MountIso and UnmountIso ask of udisks, the link that is the program's mount point, and
// what udisks refuses. The choice of service reads the system bus's address from the usual
// variable, so a test points it at the private bus.
#include "UdisksDriveService.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "LoopDriveService.h"
#include "ServiceChoice.h"
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
    }

    std::string Media(const std::string& name) const { return (folder_ / "media" / name).string(); }

    const fs::path folder_ = plattmix::test::ScratchFolder();
    plattmix::test::PrivateBus bus_{folder_};
    ScriptedUdisks udisks_{bus_.address(), folder_ / "media"};
    const fs::path link_ = folder_ / "run" / "plattmix" / "L";
    const std::string image_ = plattmix::test::WriteImageStub(folder_ / "Mein Abbild.iso");
    std::unique_ptr<UdisksDriveService> service_;
};

}  // namespace

TEST_F(UdisksTest, AttachMountAndDetach) {
    const DriveResult mounted = MountIso(service_.get(), image_);
    ASSERT_EQ(mounted.outcome, DriveOutcome::Attached) << mounted.detail;
    EXPECT_EQ(mounted.device, "/dev/loop0");
    const auto loops = udisks_.Loops();
    ASSERT_EQ(loops.size(), 1u);
    const ScriptedUdisks::Loop& loop = loops.at(0);
    EXPECT_EQ(loop.backingFile, fs::canonical(image_).string());  // the open file went over
    EXPECT_TRUE(loop.readOnly);
    EXPECT_TRUE(loop.noPartScan);
    EXPECT_EQ(loop.mountOptions, "ro");
    // The program's mount point leads to the folder udisks chose, and is what the user is told.
    ASSERT_TRUE(fs::is_symlink(link_));
    EXPECT_TRUE(fs::equivalent(link_, Media("loop0")));
    EXPECT_EQ(mounted.drive, link_.string());
    ASSERT_EQ(mounted.messages.size(), 2u);
    EXPECT_EQ(mounted.messages[0].text, "OK");
    EXPECT_EQ(mounted.messages[1].text, "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '" +
                                            link_.string() + "' geladen.");

    const DriveResult again = MountIso(service_.get(), image_);
    EXPECT_EQ(again.outcome, DriveOutcome::AlreadyAttached);
    EXPECT_EQ(again.messages.back().text, "Die ISO '" + image_ +
                                              "' ist breits als virtuelles Laufwerk '" +
                                              link_.string() + "' geladen!");

    const DriveResult detached = UnmountIso(service_.get(), image_);
    EXPECT_EQ(detached.outcome, DriveOutcome::Detached) << detached.detail;
    EXPECT_EQ(detached.messages.back().text, "Die ISO '" + image_ +
                                                 "' wurde als virtuelles Laufwerk '" +
                                                 link_.string() + "' entfernt.");
    EXPECT_EQ(udisks_.Calls(), (std::vector<std::string>{"LoopSetup", "Mount loop0",
                                                         "Unmount loop0", "Delete loop0"}));
    EXPECT_TRUE(udisks_.Loops().empty());
    EXPECT_FALSE(fs::exists(fs::symlink_status(link_)));
    EXPECT_EQ(UnmountIso(service_.get(), image_).outcome, DriveOutcome::NotAttached);
}

TEST_F(UdisksTest, TakenAndStaleLinkPlaces) {
    fs::create_directories(link_.parent_path());
    const auto mountTaken = [&](const std::string& what) {
        const DriveResult result = MountIso(service_.get(), image_);
        EXPECT_EQ(result.outcome, DriveOutcome::Attached) << what;
        ASSERT_EQ(result.messages.size(), 2u) << what;
        EXPECT_EQ(result.messages[0].text, "NIcht OK");
        EXPECT_EQ(result.messages[0].icon, MessageIcon::Exclamation);
        EXPECT_EQ(result.messages[1].text,
                  "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '' geladen.");
        // Attached, not mounted, and whatever was at the link's place is left alone.
        ASSERT_EQ(udisks_.Loops().size(), 1u) << what;
        EXPECT_TRUE(udisks_.Loops().begin()->second.mountPoints.empty()) << what;
        EXPECT_EQ(UnmountIso(service_.get(), image_).outcome, DriveOutcome::Detached) << what;
    };

    std::ofstream(link_) << "eine Datei des Benutzers";
    mountTaken("a file");
    EXPECT_TRUE(fs::is_regular_file(link_));
    fs::remove(link_);

    const std::string other = udisks_.MediaFolder("ANDERE");
    fs::create_symlink(other, link_);
    mountTaken("a link to another volume");
    EXPECT_EQ(fs::read_symlink(link_), other);
    fs::remove(link_);

    // A link left from a volume that is gone is the program's own: it is replaced.
    fs::create_symlink(Media("WEG"), link_);
    const DriveResult result = MountIso(service_.get(), image_);
    EXPECT_TRUE(result.mountPointOk) << result.detail;
    EXPECT_EQ(result.drive, link_.string());
    const auto loops = udisks_.Loops();
    ASSERT_EQ(loops.size(), 1u);
    ASSERT_EQ(loops.begin()->second.mountPoints.size(), 1u);
    EXPECT_TRUE(fs::equivalent(link_, loops.begin()->second.mountPoints[0]));
}

TEST_F(UdisksTest, WhatUdisksRefuses) {
    udisks_.RefuseLoopSetup("org.freedesktop.UDisks2.Error.NotAuthorized");
    const DriveResult refused = MountIso(service_.get(), image_);
    EXPECT_EQ(refused.outcome, DriveOutcome::AttachFailed);
    EXPECT_NE(refused.detail.find("NotAuthorized"), std::string::npos) << refused.detail;
    EXPECT_TRUE(udisks_.Loops().empty());

    udisks_.SetScript({});
    udisks_.RefuseMount("org.freedesktop.UDisks2.Error.Failed");
    const DriveResult unmountable = MountIso(service_.get(), image_);
    EXPECT_EQ(unmountable.outcome, DriveOutcome::Attached);
    EXPECT_EQ(unmountable.messages.front().text, "NIcht OK");
    EXPECT_NE(unmountable.detail.find("Mount:"), std::string::npos) << unmountable.detail;
    EXPECT_FALSE(fs::exists(fs::symlink_status(link_)));
    EXPECT_EQ(UnmountIso(service_.get(), image_).outcome, DriveOutcome::Detached);

    // Busy: the drive, its mount and the link all stay.
    udisks_.SetScript({});
    ASSERT_TRUE(MountIso(service_.get(), image_).mountPointOk);
    udisks_.RefuseUnmount("org.freedesktop.UDisks2.Error.DeviceBusy");
    const DriveResult busy = UnmountIso(service_.get(), image_);
    EXPECT_EQ(busy.outcome, DriveOutcome::DetachFailed);
    EXPECT_EQ(busy.messages.back().text, "Die ISO '" + image_ +
                                             "' konnte nicht vom virtuellem Laufwerk '" +
                                             link_.string() + "' entfernt werden!");
    EXPECT_TRUE(fs::is_symlink(link_));
    EXPECT_EQ(udisks_.Loops().size(), 1u);
}

TEST_F(UdisksTest, DrivesSetUpBySomeoneElse) {
    // Attached and mounted by the desktop: found by its backing file, the mount named.
    const std::string media = udisks_.MediaFolder("PLATTMIX");
    udisks_.AddLoop(fs::canonical(image_).string(), {media});
    const DriveResult again = MountIso(service_.get(), image_);
    EXPECT_EQ(again.outcome, DriveOutcome::AlreadyAttached);
    EXPECT_EQ(again.drive, media);
    EXPECT_EQ(UnmountIso(service_.get(), image_).outcome, DriveOutcome::Detached);
    EXPECT_TRUE(udisks_.Loops().empty());

    // A volume udisks shows without a file system gets no mount point and no box about it.
    udisks_.NewLoopsWithoutFilesystem();
    const DriveResult bare = MountIso(service_.get(), image_);
    EXPECT_EQ(bare.outcome, DriveOutcome::Attached);
    ASSERT_EQ(bare.messages.size(), 1u);
    EXPECT_EQ(bare.drive, "");
}

TEST_F(UdisksTest, ServiceChosenByWhatAnswers) {
    const char* saved = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    const std::string previous = saved != nullptr ? saved : "";
    setenv("DBUS_SYSTEM_BUS_ADDRESS", bus_.address().c_str(), 1);
    const auto withUdisks = ChooseVirtualDriveService();
    ASSERT_NE(withUdisks, nullptr);
    EXPECT_EQ(withUdisks->Name(), "udisks2");

    // A bus where nobody has the name: loop devices for root, else nothing.
    const fs::path empty = folder_ / "leer";
    fs::create_directories(empty);
    plattmix::test::PrivateBus quiet(empty);
    ASSERT_TRUE(quiet.ok()) << quiet.error();
    setenv("DBUS_SYSTEM_BUS_ADDRESS", quiet.address().c_str(), 1);
    const auto without = ChooseVirtualDriveService();
    if (LoopDriveService::Usable()) {
        ASSERT_NE(without, nullptr);
        EXPECT_EQ(without->Name(), "loop");
        EXPECT_EQ(without->FixedMountPoint(), "/run/plattmix/L");
    } else {
        EXPECT_EQ(without, nullptr);
    }
    if (saved != nullptr)
        setenv("DBUS_SYSTEM_BUS_ADDRESS", previous.c_str(), 1);
    else
        unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}
