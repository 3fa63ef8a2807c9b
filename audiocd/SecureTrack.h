// One track in the secure mode, in stages: a first pass writes the track into a WAV file while
// its checksums are summed; the AccurateRip record proves it, or a second pass reads it again
// and compares sector by sector; sectors that differ, or that the drive marked with C2 errors,
// are read again until a majority agrees, and those the first pass got wrong are put right in
// the file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "AccurateRipRecord.h"
#include "AccurateRipVerdict.h"
#include "JobHooks.h"
#include "RipLog.h"
#include "SecureReader.h"

namespace plattmix::audiocd {

struct SecureTrackParams {
    SecureTrackSpan span;
    bool firstAudio = false;  // the disc's first audio track
    bool lastAudio = false;   // its last audio track
    int recordPosition = 0;   // the track's place in the AccurateRip record, from 1
    const AccurateRipRecord* record = nullptr;
};

struct SecureTrackResult {
    enum class End { Done, ReadFailed, FileFailed, Stopped } end = End::Done;
    RipProof proof = RipProof::None;
    std::vector<uint32_t> passCrcs;
    int rereadSectors = 0;
    uint32_t v1 = 0;
    uint32_t v2 = 0;
    AccurateRipVerdict verdict;
    std::string problem;    // German, for the log; empty when there was none
    std::string fileError;  // why the WAV file failed (German)
};

// Writes the track as a WAV file with the standard header to wavPath (emptied first); on a
// read failure or a stop the file is removed.
SecureTrackResult RipSecureTrack(SecureReader& reader, const SecureTrackParams& params,
                                 const std::string& wavPath, const JobHooks& hooks);

}  // namespace plattmix::audiocd
