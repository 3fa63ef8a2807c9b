// The fall-back transport: command blocks go through the ASPI-style layer (libplattmix_aspi.so,
// over the SCSI generic driver), reached by name through clsCDECL. A drive's handle is three
// characters whose codes are its host adapter, target and LUN.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "AspiSrb.h"
#include "ISCSI.h"
#include "clsCDECL.h"

namespace plattmix::scsi {

class clsASPI final : public ISCSI {
  public:
    // Loads the library and, if that worked, lists the CD/DVD drives it reports.
    clsASPI();
    explicit clsASPI(const std::string& library);
    ~clsASPI() override;
    clsASPI(const clsASPI&) = delete;
    clsASPI& operator=(const clsASPI&) = delete;

    std::string Interface() const override { return "ASPI"; }
    uint8_t LastASCQ() const override { return lastAscq_; }
    uint8_t LastASC() const override { return lastAsc_; }
    uint8_t LastSK() const override { return lastSk_; }
    // The library answers its support query with "complete".
    bool Initialized() override;
    // The library could be loaded.
    bool Installed() override { return installed_; }
    int16_t DriveCount() const override { return static_cast<int16_t>(drives_.size()); }
    // The generic node's short name ("sg1") the layer gives for the handle; empty if none.
    std::string DriveChar(const std::string& Handle) override;
    std::string DriveHandle(int16_t& index) override;
    uint8_t HostAdapter(const std::string& Handle) override;
    uint8_t TargetId(const std::string& Handle) override;
    uint8_t LUN(const std::string& Handle) override;
    // TimeOut 0 sets the layer's time-out to its default; the caller's variable stays 0. A
    // handle that is not three characters long gives 255 and leaves the sense bytes alone.
    int32_t ExecCMD(std::string& Handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                    int32_t& direction, uint8_t* Buffer, int32_t BufferLen,
                    int16_t& TimeOut) override;

    // The handle of host adapter, target and LUN.
    static std::string MakeHandle(SrbAddress address);

  private:
    uint32_t Send(std::span<uint8_t> srb);
    void Scan();

    clsCDECL dll_;
    bool installed_ = false;
    std::vector<std::string> drives_;
    uint8_t lastSk_ = 0, lastAsc_ = 0, lastAscq_ = 0;
};

}  // namespace plattmix::scsi
