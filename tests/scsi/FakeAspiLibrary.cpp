// The late-answering ASPI-style library (FakeAspiState.h).
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "scsi/FakeAspiState.h"

namespace {

using namespace plattmix::scsi;
using plattmix::test::FakeAspiState;

FakeAspiState& State() {
    static FakeAspiState state;
    return state;
}

// The thread answering a pending block; joined before the next one and at unloading.
std::jthread& Pending() {
    static std::jthread pending;
    return pending;
}

void Complete(uint8_t* srb) {
    const FakeAspiState& s = State();
    srb[kExecTargetStatusAt] = s.targetStatus;
    std::copy(s.sense.begin(), s.sense.end(), srb + kExecSenseAt);
    const ExecFields fields =
        ReadExecSrb(std::span<const uint8_t, kExecSrbSize>(srb, kExecSrbSize));
    if (fields.bufferAddress != 0)
        *reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(fields.bufferAddress)) = s.replyByte;
    const uint64_t one = 1;
    if (fields.event >= 0 && ::write(fields.event, &one, sizeof one) < 0)
        return;
    std::atomic_ref<uint8_t>(srb[kSrbStatusByte]).store(s.execStatus, std::memory_order_release);
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) FakeAspiState* FakeAspiControl() {
    return &State();
}

// Complete, one adapter.
__attribute__((visibility("default"))) uint32_t GetASPI32SupportInfo() {
    return uint32_t{kSrbComplete} << 8 | 1;
}

__attribute__((visibility("default"))) uint32_t SendASPI32Command(void* block) {
    auto* srb = static_cast<uint8_t*>(block);
    switch (srb[kSrbCommandByte]) {
        case kSrbGetDeviceType: {
            const bool drive =
                srb[kSrbHostAdapterByte] == 1 && srb[kSrbTargetByte] == 1 && srb[kSrbLunByte] == 0;
            srb[kDeviceTypeAt] = drive ? 5 : 0;
            srb[kSrbStatusByte] = drive ? kSrbComplete : kSrbNoDevice;
            break;
        }
        case kSrbGetSetTimeouts:
            srb[kSrbStatusByte] = State().timeOutStatus;
            break;
        case kSrbExecScsiCmd:
            srb[kSrbStatusByte] = kSrbPending;
            Pending() = std::jthread([srb, ms = State().completeAfterMs] {
                std::this_thread::sleep_for(std::chrono::milliseconds(ms));
                Complete(srb);
            });
            break;
        default:
            srb[kSrbStatusByte] = kSrbInvalidCommand;
    }
    return srb[kSrbStatusByte];
}

}  // extern "C"
