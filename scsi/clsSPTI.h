// The pass-through transport: command blocks go to the drive nodes /dev/srN through the
// kernel's SG_IO ioctl. Drives are found once, at creation, in /sys/class/block.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ISCSI.h"

struct sg_io_hdr;

namespace plattmix::scsi {

class clsSPTI final : public ISCSI {
  public:
    // Sends one request to an open node: the SG_IO ioctl unless a test stands in.
    using SgIoCall = std::function<int(int descriptor, sg_io_hdr& header)>;

    // The two folders can be moved for tests; the defaults are the real system's.
    explicit clsSPTI(std::string sysClassBlock = "/sys/class/block", std::string devDir = "/dev",
                     SgIoCall sgIo = {});
    ~clsSPTI() override;
    clsSPTI(const clsSPTI&) = delete;
    clsSPTI& operator=(const clsSPTI&) = delete;

    std::string Interface() const override { return "SPTI"; }
    uint8_t LastASCQ() const override { return lastAscq_; }
    uint8_t LastASC() const override { return lastAsc_; }
    uint8_t LastSK() const override { return lastSk_; }
    bool Initialized() override { return true; }
    bool Installed() override;
    int16_t DriveCount() const override { return static_cast<int16_t>(drives_.size()); }
    std::string DriveChar(const std::string& Handle) override;
    std::string DriveHandle(int16_t& index) override;
    uint8_t HostAdapter(const std::string& Handle) override;
    uint8_t TargetId(const std::string& Handle) override;
    uint8_t LUN(const std::string& Handle) override;
    int32_t ExecCMD(std::string& Handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                    int32_t& direction, uint8_t* Buffer, int32_t BufferLen,
                    int16_t& TimeOut) override;

  private:
    struct Address {
        uint8_t host = 0, channel = 0, target = 0, lun = 0;
    };
    // Index into drives_ of the drive a handle names ("/dev/sr0", "sr0", any case).
    std::optional<size_t> Find(const std::string& Handle) const;
    // The open descriptor of a drive, opening every drive on the first call; -1 if none.
    int Descriptor(const std::string& Handle);
    std::optional<Address> AddressOf(const std::string& Handle);

    std::string sysClassBlock_;
    std::string devDir_;
    SgIoCall sgIo_;
    std::vector<std::string> drives_;  // short names in numeric order: sr0, sr1, ...
    std::vector<int> descriptors_;
    bool tableOpened_ = false;
    uint8_t lastSk_ = 0, lastAsc_ = 0, lastAscq_ = 0;
};

}  // namespace plattmix::scsi
