// The two buttons that attach an image as a drive and detach it, as a person uses them: the
// dialog, then every outcome in its own box. The service is one that keeps its drives in memory
// (the real ones are tested against the kernel in the drive test bed).
#include <QPushButton>
#include <fstream>
#include <map>

#include "IsoImage.h"
#include "TabStrip.h"
#include "VirtualDrive.h"
#include "WindowTestSupport.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

namespace {

class MemoryDrives final : public vdrive::IVirtualDriveService {
  public:
    explicit MemoryDrives(std::map<std::string, std::string>& drives) : drives_(drives) {}
    std::string Name() const override { return "memory"; }
    std::string FixedMountPoint() const override { return "/media/plattmix/"; }
    std::vector<std::string> DevicesOf(const vdrive::ImageFile& image) override {
        std::vector<std::string> devices;
        for (const auto& [device, path] : drives_)
            if (path == image.path())
                devices.push_back(device);
        return devices;
    }
    vdrive::AttachStep Attach(const vdrive::ImageFile& image) override {
        const std::string device = "/dev/loop" + std::to_string(drives_.size());
        drives_[device] = image.path();
        return {device, ""};
    }
    vdrive::MountPointStep MountAtFixedPoint(const std::string&) override {
        return {vdrive::MountPointOutcome::Mounted, ""};
    }
    std::vector<std::string> MountPointsOf(const std::string&) override {
        return {FixedMountPoint()};
    }
    vdrive::ServiceStep Detach(const std::string& device) override {
        drives_.erase(device);
        return {true, ""};
    }

  private:
    std::map<std::string, std::string>& drives_;
};

class DrivePerson : public WindowTest {
  protected:
    void Begin(bool withService) {
        UseImages({WriteDisc("TinyTracks", root / "disc")});
        auto options = Options();
        if (withService)
            options.window.virtualDrives = [this] {
                return std::make_unique<MemoryDrives>(drives);
            };
        else
            options.window.virtualDrives = [] { return nullptr; };
        startup = std::make_unique<Startup>(options);
        window = startup->Start();
        ASSERT_NE(window, nullptr);
        WaitForDriveList(*window);
        window->TabStrip1->setCurrentIndex(kPageIso);
        image = (root / "bild.iso").string();
        const auto source = root / "quelle";
        std::filesystem::create_directories(source);
        std::ofstream(source / "a.txt") << "a";
        authoring::FolderListing listing;
        authoring::ShowOrdnerInhalt(source.string(), listing, {});
        authoring::CreateIsoImage({source.string(), "", image}, listing, {});
    }

    std::map<std::string, std::string> drives;
    MsgBoxRecorder boxes;
    DialogScript dialogs;
    frmMain* window = nullptr;
    std::string image;
};

TEST_F(DrivePerson, AttachAndDetachReportEveryStepInTheirBoxes) {
    Begin(true);
    dialogs.answers = {{QString::fromStdString(image)}, {QString::fromStdString(image)}};
    window->Command15[0]->click();
    ASSERT_EQ(dialogs.requests.size(), 1u);
    EXPECT_EQ(dialogs.requests[0].title, QStringLiteral("ISO Dateien trennen"));
    EXPECT_EQ(dialogs.requests[0].filter, QStringLiteral("ISO Dateien|*.iso"));
    ASSERT_FALSE(boxes.boxes.empty());
    EXPECT_EQ(boxes.boxes.back().title, QStringLiteral("Mount ISO"));
    EXPECT_EQ(drives.size(), 1u);

    window->Command15[1]->click();
    EXPECT_EQ(boxes.boxes.back().title, QStringLiteral("Unmount ISO"));
    EXPECT_TRUE(drives.empty());

    // Cancelling the dialog does nothing.
    const size_t shown = boxes.boxes.size();
    window->Command15[0]->click();
    EXPECT_EQ(boxes.boxes.size(), shown);
}

TEST_F(DrivePerson, WithoutAServiceTheUserIsToldAndNothingHappens) {
    Begin(false);
    dialogs.answers = {{QString::fromStdString(image)}};
    window->Command15[0]->click();
    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_EQ(boxes.boxes[0].text.toStdString(), vdrive::NoServiceText());
}

}  // namespace
