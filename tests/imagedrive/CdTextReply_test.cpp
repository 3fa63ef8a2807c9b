// READ TOC/PMA/ATIP format 5 of the disc-image drive: CD-Text packs from the sheet's TITLE and
// PERFORMER lines, byte for byte, with their CRCs and the size information; long texts and the
// limit of one block. (A disc without texts and the cut to allocation length: ImageDrive_test.)
#include <gtest/gtest.h>

#include "ImageFixture.h"
#include "common/CdTextCrc.h"
#include "imagedrive/CdTextReply.h"

namespace plattmix::scsi::imagedrive::test {
namespace {

// Album "Ab" by "Zö", track 1 "Eins", track 2 "Zwei" by "Ü€" (the euro sign has no place in
// ISO 8859-1).
std::string WriteTextDisc(const fs::path& folder) {
    WriteBytes(folder / "a.bin", Stamped(20, 2352, 5));
    WriteText(
        folder / "text.cue",
        "TITLE \"Ab\"\nPERFORMER \"Z\xC3\xB6\"\nFILE a.bin BINARY\n"
        "TRACK 01 AUDIO\nTITLE \"Eins\"\nINDEX 01 00:00:00\n"
        "TRACK 02 AUDIO\nTITLE Zwei\nPERFORMER \"\xC3\x9C\xE2\x82\xAC\"\nINDEX 01 00:00:10\n");
    return (folder / "text.cue").string();
}

constexpr size_t kPacks = 6;  // two title packs, one performer pack, three size-information packs
constexpr size_t kReplyBytes = 4 + kPacks * 18;

using CdTextDriveTest = DriveTest;

TEST_F(CdTextDriveTest, PacksByteForByteWithTheirCrcs) {
    handle = Add(WriteTextDisc(Scratch()));
    const Outcome out = Send(drive, handle, TocCdb(false, 5, 0, 2000), 2000);
    ASSERT_EQ(out.status, 0);
    EXPECT_EQ(Slice(out.data, 0, 4), (Bytes{0x00, 2 + kPacks * 18, 0x00, 0x00}));
    EXPECT_EQ(out.data[kReplyBytes], 0xEE);  // nothing beyond the announced length

    // "Ab\0Eins\0Zwei" | "\0": the second pack starts with track 2's NUL, four characters in.
    EXPECT_EQ(Slice(out.data, 4, 16), (Bytes{0x80, 0x00, 0x00, 0x00, 'A', 'b', 0, 'E', 'i', 'n',
                                             's', 0, 'Z', 'w', 'e', 'i'}));
    EXPECT_EQ(Slice(out.data, 20, 2), (Bytes{0xD8, 0xB5}));  // worked out apart from the drive
    EXPECT_EQ(Slice(out.data, 22, 16),
              (Bytes{0x80, 0x02, 0x01, 0x04, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    // "Zö\0", nothing for track 1, "Ü?\0" for track 2: ISO 8859-1.
    EXPECT_EQ(Slice(out.data, 40, 16),
              (Bytes{0x81, 0x00, 0x02, 0x00, 'Z', 0xF6, 0, 0, 0xDC, '?', 0, 0, 0, 0, 0, 0}));
    // Size information: ISO 8859-1, tracks 1 to 2, two title packs, one performer pack, three
    // of its own, last sequence number 5, a language for block 0.
    EXPECT_EQ(Slice(out.data, 58, 16), (Bytes{0x8F, 0x00, 0x03, 0x00, 0x00, 0x01, 0x02, 0x00, 0x02,
                                              0x01, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Slice(out.data, 76, 16),
              (Bytes{0x8F, 0x01, 0x04, 0x00, 0, 0, 0, 0, 0, 0, 0, 0x03, 0x05, 0, 0, 0}));
    EXPECT_EQ(Slice(out.data, 94, 4), (Bytes{0x8F, 0x02, 0x05, 0x00}));
    EXPECT_EQ(Slice(out.data, 98, 4), (Bytes{0, 0, 0, 0}));
    EXPECT_NE(out.data[102], 0x00);  // language code of block 0
    EXPECT_EQ(Slice(out.data, 103, 7), Bytes(7, 0));

    for (size_t at = 4; at < kReplyBytes; at += 18) {
        const uint16_t crc = plattmix::test::CdTextPackCrc(std::span(out.data).subspan(at));
        EXPECT_EQ(Slice(out.data, at + 16, 2), (Bytes{uint8_t(crc >> 8), uint8_t(crc)})) << at;
    }
}

TEST(CdTextPacks, LongTextsCarryTrackAndClampedPositionAndTheBlockEndsAt256Packs) {
    // A 40-character album title: its packs name track 0 with 0, 12 and 15 (clamped) characters
    // before; track 1's text starts inside the fourth pack.
    CdTextBlock block;
    block.titles = {std::string(40, 'x'), "y"};
    const Bytes packs = CdTextPacks(block);
    ASSERT_EQ(packs.size() % 18, 0u);
    EXPECT_EQ(packs.size() / 18, 4u + 3u);
    const Bytes heads{packs[1],  packs[3],  packs[19], packs[21],
                      packs[37], packs[39], packs[55], packs[57]};
    EXPECT_EQ(heads, (Bytes{0, 0, 0, 12, 0, 15, 0, 15}));
    EXPECT_EQ(Slice(packs, 54 + 4, 4), (Bytes{'x', 'x', 'x', 'x'}));
    EXPECT_EQ(Slice(packs, 54 + 8, 3), (Bytes{0, 'y', 0}));

    // 99 tracks of 30 characters need more than a block holds: 253 text packs, the last text
    // still ends in a NUL, the sequence numbers run 0..255.
    CdTextBlock full;
    full.titles.assign(100, std::string(30, 'a'));
    full.performers.assign(100, std::string(30, 'b'));
    const Bytes many = CdTextPacks(full);
    ASSERT_EQ(many.size(), 256u * 18u);
    for (size_t p = 0; p < 256; ++p)
        ASSERT_EQ(many[p * 18 + 2], p);
    EXPECT_EQ(many[252 * 18 + 15], 0x00);
    EXPECT_EQ(many[253 * 18], 0x8F);
    EXPECT_EQ(many[253 * 18 + 4 + 4], 253);  // all text packs are titles
    EXPECT_EQ(many[253 * 18 + 4 + 5], 0);
    EXPECT_EQ(many[254 * 18 + 4 + 8], 255);  // last sequence number
    EXPECT_EQ(many[253 * 18 + 4 + 2], 99);   // last track

    EXPECT_TRUE(CdTextPacks(CdTextBlock{1, {"", ""}, {"", ""}}).empty());
}

}  // namespace
}  // namespace plattmix::scsi::imagedrive::test
