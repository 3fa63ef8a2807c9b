// The test discs, each named after the quirk it carries. Every function returns the recipe;
// WriteDisc turns it into files and tells the expected addresses and checksums.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "DiscSpec.h"

namespace plattmix::discgen {

enum class Fixture {
    AudioThreeTracks,    // the plain case: three short audio tracks in one file
    ExactBlockMultiple,  // lengths of 27*k sectors, and one of 27*k+1
    Pregap,              // INDEX 00 in the file before track 2, a PREGAP line on track 3
    MultiFile,           // one FILE per track
    DataTrackFirst,      // mixed mode: a MODE1/2048 track, then audio tracks in another file
    Enhanced,            // an audio session, then a data session (REM SESSION lines)
    TinyTracks,          // tracks of 1, 2, 3 and 4 sectors
    Large,               // a long audio disc for benchmarks, minutes chosen by the caller
};

inline constexpr int kDefaultLargeMinutes = 10;

std::string_view FixtureName(Fixture fixture);
std::optional<Fixture> FixtureByName(std::string_view name);
// Every fixture in declaration order.
const std::vector<Fixture>& AllFixtures();
// minutes is used by Large only.
DiscSpec FixtureSpec(Fixture fixture, int minutes = kDefaultLargeMinutes);

DiscSpec AudioThreeTracks();
DiscSpec ExactBlockMultiple();
DiscSpec Pregap();
DiscSpec MultiFile();
DiscSpec DataTrackFirst();
DiscSpec Enhanced();
DiscSpec TinyTracks();
// About four minutes per track in one file; 1 to 100 minutes make a valid disc.
DiscSpec Large(int minutes);

// Discs whose drive has a quirk (written into the drive's sidecar beside the sheet): the
// three tracks of AudioThreeTracks, read late by the given samples (ripping with the offset
// +samples gives the true audio), or with ten flaky sectors in the middle of track 2 that read
// wrong half of the time (C2 pointers mark the wrong bytes).
inline constexpr int32_t kReadsLateSamples = 667;
DiscSpec ReadsLate(int32_t samples = kReadsLateSamples);
DiscSpec FlakySectors();
// The Pregap disc with what the sub-channel carries besides: a catalog number, and ISRCs on
// tracks 1 and 2 (track 3 has none).
DiscSpec CatalogAndIsrc();

}  // namespace plattmix::discgen
