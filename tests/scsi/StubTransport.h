// A transport that records what it is handed and answers GOOD with reply's bytes; for the rules
// that sit on top of any transport (command blocks, the choice of transport). Its one drive is
// "sr0".
#pragma once

#include <string>
#include <vector>

#include "ISCSI.h"
#include "ScsiStatus.h"

namespace plattmix::test {

class StubTransport final : public scsi::ISCSI {
  public:
    std::string name = "STUB";
    bool installed = true;
    bool initialized = true;
    std::vector<uint8_t> cdb;
    uint8_t cdblen = 0;
    int32_t direction = -99;
    int32_t bufferLen = -1;
    int16_t timeOut = -1;
    std::vector<uint8_t> reply;

    std::string Interface() const override { return name; }
    uint8_t LastASCQ() const override { return 0; }
    uint8_t LastASC() const override { return 0; }
    uint8_t LastSK() const override { return 0; }
    bool Initialized() override { return initialized; }
    bool Installed() override { return installed; }
    int16_t DriveCount() const override { return 1; }
    std::string DriveChar(const std::string& h) override { return h; }
    std::string DriveHandle(int16_t&) override { return "sr0"; }
    uint8_t HostAdapter(const std::string&) override { return 0; }
    uint8_t TargetId(const std::string&) override { return 0; }
    uint8_t LUN(const std::string&) override { return 0; }
    int32_t ExecCMD(std::string&, std::span<const uint8_t> c, uint8_t& len, int32_t& dir,
                    uint8_t* buffer, int32_t length, int16_t& t) override {
        cdb.assign(c.begin(), c.end());
        cdblen = len;
        direction = dir;
        bufferLen = length;
        timeOut = t;
        for (size_t i = 0; i < reply.size() && i < static_cast<size_t>(length); ++i)
            buffer[i] = reply[i];
        return scsi::kStatusGood;
    }
};

}  // namespace plattmix::test
