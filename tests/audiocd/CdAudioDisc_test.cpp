// The disc as the player sees it, from literal READ TOC replies: tracks, where they end, and
// where playing stops by itself (a data track, a second session).
#include <gtest/gtest.h>

#include <vector>

#include "CdAudioDisc.h"
#include "EnhancedTocReplies.h"
#include "modMMC.h"

using namespace plattmix;
using audiocd::CdAudioDisc;

namespace {

using Bytes = std::vector<uint8_t>;
using test::kEnhancedToc;
using test::kTwoSessions;

CdAudioDisc Enhanced(bool withSessions) {
    auto disc = audiocd::DiscFromToc(*modMMC::ParseTOC(kEnhancedToc));
    EXPECT_TRUE(disc);
    if (withSessions)
        audiocd::ApplySessionInfo(*disc, *modMMC::ParseSessionInfo(kTwoSessions));
    return disc.value_or(CdAudioDisc{});
}

}  // namespace

TEST(ParseSessionInfo, FirstTrackAndStartOfTheLastSession) {
    const auto info = modMMC::ParseSessionInfo(kTwoSessions);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->firstSession, 1);
    EXPECT_EQ(info->lastSession, 2);
    EXPECT_EQ(info->lastSessionFirstTrack, 3);
    EXPECT_EQ(info->lastSessionStartLba, 12005u);
    EXPECT_FALSE(modMMC::ParseSessionInfo(Bytes(kTwoSessions.begin(), kTwoSessions.end() - 1)));
    EXPECT_EQ(modMMC::BuildReadTOCFormat(false, 1, 0, 12),
              (modMMC::Cdb10{0x43, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x0C, 0x00}));
}

TEST(CdAudioDisc, TracksFromTheTable) {
    const CdAudioDisc disc = Enhanced(false);
    ASSERT_EQ(disc.tracks.size(), 3u);
    EXPECT_EQ(disc.tracks[1].number, 2);
    EXPECT_EQ(disc.tracks[1].startLba, 300);
    EXPECT_FALSE(disc.tracks[1].data);
    EXPECT_TRUE(disc.tracks[2].data);
    EXPECT_EQ(disc.leadOutLba, 12505);

    EXPECT_FALSE(audiocd::TrackIndexAt(disc, -1));
    EXPECT_EQ(audiocd::TrackIndexAt(disc, 0), 0u);
    EXPECT_EQ(audiocd::TrackIndexAt(disc, 299), 0u);
    EXPECT_EQ(audiocd::TrackIndexAt(disc, 300), 1u);
    EXPECT_EQ(audiocd::TrackIndexAt(disc, 12504), 2u);
    EXPECT_FALSE(audiocd::TrackIndexAt(disc, 12505));

    // Without the lead-out, or with addresses going back, there is no disc to play.
    Bytes noLeadOut(kEnhancedToc.begin(), kEnhancedToc.end() - 8);
    noLeadOut[1] = 0x1A;
    EXPECT_FALSE(audiocd::DiscFromToc(*modMMC::ParseTOC(noLeadOut)));
    Bytes backwards = kEnhancedToc;
    backwards[19] = 0x00;  // track 2 at 0x0100 = 256, track 1 at 0: still fine
    EXPECT_TRUE(audiocd::DiscFromToc(*modMMC::ParseTOC(backwards)));
    backwards[26] = 0x00;  // track 3 at 0xE5 = 229, before track 2
    EXPECT_FALSE(audiocd::DiscFromToc(*modMMC::ParseTOC(backwards)));
}

TEST(CdAudioDisc, PlayingStopsAtADataTrackOrBeforeTheNextSession) {
    const CdAudioDisc one = Enhanced(false);
    EXPECT_EQ(audiocd::TrackEndLba(one, 1), 12005);
    EXPECT_EQ(audiocd::AudioRunEnd(one, 0), 12005);

    const CdAudioDisc two = Enhanced(true);
    EXPECT_EQ(audiocd::TrackEndLba(two, 0), 300);
    EXPECT_EQ(audiocd::TrackEndLba(two, 1), 12005 - 11400);
    EXPECT_EQ(audiocd::TrackEndLba(two, 2), 12505);
    EXPECT_EQ(audiocd::AudioRunEnd(two, 0), 605);
    EXPECT_EQ(audiocd::AudioRunEnd(two, 400), 605);

    // One session reported: nothing changes.
    CdAudioDisc single = Enhanced(false);
    audiocd::ApplySessionInfo(single, modMMC::SessionInfo{1, 1, 1, 0});
    EXPECT_FALSE(single.lastSessionLba);
}
