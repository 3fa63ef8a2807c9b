// The quirks of a real drive's audio reading that the image drive emulates, seen through READ
// CD and GET CONFIGURATION: the read offset, C2 error pointers and flaky sectors, set through
// the API or the sidecar beside the image.
#include <gtest/gtest.h>

#include <tuple>

#include "ImageFixture.h"
#include "imagedrive/DriveSidecar.h"

namespace plattmix::scsi::imagedrive::test {
namespace {

constexpr uint8_t kFlagsUser = 0x10;
constexpr uint8_t kFlagsUserC2 = 0x12;       // user data and 294 bytes of C2 error pointers
constexpr uint8_t kFlagsUserC2Block = 0x14;  // and the block error byte and a pad byte
constexpr size_t kSector = 2352;

class DriveQuirksTest : public DriveTest {
  protected:
    void SetUp() override { cue = WriteSmallDisc(Scratch()); }
    // The audio of the small disc's first 40 sectors as one run of bytes.
    static Bytes DiscAudio() { return Stamped(kAudioSectors, kSector, kAudioSeed); }
    // Whether the C2 pointers of each sector read with flags 0x12 mark every byte that differs
    // from the disc; answers how many sectors differ.
    static int CheckPointers(const Outcome& read, uint32_t firstLba, uint32_t blocks) {
        const Bytes audio = DiscAudio();
        int wrong = 0;
        for (size_t s = 0; s < blocks; ++s) {
            const size_t at = s * (kSector + 294);
            bool differs = false;
            for (size_t i = 0; i < kSector; ++i) {
                if (read.data[at + i] == audio[(firstLba + s) * kSector + i])
                    continue;
                differs = true;
                EXPECT_TRUE(read.data[at + kSector + i / 8] & (0x80 >> (i % 8))) << s << " " << i;
            }
            wrong += differs ? 1 : 0;
        }
        return wrong;
    }

