// A disc's record in the AccurateRip database ("dBAR" file): one or more responses, each one
// pressing's checksums of every audio track. All numbers little-endian.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "AccurateRipIds.h"

namespace plattmix::audiocd {

inline constexpr size_t kAccurateRipHeaderBytes = 13;  // track count, ID 1, ID 2, FreeDB ID
inline constexpr size_t kAccurateRipTrackBytes = 9;    // confidence, CRC, CRC of frame 450

struct AccurateRipTrack {
    int confidence = 0;  // how many rips submitted this checksum
    uint32_t crc = 0;
    uint32_t frame450Crc = 0;
};

struct AccurateRipResponse {
    AccurateRipIds ids;                    // as the response's header names the disc
    std::vector<AccurateRipTrack> tracks;  // one per audio track, in disc order
};

struct AccurateRipRecord {
    std::vector<AccurateRipResponse> responses;
    // Why there is no record (German), empty when there is one: unknown disc, no network, a
    // damaged reply.
    std::string error;

    bool Found() const { return error.empty() && !responses.empty(); }
};

inline constexpr const char* kAccurateRipDamaged =
    "Die Antwort von AccurateRip ist beschädigt oder unvollständig.";

// The responses of a record for the disc ids names. A reply that is empty, ends inside a
// response or names another disc gives kAccurateRipDamaged as the error and no responses.
AccurateRipRecord ParseAccurateRipRecord(std::span<const uint8_t> bytes, const AccurateRipIds& ids);

}  // namespace plattmix::audiocd
