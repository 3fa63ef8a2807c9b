// CD-Text as a drive answers READ TOC/PMA/ATIP format 5: the disc's and the tracks' titles and
// performers in 18-byte packs of block 0, ISO 8859-1, behind a four-byte header.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "imagedrive/MmcReplies.h"

namespace plattmix::scsi::imagedrive {

inline constexpr size_t kCdTextPackSize = 18;
inline constexpr uint8_t kPackTitle = 0x80;
inline constexpr uint8_t kPackPerformer = 0x81;
inline constexpr uint8_t kPackSizeInfo = 0x8F;
inline constexpr uint8_t kCharCodeLatin1 = 0x00;

// The texts one block carries: entry 0 is the album, then one entry per track from firstTrack.
struct CdTextBlock {
    int firstTrack = 1;
    std::vector<std::string> titles;      // ISO 8859-1 bytes
    std::vector<std::string> performers;  // ISO 8859-1 bytes
};

// UTF-8 to ISO 8859-1; what has no place there (and what is no valid UTF-8) becomes '?'.
std::string ToLatin1(std::string_view utf8);

// The text packs of the block and its three size-information packs, without the header.
// A block may hold 256 packs; texts beyond that are cut.
std::vector<uint8_t> CdTextPacks(const CdTextBlock& block);

// The whole format-5 reply for the disc; nothing when the sheet gave no title or performer.
std::optional<Reply> CdTextReply(const DiscImage& disc);

}  // namespace plattmix::scsi::imagedrive