    std::string cue;
};

// A drive reading late is ripped byte for byte in SecureRip_test; here one reading early, whose
// last audio sector ends in the data track's pregap, silence.
TEST_F(DriveQuirksTest, ReadOffsetMovesTheAudioAndSilenceFillsTheEdges) {
    WriteText(cue + ".drive", "# reads early\n\nOFFSET -30\n");
    handle = Add(cue);
    const Bytes audio = DiscAudio();
    // -30 samples: the drive returns at byte 0 what lies 120 bytes further.
    const Outcome early = ReadCd(38, 2, kFlagsUser, 2 * kSector);
    ASSERT_EQ(early.status, 0);
    EXPECT_EQ(Slice(early.data, 0, 2 * kSector - 120),
              Slice(audio, 38 * kSector + 120, 2 * kSector - 120));
    EXPECT_EQ(Slice(early.data, 2 * kSector - 120, 120), Bytes(120, 0));
    // Data sectors keep their bytes.
    ASSERT_TRUE(drive.SetReadOffset(handle, 0));
    const Bytes data = ReadCd(190, 1, kFlagsUser, 2048).data;
    ASSERT_TRUE(drive.SetReadOffset(handle, 5000));
    EXPECT_EQ(ReadCd(190, 1, kFlagsUser, 2048).data, data);
}

TEST_F(DriveQuirksTest, FlakySectorsReadWrongWithTheirC2PointersSet) {
    handle = Add(cue);
    ASSERT_TRUE(drive.AddFlakyRange(handle, 5, 2, 1.0, 7));
    const Outcome read = ReadCd(4, 3, kFlagsUserC2, 3 * (kSector + 294));
    ASSERT_EQ(read.status, 0);
    EXPECT_EQ(Slice(read.data, 0, kSector), Slice(DiscAudio(), 4 * kSector, kSector));
    EXPECT_EQ(Slice(read.data, kSector, 294), Bytes(294, 0));  // a good sector: no pointers
    EXPECT_EQ(CheckPointers(read, 4, 3), 2);
    const Outcome block = ReadCd(5, 1, kFlagsUserC2Block, kSector + 296);
    EXPECT_NE(block.data[kSector + 294], 0);  // the OR of the pointers
    EXPECT_EQ(block.data[kSector + 295], 0);

    // The same seed gives the same errors; a probability of one half gives good reads too.
    const auto pattern = [&] {
        EXPECT_TRUE(drive.ClearFaults(handle));
        EXPECT_TRUE(drive.AddFlakyRange(handle, 10, 1, 0.5, 42));
        std::vector<Bytes> reads;
        for (int i = 0; i < 16; ++i)
            reads.push_back(ReadCd(10, 1, kFlagsUser, kSector).data);
        return reads;
    };
    const auto first = pattern();
    EXPECT_EQ(pattern(), first);
    const Bytes truth = Slice(DiscAudio(), 10 * kSector, kSector);
    const auto good = std::count(first.begin(), first.end(), truth);
    EXPECT_GT(good, 0);
    EXPECT_LT(good, 16);
}

TEST_F(DriveQuirksTest, ADriveWithoutC2PointersSaysSoAndRefusesThem) {
    WriteText(cue + ".drive", "c2 off\n");
    handle = Add(cue);
    const Bytes getCdRead{0x46, 0x02, 0x00, 0x1E, 0, 0, 0, 0, 16, 0};
    EXPECT_EQ(Failure(ReadCd(0, 1, kFlagsUserC2, kSector + 294)), kInvalidField);
    EXPECT_EQ(ReadCd(0, 1, kFlagsUser, kSector).status, 0);
    EXPECT_EQ(Send(drive, handle, getCdRead, 16).data[12], 0x00);
    ASSERT_TRUE(drive.SetC2Pointers(handle, true));
    const Outcome feature = Send(drive, handle, getCdRead, 16);
    EXPECT_EQ(Slice(feature.data, 8, 2), (Bytes{0x00, 0x1E}));
    EXPECT_EQ(feature.data[12], 0x02);  // C2 flag
}

TEST(DriveSidecar, EverySettingAndTheLineOfAMistake) {
    const auto faults = ParseDriveSidecar(
        "Offset -30\nC2 ON\nFLAKY 100 20 0.25 9\nREADERROR 5 2\nTIMEOUT 7 1\nSPEED 48\n", "x");
    ASSERT_TRUE(faults.ok()) << faults.Error();
    const Faults& f = faults.Value();
    EXPECT_EQ(f.readOffsetSamples, -30);
    EXPECT_TRUE(f.c2Pointers);
    ASSERT_TRUE(f.flaky.size() == 1 && f.readErrors.size() == 1 && f.timeOuts.size() == 1);
    const FlakyRange& flaky = f.flaky[0];
    EXPECT_EQ(std::tuple(flaky.range.first, flaky.range.count, flaky.seed),
              std::tuple(100, 20, 9u));
    EXPECT_DOUBLE_EQ(flaky.probability, 0.25);
    EXPECT_EQ(std::pair(f.readErrors[0].first, f.timeOuts[0].first), std::pair(5, 7));
    EXPECT_EQ(f.speedMultiple, 48);

    EXPECT_EQ(ParseDriveSidecar("SPEED 4\nFLAKY 1 2 1.5 3\n", "a.cue.drive").Error(),
              "a.cue.drive, Zeile 2: ungültige Wahrscheinlichkeit '1.5'");
    EXPECT_EQ(ParseDriveSidecar("OFFSET\n", "a").Error(),
              "a, Zeile 1: OFFSET erwartet einen Versatz in Samples");
    EXPECT_EQ(ParseDriveSidecar("LAUT 3\n", "a").Error(),
              "a, Zeile 1: unbekanntes Schlüsselwort 'LAUT'");

    const std::string cue = WriteSmallDisc(Scratch());
    WriteText(cue + ".drive", "OFFSET zwei\n");
    clsImageDrive drive;
    EXPECT_EQ(drive.AddDrive(cue).Error(), "klein.cue.drive, Zeile 1: ungültiger Versatz 'zwei'");
    EXPECT_EQ(drive.DriveCount(), 0);
}

}  // namespace
}  // namespace plattmix::scsi::imagedrive::test
