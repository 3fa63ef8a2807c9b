// The identification of a disc in the AccurateRip database, from its table of contents: two
// AccurateRip disc IDs, the FreeDB (CDDB) disc ID and the number of audio tracks, which together
// name the disc's record on the server.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace plattmix::audiocd {

struct AccurateRipIds {
    int audioTracks = 0;
    uint32_t id1 = 0;
    uint32_t id2 = 0;
    uint32_t freedbId = 0;
};

// audioStarts: the audio tracks' start LBAs in disc order; allStarts: every track's start LBA,
// data tracks included; leadOut: the LBA of the disc's true lead-out (on an Enhanced CD that of
// the last session, not the end of the audio session). LBAs without the 150-sector lead-in.
AccurateRipIds ComputeAccurateRipIds(std::span<const int32_t> audioStarts,
                                     std::span<const int32_t> allStarts, int32_t leadOut);

// The CDDB disc ID: checksum of the start seconds' digits, playing time in seconds, track count.
uint32_t ComputeFreedbId(std::span<const int32_t> allStarts, int32_t leadOut);

// Eight lower-case hex digits: how IDs and checksums are written.
std::string Hex8Text(uint32_t value);

// "012-000e686a-008a4eb8-84081a0c": audio tracks and the three IDs, as the record's name uses them.
std::string AccurateRipIdText(const AccurateRipIds& ids);

// The record's path below the server's address: the last three hex digits of ID 1, the last one
// first, as folders, then "dBAR-" + the ID text + ".bin", e.g. "a/6/8/dBAR-012-000e686a-….bin".
std::string AccurateRipRecordPath(const AccurateRipIds& ids);

}  // namespace plattmix::audiocd
