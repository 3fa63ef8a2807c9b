// The replies of the drive's non-reading commands, built from the disc model as plain bytes.
// The caller cuts each reply down to the allocation length and the buffer.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "imagedrive/DiscImage.h"

namespace plattmix::scsi::imagedrive {

using Reply = std::vector<uint8_t>;

// Standard INQUIRY data: CD/DVD device, removable, 36 bytes.
Reply InquiryReply();

// READ TOC/PMA/ATIP. Nothing when the starting track (format 0) or session (format 2) lies
// beyond the disc.
std::optional<Reply> TocReply(const DiscImage& disc, bool msf, uint8_t startTrack);
Reply SessionInfoReply(const DiscImage& disc, bool msf);
std::optional<Reply> FullTocReply(const DiscImage& disc, uint8_t startSession);

// Last LBA and the block length 2048.
Reply CapacityReply(const DiscImage& disc);
// Standard disc information of a finished, pressed disc.
Reply DiscInformationReply(const DiscImage& disc);

inline constexpr uint16_t kProfileNone = 0x0000;
inline constexpr uint16_t kProfileCdRom = 0x0008;
// GET CONFIGURATION: header with the current profile and the features at or after
// startFeature (requestType 2: that one feature only); the CD Read feature (0x001E) with the
// C2 flag when the drive reports C2 error pointers.
Reply ConfigurationReply(uint16_t currentProfile, uint8_t requestType, uint16_t startFeature,
                         bool c2Pointers = true);

// Media event codes of GET EVENT STATUS NOTIFICATION.
inline constexpr uint8_t kMediaEventNone = 0;
inline constexpr uint8_t kMediaEventNew = 2;
inline constexpr uint8_t kMediaEventRemoval = 3;
// The media class (bit 4 of the request) answers event and status; any other request gets the
// "no event available" header.
Reply EventStatusReply(uint8_t requestedClasses, uint8_t mediaEvent, bool doorOpen,
                       bool mediaPresent);

}  // namespace plattmix::scsi::imagedrive
