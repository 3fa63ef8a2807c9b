// The control nibble's audio-or-data rule, and the drive list's entry text.
#include <gtest/gtest.h>

#include <array>

#include "DriveList.h"
#include "TrackList.h"

using namespace plattmix::audiocd;

TEST(TrackRules, ControlNibbleDecidesAudioOrDataIgnoringTheCopyBit) {
    // Audio: plain, copy permitted, pre-emphasis, four channels, and "1111", which becomes
    // "1101" once the copy bit is cleared.
    for (const int control : {0x10, 0x12, 0x00, 0x11, 0x18, 0x1C, 0x1D, 0x1F})
        EXPECT_EQ(IsDataTrack(static_cast<uint8_t>(control)), 0) << control;
    // Data, also with the copy bit and with one binary digit short of four (padded).
    for (const int control : {0x14, 0x16, 0x15, 0x04})
        EXPECT_EQ(IsDataTrack(static_cast<uint8_t>(control)), 1) << control;
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
