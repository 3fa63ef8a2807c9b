// The cdaudio device's command strings (the program's own go through the device in its tests):
// quoted names, the mistakes a caller can make, positions in both time formats, reply numbers.
#include <gtest/gtest.h>

#include <utility>

#include "CdAudioCommand.h"
#include "CdAudioErrors.h"

using namespace plattmix::audiocd;

TEST(ParseMciCommand, QuotedNamesKeepTheirBlanksAndMistakesGetTheirCodes) {
    const auto quoted =
        ParseMciCommand("open " + MciQuote("/Meine Musik/a.cue:") + " alias \"a b\"");
    ASSERT_TRUE(quoted.command);
    EXPECT_EQ(quoted.command->device, "/Meine Musik/a.cue:");
    EXPECT_EQ(quoted.command->alias, "a b");
    EXPECT_EQ(MciQuote("/dev/sr0:"), "/dev/sr0:");

    for (const auto& [text, code] : std::initializer_list<std::pair<const char*, int>>{
             {"open \"/Meine Musik alias x", kCdAudioOpenQuote},
             {"", kCdAudioUnknownCommand},
             {"play", kCdAudioMissingDevice},
             {"play cd from", kCdAudioMissingValue},
             {"play cd at 5", kCdAudioUnknownKeyword},
             {"status cd", kCdAudioMissingValue},
             {"status cd length position", kCdAudioUnknownKeyword},
             {"status cd position track x", kCdAudioBadNumber},
             {"set cd door ajar", kCdAudioUnknownKeyword},
             {"set cd time format tmsf", kCdAudioBadTimeFormat},
             {"stop cd now", kCdAudioUnknownKeyword}}) {
        const MciParse parse = ParseMciCommand(text);
        EXPECT_FALSE(parse.command) << text;
        EXPECT_EQ(parse.error, code) << text;
    }
}

TEST(Positions, MillisecondsAndMinutesSecondsFrames) {
    EXPECT_EQ(FramesToMilliseconds(1), 14);  // 13.3 ms, rounded up
    for (int32_t frames : {0, 1, 2, 74, 75, 76, 150, 449999}) {
        for (const auto format : {MciTimeFormat::Milliseconds, MciTimeFormat::Msf})
            EXPECT_EQ(ParsePosition(FormatPosition(frames, format), format), frames) << frames;
    }
    EXPECT_EQ(ParsePosition("999", MciTimeFormat::Milliseconds), 74);
    EXPECT_EQ(FormatPosition(4500 * 72 + 75 * 3 + 9, MciTimeFormat::Msf), "72:03:09");
    EXPECT_EQ(ParsePosition("2", MciTimeFormat::Msf), 4500 * 2);
    EXPECT_EQ(ParsePosition("00:02", MciTimeFormat::Msf), 150);
    EXPECT_EQ(ParsePosition("01:02:03", MciTimeFormat::Msf), 4500 + 150 + 3);
    for (const char* bad : {"", ":", "1:60", "1:2:75", "1:2:3:4", "-1", "a", "1.5"})
        EXPECT_FALSE(ParsePosition(bad, MciTimeFormat::Msf)) << bad;
    for (const char* bad : {"", "-5", "+5", "5s", "99999999999999999999"})
        EXPECT_FALSE(ParsePosition(bad, MciTimeFormat::Milliseconds)) << bad;
}

TEST(MciValue, TheNumberAReplyStartsWith) {
    EXPECT_EQ(MciValue("245900"), 245900);
    EXPECT_EQ(MciValue("  -12 Sekunden"), -12);
    EXPECT_EQ(MciValue("playing"), 0);
}
