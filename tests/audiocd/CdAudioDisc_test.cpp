// The disc as the player sees it, from literal READ TOC replies a drive could give but the image
// drive never does: no lead-out, addresses going back, one session reported.
#include <gtest/gtest.h>

#include <vector>

#include "CdAudioDisc.h"
#include "EnhancedTocReplies.h"
#include "modMMC.h"

using namespace plattmix;
using test::kEnhancedToc;

TEST(CdAudioDisc, UnusableTablesGiveNoDiscAndOneSessionChangesNothing) {
    std::vector<uint8_t> noLeadOut(kEnhancedToc.begin(), kEnhancedToc.end() - 8);
    noLeadOut[1] = 0x1A;
    EXPECT_FALSE(audiocd::DiscFromToc(*modMMC::ParseTOC(noLeadOut)));
    std::vector<uint8_t> backwards = kEnhancedToc;
    backwards[19] = 0x00;  // track 2 at 0x0100 = 256, track 1 at 0: still fine
    EXPECT_TRUE(audiocd::DiscFromToc(*modMMC::ParseTOC(backwards)));
    backwards[26] = 0x00;  // track 3 at 0xE5 = 229, before track 2
    EXPECT_FALSE(audiocd::DiscFromToc(*modMMC::ParseTOC(backwards)));

    auto single = audiocd::DiscFromToc(*modMMC::ParseTOC(kEnhancedToc));
    ASSERT_TRUE(single);
    audiocd::ApplySessionInfo(*single, modMMC::SessionInfo{1, 1, 1, 0});
    EXPECT_FALSE(single->lastSessionLba);
    EXPECT_EQ(audiocd::AudioRunEnd(*single, 0), 12005);  // up to the data track
    EXPECT_FALSE(audiocd::TrackIndexAt(*single, 12505));
}
