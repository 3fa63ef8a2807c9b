// Every fixture loaded into the disc-image drive: the drive's table of contents, its CD-Text
// from the sheet and the READ CD data must match what the generator says it wrote.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "Crc32.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "TrackTable.h"
#include "common/ScratchFolder.h"
#include "imagedrive/ImageLoader.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"
#include "modMSF.h"

namespace plattmix::discgen {
namespace {

using plattmix::test::ScratchFolder;
using scsi::imagedrive::clsImageDrive;

constexpr uint8_t kUserData = 0x10;  // READ CD flags: user data only (all 2352 audio bytes)
constexpr uint32_t kBlocksPerRead = 27;

DiscDescription Written(const DiscSpec& spec, const std::filesystem::path& folder) {
    Result<DiscDescription> disc = WriteDisc(spec, folder);
    EXPECT_TRUE(disc.ok()) << disc.error;
    return disc.ok() ? *disc.value : DiscDescription{};
}

struct SpanRead {
    int32_t status = 0;  // 0, or the first failing command's status
    uint32_t crc = 0;
};

// Reads [lba, lba + count) with READ CD as the program sends it and checksums the bytes.
SpanRead ReadSpan(clsImageDrive& drive, std::string handle, const TrackInfo& track) {
    const size_t sectorBytes = track.mode == TrackMode::Audio ? 2352 : 2048;
    std::vector<uint8_t> buffer(kBlocksPerRead * sectorBytes);
    Crc32 crc;
    for (int32_t done = 0; done < track.lengthSectors;) {
        const uint32_t n =
            std::min<uint32_t>(kBlocksPerRead, static_cast<uint32_t>(track.lengthSectors - done));
        const std::span<uint8_t> part(buffer.data(), n * sectorBytes);
        const int32_t status = modMMC::ReadCD(
            drive, handle, static_cast<uint32_t>(track.startLba + done), n, part, kUserData);
        if (status != 0) {
            return {status, 0};
        }
        crc.Update(part);
        done += static_cast<int32_t>(n);
    }
    return {0, crc.Value()};
}

int32_t DescriptorLba(const modMMC::TocDescriptor& d) {
    return static_cast<int32_t>(
        modMSF::BytesToLong(d.address[0], d.address[1], d.address[2], d.address[3]));
}

void ExpectTocMatches(clsImageDrive& drive, std::string handle, const DiscDescription& d) {
    std::array<uint8_t, modMMC::kTocReplyLength> reply{};
    ASSERT_EQ(modMMC::ReadTOC(drive, handle, false, reply), 0);
    const std::optional<modMMC::Toc> toc = modMMC::ParseTOC(reply);
    ASSERT_TRUE(toc.has_value());
    ASSERT_EQ(toc->descriptors.size(), d.tracks.size() + 1);
    for (size_t i = 0; i < d.tracks.size(); ++i) {
        EXPECT_EQ(toc->descriptors[i].track, d.tracks[i].number);
        EXPECT_EQ(DescriptorLba(toc->descriptors[i]), d.tracks[i].startLba) << "track " << i + 1;
        const bool data = (toc->descriptors[i].adrControl & 0x04) != 0;
        EXPECT_EQ(data, d.tracks[i].mode == TrackMode::Mode1) << "track " << i + 1;
    }
    EXPECT_EQ(toc->descriptors.back().track, modMMC::kLeadOutTrack);
    EXPECT_EQ(DescriptorLba(toc->descriptors.back()), d.leadOutLba);
}

void ExpectCdTextMatches(const DiscDescription& d) {
    const auto image = scsi::imagedrive::LoadImage(d.cuePath.string());
    ASSERT_TRUE(image.ok()) << image.Error();
    EXPECT_EQ(image.Value().title, d.title);
    EXPECT_EQ(image.Value().performer, d.performer);
    ASSERT_EQ(image.Value().tracks.size(), d.tracks.size());
    for (size_t i = 0; i < d.tracks.size(); ++i) {
        EXPECT_EQ(image.Value().tracks[i].title, d.tracks[i].title);
        EXPECT_EQ(image.Value().tracks[i].performer, d.tracks[i].performer);
        EXPECT_EQ(image.Value().tracks[i].session, d.tracks[i].session);
    }
    ASSERT_EQ(image.Value().sessions.size(), d.sessions.size());
    for (size_t s = 0; s < d.sessions.size(); ++s) {
        EXPECT_EQ(image.Value().sessions[s].leadOut, d.sessions[s].leadOutLba);
    }
}

TEST(ImageDrive, ReadsEveryFixtureAsDescribed) {
    const auto root = ScratchFolder();
    for (const Fixture f : AllFixtures()) {
        const DiscDescription d = Written(FixtureSpec(f, 1), root / FixtureName(f));
        SCOPED_TRACE(TrackTableText(d));
        clsImageDrive drive;
        const auto handle = drive.AddDrive(d.cuePath.string());
        ASSERT_TRUE(handle.ok()) << handle.Error();
        ExpectTocMatches(drive, handle.Value(), d);
        ExpectCdTextMatches(d);
        for (const TrackInfo& t : d.tracks) {
            const SpanRead read = ReadSpan(drive, handle.Value(), t);
            EXPECT_EQ(read.status, 0) << "track " << t.number;
            EXPECT_EQ(read.crc, t.crc32) << "track " << t.number;
        }
    }
}

TEST(ImageDrive, InjectedReadErrorHitsOnlyTheTrackHoldingTheRange) {
    const ReadErrorCase errorCase = ReadErrorAt();
    const DiscDescription d = Written(errorCase.disc, ScratchFolder());
    clsImageDrive drive;
    const auto handle = drive.AddDrive(d.cuePath.string());
    ASSERT_TRUE(handle.ok()) << handle.Error();
    ASSERT_TRUE(drive.AddReadError(handle.Value(), errorCase.range.first, errorCase.range.count));
    for (const TrackInfo& t : d.tracks) {
        const bool hit = errorCase.range.first >= t.startLba &&
                         errorCase.range.first < t.startLba + t.lengthSectors;
        const SpanRead read = ReadSpan(drive, handle.Value(), t);
        if (hit) {
            EXPECT_NE(read.status, 0) << "track " << t.number;
            EXPECT_EQ(drive.LastSK(), 3);
            EXPECT_EQ(drive.LastASC(), 0x11);
        } else {
            EXPECT_EQ(read.status, 0) << "track " << t.number;
            EXPECT_EQ(read.crc, t.crc32) << "track " << t.number;
        }
    }
}

}  // namespace
}  // namespace plattmix::discgen
