// Rip.log: what a rip did and how each track was proven, as UTF-8 text in the target folder.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "AccurateRipVerdict.h"
#include "ProgramVersion.h"

namespace plattmix::audiocd {

inline constexpr const char* kRipLogName = "Rip.log";

enum class RipProof {
    None,         // neither proof held: the track failed
    AccurateRip,  // its checksum is in the AccurateRip record
    TestAndCopy,  // two passes gave the same CRC-32
};

struct RipLogTrack {
    int number = 0;        // on the disc
    std::string fileName;  // as written, "Track01.flac"
    RipProof proof = RipProof::None;
    std::vector<uint32_t> passCrcs;  // CRC-32 of each pass's audio, in order
    int rereadSectors = 0;           // sectors read again to settle differing passes
    uint32_t accurateRipV1 = 0;
    uint32_t accurateRipV2 = 0;
    AccurateRipVerdict verdict;
    std::string problem;  // German, empty when there was none
};

struct RipLog {
    std::string program = ProgramNameAndVersion();
    std::string drive;              // the drive's identification, trimmed
    int offset = 0;                 // read offset in samples
    bool secure = true;             // secure mode, else every sector read once
    std::string accurateRipId;      // AccurateRipIdText; empty when the record was not asked for
    std::string accurateRipStatus;  // why there is no record (German); empty when there is one
    std::vector<RipLogTrack> tracks;

    bool AllProven() const;
};

// The log's text, one line per fact, "\n" line ends, ending in the summary line.
std::string FormatRipLog(const RipLog& log);

// The last line: how many tracks were proven and how, and which were not.
std::string RipLogSummary(const RipLog& log);

// Writes kRipLogName into folder. Empty when written, else the reason in German.
std::string WriteRipLog(const std::string& folder, const RipLog& log);

}  // namespace plattmix::audiocd
