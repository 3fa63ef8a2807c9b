// The disc ID, and the titles looked up for it on a local server standing in for MusicBrainz:
// a disc found with two releases, one not found, a damaged reply, the look-up off.
#include <gtest/gtest.h>

#include "CurlHttpGet.h"
#include "DiscId.h"
#include "TitleLookup.h"
#include "common/LocalHttpServer.h"
#include "common/MusicBrainzReply.h"

namespace plattmix::audiocd {
namespace {

using test::FakeRelease;
using test::LocalHttpServer;

TrackList ListOf(const std::vector<int32_t>& starts, int32_t leadOut, size_t audioTracks) {
    TrackList list;
    for (size_t i = 0; i < starts.size(); ++i) {
        TrackRow row;
        row.track = static_cast<int>(i + 1);
        row.startLba = starts[i];
        row.endLba = i + 1 < starts.size() ? starts[i + 1] : leadOut;
        row.inhalt = i < audioTracks ? kTextAudio : kTextData;
        list.rows.push_back(row);
    }
    return list;
}

// Disc IDs as documented for two discs (SHA-1 and all); an Enhanced CD counts its audio session
// only.
TEST(DiscId, DocumentedIdsAndAnEnhancedCdCountsItsAudioSessionOnly) {
    const TrackList plain = ListOf({0, 15213, 32164, 46442, 63264, 80339}, 95312, 6);
    EXPECT_EQ(MusicBrainzDiscId(*DiscIdTocOf(plain)), "49HHV7Eb8UKF3aQiNmu1GR8vKTY-");
    // Seven audio tracks, then the data session 11400 frames after the audio lead-out; the
    // track list ends the last audio track at its session's lead-out.
    TrackList enhanced =
        ListOf({0, 13959, 33436, 52927, 65631, 77742, 99024, 114574 + 11400 - 150}, 160000, 7);
    enhanced.rows[6].endLba = 114574 - 150;
    const auto toc = DiscIdTocOf(enhanced);
    ASSERT_TRUE(toc);
    EXPECT_EQ(toc->lastTrack, 7);
    EXPECT_EQ(toc->leadOut, 114574);
    EXPECT_EQ(MusicBrainzDiscId(*toc), "BPnh1KU.hea1C.KMYWLGZkHJr0w-");
    EXPECT_FALSE(DiscIdTocOf(ListOf({0}, 5000, 0)));  // data only: nothing to look up
}

class TitleLookupTest : public ::testing::Test {
  protected:
    const TrackList list_ = ListOf({0, 15213, 32164, 46442, 63264, 80339}, 95312, 6);
    const std::string discId_ = "49HHV7Eb8UKF3aQiNmu1GR8vKTY-";
    const std::string path_ = test::MusicBrainzPath(discId_);
    LocalHttpServer server_;
    MusicBrainzClient client_{CurlHttpGet, server_.Url()};

    // A client of its own, which need not wait for the previous request.
    TitleLookup LookUpOnce(const std::optional<CdText>& cdText) {
        MusicBrainzClient client(CurlHttpGet, server_.Url());
        return LookUpDiscTitles(&client, list_, cdText);
    }

    static CdText SomeCdText() {
        CdText text;
        text.albumTitle = "CD-Text Album";
        text.titles[1] = "Eins vom CD-Text";
        return text;
    }
};

// Of two releases the first is taken unless another is chosen, and the other is listed.
TEST_F(TitleLookupTest, AFoundDiscGivesTheChosenReleaseAndListsTheOther) {
    const std::vector<FakeRelease> two = {
        {"rel-1", "Großes Album", "Kapelle", "1999-02-03", {"Eins", "Zwei"}, 2},
        {"rel-b", "Neuauflage", "K", "2005", {"B1"}}};
    server_.Set(path_, {200, test::MusicBrainzReply(discId_, two)});
    TitleLookup lookup = LookUpDiscTitles(&client_, list_, SomeCdText());
    ASSERT_TRUE(lookup.titles);
    const DiscTitles& t = *lookup.titles;
    EXPECT_EQ(t.album, "Großes Album");
    EXPECT_EQ(t.albumArtist, "Kapelle");
    EXPECT_EQ(t.date, "1999-02-03");
    EXPECT_EQ(t.releaseId, "rel-1");
    EXPECT_EQ(t.discNumber, 2);
    EXPECT_EQ(t.discCount, 2);
    EXPECT_EQ(t.TitleOf(1), "Eins");
    EXPECT_EQ(t.ArtistOf(2), "Kapelle feat. Gast");
    EXPECT_EQ(t.tracks.at(2).recordingId, "rec-rel-1-2");
    EXPECT_EQ(lookup.status, "MusicBrainz: Großes Album – Kapelle");
    EXPECT_EQ(lookup.otherReleases, std::vector<std::string>{"2: Neuauflage – K (2005, rel-b)"});

    lookup = LookUpDiscTitles(&client_, list_, std::nullopt, 2);  // a second request, paced
    EXPECT_EQ(lookup.titles->TitleOf(1), "B1");
    EXPECT_EQ(lookup.otherReleases.at(0), "1: Großes Album – Kapelle (1999-02-03, rel-1)");
}

TEST_F(TitleLookupTest, WithoutAnAnswerTheCdTextStaysAndOneLineSaysWhy) {
    // Not known: a 404, or a reply whose releases do not hold the disc.
    TitleLookup lookup = LookUpOnce(SomeCdText());
    EXPECT_EQ(lookup.titles->album, "CD-Text Album");
    EXPECT_EQ(lookup.status, "MusicBrainz kennt diese Disk nicht. Titel aus dem CD-Text.");
    server_.Set(path_, {200, test::MusicBrainzReply("other-disc", {{"x", "X", "Y", "", {"Z"}}})});
    EXPECT_EQ(LookUpOnce(std::nullopt).status, kTextDiscUnknown);

    for (const char* damaged : {"{\"releases\": [", "<html>busy</html>", "{\"releases\": 5}"}) {
        server_.Set(path_, {200, damaged});
        lookup = LookUpOnce(SomeCdText());
        EXPECT_EQ(lookup.titles->TitleOf(1), "Eins vom CD-Text");
        EXPECT_EQ(lookup.status,
                  "Titelsuche bei MusicBrainz fehlgeschlagen: Die Antwort des "
                  "Servers ist beschädigt. Titel aus dem CD-Text.")
            << damaged;
    }

    // Off: nobody is asked, the CD-Text stays without a word.
    const size_t asked = server_.Requests().size();
    lookup = LookUpDiscTitles(nullptr, list_, SomeCdText());
    EXPECT_EQ(lookup.titles->album, "CD-Text Album");
    EXPECT_TRUE(lookup.status.empty());
    EXPECT_EQ(server_.Requests().size(), asked);
}

}  // namespace
}  // namespace plattmix::audiocd
