// The AccurateRip v1 and v2 checksums of one track, fed with its audio in order. Each stereo
// sample (4 bytes, left then right, 16-bit little-endian) read as one 32-bit number is multiplied
// by its place in the track, counted from 1; v1 adds up the products' low 32 bits, v2 their low
// and high 32 bits. The disc's first audio track leaves out its first five sectors' samples but
// one (2939), its last audio track its last five sectors' samples (2940), so that a rip whose
// read offset differs a little still checks the same.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace plattmix::audiocd {

inline constexpr uint32_t kSamplesPerSector = 588;

class AccurateRipChecksum {
  public:
    // trackSamples: the track's length in stereo samples (588 per sector).
    AccurateRipChecksum(uint32_t trackSamples, bool firstTrack, bool lastTrack);

    // The next bytes of the track's audio; a sample may be split between calls. Bytes beyond
    // trackSamples are not counted.
    void Update(std::span<const uint8_t> bytes);

    uint32_t V1() const { return low_; }
    uint32_t V2() const { return low_ + high_; }

  private:
    void Add(const uint8_t* samples, uint32_t count);

    uint32_t trackSamples_;
    uint32_t firstCounted_;  // place of the first sample counted, from 1
    uint32_t lastCounted_;   // place of the last sample counted
    uint32_t done_ = 0;      // samples seen so far
    uint32_t low_ = 0;
    uint32_t high_ = 0;
    std::array<uint8_t, 4> partial_{};  // the start of a sample split between calls
    size_t partialBytes_ = 0;
};

}  // namespace plattmix::audiocd
