// What lands on disk beyond what the image drive reads back: data sectors that name their
// address, audio that sounds like music, failures as text. (A description without writing
// agrees with the disc written: the demo disc's test, where an intact disc is left alone.)
#include "DiscWriter.h"

#include <gtest/gtest.h>

#include <fstream>

#include "Fixtures.h"
#include "common/ScratchFolder.h"

namespace plattmix::discgen {
namespace {

using plattmix::test::ScratchFolder;
using plattmix::test::WholeFile;

DiscDescription Written(const DiscSpec& spec, const std::filesystem::path& folder) {
    Result<DiscDescription> disc = WriteDisc(spec, folder);
    EXPECT_TRUE(disc.ok()) << disc.error;
    return disc.ok() ? *disc.value : DiscDescription{};
}

int SampleAt(const std::string& bytes, size_t index) {
    return static_cast<int16_t>(static_cast<uint16_t>(
        static_cast<uint8_t>(bytes[index * 2]) | static_cast<uint8_t>(bytes[index * 2 + 1]) << 8));
}

TEST(DiscWriter, DataSectorsNameTheirOwnDiscAddress) {
    const auto root = ScratchFolder();
    for (const DiscSpec& spec : {DataTrackFirst(), Enhanced()}) {
        SCOPED_TRACE(spec.name);
        const DiscDescription d = Written(spec, root / spec.name);
        const std::string data = WholeFile(root / spec.name / (spec.name + "-data.bin"));
        for (const TrackInfo& t : d.tracks) {
            if (t.mode != TrackMode::Mode1)
                continue;
            ASSERT_EQ(data.size(), static_cast<size_t>(t.lengthSectors) * 2048);
            for (size_t s = 0; s < static_cast<size_t>(t.lengthSectors); ++s) {
                uint32_t lba = 0;
                for (size_t i = 0; i < 4; ++i)
                    lba = lba << 8 | static_cast<uint8_t>(data[s * 2048 + i]);
                ASSERT_EQ(lba, static_cast<uint32_t>(t.startLba) + s);
                ASSERT_EQ(data.substr(s * 2048 + 4, 8), "PLATTMIX");
            }
        }
    }
}

TEST(DiscWriter, AudioIsLoudStereoDifferentPerTrackAndDiscAndGapsAreQuietHiss) {
    const auto root = ScratchFolder();
    const std::string bin = WholeFile(Written(Pregap(), root).files[0].path);
    // Track 1 sectors 0..299, INDEX 00 of track 2 sectors 300..449, track 2 from 450.
    int leftRightDiffer = 0;
    int loudest = 0;
    for (size_t frame = 0; frame < 588 * 300; ++frame) {
        leftRightDiffer += SampleAt(bin, frame * 2) != SampleAt(bin, frame * 2 + 1) ? 1 : 0;
        loudest = std::max(loudest, std::abs(SampleAt(bin, frame * 2)));
    }
    EXPECT_GT(leftRightDiffer, 588 * 290);
    EXPECT_GT(loudest, 10000);
    EXPECT_LT(loudest, 32767);  // no clipping
    int gapLoudest = 0;
    for (size_t sample = 588 * 2 * 300; sample < 588 * 2 * 450; ++sample)
        gapLoudest = std::max(gapLoudest, std::abs(SampleAt(bin, sample)));
    EXPECT_GT(gapLoudest, 0);
    EXPECT_LE(gapLoudest, 64);
    EXPECT_NE(bin.substr(0, 2352 * 10), bin.substr(2352 * 450, 2352 * 10));
    EXPECT_NE(Written(AudioThreeTracks(), root).tracks[0].crc32,
              Written(ExactBlockMultiple(), root).tracks[0].crc32);
}

TEST(DiscWriter, FailuresComeBackAsTextWithoutSheet) {
    const auto root = ScratchFolder();
    std::ofstream(root / "blocker") << "a file where a folder should be";
    const Result<DiscDescription> blocked = WriteDisc(AudioThreeTracks(), root / "blocker" / "x");
    EXPECT_FALSE(blocked.ok() || blocked.error.empty());
    DiscSpec invalid = TinyTracks();
    invalid.tracks.clear();
    EXPECT_FALSE(WriteDisc(invalid, root).ok());
    EXPECT_FALSE(std::filesystem::exists(root / "TinyTracks.cue"));
}

}  // namespace
}  // namespace plattmix::discgen
