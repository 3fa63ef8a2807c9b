#include "DiscSubchannel.h"

#include <algorithm>
#include <array>
#include <vector>

#include "MmcOpcodes.h"
#include "ScsiStatus.h"
#include "SubChannel.h"
#include "modMMC.h"

namespace plattmix::audiocd {
namespace {

std::string Catalog(scsi::ISCSI& transport, std::string& handle) {
    std::array<uint8_t, modMMC::kSubChannelReplyLength> reply{};
    if (modMMC::ReadSubChannel(transport, handle, scsi::kSubChannelCatalog, 0, reply) !=
        scsi::kStatusGood)
        return {};
    return modMMC::ParseCatalog(reply).value_or("");
}

std::string Isrc(scsi::ISCSI& transport, std::string& handle, int track) {
    std::array<uint8_t, modMMC::kSubChannelReplyLength> reply{};
    if (modMMC::ReadSubChannel(transport, handle, scsi::kSubChannelIsrc,
                               static_cast<uint8_t>(track), reply) != scsi::kStatusGood)
        return {};
    return modMMC::ParseIsrc(reply).value_or("");
}

// Reads back from the track's start down to earliest at most, while the Q sub-channel says
// every sector read belongs to the track's INDEX 00: a few sectors first, which is all a track
// without a pregap costs, then a window at a time.
int32_t Pregap(scsi::ISCSI& transport, std::string& handle, int track, int32_t start,
               int32_t earliest, const std::function<void()>& yield) {
    std::vector<uint8_t> buffer;
    int32_t pregap = 0;
    while (start - pregap > earliest) {
        yield();
        const int32_t wanted = pregap == 0 ? kPregapProbeSectors : kPregapWindowSectors;
        const int32_t count = std::min(wanted, start - pregap - earliest);
        const int32_t first = start - pregap - count;
        buffer.assign(static_cast<size_t>(count) * modMMC::kSectorWithQBytes, 0);
        if (modMMC::ReadCdWithQ(transport, handle, static_cast<uint32_t>(first),
                                static_cast<uint32_t>(count), buffer) != scsi::kStatusGood)
            return pregap;
        const int32_t found = modMMC::PregapSectorsBefore(buffer, track);
        pregap += found;
        if (found < count)
            break;
    }
    return pregap;
}

// Where a track's pregap can begin at the earliest: after the previous track's start in the
// same session, at LBA 0 before the disc's first track. A later session's first track is not
// searched: its pregap lies behind the session gap.
int32_t EarliestPregapLba(const SessionToc& toc, size_t index) {
    if (index == 0)
        return 0;
    const TocTrack& previous = toc.tracks[index - 1];
    const TocTrack& track = toc.tracks[index];
    return previous.session == track.session ? previous.startLba + 1 : track.startLba;
}

}  // namespace

DiscSubchannel ReadDiscSubchannel(scsi::ISCSI& transport, std::string& handle,
                                  const SessionToc& toc, const std::function<void()>& yield) {
    DiscSubchannel subchannel;
    subchannel.catalog = Catalog(transport, handle);
    for (size_t i = 0; i < toc.tracks.size(); ++i) {
        const TocTrack& track = toc.tracks[i];
        if (track.data)
            continue;
        yield();
        subchannel.tracks[track.number] = {Isrc(transport, handle, track.number),
                                           Pregap(transport, handle, track.number, track.startLba,
                                                  EarliestPregapLba(toc, i), yield)};
    }
    return subchannel;
}

void ApplyDiscSubchannel(const DiscSubchannel& subchannel, RipCue& cue) {
    cue.catalog = subchannel.catalog;
    for (RipCueTrack& track : cue.tracks) {
        const auto found = subchannel.tracks.find(track.number);
        if (found != subchannel.tracks.end()) {
            track.isrc = found->second.isrc;
            track.pregapSectors = found->second.pregapSectors;
        }
    }
}

}  // namespace plattmix::audiocd
