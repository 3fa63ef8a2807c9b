// The scripted ASPI-style library (FakeAspiState.h): answers the blocks the transport sends as
// the test set it up, an execute block at once or later from a thread of its own.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "scsi/FakeAspiState.h"

namespace {

using namespace plattmix::scsi;
using plattmix::test::FakeAspiState;

FakeAspiState& State() {
    static FakeAspiState state = [] {
        FakeAspiState s;
        s.Reset();
        return s;
    }();
    return state;
}

// The thread answering a pending block; joined before the next one and at unloading.
struct Later {
    std::thread thread;
    ~Later() { Join(); }
    void Join() {
        if (thread.joinable())
            thread.join();
    }
};
Later& Pending() {
    static Later later;
    return later;
}

void Complete(uint8_t* srb) {
    const FakeAspiState& s = State();
    srb[kExecTargetStatusAt] = s.targetStatus;
    std::copy(s.sense.begin(), s.sense.end(), srb + kExecSenseAt);
    uint64_t address = 0;
    std::memcpy(&address, srb + kExecBufferAt, 4);
    uint32_t high = 0;
    std::memcpy(&high, srb + kExecBufferHighAt, 4);
    address |= uint64_t{high} << 32;
    uint32_t length = 0;
    std::memcpy(&length, srb + kExecBufferLengthAt, 4);
    if (address != 0 && length > 0)
        *reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(address)) = s.replyByte;
    int32_t event = -1;
    std::memcpy(&event, srb + kExecEventAt, 4);
    const uint64_t one = 1;
    if (event >= 0 && ::write(event, &one, sizeof one) < 0)
        return;
    std::atomic_ref<uint8_t>(srb[kSrbStatusByte]).store(s.execStatus, std::memory_order_release);
}

uint8_t Answer(uint8_t* srb) {
    FakeAspiState& s = State();
    const unsigned adapter = srb[kSrbHostAdapterByte];
    switch (srb[kSrbCommandByte]) {
        case kSrbGetDeviceType: {
            ++s.deviceTypeQueries;
            s.highestAdapterAsked = std::max(s.highestAdapterAsked, adapter);
            if (adapter >= FakeAspiState::kAdapters)
                return kSrbInvalidHostAdapter;
            const uint8_t type = s.Type(adapter, srb[kSrbTargetByte] & 7, srb[kSrbLunByte] & 7);
            if (type == FakeAspiState::kNone)
                return kSrbNoDevice;
            srb[kDeviceTypeAt] = type;
            return kSrbComplete;
        }
        case kSrbGetDiskInfo:
            if (adapter >= FakeAspiState::kAdapters ||
                s.Type(adapter, srb[kSrbTargetByte] & 7, srb[kSrbLunByte] & 7) ==
                    FakeAspiState::kNone)
                return kSrbNoDevice;
            srb[kDiskInfoDriveAt] = s.diskInfoDrive;
            return kSrbComplete;
        case kSrbGetSetTimeouts:
            std::copy_n(srb, kTimeoutSrbSize, s.timeOutSrb.begin());
            return s.timeOutStatus;
        default:
            return kSrbInvalidCommand;
    }
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) FakeAspiState* FakeAspiControl() {
    return &State();
}

__attribute__((visibility("default"))) uint32_t GetASPI32SupportInfo() {
    return State().supportInfo;
}

__attribute__((visibility("default"))) uint32_t SendASPI32Command(void* block) {
    auto* srb = static_cast<uint8_t*>(block);
    FakeAspiState& s = State();
    if (srb[kSrbCommandByte] != kSrbExecScsiCmd) {
        srb[kSrbStatusByte] = Answer(srb);
        return srb[kSrbStatusByte];
    }
    ++s.execCount;
    std::copy_n(srb, kExecSrbSize, s.execSrb.begin());
    if (s.completeAfterMs < 0) {
        Complete(srb);
        return srb[kSrbStatusByte];
    }
    srb[kSrbStatusByte] = kSrbPending;
    Pending().Join();
    Pending().thread = std::thread([srb, ms = s.completeAfterMs] {
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        Complete(srb);
    });
    return kSrbPending;
}

}  // extern "C"
