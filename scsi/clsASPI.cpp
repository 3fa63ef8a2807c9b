#include "clsASPI.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

#include "AspiLibrary.h"
#include "MmcOpcodes.h"
#include "ScsiStatus.h"

namespace plattmix::scsi {

namespace {

constexpr size_t kHandleLength = 3;
constexpr uint8_t kScanTargets = 8;
constexpr uint8_t kScanLuns = 8;
constexpr int kPollSliceMs = 50;
constexpr auto kSettleTime = std::chrono::milliseconds(30);

// The completion event: an eventfd that stays signalled once the layer has written to it.
class Event {
  public:
    Event() : fd_(::eventfd(0, EFD_CLOEXEC)) {}
    ~Event() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    int Descriptor() const { return fd_; }
    // True when signalled within the time (negative: no limit). Without an event the time
    // simply passes.
    bool Wait(int milliseconds) const {
        pollfd p{fd_, POLLIN, 0};
        return ::poll(&p, 1, milliseconds) > 0;
    }

  private:
    int fd_;
};

uint8_t StatusOf(std::span<uint8_t> srb) {
    return std::atomic_ref<uint8_t>(srb[kSrbStatusByte]).load(std::memory_order_acquire);
}

// Polls the status byte until the layer has finished with the block; the event wakes the wait
// early. The layer signals just before it publishes the status, so a signalled event may be
// seen a moment before the status changes.
void WaitUntilDone(std::span<uint8_t> srb, const Event& event) {
    while (StatusOf(srb) == kSrbPending) {
        if (event.Wait(kPollSliceMs))
            std::this_thread::yield();
    }
}

std::optional<SrbAddress> Decode(const std::string& handle) {
    if (handle.size() != kHandleLength)
        return std::nullopt;
    return SrbAddress{static_cast<uint8_t>(handle[0]), static_cast<uint8_t>(handle[1]),
                      static_cast<uint8_t>(handle[2])};
}

}  // namespace

clsASPI::clsASPI() : clsASPI(FindAspiLibrary()) {}

clsASPI::clsASPI(const std::string& library) {
    installed_ = dll_.DllLoad(library);
    if (installed_)
        Scan();
}

clsASPI::~clsASPI() {
    dll_.DllUnload();
}

std::string clsASPI::MakeHandle(SrbAddress address) {
    return std::string{static_cast<char>(address.hostAdapter), static_cast<char>(address.target),
                       static_cast<char>(address.lun)};
}

uint32_t clsASPI::Send(std::span<uint8_t> srb) {
    const std::array<uintptr_t, 1> argument{reinterpret_cast<uintptr_t>(srb.data())};
    return dll_.CallFunc(kAspiSendCommandExport, argument);
}

void clsASPI::Scan() {
    const uint32_t support = dll_.CallFunc(kAspiSupportInfoExport);
    const unsigned adapters = support & 0xFF;
    // One adapter more than reported, as the program always scanned.
    for (unsigned adapter = 0; adapter <= adapters; ++adapter) {
        for (uint8_t target = 0; target < kScanTargets; ++target) {
            for (uint8_t lun = 0; lun < kScanLuns; ++lun) {
                const SrbAddress address{static_cast<uint8_t>(adapter), target, lun};
                std::array<uint8_t, kDeviceTypeSrbSize> srb{};
                BuildDeviceTypeSrb(srb, address);
                Send(srb);
                if (StatusOf(srb) == kSrbComplete && srb[kDeviceTypeAt] == kDeviceTypeCdDvd)
                    drives_.push_back(MakeHandle(address));
            }
        }
    }
}

bool clsASPI::Initialized() {
    if (!installed_)
        return false;
    const uint32_t support = dll_.CallFunc(kAspiSupportInfoExport);
    return ((support >> 8) & 0xFF) == kSrbComplete;
}

std::string clsASPI::DriveChar(const std::string& Handle) {
    const auto address = Decode(Handle);
    if (!address || !installed_)
        return {};
    std::array<uint8_t, kDiskInfoSrbSize> srb{};
    BuildDiskInfoSrb(srb, *address);
    Send(srb);
    if (StatusOf(srb) != kSrbComplete)
        return {};
    return "sg" + std::to_string(srb[kDiskInfoDriveAt]);
}

std::string clsASPI::DriveHandle(int16_t& index) {
    if (index < 1 || static_cast<size_t>(index) > drives_.size())
        return {};
    return drives_[static_cast<size_t>(index - 1)];
}

uint8_t clsASPI::HostAdapter(const std::string& Handle) {
    const auto address = Decode(Handle);
    return address ? address->hostAdapter : 0;
}

uint8_t clsASPI::TargetId(const std::string& Handle) {
    const auto address = Decode(Handle);
    return address ? address->target : 0;
}

uint8_t clsASPI::LUN(const std::string& Handle) {
    const auto address = Decode(Handle);
    return address ? address->lun : 0;
}

int32_t clsASPI::ExecCMD(std::string& Handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                         int32_t& direction, uint8_t* Buffer, int32_t BufferLen, int16_t& TimeOut) {
    const auto address = Decode(Handle);
    if (!address || !installed_)
        return kStatusNotDelivered;
    const Event event;

    std::array<uint8_t, kExecSrbSize> exec{};
    ExecRequest request;
    request.address = *address;
    request.dataIn = direction == 0;
    request.bufferLength = static_cast<uint32_t>(BufferLen);
    request.bufferAddress = reinterpret_cast<uintptr_t>(Buffer);
    request.event = event.Descriptor();
    request.cdb = cdb;
    request.cdbLength = cdblen;
    BuildExecSrb(exec, request);

    std::array<uint8_t, kTimeoutSrbSize> timeOut{};
    BuildTimeoutSrb(timeOut, *address, AspiTimeOut(TimeOut));
    Send(timeOut);
    const bool timeOutSet = StatusOf(timeOut) == kSrbComplete;

    Send(exec);
    bool waitTimedOut = false;
    uint8_t finalStatus = kSrbPending;
    if (timeOutSet || TimeOut == 0) {
        WaitUntilDone(exec, event);
        finalStatus = StatusOf(exec);
    } else {
        std::this_thread::sleep_for(kSettleTime);
        if (StatusOf(exec) == kSrbPending)
            waitTimedOut = !event.Wait(TimeOut < 0 ? -1 : TimeOut * 1000);
        const uint8_t atWaitEnd = StatusOf(exec);
        // The block and the buffer stay the layer's until it has finished with them.
        WaitUntilDone(exec, event);
        finalStatus = waitTimedOut ? atWaitEnd : StatusOf(exec);
    }

    const int32_t status = ExecResult(finalStatus, exec[kExecTargetStatusAt], waitTimedOut);
    const auto sense = std::span(exec).subspan(kExecSenseAt, kExecSenseAreaSize);
    lastSk_ = sense[kSenseKeyByte] & 0x0F;
    lastAsc_ = sense[kSenseAscByte];
    lastAscq_ = sense[kSenseAscqByte];
    return status;
}

}  // namespace plattmix::scsi
