// The request blocks of the ASPI-style interface, as pure functions over their bytes: what the
// fall-back transport fills in, what the generic-driver layer reads and answers. Every block
// starts with the same header (command, status, host adapter, flags, four reserved bytes); the
// device-addressed ones carry target and LUN at bytes 8 and 9. Integers are little-endian.
#pragma once

#include <cstdint>
#include <span>

namespace plattmix::scsi {

// Command codes (block byte 0).
inline constexpr uint8_t kSrbGetDeviceType = 1;
inline constexpr uint8_t kSrbExecScsiCmd = 2;
inline constexpr uint8_t kSrbGetDiskInfo = 6;
inline constexpr uint8_t kSrbGetSetTimeouts = 8;

// Block status (byte 1) and the status half of the support answer.
inline constexpr uint8_t kSrbPending = 0x00;
inline constexpr uint8_t kSrbComplete = 0x01;
inline constexpr uint8_t kSrbAborted = 0x02;
inline constexpr uint8_t kSrbError = 0x04;  // carried out; the target status is not GOOD
inline constexpr uint8_t kSrbInvalidCommand = 0x80;
inline constexpr uint8_t kSrbInvalidHostAdapter = 0x81;
inline constexpr uint8_t kSrbNoDevice = 0x82;
inline constexpr uint8_t kSrbInvalidSrb = 0xE0;
inline constexpr uint8_t kSrbFailedInit = 0xE4;  // the generic driver is not there
inline constexpr uint8_t kSrbNoAdapters = 0xE8;

// Flags (byte 3): the direction of the data.
inline constexpr uint8_t kSrbDataIn = 0x08;
inline constexpr uint8_t kSrbDataOut = 0x10;

// Host adapter status of a request that was not carried to its end.
inline constexpr uint8_t kHostOk = 0x00;
inline constexpr uint8_t kHostCommandTimeOut = 0x0B;
inline constexpr uint8_t kHostBusReset = 0x0E;
inline constexpr uint8_t kHostSelectionTimeOut = 0x11;  // the device could not be reached
inline constexpr uint8_t kHostDataUnderrun = 0x12;      // data over- or underrun

// Block sizes.
inline constexpr size_t kExecSrbSize = 80;
inline constexpr size_t kTimeoutSrbSize = 14;
inline constexpr size_t kDeviceTypeSrbSize = 12;
inline constexpr size_t kDiskInfoSrbSize = 24;

// Header and address bytes, the same in every block.
inline constexpr size_t kSrbCommandByte = 0;
inline constexpr size_t kSrbStatusByte = 1;
inline constexpr size_t kSrbHostAdapterByte = 2;
inline constexpr size_t kSrbFlagsByte = 3;
inline constexpr size_t kSrbTargetByte = 8;
inline constexpr size_t kSrbLunByte = 9;

// The execute block.
inline constexpr size_t kExecBufferLengthAt = 12;
inline constexpr size_t kExecBufferAt = 16;  // the address's low 32 bits
inline constexpr size_t kExecSenseLengthAt = 20;
inline constexpr size_t kExecCdbLengthAt = 21;
inline constexpr size_t kExecHostStatusAt = 22;
inline constexpr size_t kExecTargetStatusAt = 23;
inline constexpr size_t kExecEventAt = 24;
// A 64-bit build keeps the address's high 32 bits in the reserved bytes after the event.
inline constexpr size_t kExecBufferHighAt = 28;
inline constexpr size_t kExecCdbAt = 48;
inline constexpr size_t kExecCdbSize = 16;
inline constexpr size_t kExecSenseAt = 64;
inline constexpr size_t kExecSenseAreaSize = 16;
inline constexpr uint8_t kExecSenseLength = 14;  // what the transport asks for

// The other blocks' answers.
inline constexpr size_t kDeviceTypeAt = 10;
inline constexpr size_t kDiskInfoFlagsAt = 10;
inline constexpr size_t kDiskInfoDriveAt = 11;
inline constexpr size_t kTimeoutAt = 10;  // four bytes, in half-seconds

struct SrbAddress {
    uint8_t hostAdapter = 0;
    uint8_t target = 0;
    uint8_t lun = 0;
    bool operator==(const SrbAddress&) const = default;
};

struct ExecRequest {
    SrbAddress address;
    bool dataIn = true;
    uint32_t bufferLength = 0;
    uint64_t bufferAddress = 0;
    int32_t event = -1;  // the completion event's descriptor
    std::span<const uint8_t> cdb;
    uint8_t cdbLength = 0;
};

// Builders: each clears the whole block first.
void BuildExecSrb(std::span<uint8_t, kExecSrbSize> srb, const ExecRequest& request);
void BuildTimeoutSrb(std::span<uint8_t, kTimeoutSrbSize> srb, SrbAddress address,
                     uint32_t halfSeconds);
void BuildDeviceTypeSrb(std::span<uint8_t, kDeviceTypeSrbSize> srb, SrbAddress address);
void BuildDiskInfoSrb(std::span<uint8_t, kDiskInfoSrbSize> srb, SrbAddress address);

// The time-out a caller's seconds become: twice the value, the default for 0 (a negative value
// keeps its 32-bit pattern).
uint32_t AspiTimeOut(int16_t seconds);

// The ExecCMD status once waiting has ended: the target status of a request the layer carried
// out, 255 for one aborted, never delivered, or still pending when the wait ran out.
int32_t ExecResult(uint8_t srbStatus, uint8_t targetStatus, bool waitTimedOut);

// Readers for the layer's side.
SrbAddress ReadAddress(std::span<const uint8_t> srb);
uint32_t ReadLittle32(std::span<const uint8_t> bytes, size_t at);
void WriteLittle32(std::span<uint8_t> bytes, size_t at, uint32_t value);

struct ExecFields {
    SrbAddress address;
    uint8_t flags = 0;
    uint32_t bufferLength = 0;
    uint64_t bufferAddress = 0;
    uint8_t senseLength = 0;
    uint8_t cdbLength = 0;
    int32_t event = -1;
    std::span<const uint8_t> cdb;  // all sixteen bytes
};
ExecFields ReadExecSrb(std::span<const uint8_t, kExecSrbSize> srb);

}  // namespace plattmix::scsi
