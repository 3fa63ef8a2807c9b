// Literal READ TOC replies of an Enhanced CD (formats 0, 1 and 2), and ones no generated disc
// gives: the sessions as either reply tells them, the exact bounds of a track, and the tables
// that do not fit, for the rip and for the player. (Generated Enhanced CDs are ripped and played
// through the image drive in their own tests.)
#include <gtest/gtest.h>

#include <vector>

#include "CdAudioDisc.h"
#include "SessionToc.h"
#include "modMMC.h"

using namespace plattmix;
using audiocd::SessionToc;

namespace {

using Bytes = std::vector<uint8_t>;

// Format 0, LBA form: audio tracks 1 at 0 and 2 at 300 (control 0), data track 3 at 12005
// (control 4), the lead-out at 12505.
const Bytes kEnhancedToc{0x00, 0x22, 0x01, 0x03,                          //
                         0x00, 0x10, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,  // 1 at 0
                         0x00, 0x10, 0x02, 0x00, 0x00, 0x00, 0x01, 0x2C,  // 2 at 300
                         0x00, 0x14, 0x03, 0x00, 0x00, 0x00, 0x2E, 0xE5,  // 3 at 12005
                         0x00, 0x14, 0xAA, 0x00, 0x00, 0x00, 0x30, 0xD9};

// Format 1: sessions 1 to 2, the last one starting with track 3 at 12005.
const Bytes kTwoSessions{0x00, 0x0A, 0x01, 0x02, 0x00, 0x14, 0x03, 0x00, 0x00, 0x00, 0x2E, 0xE5};

// Format 2: session 1 ends at 00:10:05 (LBA 605), session 2 at 02:48:55 (LBA 12505); an ADR 5
// entry (B0) in between is not a position and is passed over.
const Bytes kEnhancedFullToc{
    0x00, 0x5A, 0x01, 0x02,                                             //
    0x01, 0x10, 0x00, 0xA0, 0,    0,    0,    0,    0x01, 0x00, 0x00,   // first track 1
    0x01, 0x10, 0x00, 0xA1, 0,    0,    0,    0,    0x02, 0x00, 0x00,   // last track 2
    0x01, 0x10, 0x00, 0xA2, 0,    0,    0,    0,    0x00, 0x0A, 0x05,   // lead-out 00:10:05
    0x01, 0x10, 0x00, 0x01, 0,    0,    0,    0,    0x00, 0x02, 0x00,   // track 1
    0x01, 0x10, 0x00, 0x02, 0,    0,    0,    0,    0x00, 0x06, 0x00,   // track 2
    0x01, 0x50, 0x00, 0xB0, 0x02, 0x27, 0x05, 0x03, 0x4F, 0x3B, 0x4A,   // next program area
    0x02, 0x14, 0x00, 0xA2, 0,    0,    0,    0,    0x02, 0x30, 0x37,   // lead-out 02:48:55
    0x02, 0x14, 0x00, 0x03, 0,    0,    0,    0,    0x02, 0x2A, 0x05,   // track 3
    0x02, 0x14, 0x00, 0xA0, 0,    0,    0,    0,    0x03, 0x00, 0x00};  // cut by the length

SessionToc OneSession() {
    const auto toc = audiocd::SessionTocFromToc(*modMMC::ParseTOC(kEnhancedToc), false);
    EXPECT_TRUE(toc);
    return toc.value_or(SessionToc{});
}

}  // namespace

TEST(SessionToc, SessionsFromTheFullTocOrTheSessionInfo) {
    SessionToc fromFull = OneSession();
    ASSERT_TRUE(audiocd::ApplyFullToc(fromFull, *modMMC::ParseFullToc(kEnhancedFullToc)));
    SessionToc fromInfo = OneSession();
    ASSERT_TRUE(audiocd::ApplySessionInfo(fromInfo, *modMMC::ParseSessionInfo(kTwoSessions)));
    for (const SessionToc& toc : {fromFull, fromInfo}) {
        ASSERT_EQ(toc.sessions.size(), 2u);
        EXPECT_EQ(toc.sessions[0].leadOutLba, 605);
        EXPECT_EQ(toc.leadOutLba, 12505);  // the whole disc's
        EXPECT_EQ(toc.tracks[2].session, 2);
        EXPECT_TRUE(toc.EndsEarlierSession(1));
        EXPECT_FALSE(toc.EndsEarlierSession(2));
        EXPECT_EQ(audiocd::ExactBoundsOf(toc, 2)->lastLba, 604);  // nothing left off
    }
}

TEST(SessionToc, OneSessionWhenTheRepliesDoNotFit) {
    Bytes lateLeadOut = kEnhancedFullToc;
    lateLeadOut[4 + 2 * 11 + 8] = 0x02;  // session 1 ending at 02:43:05, after track 3's start
    lateLeadOut[4 + 2 * 11 + 9] = 0x2B;
    Bytes missingTrack = kEnhancedFullToc;
    missingTrack[4 + 4 * 11 + 3] = 0x05;  // track 2's point names a track the table lacks
    for (const Bytes& reply : {lateLeadOut, missingTrack}) {
        SessionToc toc = OneSession();
        EXPECT_FALSE(audiocd::ApplyFullToc(toc, *modMMC::ParseFullToc(reply)));
        ASSERT_EQ(toc.sessions.size(), 1u);
    }
    SessionToc single = OneSession();
    EXPECT_FALSE(audiocd::ApplySessionInfo(single, modMMC::SessionInfo{1, 1, 1, 0}));
    EXPECT_EQ(single.TrackEndLba(1), 12005);  // one session: up to the next track
    EXPECT_FALSE(audiocd::ExactBoundsOf(single, 4));
    EXPECT_FALSE(audiocd::SessionTocFromToc(modMMC::Toc{}, false));
    Bytes farLeadOut = kEnhancedToc;
    farLeadOut[farLeadOut.size() - 4] = 0x80;  // the lead-out at LBA -2^31: no disc has it
    EXPECT_FALSE(audiocd::SessionTocFromToc(*modMMC::ParseTOC(farLeadOut), false));
}

// The player's view: no lead-out or addresses going back give no disc; one session reported
// changes nothing.
TEST(CdAudioDisc, UnusableTablesGiveNoDiscAndOneSessionChangesNothing) {
    Bytes noLeadOut(kEnhancedToc.begin(), kEnhancedToc.end() - 8);
    noLeadOut[1] = 0x1A;
    EXPECT_FALSE(audiocd::DiscFromToc(*modMMC::ParseTOC(noLeadOut)));
    Bytes backwards = kEnhancedToc;
    backwards[26] = 0x00;  // track 3 at 0xE5 = 229, before track 2
    EXPECT_FALSE(audiocd::DiscFromToc(*modMMC::ParseTOC(backwards)));

    auto single = audiocd::DiscFromToc(*modMMC::ParseTOC(kEnhancedToc));
    ASSERT_TRUE(single);
    audiocd::ApplySessionInfo(*single, modMMC::SessionInfo{1, 1, 1, 0});
    EXPECT_FALSE(single->lastSessionLba);
    EXPECT_EQ(audiocd::AudioRunEnd(*single, 0), 12005);  // up to the data track
}
