// MountIso and UnmountIso over a scripted service: the outcomes the real kernel in the test bed
// cannot be brought to (a volume without a file system, a drive mounted by someone else, two
// drives of one image, no service at all).
#include "VirtualDrive.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "common/ScratchFolder.h"
#include "vdrive/VirtualDriveTestFiles.h"

using namespace plattmix::vdrive;
namespace fs = std::filesystem;

namespace {

class ScriptedService : public IVirtualDriveService {
  public:
    std::string Name() const override { return "scripted"; }
    std::string FixedMountPoint() const override { return "/run/plattmix/L"; }
    std::vector<std::string> DevicesOf(const ImageFile& image) override {
        std::vector<std::string> devices;
        for (const auto& [device, file] : backing)
            if (file == image.realPath())
                devices.push_back(device);
        return devices;
    }
    AttachStep Attach(const ImageFile& image) override {
        attached.push_back(image.realPath());
        backing["/dev/loop7"] = image.realPath();
        return {"/dev/loop7", ""};
    }
    MountPointStep MountAtFixedPoint(const std::string& device) override {
        if (mountOutcome == MountPointOutcome::Mounted)
            mounts[device] = {FixedMountPoint()};
        return {mountOutcome, mountOutcome == MountPointOutcome::Mounted ? "" : "scripted"};
    }
    std::vector<std::string> MountPointsOf(const std::string& device) override {
        return mounts[device];
    }
    ServiceStep Detach(const std::string& device) override {
        detached.push_back(device);
        backing.erase(device);
        mounts.erase(device);
        return {true, ""};
    }

    std::map<std::string, std::string> backing;  // device -> backing file
    std::map<std::string, std::vector<std::string>> mounts;
    MountPointOutcome mountOutcome = MountPointOutcome::Mounted;
    std::vector<std::string> attached, detached;
};

const DriveMessage& Last(const DriveResult& result) {
    return result.messages.back();
}

}  // namespace

TEST(VirtualDrive, MountOutcomesTheKernelCannotBeBroughtTo) {
    const fs::path folder = plattmix::test::ScratchFolder();
    const std::string image = plattmix::test::WriteImageStub(folder / "Bild.iso");

    // A drive without a file system: no box about the mount point, no drive.
    ScriptedService noVolume;
    noVolume.mountOutcome = MountPointOutcome::NoVolume;
    DriveResult result = MountIso(&noVolume, image);
    EXPECT_EQ(result.outcome, DriveOutcome::Attached);
    ASSERT_EQ(result.messages.size(), 1u);
    EXPECT_EQ(Last(result).text,
              "Die ISO '" + image + "' wurde als virtuelles Laufwerk '' geladen.");
    EXPECT_FALSE(result.mountPointOk);

    // Attached already and mounted elsewhere by someone: that place is the drive.
    ScriptedService elsewhere;
    elsewhere.backing["/dev/loop2"] = fs::canonical(image).string();
    elsewhere.mounts["/dev/loop2"] = {"/media/anna/PLATTMIX"};
    result = MountIso(&elsewhere, image);
    EXPECT_EQ(result.outcome, DriveOutcome::AlreadyAttached);
    EXPECT_EQ(Last(result).text, "Die ISO '" + image +
                                     "' ist breits als virtuelles Laufwerk '/media/anna/PLATTMIX' "
                                     "geladen!");
    EXPECT_TRUE(elsewhere.attached.empty());
}

TEST(VirtualDrive, NoServiceAndNoImage) {
    const fs::path folder = plattmix::test::ScratchFolder();
    for (const bool mount : {true, false}) {
        const DriveResult result =
            mount ? MountIso(nullptr, "/x.iso") : UnmountIso(nullptr, "/x.iso");
        EXPECT_EQ(result.outcome, DriveOutcome::NoService);
        ASSERT_EQ(result.messages.size(), 1u);
        EXPECT_EQ(Last(result).text, NoServiceText());
        EXPECT_EQ(Last(result).title, mount ? "Mount ISO" : "Unmount ISO");
        EXPECT_EQ(Last(result).icon, MessageIcon::Critical);
    }

    // A folder: nothing reaches the service (a missing file and one without a volume are
    // refused so in the drive test bed).
    ScriptedService service;
    const DriveResult result = MountIso(&service, folder.string());
    EXPECT_EQ(result.outcome, DriveOutcome::NoHandle);
    EXPECT_FALSE(result.detail.empty());
    EXPECT_TRUE(service.attached.empty());

    // UDF images are images too.
    const std::string udf = plattmix::test::WriteImageStub(folder / "udf.iso", "BEA01");
    EXPECT_EQ(MountIso(&service, udf).outcome, DriveOutcome::Attached);
}

TEST(VirtualDrive, UnmountDetachesEveryDriveOfTheImage) {
    const fs::path folder = plattmix::test::ScratchFolder();
    const std::string image = plattmix::test::WriteImageStub(folder / "Bild.iso");
    const std::string real = fs::canonical(image).string();
    ScriptedService service;
    service.backing = {{"/dev/loop1", real}, {"/dev/loop4", real}, {"/dev/loop5", "/other.iso"}};
    service.mounts["/dev/loop4"] = {"/media/anna/X", "/run/plattmix/L"};

    const DriveResult result = UnmountIso(&service, image);
    EXPECT_EQ(result.outcome, DriveOutcome::Detached);
    EXPECT_EQ(service.detached, (std::vector<std::string>{"/dev/loop1", "/dev/loop4"}));
    EXPECT_EQ(result.drive, "/run/plattmix/L");  // the fixed point before any other
    EXPECT_EQ(Last(result).text,
              "Die ISO '" + image + "' wurde als virtuelles Laufwerk '/run/plattmix/L' entfernt.");

    // The file has been overwritten since: it is still found by its path and detached.
    ScriptedService changed;
    changed.backing["/dev/loop3"] = real;
    std::ofstream(image, std::ios::trunc) << "kein Abbild mehr";
    EXPECT_EQ(UnmountIso(&changed, image).outcome, DriveOutcome::Detached);
}
