// Every generated disc read back through the disc-image drive, which parses the sheet on its
// own: tracks, texts, sessions and READ CD data must match what the generator says it
// wrote. (The quirks the fixtures carry in their sidecars: SecureRip_test.)
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "Crc32.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "TrackTable.h"
#include "common/ScratchFolder.h"
#include "imagedrive/ImageLoader.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

namespace plattmix::discgen {
namespace {

constexpr uint8_t kUserData = 0x10;  // READ CD flags: user data only (all 2352 audio bytes)

// A written disc loaded into a fresh drive.
struct Loaded {
    DiscDescription disc;
    scsi::imagedrive::clsImageDrive drive;
    std::string handle;

    // READ CD over the track as the program sends it: status 0 and the CRC-32 of the bytes, or
    // the first failing command's status.
    std::pair<int32_t, uint32_t> ReadTrack(const TrackInfo& track) {
        constexpr uint32_t kBlocksPerRead = 27;
        const size_t sectorBytes = track.mode == TrackMode::Audio ? 2352 : 2048;
        std::vector<uint8_t> buffer(kBlocksPerRead * sectorBytes);
        audiocd::Crc32 crc;
        for (int32_t done = 0; done < track.lengthSectors;) {
            const auto n = std::min<uint32_t>(kBlocksPerRead,
                                              static_cast<uint32_t>(track.lengthSectors - done));
            const std::span<uint8_t> part(buffer.data(), n * sectorBytes);
            const int32_t status = modMMC::ReadCD(
                drive, handle, static_cast<uint32_t>(track.startLba + done), n, part, kUserData);
            if (status != 0)
                return {status, 0};
            crc.Update(part);
            done += static_cast<int32_t>(n);
        }
        return {0, crc.Value()};
    }
};

void Load(const DiscSpec& spec, Loaded& out) {
    Result<DiscDescription> disc = WriteDisc(spec, test::ScratchFolder() / spec.name);
    ASSERT_TRUE(disc.ok()) << disc.error;
    out.disc = *disc.value;
    const auto handle = out.drive.AddDrive(out.disc.cuePath.string());
    ASSERT_TRUE(handle.ok()) << handle.Error();
    out.handle = handle.Value();
}

// The sheet as the drive's loader reads it: the texts, the tracks' starts, spans and modes, and
// the sessions' lead-outs. (The table of contents made of them: the image drive's own tests.)
void ExpectSheetMatches(const DiscDescription& d) {
    const auto image = scsi::imagedrive::LoadImage(d.cuePath.string());
    ASSERT_TRUE(image.ok()) << image.Error();
    const scsi::imagedrive::DiscImage& disc = image.Value();
    EXPECT_EQ(disc.title, d.title);
    EXPECT_EQ(disc.performer, d.performer);
    ASSERT_EQ(disc.tracks.size(), d.tracks.size());
    ASSERT_EQ(disc.sessions.size(), d.sessions.size());
    for (size_t i = 0; i < d.tracks.size(); ++i) {
        // A track's span ends where the next track of its session starts, the session's last
        // at the session's lead-out.
        const int session = disc.tracks[i].session;
        const bool last = i + 1 == d.tracks.size() || disc.tracks[i + 1].session != session;
        EXPECT_EQ(d.tracks[i].startLba + d.tracks[i].lengthSectors,
                  last ? disc.sessions[static_cast<size_t>(session - 1)].leadOut
                       : disc.tracks[i + 1].start)
            << i;
        EXPECT_EQ(disc.tracks[i].start, d.tracks[i].startLba) << i;
        EXPECT_EQ(disc.tracks[i].mode == scsi::imagedrive::TrackMode::Audio,
                  d.tracks[i].mode == TrackMode::Audio)
            << i;
        EXPECT_EQ(disc.tracks[i].title, d.tracks[i].title) << i;
        EXPECT_EQ(disc.tracks[i].performer, d.tracks[i].performer) << i;
        EXPECT_EQ(disc.tracks[i].session, d.tracks[i].session) << i;
    }
    for (size_t s = 0; s < d.sessions.size(); ++s)
        EXPECT_EQ(disc.sessions[s].leadOut, d.sessions[s].leadOutLba) << s;
    for (const FileInfo& file : d.files)
        EXPECT_EQ(static_cast<int64_t>(std::filesystem::file_size(file.path)), file.bytes);
}

TEST(ImageDrive, ReadsEveryFixtureAsDescribed) {
    for (const Fixture f : AllFixtures()) {
        Loaded l;
        Load(FixtureSpec(f, 1), l);
        SCOPED_TRACE(TrackTableText(l.disc));
        ExpectSheetMatches(l.disc);
        for (const TrackInfo& t : l.disc.tracks)
            EXPECT_EQ(l.ReadTrack(t), std::make_pair(0, t.crc32)) << "track " << t.number;
    }
}

}  // namespace
}  // namespace plattmix::discgen
