#include "AspiExec.h"

#include <algorithm>
#include <limits>

#include "ScsiStatus.h"

namespace plattmix::scsi::aspi {

namespace {

// The kernel's host codes that mean something of their own to a client.
constexpr unsigned kHostTimeOut = 0x03;
constexpr unsigned kHostReset = 0x08;
constexpr unsigned kDriverTimeOut = 0x06;
constexpr unsigned kDriverSense = 0x08;  // only reports that sense is present
constexpr unsigned kDriverStatusMask = 0x0F;
constexpr uint32_t kMillisecondsPerHalfSecond = 500;

uint8_t HostStatusFor(const sg_io_hdr_t& header, int ioctlResult) {
    if (ioctlResult < 0)
        return kHostSelectionTimeOut;
    if (header.host_status == kHostTimeOut ||
        (header.driver_status & kDriverStatusMask) == kDriverTimeOut)
        return kHostCommandTimeOut;
    if (header.host_status == kHostReset)
        return kHostBusReset;
    // Anything else: the device could not be reached.
    return kHostSelectionTimeOut;
}

}  // namespace

uint8_t CheckExecSrb(const ExecFields& fields) {
    if (fields.cdbLength == 0 || fields.cdbLength > kExecCdbSize)
        return kSrbInvalidSrb;
    const uint8_t direction = fields.flags & (kSrbDataIn | kSrbDataOut);
    const bool hasData = fields.bufferLength > 0;
    if (hasData && fields.bufferAddress == 0)
        return kSrbInvalidSrb;
    if (hasData && direction == 0)
        return kSrbInvalidSrb;
    if (fields.bufferLength > static_cast<uint32_t>(std::numeric_limits<int32_t>::max()))
        return kSrbInvalidSrb;
    return kSrbPending;
}

void BuildExecRequest(SgIoRequest& request, const ExecFields& fields, uint32_t halfSeconds) {
    const uint8_t direction = fields.flags & (kSrbDataIn | kSrbDataOut);
    // Both direction flags together mean "no data".
    const bool hasData = fields.bufferLength > 0 && direction != (kSrbDataIn | kSrbDataOut);
    auto* buffer = hasData
                       ? reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(fields.bufferAddress))
                       : nullptr;
    BuildSgIoRequest(request, fields.cdb, fields.cdbLength, direction == kSrbDataIn ? 0 : 1, buffer,
                     hasData ? static_cast<int32_t>(fields.bufferLength) : 0, 0);
    request.header.mx_sb_len = static_cast<unsigned char>(
        std::min<size_t>({fields.senseLength, kExecSenseAreaSize, request.sense.size()}));
    const uint64_t milliseconds =
        uint64_t{halfSeconds == 0 ? kAspiDefaultTimeOut : halfSeconds} * kMillisecondsPerHalfSecond;
    request.header.timeout = static_cast<unsigned>(
        std::min<uint64_t>(milliseconds, std::numeric_limits<unsigned>::max()));
}

uint8_t FinishExecSrb(std::span<uint8_t, kExecSrbSize> srb, const sg_io_hdr_t& header,
                      std::span<const uint8_t> sense, int ioctlResult) {
    const unsigned driverError = header.driver_status & kDriverStatusMask & ~kDriverSense;
    const bool completed = ioctlResult >= 0 && header.host_status == 0 && driverError == 0;
    if (!completed) {
        srb[kExecHostStatusAt] = HostStatusFor(header, ioctlResult);
        srb[kExecTargetStatusAt] = 0;
        return kSrbAborted;
    }
    if (header.status == kStatusGood && IsShortTransfer(header)) {
        // Blocks missing from a READ: the request did not complete, whatever the drive says.
        srb[kExecHostStatusAt] = kHostDataUnderrun;
        srb[kExecTargetStatusAt] = 0;
        return kSrbAborted;
    }
    srb[kExecHostStatusAt] = kHostOk;
    srb[kExecTargetStatusAt] = header.status;
    const size_t written = std::min<size_t>(
        {header.sb_len_wr, sense.size(), srb[kExecSenseLengthAt], kExecSenseAreaSize});
    std::copy_n(sense.begin(), written, srb.begin() + kExecSenseAt);
    return header.status == kStatusGood ? kSrbComplete : kSrbError;
}

}  // namespace plattmix::scsi::aspi
