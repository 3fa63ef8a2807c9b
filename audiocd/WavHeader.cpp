#include "WavHeader.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

namespace plattmix::audiocd {
namespace {

constexpr int64_t kHeaderBytes = static_cast<int64_t>(kWavHeaderSize);
constexpr uint32_t kFormatChunkBytes = 16;
constexpr uint16_t kFormatPcm = 1;
constexpr uint16_t kChannels = 2;
constexpr uint32_t kSampleRate = 44100;
constexpr uint16_t kBlockAlign = 4;
constexpr uint16_t kBitsPerSample = 16;

bool FitsInt32(int64_t value) {
    return value >= std::numeric_limits<int32_t>::min() &&
           value <= std::numeric_limits<int32_t>::max();
}

// Little-endian writer over the 44 bytes, field after field.
class HeaderWriter {
  public:
    explicit HeaderWriter(WavHeaderBytes& bytes) : bytes_(bytes) {}

    void Tag(const char* text, size_t width) {
        // Left-justified in its fixed width; the tags always fill it.
        const size_t length = std::strlen(text);
        for (size_t i = 0; i < width; ++i)
            bytes_[at_ + i] = i < length ? static_cast<uint8_t>(text[i]) : uint8_t{' '};
        at_ += width;
    }
    void U16(uint16_t value) { Put(value, 2); }
    void U32(uint32_t value) { Put(value, 4); }
    // A signed 32-bit value as its two's complement pattern.
    void I32(int32_t value) { U32(static_cast<uint32_t>(value)); }

  private:
    void Put(uint32_t value, size_t width) {
        for (size_t i = 0; i < width; ++i)
            bytes_[at_ + i] = static_cast<uint8_t>((value >> (8 * i)) & 0xFF);
        at_ += width;
    }

    WavHeaderBytes& bytes_;
    size_t at_ = 0;
};

// The header with dataSize in its data chunk.
std::optional<WavHeaderBytes> HeaderWith(int64_t audioBytes, int64_t dataSize) {
    // Both size fields are signed 32-bit sums; out of range means no header at all.
    const int64_t riffSize = (audioBytes + kHeaderBytes) - 8;
    if (!FitsInt32(audioBytes) || !FitsInt32(riffSize) || !FitsInt32(dataSize))
        return std::nullopt;

    // Bytes per second follows from the fields, worked out in floating point and rounded.
    const double perSecond = static_cast<double>(kSampleRate) * kBitsPerSample / 8.0 * kChannels;
    const auto bytesPerSecond = static_cast<uint32_t>(std::lround(perSecond));

    WavHeaderBytes bytes{};
    HeaderWriter out(bytes);
    out.Tag("RIFF", 4);
    out.I32(static_cast<int32_t>(riffSize));
    out.Tag("WAVEfmt ", 8);
    out.U32(kFormatChunkBytes);
    out.U16(kFormatPcm);
    out.U16(kChannels);
    out.U32(kSampleRate);
    out.U32(bytesPerSecond);
    out.U16(kBlockAlign);
    out.U16(kBitsPerSample);
    out.Tag("data", 4);
    out.I32(static_cast<int32_t>(dataSize));
    return bytes;
}

}  // namespace

std::optional<WavHeaderBytes> WavHeader(int64_t audioBytes) {
    return HeaderWith(audioBytes, audioBytes - kHeaderBytes);  // N - 44: under-states the audio
}

std::optional<WavHeaderBytes> StandardWavHeader(int64_t audioBytes) {
    return HeaderWith(audioBytes, audioBytes);
}

}  // namespace plattmix::audiocd
