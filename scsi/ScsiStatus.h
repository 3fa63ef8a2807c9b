// Status values of a SCSI request as the transports report them, and the sense codes the
// program reads back. Each constant has its one home here.
#pragma once

#include <cstdint>

namespace plattmix::scsi {

// ExecCMD results.
inline constexpr int32_t kStatusGood = 0;
inline constexpr int32_t kStatusCheckCondition = 2;
inline constexpr int32_t kStatusNoDevice = 24;       // no device handle could be opened
inline constexpr int32_t kStatusNotDelivered = 255;  // not delivered, not completed or timed out

// Sense keys (low four bits of fixed-format sense byte 2).
inline constexpr uint8_t kSenseNoSense = 0x0;
inline constexpr uint8_t kSenseNotReady = 0x2;
inline constexpr uint8_t kSenseMediumError = 0x3;
inline constexpr uint8_t kSenseIllegalRequest = 0x5;
inline constexpr uint8_t kSenseUnitAttention = 0x6;

// Additional sense codes and qualifiers.
inline constexpr uint8_t kAscBecomingReady = 0x04;  // with ASCQ 0x01
inline constexpr uint8_t kAscqBecomingReady = 0x01;
inline constexpr uint8_t kAscUnrecoveredRead = 0x11;  // with ASCQ 0x05: L-EC uncorrectable
inline constexpr uint8_t kAscqLecUncorrectable = 0x05;
inline constexpr uint8_t kAscInvalidOpcode = 0x20;
inline constexpr uint8_t kAscLbaOutOfRange = 0x21;
inline constexpr uint8_t kAscInvalidFieldInCdb = 0x24;
inline constexpr uint8_t kAscMediumChanged = 0x28;
inline constexpr uint8_t kAscMediumNotPresent = 0x3A;
inline constexpr uint8_t kAscIllegalModeForTrack = 0x64;  // e.g. READ(10) of an audio sector
inline constexpr uint8_t kAscqTrayClosed = 0x01;
inline constexpr uint8_t kAscqTrayOpen = 0x02;

// Where the three bytes lie in fixed-format sense data.
inline constexpr int kSenseKeyByte = 2;
inline constexpr int kSenseAscByte = 12;
inline constexpr int kSenseAscqByte = 13;

// The time-out, in seconds, the pass-through transport uses when the caller passes 0.
inline constexpr int16_t kSptiDefaultTimeOut = 10800;
// The time-out, in half-seconds, the fall-back transport sets when the caller passes 0; also
// what the generic-driver layer uses for a drive whose time-out was never set.
inline constexpr uint32_t kAspiDefaultTimeOut = 108000;

}  // namespace plattmix::scsi
