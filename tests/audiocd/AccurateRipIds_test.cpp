// Disc IDs of published discs: an Enhanced CD (ten audio tracks, a data track in a second
// session) and a mixed-mode CD (a data track first, then 28 audio tracks).
#include "AccurateRipIds.h"

#include <gtest/gtest.h>

#include <vector>

namespace plattmix::audiocd {
namespace {

// The published tables count from the start of the lead-in; the table of contents does not.
std::vector<int32_t> Lbas(std::vector<int32_t> withLeadIn) {
    for (int32_t& start : withLeadIn) {
        start -= 150;
    }
    return withLeadIn;
}

TEST(AccurateRipIds, EnhancedCdUsesTheWholeDiscsLeadOutAndCountsTheDataTrackForFreedb) {
    const auto audio =
        Lbas({150, 12767, 40487, 63225, 93410, 118115, 151865, 184340, 215260, 247455});
    auto all = audio;
    all.push_back(281735 - 150);
    const AccurateRipIds ids = ComputeAccurateRipIds(audio, all, 333801 - 150);
    EXPECT_EQ(AccurateRipIdText(ids), "010-00164419-00b9f6e2-9e11600b");
    EXPECT_EQ(AccurateRipRecordPath(ids), "9/1/4/dBAR-010-00164419-00b9f6e2-9e11600b.bin");
}

TEST(AccurateRipIds, MixedModeCdLeavesTheDataTrackOutOfTheAccurateRipIds) {
    const auto all =
        Lbas({150,    66728,  76502,  85963,  93760,  104048, 116066, 124743, 134206, 142916,
              151852, 160720, 169425, 178731, 188459, 196711, 206354, 214845, 223686, 225746,
              226384, 232668, 239447, 239931, 244989, 254264, 260066, 261222, 261674});
    const std::vector<int32_t> audio(all.begin() + 1, all.end());
    const AccurateRipIds ids = ComputeAccurateRipIds(audio, all, 261976 - 150);
    EXPECT_EQ(AccurateRipIdText(ids), "028-00517a54-05a845d2-af0da31d");
}

}  // namespace
}  // namespace plattmix::audiocd
