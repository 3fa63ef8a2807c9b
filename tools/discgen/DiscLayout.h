// Checks a spec and works out where each track lands: in its file and on the disc.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "DiscSpec.h"
#include "Result.h"

namespace plattmix::discgen {

// Most sectors one BIN file may hold: 100 minutes, so every INDEX position in it stays within
// the two minute digits of a CUE time.
inline constexpr int64_t kMaxFileSectors = 100LL * 60 * kSectorsPerSecond;

struct TrackPlacement {
    int32_t fileIndexZero = 0;  // sector in the track's file where INDEX 00 starts
    int32_t fileIndexOne = 0;   // sector in the track's file where INDEX 01 starts
    int32_t pregapLba = 0;      // first PREGAP sector on the disc (== indexZeroLba if none)
    int32_t indexZeroLba = 0;   // first INDEX 00 sector (== startLba if none)
    int32_t startLba = 0;       // INDEX 01
    int32_t endLba = 0;         // one past the last sector of the track's own content
    int32_t spanEndLba = 0;     // next track's start, or the session's lead-out
};

struct DiscLayout {
    std::vector<TrackPlacement> tracks;  // same order as DiscSpec::tracks
    std::vector<SessionInfo> sessions;
};

// Empty when the spec can be written and read back as a CUE sheet; otherwise why not.
std::string ValidateSpec(const DiscSpec& spec);

Result<DiscLayout> LayOut(const DiscSpec& spec);

// Bytes per sector in the BIN file for a track mode.
int32_t FileSectorBytes(TrackMode mode);

}  // namespace plattmix::discgen
