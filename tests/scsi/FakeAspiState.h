// The ASPI-style library the transport tests load where the real layer cannot be brought to
// answer late or to let a wait run out: one adapter reported, one drive on the adapter beyond it
// (scanned all the same) at target 1, whose execute blocks are answered from a thread of their
// own after a delay, as set through FakeAspiControl.
#pragma once

#include <array>
#include <cstdint>

#include "AspiSrb.h"

namespace plattmix::test {

struct FakeAspiState {
    uint8_t timeOutStatus = scsi::kSrbComplete;  // the answer to a time-out block
    int completeAfterMs = 20;
    uint8_t execStatus = scsi::kSrbComplete;
    uint8_t targetStatus = 0;
    std::array<uint8_t, 16> sense{};
    uint8_t replyByte = 0;  // written to the buffer's first byte
};

}  // namespace plattmix::test

extern "C" plattmix::test::FakeAspiState* FakeAspiControl();
