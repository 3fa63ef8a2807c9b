// The tray path's device: a drive node opened for the tray question alone, each command sent
// with SG_IO. Opened read-write and non-blocking (an empty drive opens too), read-only when
// that is refused; closed with the object.
#pragma once

#include <string>

#include "TrayState.h"

namespace plattmix::scsi {

class TrayNodeDevice final : public ITrayDevice {
  public:
    explicit TrayNodeDevice(const std::string& node);
    ~TrayNodeDevice() override;
    TrayNodeDevice(const TrayNodeDevice&) = delete;
    TrayNodeDevice& operator=(const TrayNodeDevice&) = delete;

    bool IsOpen() const { return fd_ >= 0; }
    // A request the kernel did not carry out answers status 2 with cleared sense bytes.
    TrayResult Exec(std::span<const uint8_t> cdb, std::span<uint8_t> data) override;

  private:
    int fd_ = -1;
};

// The node a drive name stands for: "sr0" and "sr0:" become "/dev/sr0"; a path stays as it
// is, without a trailing ":".
std::string TrayNodePath(const std::string& drive);

}  // namespace plattmix::scsi
