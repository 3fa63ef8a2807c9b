// What lands on disk: read back with the tests' own reader, the files must say exactly what
// the description claims, byte for byte the same on every run.
#include "DiscWriter.h"

#include <gtest/gtest.h>

#include "Fixtures.h"
#include "ReferenceReader.h"
#include "common/ScratchFolder.h"

namespace plattmix::discgen {
namespace {

using plattmix::test::ScratchFolder;
using test::RefFileBytes;

DiscDescription Written(const DiscSpec& spec, const std::filesystem::path& folder) {
    Result<DiscDescription> disc = WriteDisc(spec, folder);
    EXPECT_TRUE(disc.ok()) << disc.error;
    return disc.ok() ? *disc.value : DiscDescription{};
}

int SampleAt(const std::string& bytes, size_t index) {
    return static_cast<int16_t>(static_cast<uint16_t>(
        static_cast<uint8_t>(bytes[index * 2]) | static_cast<uint8_t>(bytes[index * 2 + 1]) << 8));
}

TEST(DiscWriter, ReadBackAgreesWithTheDescriptionForEveryFixture) {
    const auto root = ScratchFolder();
    for (const Fixture f : AllFixtures()) {
        SCOPED_TRACE(FixtureName(f));
        const DiscDescription d = Written(FixtureSpec(f, 1), root / FixtureName(f));
        const test::RefDisc ref = test::ReadBack(d.cuePath);
        EXPECT_EQ(ref.title, d.title);
        EXPECT_EQ(ref.performer, d.performer);
        ASSERT_EQ(ref.tracks.size(), d.tracks.size());
        for (size_t i = 0; i < d.tracks.size(); ++i) {
            SCOPED_TRACE(i + 1);
            const TrackInfo& t = d.tracks[i];
            const test::RefTrack& r = ref.tracks[i];
            EXPECT_EQ(r.number, t.number);
            EXPECT_EQ(r.audio, t.mode == TrackMode::Audio);
            EXPECT_EQ(r.session, t.session);
            EXPECT_EQ(r.startLba, t.startLba);
            EXPECT_EQ(r.length, t.lengthSectors);
            EXPECT_EQ(r.crc, t.crc32);
            EXPECT_EQ(r.title, t.title);
            EXPECT_EQ(r.performer, t.performer);
        }
        ASSERT_EQ(ref.sessionLeadOuts.size(), d.sessions.size());
        for (size_t s = 0; s < d.sessions.size(); ++s) {
            EXPECT_EQ(ref.sessionLeadOuts[s], d.sessions[s].leadOutLba);
        }
        EXPECT_EQ(d.sessions.back().leadOutLba, d.leadOutLba);
        for (const FileInfo& file : d.files) {
            EXPECT_EQ(static_cast<int64_t>(std::filesystem::file_size(file.path)), file.bytes);
        }
    }
}

TEST(DiscWriter, SameRecipeGivesTheSameBytesAndTheSameDescription) {
    const auto root = ScratchFolder();
    for (const DiscSpec& spec : {Pregap(), DataTrackFirst(), MultiFile()}) {
        SCOPED_TRACE(spec.name);
        const DiscDescription a = Written(spec, root / "a");
        const DiscDescription b = Written(spec, root / "b");
        EXPECT_EQ(RefFileBytes(a.cuePath), RefFileBytes(b.cuePath));
        ASSERT_EQ(a.files.size(), b.files.size());
        const Result<DiscDescription> described = DescribeDisc(spec, root / "a");
        ASSERT_TRUE(described.ok());
        EXPECT_EQ(described.value->cueText, a.cueText);
        for (size_t i = 0; i < a.files.size(); ++i) {
            EXPECT_EQ(RefFileBytes(a.files[i].path), RefFileBytes(b.files[i].path));
            EXPECT_EQ(described.value->files[i].crc32, a.files[i].crc32);
        }
        for (size_t i = 0; i < a.tracks.size(); ++i) {
            EXPECT_EQ(described.value->tracks[i].crc32, a.tracks[i].crc32);
        }
    }
}

TEST(DiscWriter, DataSectorsNameTheirOwnDiscAddress) {
    const auto root = ScratchFolder();
    for (const DiscSpec& spec : {DataTrackFirst(), Enhanced()}) {
        SCOPED_TRACE(spec.name);
        const DiscDescription d = Written(spec, root / spec.name);
        const std::string data = RefFileBytes(root / spec.name / (spec.name + "-data.bin"));
        for (const TrackInfo& t : d.tracks) {
            if (t.mode != TrackMode::Mode1) {
                continue;
            }
            ASSERT_EQ(data.size(), static_cast<size_t>(t.lengthSectors) * 2048);
            for (size_t s = 0; s < static_cast<size_t>(t.lengthSectors); ++s) {
                uint32_t lba = 0;
                for (size_t i = 0; i < 4; ++i) {
                    lba = lba << 8 | static_cast<uint8_t>(data[s * 2048 + i]);
                }
                ASSERT_EQ(lba, static_cast<uint32_t>(t.startLba) + s);
                ASSERT_EQ(data.substr(s * 2048 + 4, 8), "PLATTMIX");
            }
        }
    }
}

TEST(DiscWriter, AudioIsLoudStereoDifferentPerTrackAndDiscAndGapsAreQuietHiss) {
    const auto root = ScratchFolder();
    const std::string bin = RefFileBytes(Written(Pregap(), root).files[0].path);
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
    for (size_t sample = 588 * 2 * 300; sample < 588 * 2 * 450; ++sample) {
        gapLoudest = std::max(gapLoudest, std::abs(SampleAt(bin, sample)));
    }
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
    EXPECT_FALSE(blocked.ok());
    EXPECT_FALSE(blocked.error.empty());
    DiscSpec invalid = TinyTracks();
    invalid.tracks.clear();
    EXPECT_FALSE(WriteDisc(invalid, root).ok());
    EXPECT_FALSE(std::filesystem::exists(root / "TinyTracks.cue"));
}

}  // namespace
}  // namespace plattmix::discgen
