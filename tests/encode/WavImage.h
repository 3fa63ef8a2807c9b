// WAV images as the ripping makes them: the program's 44-byte header over generated music.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "AudioSynth.h"
#include "WavHeader.h"

namespace plattmix::test {

inline constexpr int64_t kSectorBytes = 2352;

// The image of `sectors` sectors of track `track`'s music.
inline std::vector<uint8_t> MakeWavImage(int64_t sectors, int track = 1) {
    const int64_t audioBytes = sectors * kSectorBytes;
    const auto header = audiocd::WavHeader(audioBytes);
    std::vector<uint8_t> image(header->begin(), header->end());
    image.resize(static_cast<size_t>(audioBytes) + header->size());
    discgen::AudioSynth synth(track, discgen::AudioSynth::Voice::Chord, 7);
    for (int64_t s = 0; s < sectors; ++s) {
        auto* at = image.data() + header->size() + static_cast<size_t>(s * kSectorBytes);
        synth.FillSector(std::span<uint8_t, 2352>(at, 2352));
    }
    return image;
}

// The 16-bit samples the header announces: its data size, N - 44 bytes after the header.
inline std::vector<int16_t> AnnouncedSamples(std::span<const uint8_t> image) {
    const uint32_t dataSize = uint32_t{image[40]} | uint32_t{image[41]} << 8 |
                              uint32_t{image[42]} << 16 | uint32_t{image[43]} << 24;
    std::vector<int16_t> samples(dataSize / 2);
    for (size_t i = 0; i < samples.size(); ++i) {
        const auto low = image[44 + 2 * i];
        const auto high = image[44 + 2 * i + 1];
        samples[i] = static_cast<int16_t>(static_cast<uint16_t>(low | high << 8));
    }
    return samples;
}

}  // namespace plattmix::test
