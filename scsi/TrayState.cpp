#include "TrayState.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "BlockNode.h"
#include "ScsiStatus.h"
#include "TrayNodeDevice.h"
#include "modMMC.h"

namespace plattmix::scsi {

namespace {

constexpr int kStatusAt = 0;
constexpr int kSenseAt = 1;  // sense byte n lies at n + 1
constexpr size_t kSenseHeld = kTrayResultLength - kSenseAt;
constexpr uint8_t kDescriptorSense = 0x72;
constexpr uint8_t kDescriptorSenseDeferred = 0x73;
constexpr uint8_t kFixedSense = 0x70;
constexpr uint8_t kMediaStatusByte = 5;
constexpr int kTrayOpenBit = 0;

void Sleep(const TrayPauseFn& pause, int milliseconds) {
    if (pause)
        pause(milliseconds);
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

TrayResult UnitReady(ITrayDevice& device) {
    return device.Exec(modMMC::BuildTestUnitReady(), {});
}

// The transport's commands as the tray path's, for drives without a block node: the result
// record built from the status and the three sense bytes the transport keeps.
class TransportTrayDevice final : public ITrayDevice {
  public:
    TransportTrayDevice(ISCSI& transport, std::string handle)
        : transport_(transport), handle_(std::move(handle)) {}

    TrayResult Exec(std::span<const uint8_t> cdb, std::span<uint8_t> data) override {
        uint8_t cdblen = static_cast<uint8_t>(cdb.size());
        int32_t direction = 0;
        int16_t timeOut = kTrayTimeOut;
        const int32_t status = transport_.ExecCMD(handle_, cdb, cdblen, direction,
                                                  data.empty() ? nullptr : data.data(),
                                                  static_cast<int32_t>(data.size()), timeOut);
        if (status == kStatusNotDelivered || status == kStatusNoDevice)
            return MakeTrayResult(kStatusCheckCondition, {});
        std::array<uint8_t, kSenseAscqByte + 1> sense{};
        if (status != kStatusGood) {
            sense[0] = kFixedSense;
            sense[kSenseKeyByte] = transport_.LastSK();
            sense[kSenseAscByte] = transport_.LastASC();
            sense[kSenseAscqByte] = transport_.LastASCQ();
        }
        return MakeTrayResult(status, sense);
    }

  private:
    ISCSI& transport_;
    std::string handle_;
};

}  // namespace

TrayResult MakeTrayResult(int32_t status, std::span<const uint8_t> sense) {
    TrayResult result{};
    result[kStatusAt] = static_cast<uint8_t>(status);
    if (sense.empty())
        return result;
    const uint8_t responseCode = sense[0] & 0x7F;
    if (responseCode == kDescriptorSense || responseCode == kDescriptorSenseDeferred) {
        // Key, ASC and ASCQ follow the response code directly in this format.
        result[kSenseAt] = kFixedSense;
        if (sense.size() > 1)
            result[kSenseAt + kSenseKeyByte] = sense[1];
        if (sense.size() > 2)
            result[kSenseAt + kSenseAscByte] = sense[2];
        if (sense.size() > 3)
            result[kSenseAt + kSenseAscqByte] = sense[3];
        return result;
    }
    std::copy_n(sense.begin(), std::min(sense.size(), kSenseHeld), result.begin() + kSenseAt);
    return result;
}

uint8_t TrayStatus(const TrayResult& result) {
    return result[kStatusAt];
}

uint8_t TraySenseKey(const TrayResult& result) {
    return result[kSenseAt + kSenseKeyByte] & 0x0F;
}

uint8_t TrayAsc(const TrayResult& result) {
    return result[kSenseAt + kSenseAscByte];
}

uint8_t TrayAscq(const TrayResult& result) {
    return result[kSenseAt + kSenseAscqByte];
}

int16_t BitSet(int32_t value, int bit) {
    if (bit < 0 || bit > 31)
        return 0;
    return (static_cast<uint32_t>(value) >> bit) & 1u ? int16_t{-1} : int16_t{0};
}

bool TurIsFinal(const TrayResult& result) {
    return TrayStatus(result) == kStatusGood || TrayAsc(result) == kAscMediumNotPresent;
}

bool TurCallsForRetries(const TrayResult& result) {
    const bool becomingReady =
        TrayAsc(result) == kAscBecomingReady && TrayAscq(result) == kAscqBecomingReady;
    const bool changed =
        TraySenseKey(result) == kSenseUnitAttention && TrayAsc(result) == kAscMediumChanged;
    return becomingReady || changed;
}

TrayDecision DecideFromUnitReady(const TrayResult& result) {
    if (TrayStatus(result) == kStatusGood)
        return TrayDecision::Closed;
    if (TrayAsc(result) != kAscMediumNotPresent)
        return TrayDecision::Unknown;
    switch (TrayAscq(result)) {
        case kAscqTrayClosed:
            return TrayDecision::Closed;
        case kAscqTrayOpen:
            return TrayDecision::Open;
        case 0x00:
            return TrayDecision::AskMediaEvent;
        default:
            return TrayDecision::Unknown;
    }
}

int16_t TrayStateFromMediaEvent(const TrayResult& result, std::span<const uint8_t> reply) {
    if (TrayStatus(result) != kStatusGood || reply.size() <= kMediaStatusByte)
        return kTrayUnknown;
    if (reply[0] == 0 && reply[1] == 0)
        return kTrayUnknown;
    return static_cast<int16_t>(-BitSet(reply[kMediaStatusByte], kTrayOpenBit));
}

TrayResult TestUnitReadyRetry(ITrayDevice& device, const TrayPauseFn& pause) {
    const TrayResult first = UnitReady(device);
    if (TurIsFinal(first) || !TurCallsForRetries(first))
        return first;
    for (int i = 0; i < kTurRetries; ++i) {
        if (TrayStatus(UnitReady(device)) == kStatusGood)
            break;
        Sleep(pause, kTurRetryPauseMs);
    }
    return UnitReady(device);
}

TrayResult GetEventStatus(ITrayDevice& device, uint8_t classes, std::span<uint8_t> reply,
                          uint16_t allocation) {
    const auto cdb = modMMC::BuildGetEventStatus(classes, allocation);
    return device.Exec(cdb, reply.first(std::min<size_t>(reply.size(), allocation)));
}

int16_t GetTrayState(ITrayDevice& device, const TrayPauseFn& pause) {
    const TrayResult ready = TestUnitReadyRetry(device, pause);
    switch (DecideFromUnitReady(ready)) {
        case TrayDecision::Closed:
            return kTrayClosed;
        case TrayDecision::Open:
            return kTrayOpen;
        case TrayDecision::AskMediaEvent: {
            // One byte more than asked for, as the reply record has always been.
            std::array<uint8_t, kMediaEventAllocation + 1> reply{};
            const TrayResult event =
                GetEventStatus(device, kMediaEventClass, reply, kMediaEventAllocation);
            return TrayStateFromMediaEvent(event, reply);
        }
        case TrayDecision::Unknown:
            break;
    }
    return kTrayUnknown;
}

int16_t GetTrayState(const std::string& drive, const TrayPauseFn& pause) {
    TrayNodeDevice device(TrayNodePath(drive));
    if (!device.IsOpen())
        return kTrayUnknown;
    return GetTrayState(device, pause);
}

int16_t GetTrayState(ISCSI& transport, const std::string& handle, const TrayPauseFn& pause) {
    if (const std::string node = BlockNodeOf(transport, handle); !node.empty())
        return GetTrayState(node, pause);
    TransportTrayDevice device(transport, handle);
    return GetTrayState(device, pause);
}

}  // namespace plattmix::scsi
