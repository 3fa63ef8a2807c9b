// AccurateRip records for generated discs: one entry per audio track in the disc's track
// positions, readable as the server's bytes for the disc's own IDs.
#include "AccurateRipFile.h"

#include <gtest/gtest.h>

#include "DiscWriter.h"
#include "Fixtures.h"
#include "common/ScratchFolder.h"

namespace plattmix::discgen {
namespace {

TEST(AccurateRipFile, GeneratedDiscsGetARecordOfTheirAudioTracks) {
    for (const Fixture fixture : {Fixture::Enhanced, Fixture::DataTrackFirst}) {
        const auto folder = test::ScratchFolder() / std::string(FixtureName(fixture));
        const Result<DiscDescription> disc = WriteDisc(FixtureSpec(fixture), folder);
        ASSERT_TRUE(disc.ok()) << disc.error;
        const auto v2 = AccurateRipResponseOf(*disc.value, 7);
        const auto v1 = AccurateRipResponseOf(*disc.value, 3, false);
        ASSERT_TRUE(v2.ok() && v1.ok()) << v2.error << v1.error;
        const audiocd::AccurateRipIds ids = AccurateRipIdsOf(*disc.value);
        ASSERT_EQ(v2.value->tracks.size(), static_cast<size_t>(ids.audioTracks));
        for (size_t i = 0; i < v2.value->tracks.size(); ++i) {
            const bool audio = disc.value->tracks[i].mode == TrackMode::Audio;
            EXPECT_EQ(v2.value->tracks[i].confidence, audio ? 7 : 0) << i;
            EXPECT_EQ(v1.value->tracks[i].crc != v2.value->tracks[i].crc, audio) << i;
        }
        const audiocd::AccurateRipResponse both[] = {*v1.value, *v2.value};
        const std::string bytes = MakeAccurateRipFile(both);
        const auto record = audiocd::ParseAccurateRipRecord(
            {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}, ids);
        EXPECT_EQ(record.responses.size(), 2u) << record.error;
    }
}

}  // namespace
}  // namespace plattmix::discgen
