// AccurateRip checksums of small tracks whose values follow by hand from the definition.
#include "AccurateRipChecksum.h"

#include <gtest/gtest.h>

#include <vector>

namespace plattmix::audiocd {
namespace {

std::vector<uint8_t> Samples(size_t count, std::vector<uint8_t> last) {
    std::vector<uint8_t> bytes((count - 1) * 4, 0);
    bytes.insert(bytes.end(), last.begin(), last.end());
    return bytes;
}

TEST(AccurateRipChecksum, MultipliesEachSampleByItsPlaceV2AddsTheHighWords) {
    // Right channel high, left low: 0x00020001 at place 1.
    AccurateRipChecksum order(1, false, false);
    order.Update(std::vector<uint8_t>{0x01, 0x00, 0x02, 0x00});
    EXPECT_EQ(order.V1(), 0x00020001u);
    // 15 * 0x22222222 = 0x1fffffffe: v1 keeps the low word, v2 adds the high one.
    AccurateRipChecksum wide(15, false, false);
    wide.Update(Samples(15, {0x22, 0x22, 0x22, 0x22}));
    EXPECT_EQ(wide.V1(), 0xfffffffeu);
    EXPECT_EQ(wide.V2(), 0xffffffffu);
}

TEST(AccurateRipChecksum, FirstAndLastTrackLeaveOutFiveSectorsWhateverTheSplit) {
    // Six sectors of the sample value 1: the sum of the counted places.
    const uint32_t samples = 6 * kSamplesPerSector;  // 3528
    const std::vector<uint8_t> ones = [&] {
        std::vector<uint8_t> bytes;
        for (uint32_t i = 0; i < samples; ++i) {
            bytes.insert(bytes.end(), {1, 0, 0, 0});
        }
        return bytes;
    }();
    struct Case {
        bool first, last;
        uint32_t sum;
    };
    for (const Case c : {Case{false, false, 3528u * 3529 / 2},                   // places 1..3528
                         Case{true, false, 3528u * 3529 / 2 - 2939 * 2940 / 2},  // 2940..3528
                         Case{false, true, 588u * 589 / 2},                      // 1..588
                         Case{true, true, 0}}) {
        for (const size_t cut : {size_t{0}, size_t{1}, size_t{3}, size_t{4}, ones.size()}) {
            AccurateRipChecksum sum(samples, c.first, c.last);
            sum.Update(std::span<const uint8_t>(ones).first(cut));
            sum.Update(std::span<const uint8_t>(ones).subspan(cut));
            sum.Update(std::vector<uint8_t>{1, 0, 0, 0});  // beyond the track: not counted
            EXPECT_EQ(sum.V1(), c.sum) << c.first << c.last << " cut " << cut;
            EXPECT_EQ(sum.V2(), c.sum);
        }
    }
}

}  // namespace
}  // namespace plattmix::audiocd
