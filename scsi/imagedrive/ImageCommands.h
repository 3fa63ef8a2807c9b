// Answers one command block for one emulated drive: unit attention and readiness first, then
// the command itself. Unsupported commands end with CHECK CONDITION 5/20/00.
#pragma once

#include <span>

#include "MmcOpcodes.h"
#include "imagedrive/DriveSlot.h"
#include "imagedrive/ReadCommands.h"
#include "imagedrive/Sense.h"

namespace plattmix::scsi::imagedrive {

CommandResult ExecuteCommand(DriveSlot& slot, Cdb cdb, std::span<uint8_t> buffer);

}  // namespace plattmix::scsi::imagedrive
