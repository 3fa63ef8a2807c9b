// The scripted ASPI-style library the transport tests load in place of the real layer: what it
// answers and what it was sent, reached through its FakeAspiControl export.
#pragma once

#include <array>
#include <cstdint>

#include "AspiSrb.h"

namespace plattmix::test {

struct FakeAspiState {
    static constexpr unsigned kAdapters = 16;
    uint32_t supportInfo = 0;
    // Device type by adapter, target and LUN; kNone where nothing answers.
    static constexpr uint8_t kNone = 0xFF;
    std::array<uint8_t, kAdapters * 64> deviceTypes{};
    unsigned deviceTypeQueries = 0;
    unsigned highestAdapterAsked = 0;
    uint8_t diskInfoDrive = 0;  // answered for every device with a type

    uint8_t timeOutStatus = scsi::kSrbComplete;
    std::array<uint8_t, scsi::kTimeoutSrbSize> timeOutSrb{};  // as sent last

    unsigned execCount = 0;
    std::array<uint8_t, scsi::kExecSrbSize> execSrb{};  // as sent last
    uint8_t execStatus = scsi::kSrbComplete;
    uint8_t targetStatus = 0;
    std::array<uint8_t, 16> sense{};
    uint8_t replyByte = 0;  // written to the buffer's first byte
    // Negative: answered before Send returns; else pending, answered that many ms later.
    int completeAfterMs = -1;

    uint8_t& Type(unsigned adapter, unsigned target, unsigned lun) {
        return deviceTypes[adapter * 64 + target * 8 + lun];
    }
    void Reset() {
        *this = FakeAspiState{};
        deviceTypes.fill(kNone);
        supportInfo = uint32_t{scsi::kSrbComplete} << 8 | 1;
    }
};

}  // namespace plattmix::test

extern "C" plattmix::test::FakeAspiState* FakeAspiControl();
