// Answers one command block for one emulated drive: unit attention and readiness first, then
// the command itself. Unsupported commands end with CHECK CONDITION 5/20/00.
#pragma once

#include <span>

#include "imagedrive/DriveSlot.h"
#include "imagedrive/ReadCommands.h"
#include "imagedrive/Sense.h"

namespace plattmix::scsi::imagedrive {

inline constexpr uint8_t kOpTestUnitReady = 0x00;
inline constexpr uint8_t kOpInquiry = 0x12;
inline constexpr uint8_t kOpStartStopUnit = 0x1B;
inline constexpr uint8_t kOpReadCapacity = 0x25;
inline constexpr uint8_t kOpRead10 = 0x28;
inline constexpr uint8_t kOpReadToc = 0x43;
inline constexpr uint8_t kOpGetConfiguration = 0x46;
inline constexpr uint8_t kOpGetEventStatus = 0x4A;
inline constexpr uint8_t kOpReadDiscInformation = 0x51;
inline constexpr uint8_t kOpReadCd = 0xBE;

CommandResult ExecuteCommand(DriveSlot& slot, Cdb cdb, std::span<uint8_t> buffer);

}  // namespace plattmix::scsi::imagedrive
