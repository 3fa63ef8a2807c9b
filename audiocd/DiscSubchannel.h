// What the drive reads from the disc's sub-channel for the cue sheet: the media catalog number,
// each audio track's ISRC and the length of its pregap (INDEX 00). A drive that does not answer
// leaves the field empty; nothing here fails a rip.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "ISCSI.h"
#include "RipCue.h"
#include "SessionToc.h"

namespace plattmix::audiocd {

struct TrackSubchannel {
    std::string isrc;
    int32_t pregapSectors = 0;
};

struct DiscSubchannel {
    std::string catalog;
    std::map<int, TrackSubchannel> tracks;  // by the disc's track number, audio tracks only
};

// A track's pregap is looked for with READ CD and the Q sub-channel: first the few sectors
// before its start, then four seconds at a time further back while each read lies in it.
inline constexpr int32_t kPregapProbeSectors = 8;
inline constexpr int32_t kPregapWindowSectors = 300;

// yield is called between reads, so that the window stays alive on a slow drive.
DiscSubchannel ReadDiscSubchannel(scsi::ISCSI& transport, std::string& handle,
                                  const SessionToc& toc, const std::function<void()>& yield);

// Puts the catalog number and each track's ISRC and pregap into the sheet.
void ApplyDiscSubchannel(const DiscSubchannel& subchannel, RipCue& cue);

}  // namespace plattmix::audiocd
