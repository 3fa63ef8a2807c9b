#include "AspiSrb.h"

#include <algorithm>

#include "ScsiStatus.h"

namespace plattmix::scsi {

namespace {

template <size_t N>
void Header(std::span<uint8_t, N> srb, uint8_t command, SrbAddress address, uint8_t flags) {
    std::fill(srb.begin(), srb.end(), uint8_t{0});
    srb[kSrbCommandByte] = command;
    srb[kSrbHostAdapterByte] = address.hostAdapter;
    srb[kSrbFlagsByte] = flags;
    srb[kSrbTargetByte] = address.target;
    srb[kSrbLunByte] = address.lun;
}

}  // namespace

uint32_t ReadLittle32(std::span<const uint8_t> bytes, size_t at) {
    return static_cast<uint32_t>(bytes[at]) | static_cast<uint32_t>(bytes[at + 1]) << 8 |
           static_cast<uint32_t>(bytes[at + 2]) << 16 | static_cast<uint32_t>(bytes[at + 3]) << 24;
}

void WriteLittle32(std::span<uint8_t> bytes, size_t at, uint32_t value) {
    for (size_t i = 0; i < 4; ++i)
        bytes[at + i] = static_cast<uint8_t>(value >> (8 * i));
}

void BuildExecSrb(std::span<uint8_t, kExecSrbSize> srb, const ExecRequest& request) {
    Header(srb, kSrbExecScsiCmd, request.address, request.dataIn ? kSrbDataIn : kSrbDataOut);
    WriteLittle32(srb, kExecBufferLengthAt, request.bufferLength);
    WriteLittle32(srb, kExecBufferAt, static_cast<uint32_t>(request.bufferAddress));
    WriteLittle32(srb, kExecBufferHighAt, static_cast<uint32_t>(request.bufferAddress >> 32));
    srb[kExecSenseLengthAt] = kExecSenseLength;
    srb[kExecCdbLengthAt] = request.cdbLength;
    WriteLittle32(srb, kExecEventAt, static_cast<uint32_t>(request.event));
    const size_t copied = std::min({size_t{request.cdbLength}, request.cdb.size(), kExecCdbSize});
    std::copy_n(request.cdb.begin(), copied, srb.begin() + kExecCdbAt);
}

void BuildTimeoutSrb(std::span<uint8_t, kTimeoutSrbSize> srb, SrbAddress address,
                     uint32_t halfSeconds) {
    Header(srb, kSrbGetSetTimeouts, address, kSrbDataOut);
    WriteLittle32(srb, kTimeoutAt, halfSeconds);
}

void BuildDeviceTypeSrb(std::span<uint8_t, kDeviceTypeSrbSize> srb, SrbAddress address) {
    Header(srb, kSrbGetDeviceType, address, 0);
}

void BuildDiskInfoSrb(std::span<uint8_t, kDiskInfoSrbSize> srb, SrbAddress address) {
    Header(srb, kSrbGetDiskInfo, address, 0);
}

uint32_t AspiTimeOut(int16_t seconds) {
    if (seconds == 0)
        return kAspiDefaultTimeOut;
    return static_cast<uint32_t>(static_cast<int32_t>(seconds) * 2);
}

int32_t ExecResult(uint8_t srbStatus, uint8_t targetStatus, bool waitTimedOut) {
    if (srbStatus == kSrbComplete)
        return targetStatus;
    if (waitTimedOut)
        return kStatusNotDelivered;
    if (srbStatus == kSrbError)
        return targetStatus;
    return kStatusNotDelivered;
}

SrbAddress ReadAddress(std::span<const uint8_t> srb) {
    return {srb[kSrbHostAdapterByte], srb[kSrbTargetByte], srb[kSrbLunByte]};
}

ExecFields ReadExecSrb(std::span<const uint8_t, kExecSrbSize> srb) {
    ExecFields fields;
    fields.address = ReadAddress(srb);
    fields.flags = srb[kSrbFlagsByte];
    fields.bufferLength = ReadLittle32(srb, kExecBufferLengthAt);
    fields.bufferAddress = static_cast<uint64_t>(ReadLittle32(srb, kExecBufferHighAt)) << 32 |
                           ReadLittle32(srb, kExecBufferAt);
    fields.senseLength = srb[kExecSenseLengthAt];
    fields.cdbLength = srb[kExecCdbLengthAt];
    fields.event = static_cast<int32_t>(ReadLittle32(srb, kExecEventAt));
    fields.cdb = srb.subspan(kExecCdbAt, kExecCdbSize);
    return fields;
}

}  // namespace plattmix::scsi
