// The 44-byte WAV header: byte for byte, and its size fields at the ends of their range.
#include <gtest/gtest.h>

#include <limits>

#include "WavHeader.h"

using namespace plattmix;
using audiocd::WavHeaderBytes;

namespace {

constexpr int64_t kInt32Max = std::numeric_limits<int32_t>::max();
constexpr int64_t kInt32Min = std::numeric_limits<int32_t>::min();

uint32_t Le32(const WavHeaderBytes& h, size_t at) {
    return uint32_t{h[at]} | uint32_t{h[at + 1]} << 8 | uint32_t{h[at + 2]} << 16 |
           uint32_t{h[at + 3]} << 24;
}

}  // namespace

TEST(WavHeader, ThreeHundredSectorsByteForByte) {
    const auto header = audiocd::WavHeader(705600);
    ASSERT_TRUE(header);
    const WavHeaderBytes expected = {
        'R',  'I',  'F',  'F',  0x64, 0xC4, 0x0A, 0x00,  // 705636
        'W',  'A',  'V',  'E',  'f',  'm',  't',  ' ',   //
        0x10, 0x00, 0x00, 0x00, 0x01, 0x00, 0x02, 0x00,  // 16, PCM, stereo
        0x44, 0xAC, 0x00, 0x00, 0x10, 0xB1, 0x02, 0x00,  // 44100, 176400
        0x04, 0x00, 0x10, 0x00, 'd',  'a',  't',  'a',   // align 4, 16 bits
        0x14, 0xC4, 0x0A, 0x00,                          // 705556
    };
    EXPECT_EQ(*header, expected);
}

TEST(WavHeader, SizeFieldsStaySigned32Bit) {
    // The RIFF size N + 36 is the first to leave the range, the data size N - 44 at the bottom.
    const auto top = audiocd::WavHeader(kInt32Max - 36);
    ASSERT_TRUE(top);
    EXPECT_EQ(Le32(*top, 4), 0x7FFFFFFFu);
    EXPECT_FALSE(audiocd::WavHeader(kInt32Max - 35));
    EXPECT_FALSE(audiocd::WavHeader(int64_t{1} << 32));
    EXPECT_TRUE(audiocd::WavHeader(kInt32Min + 44));
    EXPECT_FALSE(audiocd::WavHeader(kInt32Min + 43));

    // An empty track still gets a header; its data size is -44 as a 32-bit pattern.
    const auto empty = audiocd::WavHeader(0);
    ASSERT_TRUE(empty);
    EXPECT_EQ(Le32(*empty, 4), 36u);
    EXPECT_EQ(Le32(*empty, 40), 0xFFFFFFD4u);
    // The secure mode's standard header announces all of the audio.
    EXPECT_EQ(Le32(*audiocd::StandardWavHeader(705600), 40), 705600u);
}
