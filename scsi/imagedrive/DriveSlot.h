// One emulated drive: its tray, the medium in it, the pending unit attention and media event,
// the becoming-ready countdown and the faults injected for tests.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "imagedrive/SectorSource.h"
#include "imagedrive/Sense.h"

namespace plattmix::scsi::imagedrive {

struct LbaRange {
    int32_t first = 0;
    int32_t count = 0;
    // Whether [lba, lba + blocks) shares a sector with the range.
    bool Touches(int64_t lba, int64_t blocks) const {
        return lba < int64_t{first} + count && int64_t{first} < lba + blocks;
    }
};

// Sectors whose audio reads come out differently each time: each READ CD of one of them
// returns, with the given probability, its samples with a few bits flipped (and the C2 error
// pointers of those bytes set), otherwise the true samples. The dice start from the seed, so a
// test that reads the same way sees the same errors.
struct FlakyRange {
    LbaRange range;
    double probability = 0.0;  // 0 never, 1 every read
    uint32_t seed = 0;
    std::mt19937 dice{seed};
};

struct Faults {
    std::vector<LbaRange> readErrors;  // reads touching them fail with 3/11/05
    std::vector<LbaRange> timeOuts;    // reads touching them end with status 255
    int timeOutCommands = 0;           // the next commands of any kind end with status 255
    int speedMultiple = 0;             // reads take blocks / (75 * multiple) s; 0 unthrottled
    // The drive's read offset in samples (stereo frames of 4 bytes), as a real drive's: with
    // offset +N a READ CD of audio returns at sample position p the sample that lies at p - N
    // on the disc (it reads N samples late), so a ripper that knows the offset +N takes the
    // sample for p from p + N. Samples outside the disc's audio read as silence.
    int32_t readOffsetSamples = 0;
    // Whether the drive reports C2 error pointers (CD Read feature, READ CD byte 9 bits 1-2);
    // a drive without them refuses a READ CD asking for them with 5/24/00.
    bool c2Pointers = true;
    std::vector<FlakyRange> flaky;
    // When the disc, spinning on, has delivered everything asked so far (throttled reads only).
    std::chrono::steady_clock::time_point streamedUntil{};
};

class DriveSlot {
  public:
    explicit DriveSlot(std::string handle) : handle_(std::move(handle)) {}

    const std::string& Handle() const { return handle_; }

    // Puts a medium into the drive. With the tray closed it becomes ready as after a load:
    // unit attention, media event and becoming-ready countdown, unless quiet (the drive was
    // created holding it).
    void Insert(std::shared_ptr<const SectorSource> medium, bool quiet);
    void Remove();
    void OpenTray();
    void CloseTray();
    bool TrayOpen() const { return trayOpen_; }
    bool HasMedium() const { return medium_ != nullptr; }
    // The medium a command can read: present and the tray closed.
    const SectorSource* Medium() const { return trayOpen_ ? nullptr : medium_.get(); }
    void SetBecomingReady(int commands) { becomingReadyCount_ = commands; }

    // 6/28/00 once after a medium was loaded; nothing otherwise.
    std::optional<Sense> TakeUnitAttention();
    // What a command that needs the medium meets: no medium (tray closed or open) or the
    // medium still becoming ready (each such answer counts down); nothing when ready.
    std::optional<Sense> MediumCheck();
    // The media event not yet reported, then "no change".
    uint8_t TakeMediaEvent();

    Faults& Injected() { return faults_; }
    const Faults& Injected() const { return faults_; }

  private:
    void Loaded();

    std::string handle_;
    std::shared_ptr<const SectorSource> medium_;
    bool trayOpen_ = false;
    bool unitAttention_ = false;
    uint8_t mediaEvent_ = 0;
    int becomingReadyCount_ = 0;  // how many medium commands report 2/04/01 after a load
    int becomingReadyLeft_ = 0;
    Faults faults_;
};

}  // namespace plattmix::scsi::imagedrive
