// Where a track lies for extraction, from the table of contents in LBA form.
#pragma once

#include <cstdint>
#include <optional>

#include "SessionToc.h"
#include "modMMC.h"

namespace plattmix::audiocd {

inline constexpr int kRipBlockSectors = 27;
inline constexpr uint8_t kReadCdAllFields = 0xF8;  // sync, headers, user data, EDC/ECC
inline constexpr int kLastTrackTrimSectors = 150;

struct TrackBounds {
    int32_t firstLba = 0;
    int32_t lastLba = 0;     // the first sector not read
    int64_t audioBytes = 0;  // (lastLba - firstLba) * 2352
};

// track counts from 1 as the row's position: descriptor track - 1 gives the start, descriptor
// track the end; when track equals the header's last track, 150 more sectors are left off.
// With the disc's sessions (built from the same table), the last track of a session that
// another session follows ends at its session's lead-out instead, 150 sectors left off too.
// Nothing when the descriptors are missing or N overflows 32 bits.
std::optional<TrackBounds> ComputeTrackBounds(const modMMC::Toc& lbaToc, int16_t track,
                                              const SessionToc* sessions = nullptr);

}  // namespace plattmix::audiocd
