// Every generated disc read back through the disc-image drive, which parses the sheet on its
// own: tracks, texts, sessions and READ CD data must match what the generator says it
// wrote. (The quirks the fixtures carry in their sidecars: SecureRip_test.)
#include <gtest/gtest.h>

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

// READ CD over the whole track in one command: its status and the CRC-32 of the bytes.
std::pair<int32_t, uint32_t> ReadTrack(scsi::imagedrive::clsImageDrive& drive, std::string handle,
                                       const TrackInfo& track) {
    const size_t sectorBytes = track.mode == TrackMode::Audio ? 2352 : 2048;
    std::vector<uint8_t> buffer(static_cast<size_t>(track.lengthSectors) * sectorBytes);
    const int32_t status =
        modMMC::ReadCD(drive, handle, static_cast<uint32_t>(track.startLba),
                       static_cast<uint32_t>(track.lengthSectors), buffer, kUserData);
    return {status, audiocd::Crc32::Of(buffer)};
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
}

TEST(ImageDrive, ReadsEveryFixtureAsDescribed) {
    for (const Fixture f : AllFixtures()) {
        const DiscSpec spec = FixtureSpec(f, 1);
        const Result<DiscDescription> written = WriteDisc(spec, test::ScratchFolder() / spec.name);
        ASSERT_TRUE(written.ok()) << written.error;
        const DiscDescription& disc = *written.value;
        SCOPED_TRACE(TrackTableText(disc));
        ExpectSheetMatches(disc);
        scsi::imagedrive::clsImageDrive drive;
        const auto handle = drive.AddDrive(disc.cuePath.string());
        ASSERT_TRUE(handle.ok()) << handle.Error();
        for (const TrackInfo& t : disc.tracks)
            EXPECT_EQ(ReadTrack(drive, handle.Value(), t), std::make_pair(0, t.crc32)) << t.number;
    }
}

}  // namespace
}  // namespace plattmix::discgen
