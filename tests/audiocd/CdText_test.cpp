// CD-Text from READ TOC format 5: packs parsed from literal bytes (CRCs, texts across packs,
// the tab rule, ISO 8859-1), and the album and track texts read through the disc-image drive
// from generated discs.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "CdText.h"
#include "Fixtures.h"
#include "RipRig.h"
#include "common/CdTextCrc.h"

using namespace plattmix;

namespace {

using Bytes = std::vector<uint8_t>;
using namespace std::string_literals;  // texts with NULs inside

// A reply of the given packs (text up to 12 bytes, padded with NULs), numbered in order, behind
// the four header bytes.
struct Pack {
    uint8_t type, track, position;
    std::string text;
    bool goodCrc = true;
};

Bytes Reply(const std::vector<Pack>& packs) {
    const size_t length = packs.size() * 18 + 2;
    Bytes reply{static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length & 0xFF), 0, 0};
    for (const Pack& pack : packs) {
        const size_t at = reply.size();
        reply.insert(reply.end(),
                     {pack.type, pack.track, static_cast<uint8_t>((at - 4) / 18), pack.position});
        reply.resize(at + 18, 0);
        std::copy_n(pack.text.begin(), std::min<size_t>(pack.text.size(), 12),
                    reply.begin() + static_cast<std::ptrdiff_t>(at + 4));
        const unsigned crc =
            test::CdTextPackCrc(std::span(reply).subspan(at)) ^ (pack.goodCrc ? 0u : 1u);
        reply[at + 16] = static_cast<uint8_t>(crc >> 8);
        reply[at + 17] = static_cast<uint8_t>(crc & 0xFF);
    }
    return reply;
}

}  // namespace

TEST(ParseCdText, DamagedRepliesLoseOnlyTheTextsTheyTouch) {
    // Replies without a text: too short, no packs, a pack of another kind.
    EXPECT_FALSE(audiocd::ParseCdText(Bytes{0x00}));
    EXPECT_FALSE(audiocd::ParseCdText(Bytes{0x00, 0x02, 0, 0}));
    EXPECT_FALSE(audiocd::ParseCdText(Reply({{0x8F, 0, 0, "\0\1\2"s}})));

    // The second pack is damaged: the album's end and all of track 1 are lost, track 2's title
    // starts cleanly in the third pack; the pack in block 1 and a double-byte pack are ignored.
    const Bytes reply = Reply({{0x80, 0, 0, "Long Album T"},
                               {0x80, 0, 12, "itle\0Track\0"s, false},
                               {0x80, 2, 0, "Second\0"s},
                               {0x81, 0, 0x10, "Block1\0"s},
                               {0x81, 0, 0x80, "Wide\0"s},
                               {0x81, 2, 0, "S\xE4nger\0"s}});
    const auto text = audiocd::ParseCdText(reply);
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(text->albumTitle, "");
    EXPECT_EQ(text->titles, (std::map<int, std::string>{{2, "Second"}}));
    EXPECT_EQ(text->albumPerformer, "");
    EXPECT_EQ(text->performers, (std::map<int, std::string>{{2, "S\xC3\xA4nger"}}));
}

TEST(ParseCdText, TabRepeatsThePreviousTrackAndLatin1BecomesUtf8) {
    const Bytes reply = Reply({{0x80, 0, 0,
                                "Gr\xFC\xDF"
                                "e\0\xC4rger\0"s},
                               {0x80, 2, 0, "\t\0\xD6l\0"s},
                               {0x81, 0, 0, "\0M\xE9lanie\0\t\0"s}});
    const auto text = audiocd::ParseCdText(reply);
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(text->albumTitle,
              "Gr\xC3\xBC\xC3\x9F"
              "e");
    EXPECT_EQ(text->titles, (std::map<int, std::string>{
                                {1, "\xC3\x84rger"}, {2, "\xC3\x84rger"}, {3, "\xC3\x96l"}}));
    EXPECT_EQ(text->albumPerformer, "");
    EXPECT_EQ(text->performers,
              (std::map<int, std::string>{{1, "M\xC3\xA9lanie"}, {2, "M\xC3\xA9lanie"}}));
}

// A generated disc through the image drive: every text comes back (Latin-1 has no euro sign), a
// track's title may repeat the one before it.
TEST(ReadCdText, GeneratedDiscsGiveTheAlbumAndEveryTrack) {
    discgen::DiscSpec spec = discgen::DataTrackFirst();
    spec.title =
        "Lieder \xC3\xBC"
        "ber die Heide, gesammelt und gesungen \xE2\x82\xAC";
    spec.tracks[2].title = spec.tracks[1].title;
    spec.tracks[2].performer = "";
    test::RipRig rig(spec);
    const auto& disc = rig.disc;
    const auto text = audiocd::ReadCdText(rig.drive, rig.params.handle);
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(text->albumTitle,
              "Lieder \xC3\xBC"
              "ber die Heide, gesammelt und gesungen ?");
    EXPECT_EQ(text->albumPerformer, disc.performer);
    std::map<int, std::string> titles, performers;
    for (const auto& track : disc.tracks) {
        if (!track.title.empty())
            titles[track.number] = track.title;
        if (!track.performer.empty())
            performers[track.number] = track.performer;
    }
    EXPECT_EQ(titles.size(), 3u);
    EXPECT_EQ(text->titles, titles);
    EXPECT_EQ(text->performers, performers);

    EXPECT_FALSE(audiocd::ReadCdText(rig.drive, "no such drive").has_value());
}
