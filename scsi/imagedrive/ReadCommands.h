// READ CD and READ(10) over a loaded medium. A read either succeeds or fails as a whole, as a
// drive's command does; a reply longer than the caller's buffer is cut at the buffer's end.
#pragma once

#include <cstdint>
#include <span>

#include "imagedrive/DriveSlot.h"
#include "imagedrive/SectorSource.h"
#include "imagedrive/Sense.h"

namespace plattmix::scsi::imagedrive {

using Cdb = std::span<const uint8_t, 16>;

// Sectors a read command asks for, for the speed throttle.
int64_t RequestedBlocks(Cdb cdb);

// Audio sectors come with the drive's read offset, flaky sectors and C2 error pointers applied;
// the flaky ranges' dice roll on.
CommandResult ExecuteReadCd(const SectorSource& medium, Faults& faults, Cdb cdb,
                            std::span<uint8_t> buffer);
CommandResult ExecuteRead10(const SectorSource& medium, const Faults& faults, Cdb cdb,
                            std::span<uint8_t> buffer);

}  // namespace plattmix::scsi::imagedrive
