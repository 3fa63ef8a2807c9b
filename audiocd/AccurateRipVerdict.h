// What the AccurateRip record says about one ripped track: its v1 or v2 checksum is in the
// record (with how many rips agree), the record knows the track with other checksums only, or
// the record does not know the track at all.
#pragma once

#include <cstdint>
#include <string>

#include "AccurateRipRecord.h"

namespace plattmix::audiocd {

struct AccurateRipVerdict {
    enum class Kind { Matching, Differing, Unknown };

    Kind kind = Kind::Unknown;
    int confidence = 0;  // the confidences of all responses that hold the track's checksum

    bool Matches() const { return kind == Kind::Matching; }
    // "übereinstimmend (Vertrauen 12)", "abweichend" or "unbekannt": the log's words.
    std::string Text() const;
    // "AccurateRip: übereinstimmend, 12", "AccurateRip: abweichend" or "AccurateRip: unbekannt":
    // what a track's row adds in parentheses after its result.
    std::string RowText() const;
};

// position: the track's place in the record, from 1: its number on the disc (on a mixed-mode
// disc the data track holds the first place). A response counts when the track's entry there
// equals v1 or v2; entries without a checksum (confidence 0) are left aside.
AccurateRipVerdict CompareWithRecord(const AccurateRipRecord& record, int position, uint32_t v1,
                                     uint32_t v2);

}  // namespace plattmix::audiocd
