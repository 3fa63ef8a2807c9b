// Deterministic test audio, 44100 Hz 16-bit stereo little-endian, one CD sector at a time.
// Each track gets its own chord per channel (left and right differ), a slow tremolo and a
// little noise, so lossy and lossless encoders later have real content to work on. Integer
// phase accumulators over a sine table keep it fast and the same bytes on every machine.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace plattmix::discgen {

class AudioSynth {
  public:
    enum class Voice {
        Chord,  // the track's music
        Hiss,   // quiet noise only, for INDEX 00 areas so they differ from silence
    };

    static constexpr int kFramesPerSector = 588;  // stereo sample frames in 2352 bytes

    // discSeed varies the noise, so the same track number on two discs gives other bytes.
    AudioSynth(int trackNumber, Voice voice, uint32_t discSeed);

    // Writes the next 588 frames.
    void FillSector(std::span<uint8_t, 2352> sector);

  private:
    struct Channel {
        std::array<uint32_t, 3> phase{};
        std::array<uint32_t, 3> step{};
        uint32_t noise = 1;  // xorshift state, never 0
    };

    int16_t NextSample(Channel& channel, int32_t gain);
    int32_t NextGain();
    static uint32_t NoiseStep(uint32_t& state);

    Voice voice_;
    Channel left_;
    Channel right_;
    uint32_t tremoloPhase_ = 0;
    uint32_t tremoloStep_ = 0;
};

}  // namespace plattmix::discgen
