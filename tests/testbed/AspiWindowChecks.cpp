#include "AspiWindowChecks.h"

#include <sys/mount.h>
#include <sys/stat.h>

#include <memory>
#include <vector>

#include "BlockNode.h"
#include "CdAudio.h"
#include "CdAudioDoor.h"
#include "CdAudioSharedTransport.h"
#include "DriveList.h"
#include "MountPoint.h"
#include "TrayState.h"
#include "clsASPI.h"

namespace plattmix::testbed {

namespace {

std::string HandleOf(scsi::ISCSI& transport, int16_t index) {
    return transport.DriveHandle(index);
}

int16_t AskTray(scsi::ISCSI& transport, const std::string& handle) {
    return scsi::GetTrayState(transport, handle, [](int) {});
}

// The checks on the transport as the window holds it: the fall-back behind the lock it shares
// with the player.
class WindowPaths {
  public:
    WindowPaths(Report& report, Channel& channel) : report_(report), channel_(channel) {
        cdAudio_.SetErrorBox([this](const std::string& text) { boxes_.push_back(text); });
        const auto entries = audiocd::FillDriveList(transport_, {});
        if (!entries.empty())
            entry_ = entries.front().text;
    }

    void Run() {
        Tray();
        Door();
    }

  private:
    std::string Qemu(const std::string& request) {
        return channel_.Request(request).value_or("no answer");
    }

    void Tray() {
        const int16_t loaded = AskTray(transport_, sg0_);
        const int16_t empty = AskTray(transport_, sg1_);
        const std::string node = scsi::BlockNodeOf(transport_, sg0_);
        const std::string root = window::DriveRootOf(node);
        report_.Check("aspi.tray", loaded == 0 && empty == 0 && node.empty() && root.empty(),
                      "sg0 " + std::to_string(loaded) + ", sg1 " + std::to_string(empty) +
                          ", block node '" + node + "', root '" + root + "'");
    }

    // The eject button twice, as the window presses it: the state decides, the entry names the
    // drive.
    void Door() {
        const auto opened = audiocd::PressEjectButton(AskTray(transport_, sg0_), cdAudio_, entry_);
        const std::string host = Qemu("tray 0");
        const int16_t open = AskTray(transport_, sg0_);
        report_.Check(
            "aspi.door.open",
            opened == audiocd::DoorMove::Opened && host.starts_with("ok open medium") && open == 1,
            "[" + entry_ + "] move " + std::to_string(int(opened)) + ", QEMU " + host + ", state " +
                std::to_string(open) + Boxes());

        const auto closed = audiocd::PressEjectButton(open, cdAudio_, entry_);
        const std::string after = Qemu("tray 0");
        const int16_t shut = AskTray(transport_, sg0_);
        report_.Check("aspi.door.close",
                      closed == audiocd::DoorMove::Closed &&
                          after.starts_with("ok closed medium") && shut == 0 && boxes_.empty(),
                      "move " + std::to_string(int(closed)) + ", QEMU " + after + ", " + "state " +
                          std::to_string(shut) + Boxes());
    }

    std::string Boxes() const {
        std::string text;
        for (const auto& box : boxes_)
            text += ", box: " + box;
        return text;
    }

    Report& report_;
    Channel& channel_;
    audiocd::CdAudioSharedTransport transport_{std::make_unique<scsi::clsASPI>()};
    audiocd::CdAudio cdAudio_{transport_, {}};
    std::string sg0_ = HandleOf(transport_, 1), sg1_ = HandleOf(transport_, 2);
    std::string entry_;
    std::vector<std::string> boxes_;
};

}  // namespace

void CheckWindowPathsWithoutSr(Report& report, Channel& channel) {
    WindowPaths(report, channel).Run();
}

void CheckDriveRootBesideSr(Report& report) {
    scsi::clsASPI aspi;
    const std::string handle = HandleOf(aspi, 1);
    const std::string node = scsi::BlockNodeOf(aspi, handle);
    const int16_t tray = AskTray(aspi, handle);
    report.Check("aspi.sr.node", node == "/dev/sr0" && tray == 0,
                 aspi.DriveChar(handle) + " -> '" + node + "', tray " + std::to_string(tray));

    const std::string point = "/mnt/disc";
    ::mkdir("/mnt", 0755);
    ::mkdir(point.c_str(), 0755);
    const bool mounted = ::mount("/dev/sr0", point.c_str(), "iso9660", MS_RDONLY, nullptr) == 0;
    const std::string root = window::DriveRootOf(node);
    struct stat file {};
    const bool onDisc = ::stat((root + "LIESMICH.txt").c_str(), &file) == 0;
    if (mounted)
        ::umount(point.c_str());
    const std::string unmounted = window::DriveRootOf(node);
    report.Check("aspi.sr.root", mounted && root == point + "/" && onDisc && unmounted.empty(),
                 "mounted " + std::to_string(mounted) + ", root '" + root + "', file " +
                     std::to_string(onDisc) + ", unmounted '" + unmounted + "'");
}

}  // namespace plattmix::testbed
