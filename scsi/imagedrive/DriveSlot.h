// One emulated drive: its tray, the medium in it, the pending unit attention and media event,
// the becoming-ready countdown and the faults injected for tests.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
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

struct Faults {
    std::vector<LbaRange> readErrors;  // reads touching them fail with 3/11/05
    std::vector<LbaRange> timeOuts;    // reads touching them end with status 255
    int timeOutCommands = 0;           // the next commands of any kind end with status 255
    int speedMultiple = 0;             // reads take blocks / (75 * multiple) s; 0 unthrottled
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
