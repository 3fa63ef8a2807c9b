// A drive that answers each command with the reply the fuzz input scripted for it: the status,
// the sense and the bytes (cut to the buffer). Commands without a script end with status 2.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "ISCSI.h"

namespace plattmix::fuzz {

struct ScriptedReply {
    int32_t status = 0;
    uint8_t senseKey = 0, asc = 0, ascq = 0;
    std::vector<uint8_t> bytes;
};

class ScriptedDrive final : public scsi::ISCSI {
  public:
    // A command's key: its opcode, for READ TOC the format and the MSF bit too.
    static uint32_t KeyOf(std::span<const uint8_t> cdb);
    static uint32_t ReadTocKey(uint8_t format, bool msf);

    // The reply from a part of the input: status, sense key, ASC, ASCQ, then the bytes.
    void Script(uint32_t key, std::span<const uint8_t> part);

    std::string Interface() const override { return "fuzz"; }
    uint8_t LastASCQ() const override { return last_.ascq; }
    uint8_t LastASC() const override { return last_.asc; }
    uint8_t LastSK() const override { return last_.senseKey; }
    bool Initialized() override { return true; }
    bool Installed() override { return true; }
    int16_t DriveCount() const override { return 1; }
    std::string DriveChar(const std::string& /*Handle*/) override { return "sr0"; }
    std::string DriveHandle(int16_t& index) override { return index == 1 ? "sr0" : ""; }
    uint8_t HostAdapter(const std::string&) override { return 0; }
    uint8_t TargetId(const std::string&) override { return 0; }
    uint8_t LUN(const std::string&) override { return 0; }
    int32_t ExecCMD(std::string& Handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                    int32_t& direction, uint8_t* Buffer, int32_t BufferLen,
                    int16_t& TimeOut) override;

  private:
    std::map<uint32_t, ScriptedReply> replies_;
    ScriptedReply last_;
};

}  // namespace plattmix::fuzz
