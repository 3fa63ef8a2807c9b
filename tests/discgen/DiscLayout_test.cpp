// Where tracks land on the disc, how the sheet writes their times, and which recipes cannot
// become a readable CUE sheet.
#include "DiscLayout.h"

#include <gtest/gtest.h>

#include <functional>

#include "CueSheet.h"
#include "Fixtures.h"

namespace plattmix::discgen {
namespace {

TEST(DiscLayout, GapsBelongToTheSpanOfThePreviousTrack) {
    const Result<DiscLayout> laidOut = LayOut(Pregap());
    ASSERT_TRUE(laidOut.ok()) << laidOut.error;
    const DiscLayout& l = *laidOut.value;
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

TEST(DiscLayout, SheetTimesCarryOverAtSeventyFiveFramesAndSixtySeconds) {
    const std::pair<int32_t, std::string> times[] = {{74, "00:00:74"},
                                                     {75, "00:01:00"},
                                                     {4499, "00:59:74"},
                                                     {4500, "01:00:00"},
                                                     {449999, "99:59:74"}};
    for (const auto& [sectors, text] : times)
        EXPECT_EQ(CueTime(sectors), text);
}

TEST(DiscLayout, RefusesRecipesNoSheetCanExpress) {
    const std::vector<std::pair<const char*, std::function<void(DiscSpec&)>>> broken = {
        {"gap before track 1", [](DiscSpec& d) { d.tracks[0].indexZeroSectors = 10; }},
        {"modes mixed in a file", [](DiscSpec& d) { d.tracks[1].mode = TrackMode::Mode1; }},
        {"session change in a file", [](DiscSpec& d) { d.tracks[2].session = 2; }},
        {"quote in a title", [](DiscSpec& d) { d.tracks[0].title = "Ein \"Zitat\""; }},
        {"unused file", [](DiscSpec& d) { d.files.push_back("extra.bin"); }},
        {"empty track", [](DiscSpec& d) { d.tracks[2].sectors = 0; }},
    };
    for (const auto& [what, breakIt] : broken) {
        DiscSpec spec = AudioThreeTracks();
        breakIt(spec);
        EXPECT_FALSE(LayOut(spec).ok()) << what;
    }
    DiscSpec dataGap = DataTrackFirst();
    dataGap.tracks[0].pregapSectors = 150;
    EXPECT_FALSE(LayOut(dataGap).ok());
    EXPECT_FALSE(LayOut(Large(0)).ok());
    EXPECT_TRUE(LayOut(Large(100)).ok());
    EXPECT_FALSE(LayOut(Large(101)).ok());  // positions in the file would pass 99:59:74
}

// Every fixture is written and read back in ImageDrive_test.
TEST(DiscLayout, FixturesAreFoundByName) {
    for (const Fixture f : AllFixtures())
        EXPECT_EQ(FixtureByName(FixtureName(f)), f);
    EXPECT_FALSE(FixtureByName("audiothreetracks").has_value());
}

}  // namespace
}  // namespace plattmix::discgen
