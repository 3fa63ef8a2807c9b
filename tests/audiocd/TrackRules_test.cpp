#include <gtest/gtest.h>

#include <array>

#include "DriveList.h"
#include "TrackList.h"

using namespace plattmix::audiocd;

TEST(TrackRules, ControlNibbleDecidesAudioOrDataIgnoringTheCopyBit) {
    EXPECT_EQ(IsDataTrack(0x10), 0);  // ADR 1, audio
    EXPECT_EQ(IsDataTrack(0x14), 1);  // data, uninterrupted
    EXPECT_EQ(IsDataTrack(0x12), 0);  // audio, copy permitted
    EXPECT_EQ(IsDataTrack(0x16), 1);  // data, copy permitted
    EXPECT_EQ(IsDataTrack(0x00), 0);
    EXPECT_EQ(IsDataTrack(0x11), 0);  // pre-emphasis
    EXPECT_EQ(IsDataTrack(0x18), 0);  // four-channel audio
    EXPECT_EQ(IsDataTrack(0x1C), 0);
    EXPECT_EQ(IsDataTrack(0x1D), 0);
    EXPECT_EQ(IsDataTrack(0x1F), 0);  // "1111" becomes "1101" once the copy bit is cleared
    EXPECT_EQ(IsDataTrack(0x15), 1);
    EXPECT_EQ(IsDataTrack(0x04), 1);  // one digit short of four in binary: padded
}

TEST(TrackRules, DauerShowsWholeMinutesAndSeconds) {
    EXPECT_EQ(FormatDauer(4 * 60000 + 5900), "04:05");
    EXPECT_EQ(FormatDauer(100 * 60000), "100:00");
    EXPECT_EQ(FormatDauer(0), "00:00");
    EXPECT_EQ(FormatDauer(59999), "00:59");
}

TEST(TrackRules, DriveEntryKeepsPaddingDropsNulsAndNamesTheNode) {
    std::array<uint8_t, 76> reply{};
    using namespace std::string_literals;
    const std::string ident = "QEMU\0\0\0\0QEMU DVD-ROM    2.5+"s;
    for (size_t i = 0; i < 28; ++i)
        reply[8 + i] = static_cast<uint8_t>(ident[i]);
    EXPECT_EQ(DriveEntryText("sr0", reply), "/dev/sr0:  QEMUQEMU DVD-ROM    2.5+");
    EXPECT_EQ(DriveEntryText("/home/u/disc.cue", reply),
              "/home/u/disc.cue:  QEMUQEMU DVD-ROM    2.5+");
}
