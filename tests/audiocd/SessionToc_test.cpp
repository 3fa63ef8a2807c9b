// The disc's sessions from literal READ TOC replies (formats 0, 1 and 2), as either reply gives
// them, and the replies that do not fit; the exact bounds of a track. (Generated Enhanced CDs
// are ripped through the image drive in the rip tests.)
#include <gtest/gtest.h>

#include <vector>

#include "EnhancedTocReplies.h"
#include "SessionToc.h"
#include "modMMC.h"

using namespace plattmix;
using audiocd::SessionToc;

namespace {

using Bytes = std::vector<uint8_t>;
using test::kEnhancedToc;
using test::kTwoSessions;

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

void ExpectEnhancedSessions(const SessionToc& toc) {
    ASSERT_EQ(toc.sessions.size(), 2u);
    EXPECT_EQ(toc.sessions[0].leadOutLba, 605);
    EXPECT_EQ(toc.sessions[1].leadOutLba, 12505);
    EXPECT_EQ(toc.leadOutLba, 12505);  // the whole disc's
    EXPECT_EQ(toc.tracks[2].session, 2);
    EXPECT_TRUE(toc.EndsEarlierSession(1));
    EXPECT_FALSE(toc.EndsEarlierSession(2));
    const auto second = audiocd::ExactBoundsOf(toc, 2);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->firstLba, 300);
    EXPECT_EQ(second->lastLba, 604);  // up to the session's lead-out, nothing left off
    EXPECT_EQ(second->Sectors(), 305);
    const auto data = audiocd::ExactBoundsOf(toc, 3);
    ASSERT_TRUE(data);
    EXPECT_EQ(data->lastLba, 12504);
}

}  // namespace

TEST(SessionToc, SessionsFromTheFullTocOrTheSessionInfo) {
    SessionToc fromFull = OneSession();
    ASSERT_TRUE(audiocd::ApplyFullToc(fromFull, *modMMC::ParseFullToc(kEnhancedFullToc)));
    ExpectEnhancedSessions(fromFull);

    SessionToc fromInfo = OneSession();
    ASSERT_TRUE(audiocd::ApplySessionInfo(fromInfo, *modMMC::ParseSessionInfo(kTwoSessions)));
    ExpectEnhancedSessions(fromInfo);
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
    // One session: every track ends where the next begins, the last at the disc's lead-out.
    EXPECT_EQ(single.TrackEndLba(1), 12005);
    EXPECT_EQ(audiocd::ExactBoundsOf(single, 3)->lastLba, 12504);
    EXPECT_FALSE(audiocd::ExactBoundsOf(single, 0));
    EXPECT_FALSE(audiocd::ExactBoundsOf(single, 4));
    EXPECT_FALSE(audiocd::SessionTocFromToc(modMMC::Toc{}, false));
    Bytes farLeadOut = kEnhancedToc;
    farLeadOut[farLeadOut.size() - 4] = 0x80;  // the lead-out at LBA -2^31: no disc has it
    EXPECT_FALSE(audiocd::SessionTocFromToc(*modMMC::ParseTOC(farLeadOut), false));
}
