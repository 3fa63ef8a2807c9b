// Where tracks land on the disc, and which recipes cannot become a readable CUE sheet.
#include "DiscLayout.h"

#include <gtest/gtest.h>

#include "Fixtures.h"

namespace plattmix::discgen {
namespace {

DiscLayout LaidOut(const DiscSpec& spec) {
    Result<DiscLayout> layout = LayOut(spec);
    EXPECT_TRUE(layout.ok()) << layout.error;
    return layout.ok() ? *layout.value : DiscLayout{};
}

TEST(DiscLayout, GapsBelongToTheSpanOfThePreviousTrack) {
    const DiscLayout l = LaidOut(Pregap());
    ASSERT_EQ(l.tracks.size(), 3u);
    // Track 2: 150 sectors INDEX 00 in the file after track 1's 300.
    EXPECT_EQ(l.tracks[1].fileIndexZero, 300);
    EXPECT_EQ(l.tracks[1].fileIndexOne, 450);
    EXPECT_EQ(l.tracks[1].startLba, 450);
    EXPECT_EQ(l.tracks[0].spanEndLba, 450);
    // Track 3: 150 sectors PREGAP that are on the disc but not in the file.
    EXPECT_EQ(l.tracks[2].fileIndexOne, 675);
    EXPECT_EQ(l.tracks[2].pregapLba, 675);
    EXPECT_EQ(l.tracks[2].startLba, 825);
    EXPECT_EQ(l.tracks[1].spanEndLba, 825);
    EXPECT_EQ(l.sessions.back().leadOutLba, 1125);
}

TEST(DiscLayout, SecondSessionStartsAfterLeadOutLeadInAndPregap) {
    const DiscLayout l = LaidOut(Enhanced());
    ASSERT_EQ(l.sessions.size(), 2u);
    EXPECT_EQ(l.sessions[0].leadOutLba, 525);
    EXPECT_EQ(l.sessions[0].lastTrack, 2);
    EXPECT_EQ(l.sessions[1].firstTrack, 3);
    EXPECT_EQ(l.tracks[2].startLba, 525 + 11400);
    EXPECT_EQ(l.tracks[1].spanEndLba, 525);  // the last audio track ends at its lead-out
    EXPECT_EQ(l.tracks[2].fileIndexOne, 0);  // its own file starts over
}

TEST(DiscLayout, FixtureLengthsCarryTheirQuirk) {
    const DiscSpec blocks = ExactBlockMultiple();
    ASSERT_EQ(blocks.tracks.size(), 3u);
    EXPECT_EQ(blocks.tracks[0].sectors % 27, 0);
    EXPECT_EQ(blocks.tracks[1].sectors % 27, 0);
    EXPECT_EQ(blocks.tracks[2].sectors % 27, 1);
    const DiscSpec tiny = TinyTracks();
    ASSERT_EQ(tiny.tracks.size(), 4u);
    for (size_t i = 0; i < tiny.tracks.size(); ++i) {
        EXPECT_EQ(tiny.tracks[i].sectors, static_cast<int32_t>(i + 1));
    }
    EXPECT_EQ(Large(10).tracks.size(), 3u);  // 4 + 4 + 2 minutes
    int32_t total = 0;
    for (const TrackSpec& t : Large(10).tracks) {
        total += t.sectors;
    }
    EXPECT_EQ(total, 10 * 60 * 75);
}

TEST(DiscLayout, RefusesRecipesNoSheetCanExpress) {
    DiscSpec gapFirst = AudioThreeTracks();
    gapFirst.tracks[0].indexZeroSectors = 10;
    EXPECT_FALSE(LayOut(gapFirst).ok());

    DiscSpec mixedFile = AudioThreeTracks();
    mixedFile.tracks[1].mode = TrackMode::Mode1;
    EXPECT_FALSE(LayOut(mixedFile).ok());

    DiscSpec sessionInFile = AudioThreeTracks();
    sessionInFile.tracks[2].session = 2;
    EXPECT_FALSE(LayOut(sessionInFile).ok());

    DiscSpec quoted = AudioThreeTracks();
    quoted.tracks[0].title = "Ein \"Zitat\"";
    EXPECT_FALSE(LayOut(quoted).ok());

    DiscSpec unusedFile = AudioThreeTracks();
    unusedFile.files.push_back("extra.bin");
    EXPECT_FALSE(LayOut(unusedFile).ok());

    DiscSpec dataGap = DataTrackFirst();
    dataGap.tracks[0].pregapSectors = 150;
    EXPECT_FALSE(LayOut(dataGap).ok());

    DiscSpec empty = TinyTracks();
    empty.tracks[2].sectors = 0;
    EXPECT_FALSE(LayOut(empty).ok());

    EXPECT_FALSE(LayOut(Large(0)).ok());
    EXPECT_TRUE(LayOut(Large(100)).ok());
    EXPECT_FALSE(LayOut(Large(101)).ok());  // positions in the file would pass 99:59:74
}

TEST(DiscLayout, EveryFixtureIsValidAndFoundByItsName) {
    for (const Fixture f : AllFixtures()) {
        EXPECT_EQ(ValidateSpec(FixtureSpec(f, 1)), "") << FixtureName(f);
        ASSERT_TRUE(FixtureByName(FixtureName(f)).has_value());
        EXPECT_EQ(*FixtureByName(FixtureName(f)), f);
        EXPECT_EQ(FixtureSpec(f, 1).name, FixtureName(f));
    }
    EXPECT_FALSE(FixtureByName("audiothreetracks").has_value());
}

}  // namespace
}  // namespace plattmix::discgen
