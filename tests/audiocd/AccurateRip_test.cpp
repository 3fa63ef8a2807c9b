// AccurateRip: checksums of small tracks whose values follow by hand from the definition, the
// disc IDs of published discs, records as the server sends them and the verdict against them,
// and the messages when the server gives none; the HTTP transfer's own limits.
#include <gtest/gtest.h>

#include <vector>

#include "AccurateRipChecksum.h"
#include "AccurateRipFetch.h"
#include "AccurateRipFile.h"
#include "AccurateRipIds.h"
#include "AccurateRipRecord.h"
#include "AccurateRipVerdict.h"
#include "CurlHttpGet.h"
#include "common/LocalHttpServer.h"

namespace plattmix::audiocd {
namespace {

const AccurateRipIds kDisc{2, 0x000e686au, 0x008a4eb8u, 0x84081a0cu};

TEST(AccurateRipChecksum, MultipliesEachSampleByItsPlaceV2AddsTheHighWords) {
    // Right channel high, left low: 0x00020001 at place 1.
    AccurateRipChecksum order(1, false, false);
    order.Update(std::vector<uint8_t>{0x01, 0x00, 0x02, 0x00});
    EXPECT_EQ(order.V1(), 0x00020001u);
    // 15 * 0x22222222 = 0x1fffffffe at place 15: v1 keeps the low word, v2 adds the high one.
    std::vector<uint8_t> bytes(14 * 4, 0);
    bytes.insert(bytes.end(), {0x22, 0x22, 0x22, 0x22});
    AccurateRipChecksum wide(15, false, false);
    wide.Update(bytes);
    EXPECT_EQ(wide.V1(), 0xfffffffeu);
    EXPECT_EQ(wide.V2(), 0xffffffffu);
}

TEST(AccurateRipChecksum, FirstAndLastTrackLeaveOutFiveSectorsWhateverTheSplit) {
    // Six sectors of the sample value 1: the sum of the counted places.
    const uint32_t samples = 6 * kSamplesPerSector;  // 3528
    std::vector<uint8_t> ones(samples * 4, 0);
    for (size_t i = 0; i < ones.size(); i += 4)
        ones[i] = 1;
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

// The published tables count from the start of the lead-in; the table of contents does not.
std::vector<int32_t> Lbas(std::vector<int32_t> withLeadIn) {
    for (int32_t& start : withLeadIn)
        start -= 150;
    return withLeadIn;
}

// An Enhanced CD takes the whole disc's lead-out and counts its data track for the FreeDB part; a
// mixed-mode CD leaves its data track out of the AccurateRip parts.
TEST(AccurateRipIds, PublishedEnhancedAndMixedModeDiscs) {
    auto audio = Lbas({150, 12767, 40487, 63225, 93410, 118115, 151865, 184340, 215260, 247455});
    auto all = audio;
    all.push_back(281735 - 150);
    const AccurateRipIds enhanced = ComputeAccurateRipIds(audio, all, 333801 - 150);
    EXPECT_EQ(AccurateRipIdText(enhanced), "010-00164419-00b9f6e2-9e11600b");
    EXPECT_EQ(AccurateRipRecordPath(enhanced), "9/1/4/dBAR-010-00164419-00b9f6e2-9e11600b.bin");

    all = Lbas({150,    66728,  76502,  85963,  93760,  104048, 116066, 124743, 134206, 142916,
                151852, 160720, 169425, 178731, 188459, 196711, 206354, 214845, 223686, 225746,
                226384, 232668, 239447, 239931, 244989, 254264, 260066, 261222, 261674});
    audio.assign(all.begin() + 1, all.end());
    EXPECT_EQ(AccurateRipIdText(ComputeAccurateRipIds(audio, all, 261976 - 150)),
              "028-00517a54-05a845d2-af0da31d");
}

std::vector<uint8_t> Bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

TEST(AccurateRipRecord, ReadsEveryResponseLittleEndianAndRefusesDamage) {
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
    const auto& tracks = record.responses[1].tracks;
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[0].crc, 0xe5f61ed9u);
    EXPECT_EQ(tracks[0].frame450Crc, 0x04030201u);
    EXPECT_EQ(tracks[1].confidence, 200);
    // The generator's file, which the secure mode's tests serve, is the same bytes.
    EXPECT_EQ(Bytes(discgen::MakeAccurateRipFile(record.responses)), twoResponses);

    // A damaged reply, or one for another disc, is refused as a whole.
    const std::vector<uint8_t> cut(twoResponses.begin(), twoResponses.end() - 1);
    std::vector<uint8_t> trailing = twoResponses;
    trailing.push_back(0);
    AccurateRipIds other = kDisc;
    other.id2 += 1;
    for (const auto& [bytes, ids] : {std::pair{Bytes("<html>Not here</html>"), kDisc},
                                     {cut, kDisc},
                                     {trailing, kDisc},
                                     {twoResponses, other}}) {
        const AccurateRipRecord damaged = ParseAccurateRipRecord(bytes, ids);
        EXPECT_FALSE(damaged.Found());
        EXPECT_TRUE(damaged.responses.empty());
        EXPECT_EQ(damaged.error, kAccurateRipDamaged);
    }
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

// The server's status, the transfer's own limits (a slow server, a long answer), no server.
TEST(AccurateRipFetch, NamesTheServersStatusTheTransfersLimitsAndAMissingServer) {
    test::LocalHttpServer server;
    server.Set("/accuraterip/a/6/8/dBAR-002-000e686a-008a4eb8-84081a0c.bin", {503, ""});
    EXPECT_EQ(FetchAccurateRipRecord(server.Url() + "accuraterip", kDisc, CurlHttpGet).error,
              "AccurateRip antwortet mit dem Status 503.");
    EXPECT_NE(server.Requests().at(0).find("User-Agent: Plattmix/"), std::string::npos);

    server.Set("/slow", {200, "late", std::chrono::milliseconds(800)});
    HttpRequest impatient(server.Url() + "slow", "Plattmix");
    impatient.timeout = std::chrono::milliseconds(200);
    EXPECT_EQ(CurlHttpGet(impatient).error, "Der Server antwortet nicht (Zeitüberschreitung).");
    server.Set("/big", {200, std::string(1000, 'x')});
    HttpRequest small(server.Url() + "big", "Plattmix");
    small.maxBytes = 100;
    EXPECT_EQ(CurlHttpGet(small).error, "Die Antwort des Servers ist zu lang.");

    std::string downUrl;
    {
        test::LocalHttpServer gone;
        downUrl = gone.Url();
    }
    EXPECT_TRUE(FetchAccurateRipRecord(downUrl, kDisc, CurlHttpGet)
                    .error.starts_with("AccurateRip: Keine Verbindung zum Server"));
}

}  // namespace
}  // namespace plattmix::audiocd
