// The disc-image drive: a transport that emulates MMC drives over CUE/BIN and ISO images, for
// users without a drive and for tests and benchmarks. One object holds any number of drives.
//
// Handles: a drive created with an image is named by the image path exactly as given; an empty
// drive is named "leer". A name already in use gets "#2", "#3", ... appended. The handle stays
// the drive's name when its medium is changed later. DriveChar answers the handle itself.
// Every drive answers HostAdapter 0, TargetId 0 and its 0-based position in the list as LUN.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ISCSI.h"
#include "imagedrive/DriveSlot.h"
#include "imagedrive/ImageResult.h"

namespace plattmix::scsi::imagedrive {

inline constexpr const char* kEmptyDriveHandle = "leer";

class clsImageDrive final : public ISCSI {
  public:
    clsImageDrive() = default;

    // Adds a drive holding the image at imagePath (a .cue sheet or an .iso file), tray closed
    // and ready without a unit attention, or an empty drive when imagePath is empty. A sidecar
    // beside the image (imagePath + ".drive", see DriveSidecar.h) sets the drive's faults and
    // quirks. Answers the new drive's handle, or the image's or sidecar's error message
    // ("demo.cue, Zeile 7: ...") and adds nothing.
    ImageResult<std::string> AddDrive(const std::string& imagePath);

    // Tray and medium. Each answers false (or an error) for an unknown handle.
    bool OpenTray(const std::string& handle);
    bool CloseTray(const std::string& handle);
    // Loads an image into the drive. With the tray closed it counts as a disc change: the next
    // command sees 6/28/00, then the becoming-ready countdown runs. Nothing on success,
    // otherwise the error message; the old medium stays on error.
    std::optional<std::string> InsertMedium(const std::string& handle, const std::string& path);
    bool RemoveMedium(const std::string& handle);
    bool IsTrayOpen(const std::string& handle) const;
    bool HasMedium(const std::string& handle) const;
    // How many commands that need the medium report 2/04/01 after each load (default 0).
    bool SetBecomingReady(const std::string& handle, int commands);

    // Injected faults: reads touching [firstLba, firstLba + count) fail with 3/11/05 (or end
    // with status 255 at once, for a time-out, without waiting for the time-out to run out);
    // the next `commands` commands of any kind end with 255; reads take blocks / (75 * speed)
    // seconds (speed 0: as fast as the files allow).
    bool AddReadError(const std::string& handle, int32_t firstLba, int32_t count);
    bool AddTimeOutRange(const std::string& handle, int32_t firstLba, int32_t count);
    bool TimeOutNextCommands(const std::string& handle, int commands);
    bool SetReadSpeed(const std::string& handle, int speedMultiple);
    // Quirks of a real drive's audio reading (see Faults): the read offset in samples (+N: the
    // drive reads N samples late), whether C2 error pointers are reported, and sectors that
    // read wrong with a probability, from dice started at seed.
    bool SetReadOffset(const std::string& handle, int32_t samples);
    bool SetC2Pointers(const std::string& handle, bool reported);
    bool AddFlakyRange(const std::string& handle, int32_t firstLba, int32_t count,
                       double probability, uint32_t seed);
    bool ClearFaults(const std::string& handle);

    std::string Interface() const override { return "IMAGE"; }
    uint8_t LastASCQ() const override { return lastSense_.ascq; }
    uint8_t LastASC() const override { return lastSense_.asc; }
    uint8_t LastSK() const override { return lastSense_.key; }
    bool Initialized() override { return true; }
    bool Installed() override { return true; }
    int16_t DriveCount() const override { return static_cast<int16_t>(slots_.size()); }
    std::string DriveChar(const std::string& Handle) override { return Handle; }
    std::string DriveHandle(int16_t& index) override;
    uint8_t HostAdapter(const std::string& Handle) override;
    uint8_t TargetId(const std::string& Handle) override;
    uint8_t LUN(const std::string& Handle) override;
    int32_t ExecCMD(std::string& Handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                    int32_t& direction, uint8_t* Buffer, int32_t BufferLen,
                    int16_t& TimeOut) override;

  private:
    DriveSlot* Find(const std::string& handle);
    const DriveSlot* Find(const std::string& handle) const;
    std::string UniqueHandle(const std::string& wanted) const;
    template <typename ChangeFn>
    bool Change(const std::string& handle, ChangeFn change);

    std::vector<DriveSlot> slots_;
    Sense lastSense_;
};

}  // namespace plattmix::scsi::imagedrive
