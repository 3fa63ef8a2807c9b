// The one interface through which every SCSI/MMC command block reaches a drive. The program
// picks one implementation at start and keeps it for the whole run.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace plattmix::scsi {

class ISCSI {
  public:
    virtual ~ISCSI() = default;

    // The members in the interface's order.
    virtual std::string Interface() const = 0;
    virtual uint8_t LastASCQ() const = 0;
    virtual uint8_t LastASC() const = 0;
    virtual uint8_t LastSK() const = 0;
    virtual bool Initialized() = 0;
    virtual bool Installed() = 0;
    virtual int16_t DriveCount() const = 0;
    // The short name shown for the drive a handle names (for a drive node: "sr0").
    virtual std::string DriveChar(const std::string& Handle) = 0;
    // Handle string of the drive with the 1-based index; empty when out of range.
    virtual std::string DriveHandle(int16_t& index) = 0;
    virtual uint8_t HostAdapter(const std::string& Handle) = 0;
    virtual uint8_t TargetId(const std::string& Handle) = 0;
    virtual uint8_t LUN(const std::string& Handle) = 0;
    // Sends the first cdblen bytes of cdb. direction 0 reads from the device, any other value
    // writes to it. TimeOut 0 selects the transport's default, which is written back.
    // Returns the SCSI status, 255 when the request did not complete, 24 when no device
    // handle could be opened for Handle.
    virtual int32_t ExecCMD(std::string& Handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                            int32_t& direction, uint8_t* Buffer, int32_t BufferLen,
                            int16_t& TimeOut) = 0;
};

}  // namespace plattmix::scsi
