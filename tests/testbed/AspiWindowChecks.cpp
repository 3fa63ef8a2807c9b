#include "AspiWindowChecks.h"

#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "AspiChecks.h"
#include "BlockNode.h"
#include "CdAudio.h"
#include "CdAudioDoor.h"
#include "CdAudioErrors.h"
#include "CdAudioPlayer.h"
#include "CdAudioSharedTransport.h"
#include "CdPlayerButtons.h"
#include "DriveList.h"
#include "MmcOpcodes.h"
#include "MountPoint.h"
#include "ScsiStatus.h"
#include "TrayChecks.h"
#include "TrayState.h"
#include "audiocd/CdAudioTestSink.h"
#include "clsASPI.h"

namespace plattmix::testbed {

namespace {

constexpr const char* kAlias = audiocd::kPlayerAlias;
constexpr size_t kRawSector = 2352;
constexpr auto kReadSectors = static_cast<uint32_t>(audiocd::kPlayReadSectors);
constexpr uint8_t kDataTrackFlag = 0x04;
constexpr size_t kTocHeader = 4;
constexpr size_t kTocDescriptor = 8;

// The table of contents as an audio CD's: READ TOC (format 0) answers with the data flag of
// every track cleared; everything else reaches the drive unchanged. QEMU's drives emulate no
// audio tracks, and the player plays nothing else.
class AudioTocView final : public scsi::ISCSI {
  public:
    explicit AudioTocView(std::unique_ptr<scsi::ISCSI> inner) : inner_(std::move(inner)) {}

    std::string Interface() const override { return inner_->Interface(); }
    uint8_t LastASCQ() const override { return inner_->LastASCQ(); }
    uint8_t LastASC() const override { return inner_->LastASC(); }
    uint8_t LastSK() const override { return inner_->LastSK(); }
    bool Initialized() override { return inner_->Initialized(); }
    bool Installed() override { return inner_->Installed(); }
    int16_t DriveCount() const override { return inner_->DriveCount(); }
    std::string DriveChar(const std::string& h) override { return inner_->DriveChar(h); }
    std::string DriveHandle(int16_t& i) override { return inner_->DriveHandle(i); }
    uint8_t HostAdapter(const std::string& h) override { return inner_->HostAdapter(h); }
    uint8_t TargetId(const std::string& h) override { return inner_->TargetId(h); }
    uint8_t LUN(const std::string& h) override { return inner_->LUN(h); }
    int32_t ExecCMD(std::string& handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                    int32_t& direction, uint8_t* buffer, int32_t length,
                    int16_t& timeOut) override {
        const int32_t status =
            inner_->ExecCMD(handle, cdb, cdblen, direction, buffer, length, timeOut);
        const bool toc = cdb[0] == scsi::kOpReadToc && (cdb[2] & 0x0F) == 0;
        if (status != scsi::kStatusGood || !toc || buffer == nullptr)
            return status;
        const size_t end = std::min<size_t>(static_cast<size_t>(length),
                                            2 + size_t{(unsigned{buffer[0]} << 8) | buffer[1]});
        for (size_t at = kTocHeader; at + kTocDescriptor <= end; at += kTocDescriptor)
            buffer[at + 1] &= static_cast<uint8_t>(~kDataTrackFlag);
        return status;
    }

  private:
    std::unique_ptr<scsi::ISCSI> inner_;
};

std::string HandleOf(scsi::ISCSI& transport, int16_t index) {
    return transport.DriveHandle(index);
}

const char* MoveName(audiocd::DoorMove move) {
    switch (move) {
        case audiocd::DoorMove::Opened:
            return "Opened";
        case audiocd::DoorMove::Closed:
            return "Closed";
        case audiocd::DoorMove::OpenFailed:
            return "OpenFailed";
        case audiocd::DoorMove::CloseFailed:
            return "CloseFailed";
        case audiocd::DoorMove::None:
            break;
    }
    return "None";
}

// The checks on the transport as the window holds it: the fall-back behind the lock it shares
// with the player.
class WindowPaths {
  public:
    WindowPaths(Report& report, Channel& channel, const std::string& data)
        : report_(report), channel_(channel), image_(LoadImage(data + "/disc-a.iso")) {
        cdAudio_.SetErrorBox([this](const std::string& text) { boxes_.push_back(text); });
        const auto entries = audiocd::FillDriveList(transport_, {});
        if (!entries.empty())
            entry_ = entries.front().text;
    }

    void Run() {
        Tray();
        Door();
        PlayDataDisc();
        PlayThroughTheTransport();
    }

  private:
    std::string Qemu(const std::string& request) {
        return channel_.Request(request).value_or("no answer");
    }

    void Tray() {
        const TrayAnswer loaded = AskTray(transport_, sg0_);
        const TrayAnswer empty = AskTray(transport_, sg1_);
        const std::string node = scsi::BlockNodeOf(transport_, sg0_);
        const std::string root = window::DriveRootOf(node);
        report_.Check("aspi.tray",
                      loaded.value == 0 && empty.value == 0 && node.empty() && root.empty(),
                      "sg0 " + loaded.Text() + ", sg1 " + empty.Text() + ", block node '" + node +
                          "', root '" + root + "'");
    }

