// The disc as the cdaudio device sees it: its tracks from the table of contents (LBA form),
// where each begins and ends, and where playing from a sector stops by itself.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ISCSI.h"
#include "modMMC.h"

namespace plattmix::audiocd {

struct CdAudioTrack {
    int number = 0;  // as the disc numbers it
    int32_t startLba = 0;
    bool data = false;
};

struct CdAudioDisc {
    std::vector<CdAudioTrack> tracks;
    int32_t leadOutLba = 0;
    // Where the last session's first track starts, on a disc of several sessions; the session
    // before it ends a session gap earlier.
    std::optional<int32_t> lastSessionLba;
};

// Nothing when the table holds no track or no lead-out, or its addresses go backwards.
std::optional<CdAudioDisc> DiscFromToc(const modMMC::Toc& lbaToc);
// The index of the track holding the sector; nothing before the first track or from the
// lead-out on.
std::optional<size_t> TrackIndexAt(const CdAudioDisc& disc, int32_t lba);
// Notes where the last session starts when the disc has more than one.
void ApplySessionInfo(CdAudioDisc& disc, const modMMC::SessionInfo& sessions);
// The first sector after the track: the next track's start (a session gap before it when a
// session begins there), or the lead-out.
int32_t TrackEndLba(const CdAudioDisc& disc, size_t index);
// Where playing from the sector ends: at the next data track or session, or at the lead-out.
int32_t AudioRunEnd(const CdAudioDisc& disc, int32_t fromLba);

// TEST UNIT READY (again after a unit attention), READ TOC and its session information (a
// disc without it counts as one session); nothing when the drive is not
// ready or the table cannot be read.
std::optional<CdAudioDisc> ReadCdAudioDisc(scsi::ISCSI& transport, std::string handle);

}  // namespace plattmix::audiocd
