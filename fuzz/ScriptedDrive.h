// A drive that answers each command with the reply the fuzz input scripted for it: the status,
// the sense and the bytes (cut to the buffer). Commands without a script end with status 2.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "ISCSI.h"
#include "MmcOpcodes.h"

namespace plattmix::fuzz {

class ScriptedDrive final : public scsi::ISCSI {
  public:
    // A command's key: its opcode, for READ TOC the format and the MSF bit too.
    static uint32_t Key(uint8_t opcode, uint8_t tocFormat = 0, bool msf = false) {
        return (uint32_t{opcode} << 8) | (uint32_t{tocFormat} << 1) | (msf ? 1u : 0u);
    }

    // The reply from a part of the input: status, sense key, ASC, ASCQ, then the bytes. The low
    // bits pick the status, mostly good, so that half the inputs get their replies read.
    void Script(uint32_t key, std::span<const uint8_t> part) {
        static constexpr int32_t kStatuses[] = {0, 0, 0, 2, 255, 24, 8, 0};
        Reply& reply = replies_[key];
        uint8_t head[4] = {};
        std::copy_n(part.begin(), std::min<size_t>(4, part.size()), head);
        reply = {kStatuses[head[0] & 7], head[1], head[2], head[3], {}};
        if (part.size() > 4)
            reply.bytes.assign(part.begin() + 4, part.end());
    }

    std::string Interface() const override { return "fuzz"; }
    uint8_t LastASCQ() const override { return last_.ascq; }
    uint8_t LastASC() const override { return last_.asc; }
    uint8_t LastSK() const override { return last_.senseKey; }
    bool Initialized() override { return true; }
    bool Installed() override { return true; }
    int16_t DriveCount() const override { return 1; }
    std::string DriveChar(const std::string&) override { return "sr0"; }
    std::string DriveHandle(int16_t& index) override { return index == 1 ? "sr0" : ""; }
    uint8_t HostAdapter(const std::string&) override { return 0; }
    uint8_t TargetId(const std::string&) override { return 0; }
    uint8_t LUN(const std::string&) override { return 0; }
    int32_t ExecCMD(std::string&, std::span<const uint8_t> cdb, uint8_t& cdblen, int32_t&,
                    uint8_t* buffer, int32_t bufferLen, int16_t&) override {
        cdb = cdb.first(std::min<size_t>(cdblen, cdb.size()));
        const bool toc = cdb.size() > 2 && cdb[0] == scsi::kOpReadToc;
        const auto found =
            cdb.empty() ? replies_.end()
                        : replies_.find(toc ? Key(cdb[0], static_cast<uint8_t>(cdb[2] & 0x0F),
                                                  (cdb[1] & 2) != 0)
                                            : Key(cdb[0]));
        last_ = found != replies_.end() ? found->second : Reply{2, 5, 0x20, 0, {}};
        const size_t length =
            std::min(last_.bytes.size(), static_cast<size_t>(std::max(bufferLen, 0)));
        if (length > 0)
            std::memcpy(buffer, last_.bytes.data(), length);
        return last_.status;
    }

  private:
    struct Reply {
        int32_t status = 0;
        uint8_t senseKey = 0, asc = 0, ascq = 0;
        std::vector<uint8_t> bytes;
    };
    std::map<uint32_t, Reply> replies_;
    Reply last_;
};

}  // namespace plattmix::fuzz
