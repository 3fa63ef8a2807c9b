// The MusicBrainz disc ID of an audio CD, from its table of contents.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "TrackList.h"

namespace plattmix::audiocd {

// What the disc ID is made of; addresses are frame offsets (LBA + 150).
struct DiscIdToc {
    int firstTrack = 1;
    int lastTrack = 0;
    int32_t leadOut = 0;
    std::vector<int32_t> offsets;  // of firstTrack … lastTrack, in order
};

// SHA-1 over the first and last track number (two upper-case hex digits each), the lead-out and
// 99 track offsets (eight each, 0 where there is no track), in base64 with "." "_" "-" for
// "+" "/" "=": 28 characters.
std::string MusicBrainzDiscId(int firstTrack, int lastTrack, int32_t leadOut,
                              std::span<const int32_t> offsets);
inline std::string MusicBrainzDiscId(const DiscIdToc& toc) {
    return MusicBrainzDiscId(toc.firstTrack, toc.lastTrack, toc.leadOut, toc.offsets);
}

// The disc ID's fields from the track list: every track up to the lead-out, except that a disc
// whose audio tracks are followed by data tracks (an Enhanced CD) counts its audio session only.
// Nothing for a list without an audio track.
std::optional<DiscIdToc> DiscIdTocOf(const TrackList& list);

}  // namespace plattmix::audiocd
