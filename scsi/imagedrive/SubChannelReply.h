// What the drive reads from the disc's sub-channel: READ SUB-CHANNEL's catalog number and
// ISRC from the sheet's CATALOG and ISRC lines, and each sector's Q position for READ CD.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "imagedrive/DiscImage.h"
#include "imagedrive/MmcReplies.h"

namespace plattmix::scsi::imagedrive {

// Format 02h (catalog number) or 03h (the ISRC of track), marked invalid when the sheet has
// none. Nothing for another format or a track the disc does not hold.
std::optional<Reply> SubChannelReply(const DiscImage& disc, uint8_t format, uint8_t track);

// The formatted Q of the sector at lba: mode 1, the track and its index (00 before INDEX 01,
// else 01), the time in the track (counting down to INDEX 01 in the pregap) and on the disc,
// in BCD, and the CRC. All zeros outside every track.
std::array<uint8_t, 16> QSubChannel(const DiscImage& disc, int32_t lba);

}  // namespace plattmix::scsi::imagedrive
