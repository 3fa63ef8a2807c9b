// The 44-byte RIFF/WAVE header every extracted track starts with: PCM, 44100 Hz, two channels,
// 16 bits. audioBytes is N, the track's audio byte count; the RIFF size is N + 36 and the data
// size N - 44 (the latter under-states the audio by the header's length, on purpose).
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace plattmix::audiocd {

inline constexpr size_t kWavHeaderSize = 44;
using WavHeaderBytes = std::array<uint8_t, kWavHeaderSize>;

// Nothing when N + 36 or N - 44 leaves the signed 32-bit range.
std::optional<WavHeaderBytes> WavHeader(int64_t audioBytes);

// The standard header, as the secure mode writes it: the data size is N itself.
std::optional<WavHeaderBytes> StandardWavHeader(int64_t audioBytes);

}  // namespace plattmix::audiocd
