// One track in the secure mode, in stages: a first pass streams the track into its output while
// its checksums are summed; the AccurateRip record proves it, or a second pass reads it again
// and compares block by block; blocks that differ, or that the drive marked with C2 errors, are
// read again until a majority agrees; when the first pass turns out wrong, the output is made
// anew from the agreed blocks.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "AccurateRipRecord.h"
#include "AccurateRipVerdict.h"
#include "JobHooks.h"
#include "RipLog.h"
#include "SecureReader.h"
#include "TrackEncode.h"

namespace plattmix::audiocd {

struct SecureTrackParams {
    SecureTrackSpan span;
    bool firstAudio = false;  // the disc's first audio track
    bool lastAudio = false;   // its last audio track
    int recordPosition = 0;   // the track's place in the AccurateRip record, from 1
    const AccurateRipRecord* record = nullptr;
};

// Where the track's stream goes: open() starts a new output (a second one replaces the first),
// push() hands it bytes, waiting while it is busy (false: the output failed or the user stopped).
struct SecureOutput {
    std::function<std::unique_ptr<TrackEncode>()> open;
    std::function<bool(TrackEncode&, std::span<const uint8_t>)> push;
};

struct SecureTrackResult {
    enum class End { Done, ReadFailed, OutputFailed, Stopped } end = End::Done;
    std::unique_ptr<TrackEncode> output;  // finished (or cancelled); its result is the row's
    RipProof proof = RipProof::None;
    std::vector<uint32_t> passCrcs;
    int rereadSectors = 0;
    uint32_t v1 = 0;
    uint32_t v2 = 0;
    AccurateRipVerdict verdict;
    std::string problem;  // German, for the log; empty when there was none
};

SecureTrackResult RipSecureTrack(SecureReader& reader, const SecureTrackParams& params,
                                 const SecureOutput& output, const JobHooks& hooks);

}  // namespace plattmix::audiocd
