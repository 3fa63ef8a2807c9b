// CD-Text of the disc in a drive (READ TOC format 5): the album's and each track's title and
// performer, for the tags of ripped files.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

#include "ISCSI.h"

namespace plattmix::audiocd {

struct CdText {
    std::string albumTitle;
    std::string albumPerformer;
    std::map<int, std::string> titles;      // by track number
    std::map<int, std::string> performers;  // by track number
};

// Parses the reply's packs (18 bytes each behind the 4-byte header; CRCs checked, packs with a
// bad CRC skipped; block 0 in ISO 8859-1, texts turned into UTF-8). Nothing when the reply holds
// no title or performer.
std::optional<CdText> ParseCdText(std::span<const uint8_t> reply);

// Asks the drive; nothing when it has no CD-Text or the command fails.
std::optional<CdText> ReadCdText(scsi::ISCSI& transport, std::string handle);

}  // namespace plattmix::audiocd
