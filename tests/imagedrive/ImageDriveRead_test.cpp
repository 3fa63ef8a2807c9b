// READ CD and READ(10) through the transport interface: raw and cooked sectors of audio and
// data tracks, the flag combinations, range and mode errors, short buffers and injected faults.
#include <gtest/gtest.h>

#include "ImageFixture.h"

namespace plattmix::scsi::imagedrive::test {
namespace {

constexpr uint32_t kUnrecoveredRead = 0x031105;
constexpr uint8_t kFlagsAll = 0xF8;
constexpr uint8_t kFlagsUser = 0x10;

class ImageDriveReadTest : public DriveTest {
  protected:
    void SetUp() override { handle = Add(WriteSmallDisc(Scratch())); }
};

TEST_F(ImageDriveReadTest, AudioSectorsComeAsStoredWhateverTheHeaderFlags) {
    // Whole tracks are read byte for byte in the disc generator's and the rips' tests.
    EXPECT_EQ(ReadCd(12, 1, kFlagsAll, 2352).data, AudioSector(12));  // in track 2's index 00

    // The twelve-byte form with no sub-channel reads the same; with the formatted Q each
    // sector is followed by its position in BCD: track, index, the time in the track (counting
    // down to INDEX 01 in the pregap) and on the disc, and the inverted CRC. Raw P-W is refused.
    Bytes twelve = ReadCdCdb(39, 1, kFlagsAll);
    twelve.insert(twelve.end(), {0, 0});
    EXPECT_EQ(Send(drive, handle, twelve, 2352).data, AudioSector(39));
    twelve[10] = 0x02;
    EXPECT_EQ(Slice(Send(drive, handle, twelve, 2352 + 16).data, 2352, 16),
              (Bytes{0x01, 0x02, 0x01, 0, 0, 0x19, 0, 0, 0x02, 0x39, 0x7C, 0x30, 0, 0, 0, 0}));
    twelve[5] = 12;  // inside track 2's index 00, which starts at 10
    EXPECT_EQ(Slice(Send(drive, handle, twelve, 2352 + 16).data, 2352, 16),
              (Bytes{0x01, 0x02, 0x00, 0, 0, 0x07, 0, 0, 0x02, 0x12, 0x65, 0x18, 0, 0, 0, 0}));
    twelve[10] = 0x01;
    EXPECT_EQ(Failure(Send(drive, handle, twelve, 2352 + 96)), kInvalidField);
}

TEST_F(ImageDriveReadTest, Mode1SectorsAreBuiltFromTheStoredUserData) {
    const Bytes user = DataSector(0);
    const Outcome raw = ReadCd(190, 1, kFlagsAll, 2352);
    ASSERT_EQ(raw.status, 0);
    EXPECT_EQ(Slice(raw.data, 0, 16), (Bytes{0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                             0xFF, 0xFF, 0x00, 0x00, 0x04, 0x40, 0x01}));
    EXPECT_EQ(Slice(raw.data, 16, 2048), user);  // EDC and ECC behind it: see EdcEcc_test

    EXPECT_EQ(ReadCd(190, 1, kFlagsUser, 2048).data, user);
    const Outcome headersOn = ReadCd(190, 1, 0x78, 2340);  // header, user data, EDC/ECC
    EXPECT_EQ(headersOn.data, Slice(raw.data, 12, 2340));
    const Outcome headerOnly = ReadCd(190, 1, 0x20, 16);
    EXPECT_EQ(Slice(headerOnly.data, 0, 5), (Bytes{0x00, 0x04, 0x40, 0x01, 0xEE}));
    const Outcome withC2 = ReadCd(190, 1, 0x12, 2048 + 294);
    EXPECT_EQ(Slice(withC2.data, 0, 2048), user);
    EXPECT_EQ(Slice(withC2.data, 2048, 294), Bytes(294, 0));  // no errors to flag

    // The pregap has no file bytes: an empty Mode 1 sector at its own address.
    const Outcome gap = ReadCd(40, 1, kFlagsAll, 2352);
    EXPECT_EQ(Slice(gap.data, 12, 4), (Bytes{0x00, 0x02, 0x40, 0x01}));
    EXPECT_EQ(Slice(gap.data, 16, 2048), Bytes(2048, 0));
}

TEST_F(ImageDriveReadTest, FlagCombinationsAndSectorTypesADriveRefuses) {
    EXPECT_EQ(Failure(ReadCd(190, 1, 0x90, 4096)), kInvalidField);          // sync without header
    EXPECT_EQ(Failure(ReadCd(190, 1, 0x28, 4096)), kInvalidField);          // header, EDC, no data
    EXPECT_EQ(Failure(ReadCd(190, 1, 0x16, 4096)), kInvalidField);          // reserved C2 code
    EXPECT_EQ(Failure(ReadCd(190, 1, kFlagsUser, 4096, 1)), kIllegalMode);  // wants CD-DA
    EXPECT_EQ(Failure(ReadCd(0, 1, kFlagsUser, 4096, 2)), kIllegalMode);    // wants Mode 1
    EXPECT_EQ(Failure(ReadCd(0, 1, kFlagsUser, 4096, 6)), kInvalidField);   // reserved type
    EXPECT_EQ(ReadCd(190, 1, kFlagsUser, 4096, 2).status, 0);
    EXPECT_EQ(ReadCd(0, 1, kFlagsUser, 4096, 1).status, 0);

    // Across the audio/data boundary each sector comes in its own format.
    const Outcome mixed = ReadCd(38, 4, kFlagsUser, 2 * 2352 + 2 * 2048 + 8);
    EXPECT_EQ(mixed.status, 0);
    EXPECT_EQ(mixed.data[2 * 2352 + 2 * 2048 - 1], 0x00);
    EXPECT_EQ(mixed.data[2 * 2352 + 2 * 2048], 0xEE);
}

TEST_F(ImageDriveReadTest, Read10ReturnsUserDataOfDataTracksOnlyAndRangesEndAtTheLeadOut) {
    // Data sectors read as a real drive reads them: the drive test bed.
    EXPECT_EQ(Failure(Send(drive, handle, Read10Cdb(0, 1), 2048)), kIllegalMode);
    EXPECT_EQ(Failure(Send(drive, handle, Read10Cdb(219, 2), 4096)), kOutOfRange);
    EXPECT_EQ(Send(drive, handle, Read10Cdb(219, 1), 2048).status, 0);
    EXPECT_EQ(Failure(ReadCd(220, 1, kFlagsAll, 2352)), kOutOfRange);
    EXPECT_EQ(Failure(ReadCd(0xFFFFFF6Au, 1, kFlagsAll, 2352)), kOutOfRange);  // LBA -150
    EXPECT_EQ(ReadCd(0, 0, kFlagsAll, 0).status, 0);

    // A short buffer gets what fits and nothing beyond.
    const Outcome cut = ReadCd(0, 27, kFlagsAll, 3000);
    EXPECT_TRUE(cut.status == 0 && cut.guardIntact);
    EXPECT_EQ(Slice(cut.data, 2352, 648), Slice(AudioSector(1), 0, 648));
    EXPECT_TRUE(Send(drive, handle, Read10Cdb(190, 3), 100).guardIntact);
    EXPECT_EQ(ReadCd(0, 2, kFlagsAll, 0).status, 0);  // no buffer at all
}

TEST_F(ImageDriveReadTest, InjectedReadErrorsFailTheWholeCommand) {
    ASSERT_TRUE(drive.AddReadError(handle, 5, 2));
    EXPECT_EQ(ReadCd(0, 5, kFlagsAll, 5 * 2352).status, 0);
    const Outcome touching = ReadCd(3, 3, kFlagsAll, 3 * 2352);
    EXPECT_EQ(Failure(touching), kUnrecoveredRead);
    EXPECT_EQ(touching.data, Bytes(3 * 2352, 0xEE));  // nothing transferred
    EXPECT_EQ(ReadCd(7, 3, kFlagsAll, 3 * 2352).status, 0);
    ASSERT_TRUE(drive.AddReadError(handle, 195, 1));
    EXPECT_EQ(Failure(Send(drive, handle, Read10Cdb(190, 10), 20480)), kUnrecoveredRead);
    ASSERT_TRUE(drive.ClearFaults(handle));
    EXPECT_EQ(ReadCd(3, 3, kFlagsAll, 3 * 2352).status, 0);
    EXPECT_FALSE(drive.AddReadError("kein Laufwerk", 0, 1));
}

TEST_F(ImageDriveReadTest, InjectedTimeOutsEndWithStatus255AndThrottlingKeepsTheBytes) {
    ASSERT_TRUE(drive.AddTimeOutRange(handle, 30, 1));
    EXPECT_EQ(ReadCd(29, 2, kFlagsAll, 2 * 2352).status, 255);
    EXPECT_EQ(SenseOf(drive), 0u);
    EXPECT_EQ(ReadCd(31, 2, kFlagsAll, 2 * 2352).status, 0);

    ASSERT_TRUE(drive.TimeOutNextCommands(handle, 2));
    EXPECT_EQ(Send(drive, handle, {0x12, 0, 0, 0, 36, 0}, 36).status, 255);
    EXPECT_EQ(Send(drive, handle, kTestUnitReady).status, 255);
    EXPECT_EQ(Send(drive, handle, kTestUnitReady).status, 0);

    ASSERT_TRUE(drive.SetReadSpeed(handle, 48));
    EXPECT_EQ(ReadCd(0, 1, kFlagsAll, 2352).data, AudioSector(0));
}

TEST_F(DriveTest, Mode2Form1SectorsOfTheSecondSession) {
    handle = Add(WriteEnhancedDisc(Scratch()));
    const Bytes stored = EnhancedData();

    const Outcome raw = ReadCd(11420, 1, kFlagsAll, 2352);
    EXPECT_EQ(raw.data, Slice(stored, 0, 2352));
    const Outcome form1 = ReadCd(11420, 1, kFlagsUser, 2048, 4);
    EXPECT_EQ(form1.data, Slice(stored, 24, 2048));
    EXPECT_EQ(Send(drive, handle, Read10Cdb(11420, 1), 2048).data, Slice(stored, 24, 2048));
    EXPECT_EQ(ReadCd(11420, 1, 0x50, 2056).data, Slice(stored, 16, 2056));
    EXPECT_EQ(Failure(ReadCd(11420, 1, kFlagsUser, 2048, 5)), kIllegalMode);
    EXPECT_EQ(Failure(ReadCd(5000, 1, kFlagsAll, 2352)), kOutOfRange);  // between the sessions
}

}  // namespace
}  // namespace plattmix::scsi::imagedrive::test
