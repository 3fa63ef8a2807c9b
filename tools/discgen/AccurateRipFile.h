// AccurateRip records for generated discs and for tests: the disc's IDs, a response holding the
// true checksums of its audio tracks, and the record's bytes as the AccurateRip server sends them.
#pragma once

#include <span>
#include <string>

#include "AccurateRipRecord.h"
#include "DiscSpec.h"
#include "Result.h"

namespace plattmix::discgen {

// From the generated table of contents: the audio tracks' starts, all starts, the lead-out of
// the last session.
audiocd::AccurateRipIds AccurateRipIdsOf(const DiscDescription& disc);

// One response whose entries hold each audio track's v2 (or v1) checksum with the given
// confidence, read through the disc-image drive as an exact rip reads it: every sector from the
// track's start to the next track or its session's lead-out. The entries follow the disc's
// track positions, as many as there are audio tracks, a data track's entry empty (so on a
// mixed-mode disc the last audio track has none, as in the AccurateRip database).
Result<audiocd::AccurateRipResponse> AccurateRipResponseOf(const DiscDescription& disc,
                                                           int confidence, bool v2 = true);

// Each response as its 13-byte header (track count, ID 1, ID 2, FreeDB ID) and its tracks' 9-byte
// entries (confidence, CRC, CRC of frame 450), little-endian, one after the other. The header
// says as many tracks as the response holds.
std::string MakeAccurateRipFile(std::span<const audiocd::AccurateRipResponse> responses);

}  // namespace plattmix::discgen
