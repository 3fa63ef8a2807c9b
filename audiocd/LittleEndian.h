// Reading the little-endian numbers of audio samples and AccurateRip records.
#pragma once

#include <cstdint>

namespace plattmix::audiocd {

inline uint32_t LoadLE32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
           (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

}  // namespace plattmix::audiocd
