// The 44-byte WAV header and the bounds of a track in the table of contents.
#include <gtest/gtest.h>

#include <limits>

#include "TrackBounds.h"
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

modMMC::TocDescriptor Descriptor(uint8_t track, int32_t lba) {
    const auto v = static_cast<uint32_t>(lba);
    return {0x10,
            track,
            {static_cast<uint8_t>(v >> 24), static_cast<uint8_t>(v >> 16),
             static_cast<uint8_t>(v >> 8), static_cast<uint8_t>(v)}};
}

// Tracks numbered from 1 starting at the given LBAs, then the lead-out.
modMMC::Toc Toc(std::initializer_list<int32_t> starts, int32_t leadOut) {
    modMMC::Toc toc;
    toc.firstTrack = 1;
    uint8_t number = 1;
    for (const int32_t lba : starts)
        toc.descriptors.push_back(Descriptor(number++, lba));
    toc.lastTrack = static_cast<uint8_t>(number - 1);
    toc.descriptors.push_back(Descriptor(modMMC::kLeadOutTrack, leadOut));
    return toc;
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

// Tables no disc has: missing or huge tracks. (Real tables are ripped in the rip tests.)
TEST(TrackBounds, MissingOrHugeTracksGiveNothing) {
    const auto toc = Toc({0, 300}, 600);
    EXPECT_FALSE(audiocd::ComputeTrackBounds(toc, 0));
    EXPECT_FALSE(audiocd::ComputeTrackBounds(toc, -1));
    EXPECT_FALSE(audiocd::ComputeTrackBounds(toc, 3));
    EXPECT_FALSE(audiocd::ComputeTrackBounds(modMMC::Toc{}, 1));

    // (last - first) * 2352 beyond 32 bits; one sector less than the limit still fits.
    const int32_t maxSectors = static_cast<int32_t>(kInt32Max / 2352);
    EXPECT_FALSE(audiocd::ComputeTrackBounds(Toc({0, maxSectors + 2}, maxSectors + 9), 1));
    const auto widest = audiocd::ComputeTrackBounds(Toc({0, maxSectors + 1}, maxSectors + 9), 1);
    ASSERT_TRUE(widest);
    EXPECT_EQ(widest->audioBytes, int64_t{maxSectors} * 2352);
    // An address that would wrap when the sector before it is taken.
    EXPECT_FALSE(audiocd::ComputeTrackBounds(Toc({0, std::numeric_limits<int32_t>::min()}, 0), 1));
}
