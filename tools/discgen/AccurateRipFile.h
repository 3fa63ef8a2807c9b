// The bytes of an AccurateRip record ("dBAR" file) for responses a test or a generated disc
// makes up, as the AccurateRip server sends them.
#pragma once

#include <span>
#include <string>

#include "AccurateRipRecord.h"

namespace plattmix::discgen {

// Each response as its 13-byte header (track count, ID 1, ID 2, FreeDB ID) and its tracks' 9-byte
// entries (confidence, CRC, CRC of frame 450), little-endian, one after the other. The header
// says as many tracks as the response holds.
std::string MakeAccurateRipFile(std::span<const audiocd::AccurateRipResponse> responses);

}  // namespace plattmix::discgen
