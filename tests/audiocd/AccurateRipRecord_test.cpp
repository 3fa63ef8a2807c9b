// Reading AccurateRip records: the bytes as the server sends them, damaged replies, and the
// verdict per track against all responses.
#include "AccurateRipRecord.h"

#include <gtest/gtest.h>

#include <vector>

#include "AccurateRipFile.h"
#include "AccurateRipVerdict.h"

namespace plattmix::audiocd {
namespace {

const AccurateRipIds kDisc{2, 0x000e686au, 0x008a4eb8u, 0x84081a0cu};

std::vector<uint8_t> Bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

TEST(AccurateRipRecord, ReadsEveryResponseLittleEndian) {
    const std::vector<uint8_t> oneResponse = {
        0x02, 0x6a, 0x68, 0x0e, 0x00, 0xb8, 0x4e, 0x8a, 0x00, 0x0c, 0x1a, 0x08, 0x84,  // header
        0x0c, 0xd9, 0x1e, 0xf6, 0xe5, 0x01, 0x02, 0x03, 0x04,  // track 1: 12, e5f61ed9
        0xc8, 0x0a, 0xac, 0xb9, 0xbc, 0x00, 0x00, 0x00, 0x00,  // track 2: 200, bcb9ac0a
    };
    std::vector<uint8_t> twoResponses = oneResponse;
    twoResponses.insert(twoResponses.end(), oneResponse.begin(), oneResponse.end());
    const AccurateRipRecord record = ParseAccurateRipRecord(twoResponses, kDisc);
    ASSERT_TRUE(record.Found()) << record.error;
    ASSERT_EQ(record.responses.size(), 2u);
    const AccurateRipResponse& first = record.responses[0];
    EXPECT_EQ(first.ids.id1, kDisc.id1);
    EXPECT_EQ(first.ids.freedbId, kDisc.freedbId);
    ASSERT_EQ(first.tracks.size(), 2u);
    EXPECT_EQ(first.tracks[0].confidence, 12);
    EXPECT_EQ(first.tracks[0].crc, 0xe5f61ed9u);
    EXPECT_EQ(first.tracks[0].frame450Crc, 0x04030201u);
    EXPECT_EQ(first.tracks[1].confidence, 200);
    EXPECT_EQ(first.tracks[1].crc, 0xbcb9ac0au);
    // The generator's file is the same bytes.
    EXPECT_EQ(Bytes(discgen::MakeAccurateRipFile(record.responses)), twoResponses);
}

TEST(AccurateRipRecord, DamagedRepliesAreRefusedAsAWhole) {
    const AccurateRipResponse response{kDisc, {{3, 1, 2}, {4, 5, 6}}};
    const std::vector<uint8_t> good = Bytes(discgen::MakeAccurateRipFile({&response, 1}));
    std::vector<uint8_t> cut(good.begin(), good.end() - 1);
    std::vector<uint8_t> trailing = good;
    trailing.push_back(0);
    AccurateRipIds other = kDisc;
    other.id2 += 1;
    for (const auto& [bytes, ids] : {std::pair{std::vector<uint8_t>{}, kDisc},
                                     {cut, kDisc},
                                     {trailing, kDisc},
                                     {good, other}}) {
        const AccurateRipRecord record = ParseAccurateRipRecord(bytes, ids);
        EXPECT_FALSE(record.Found());
        EXPECT_TRUE(record.responses.empty());
        EXPECT_EQ(record.error, kAccurateRipDamaged);
    }
    std::string html = "<html>Not here</html>";
    EXPECT_EQ(ParseAccurateRipRecord(Bytes(html), kDisc).error, kAccurateRipDamaged);
}

// Every response holding the v1 or the v2 checksum adds its confidence. (The texts of each
// verdict: the secure mode's and the log's tests.)
TEST(AccurateRipVerdict, CountsEveryResponseHoldingTheV1OrV2Checksum) {
    AccurateRipRecord record;
    record.responses = {{kDisc, {{10, 0x1111u, 0}, {0, 0, 0}}},        // v1 entry; track 2 unknown
                        {kDisc, {{5, 0x2222u, 0}, {7, 0x3333u, 0}}},   // v2 entry
                        {kDisc, {{2, 0x9999u, 0}, {1, 0x4444u, 0}}}};  // another pressing
    const AccurateRipVerdict both = CompareWithRecord(record, 1, 0x1111u, 0x2222u);
    EXPECT_TRUE(both.Matches());
    EXPECT_EQ(both.confidence, 15);
    EXPECT_EQ(CompareWithRecord(record, 2, 0x5555u, 0x6666u).kind,
              AccurateRipVerdict::Kind::Differing);
    EXPECT_EQ(CompareWithRecord(record, 3, 0x1111u, 0x2222u).kind,
              AccurateRipVerdict::Kind::Unknown);
}

}  // namespace
}  // namespace plattmix::audiocd
