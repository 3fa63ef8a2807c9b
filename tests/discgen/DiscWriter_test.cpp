// What lands on disk: read back with the tests' own reader, the files must say exactly what
// the description claims, byte for byte the same on every run.
#include "DiscWriter.h"

#include <gtest/gtest.h>

#include <fstream>

#include "Fixtures.h"
#include "ReferenceReader.h"
#include "common/ScratchFolder.h"

namespace plattmix::discgen {
namespace {

using plattmix::test::ScratchFolder;
using test::ReadBack;
using test::RefDisc;

std::string FileBytes(const std::filesystem::path& path) {
    return test::RefFileBytes(path);
}

DiscDescription Written(const DiscSpec& spec, const std::filesystem::path& folder) {
    Result<DiscDescription> disc = WriteDisc(spec, folder);
    EXPECT_TRUE(disc.ok()) << disc.error;
    return disc.ok() ? *disc.value : DiscDescription{};
}

std::vector<DiscSpec> EveryFixture() {
    std::vector<DiscSpec> specs;
    for (const Fixture f : AllFixtures()) {
        specs.push_back(FixtureSpec(f, 1));
    }
    return specs;
}

int16_t SampleAt(const std::string& bytes, size_t index) {
    const auto lo = static_cast<uint8_t>(bytes[index * 2]);
    const auto hi = static_cast<uint8_t>(bytes[index * 2 + 1]);
    return static_cast<int16_t>(static_cast<uint16_t>(lo | (hi << 8)));
}

TEST(DiscWriter, ReadBackAgreesWithTheDescriptionForEveryFixture) {
    const auto root = ScratchFolder();
    for (const DiscSpec& spec : EveryFixture()) {
        SCOPED_TRACE(spec.name);
        const DiscDescription d = Written(spec, root / spec.name);
        const RefDisc ref = ReadBack(d.cuePath);
        EXPECT_EQ(ref.title, d.title);
        EXPECT_EQ(ref.performer, d.performer);
        ASSERT_EQ(ref.tracks.size(), d.tracks.size());
        for (size_t i = 0; i < d.tracks.size(); ++i) {
            SCOPED_TRACE(i + 1);
            const TrackInfo& t = d.tracks[i];
            EXPECT_EQ(ref.tracks[i].number, t.number);
            EXPECT_EQ(ref.tracks[i].audio, t.mode == TrackMode::Audio);
            EXPECT_EQ(ref.tracks[i].session, t.session);
            EXPECT_EQ(ref.tracks[i].startLba, t.startLba);
            EXPECT_EQ(ref.tracks[i].length, t.lengthSectors);
            EXPECT_EQ(ref.tracks[i].crc, t.crc32);
            EXPECT_EQ(ref.tracks[i].title, t.title);
            EXPECT_EQ(ref.tracks[i].performer, t.performer);
        }
        ASSERT_EQ(ref.sessionLeadOuts.size(), d.sessions.size());
        EXPECT_EQ(ref.sessionLeadOuts.back(), d.leadOutLba);
        for (const FileInfo& f : d.files) {
            EXPECT_EQ(static_cast<int64_t>(std::filesystem::file_size(f.path)), f.bytes);
        }
    }
}

TEST(DiscWriter, SameRecipeGivesTheSameBytesAndTheSameDescription) {
    const auto root = ScratchFolder();
    for (const DiscSpec& spec : {Pregap(), DataTrackFirst(), MultiFile()}) {
        SCOPED_TRACE(spec.name);
        const DiscDescription a = Written(spec, root / "a");
        const DiscDescription b = Written(spec, root / "b");
        EXPECT_EQ(FileBytes(a.cuePath), FileBytes(b.cuePath));
        ASSERT_EQ(a.files.size(), b.files.size());
        for (size_t i = 0; i < a.files.size(); ++i) {
            EXPECT_EQ(FileBytes(a.files[i].path), FileBytes(b.files[i].path));
        }
        const Result<DiscDescription> described = DescribeDisc(spec, root / "a");
        ASSERT_TRUE(described.ok());
        EXPECT_EQ(described.value->cueText, a.cueText);
        for (size_t i = 0; i < a.tracks.size(); ++i) {
            EXPECT_EQ(described.value->tracks[i].crc32, a.tracks[i].crc32);
        }
        for (size_t i = 0; i < a.files.size(); ++i) {
            EXPECT_EQ(described.value->files[i].crc32, a.files[i].crc32);
        }
    }
}

TEST(DiscWriter, DataSectorsNameTheirOwnDiscAddress) {
    const auto root = ScratchFolder();
    for (const DiscSpec& spec : {DataTrackFirst(), Enhanced()}) {
        SCOPED_TRACE(spec.name);
        const DiscDescription d = Written(spec, root / spec.name);
        for (const TrackInfo& t : d.tracks) {
            if (t.mode != TrackMode::Mode1) {
                continue;
            }
            const std::string data = FileBytes(d.cuePath.parent_path() / (spec.name + "-data.bin"));
            ASSERT_EQ(data.size(), static_cast<size_t>(t.lengthSectors) * 2048);
            for (int32_t s = 0; s < t.lengthSectors; ++s) {
                const std::string sector = data.substr(static_cast<size_t>(s) * 2048, 2048);
                const uint32_t lba = static_cast<uint32_t>(
                    static_cast<uint8_t>(sector[0]) << 24 | static_cast<uint8_t>(sector[1]) << 16 |
                    static_cast<uint8_t>(sector[2]) << 8 | static_cast<uint8_t>(sector[3]));
                ASSERT_EQ(lba, static_cast<uint32_t>(t.startLba + s));
                ASSERT_EQ(sector.substr(4, 8), "PLATTMIX");
            }
        }
    }
}

TEST(DiscWriter, AudioIsLoudStereoDifferentPerTrackAndGapsAreQuietHiss) {
    const auto root = ScratchFolder();
    const DiscDescription d = Written(Pregap(), root);
    const std::string bin = FileBytes(d.files[0].path);
    // Track 1 sectors 0..299, INDEX 00 of track 2 sectors 300..449, track 2 from 450.
    int leftRightDiffer = 0;
    int loudest = 0;
    for (size_t frame = 0; frame < 588 * 300; ++frame) {
        leftRightDiffer += SampleAt(bin, frame * 2) != SampleAt(bin, frame * 2 + 1) ? 1 : 0;
        loudest = std::max(loudest, std::abs(static_cast<int>(SampleAt(bin, frame * 2))));
    }
    EXPECT_GT(leftRightDiffer, 588 * 290);
    EXPECT_GT(loudest, 10000);
    EXPECT_LT(loudest, 32767);  // no clipping
    int gapLoudest = 0;
    bool gapSilent = true;
    for (size_t sample = 588 * 2 * 300; sample < 588 * 2 * 450; ++sample) {
        gapLoudest = std::max(gapLoudest, std::abs(static_cast<int>(SampleAt(bin, sample))));
        gapSilent = gapSilent && SampleAt(bin, sample) == 0;
    }
    EXPECT_FALSE(gapSilent);
    EXPECT_LE(gapLoudest, 64);
    EXPECT_NE(bin.substr(0, 2352 * 10), bin.substr(2352 * 450, 2352 * 10));
}

TEST(DiscWriter, SameTrackNumberOnAnotherDiscHasOtherBytes) {
    const auto root = ScratchFolder();
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
    const Result<DiscDescription> refused = WriteDisc(invalid, root);
    EXPECT_FALSE(refused.ok());
    EXPECT_FALSE(std::filesystem::exists(root / "TinyTracks.cue"));
}

}  // namespace
}  // namespace plattmix::discgen