    // The eject button twice, as the window presses it: the state decides, the entry names the
    // drive.
    void Door() {
        const auto opened =
            audiocd::PressEjectButton(AskTray(transport_, sg0_).value, cdAudio_, entry_);
        const std::string host = Qemu("tray 0");
        const TrayAnswer open = AskTray(transport_, sg0_);
        report_.Check("aspi.door.open",
                      opened == audiocd::DoorMove::Opened && host.starts_with("ok open medium") &&
                          open.value == 1,
                      "[" + entry_ + "] " + MoveName(opened) + ", QEMU " + host + ", " +
                          open.Text() + Boxes());

        const auto closed = audiocd::PressEjectButton(open.value, cdAudio_, entry_);
        const std::string after = Qemu("tray 0");
        const TrayAnswer shut = AskTray(transport_, sg0_);
        report_.Check(
            "aspi.door.close",
            closed == audiocd::DoorMove::Closed && after.starts_with("ok closed medium") &&
                shut.value == 0 && boxes_.empty(),
            std::string(MoveName(closed)) + ", QEMU " + after + ", " + shut.Text() + Boxes());
    }

    // A data disc: the device opens on the listed drive and reads the disc's table through the
    // transport (16 s), and Play of its one track answers that it is no audio track. (The
    // window offers no data row to play at all.)
    void PlayDataDisc() {
        audiocd::CdPlayerButtons player(cdAudio_, kAlias);
        player.PrepareToPlay(entry_);
        const auto length = cdAudio_.SendString(std::string("status ") + kAlias + " length");
        const auto play = player.PlayFrom(0);
        player.Stop();
        report_.Check(
            "aspi.player.data-disc",
            player.IsOpen() && length.ok() && length.result == "16000" &&
                play.error == audiocd::kCdAudioNotAudio,
            "length '" + length.result + "' " + length.errorText + ", play: " + play.errorText);
        cdAudio_.SendString(std::string("close ") + kAlias);
    }

    // The disc's table shown as an audio CD's: Play reads with READ CD on the player's worker,
    // through the fall-back with its handle, into a recording sink; Stop ends it. The sink takes
    // seven pieces, the first READ CD's 27 sectors (six of four, one of three), and holds the
    // eighth, the second READ CD's first.
    void PlayThroughTheTransport() {
        audiocd::CdAudioSharedTransport view(
            std::make_unique<AudioTocView>(std::make_unique<scsi::clsASPI>()));
        const auto sound = std::make_shared<test::SinkRecord>();
        audiocd::CdAudio cd(view, test::TestSinks(sound));
        audiocd::CdPlayerButtons player(cd, kAlias);
        player.PrepareToPlay(entry_);
        sound->Hold(7);
        const auto play = player.PlayFrom(0);
        const bool held = play.ok() && sound->WaitForCalls(8);
        const std::string mode = cd.SendString(std::string("status ") + kAlias + " mode").result;
        player.Stop();
        const std::string after = cd.SendString(std::string("status ") + kAlias + " mode").result;
        sound->Release();

        const std::vector<uint8_t> bytes = sound->Bytes();
        bool same = bytes.size() == kReadSectors * kRawSector;
        for (uint32_t lba = 0; same && lba < kReadSectors; ++lba)
            same = RawSectorMatches(std::span(bytes).subspan(lba * kRawSector, kRawSector), lba,
                                    image_);
        report_.Check(
            "aspi.player.read-cd",
            held && mode == "playing" && after == "stopped" && same && sound->Drops() == 1,
            "play '" + play.errorText + "', " + mode + " then " + after + ", " +
                std::to_string(bytes.size() / kRawSector) + " sectors " +
                (same ? "as in the image" : "differ") + ", drops " +
                std::to_string(sound->Drops()));
    }

    std::string Boxes() const {
        std::string text;
        for (const auto& box : boxes_)
            text += ", box: " + box;
        return text;
    }

    Report& report_;
    Channel& channel_;
    std::vector<uint8_t> image_;
    audiocd::CdAudioSharedTransport transport_{std::make_unique<scsi::clsASPI>()};
    audiocd::CdAudio cdAudio_{transport_, {}};
    std::string sg0_ = HandleOf(transport_, 1), sg1_ = HandleOf(transport_, 2);
    std::string entry_;
    std::vector<std::string> boxes_;
};

}  // namespace

void CheckWindowPathsWithoutSr(Report& report, Channel& channel, const std::string& data) {
    WindowPaths(report, channel, data).Run();
}

void CheckDriveRootBesideSr(Report& report) {
    scsi::clsASPI aspi;
    const std::string handle = HandleOf(aspi, 1);
    const std::string node = scsi::BlockNodeOf(aspi, handle);
    const TrayAnswer tray = AskTray(aspi, handle);
    report.Check("aspi.sr.node", node == "/dev/sr0" && tray.value == 0,
                 aspi.DriveChar(handle) + " -> '" + node + "', " + tray.Text());

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
