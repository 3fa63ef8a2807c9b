// The cdaudio device's command strings (the program's own go through the device in its tests):
// quoted names, the mistakes a caller can make, positions in both time formats, reply numbers.
#include <gtest/gtest.h>

#include "CdAudioCommand.h"
#include "CdAudioErrors.h"

using namespace plattmix::audiocd;

namespace {

MciCommand Parsed(std::string_view text) {
    const MciParse parse = ParseMciCommand(text);
    EXPECT_TRUE(parse.command) << text << ": error " << parse.error;
    return parse.command.value_or(MciCommand{});
}

int ErrorOf(std::string_view text) {
    const MciParse parse = ParseMciCommand(text);
    EXPECT_FALSE(parse.command) << text;
    return parse.error;
}

}  // namespace

TEST(ParseMciCommand, QuotedNamesKeepTheirBlanks) {
    const MciCommand c = Parsed("open \"/home/ich/Meine Musik/album.cue:\" alias \"a b\"");
    EXPECT_EQ(c.device, "/home/ich/Meine Musik/album.cue:");
    EXPECT_EQ(c.alias, "a b");
    EXPECT_EQ(ErrorOf("open \"/home/ich/Meine Musik alias x"), kCdAudioOpenQuote);
    EXPECT_EQ(MciQuote("/dev/sr0:"), "/dev/sr0:");
    EXPECT_EQ(MciQuote("/a b.cue:"), "\"/a b.cue:\"");
    EXPECT_EQ(Parsed("open " + MciQuote("/a b.cue:") + " alias x").device, "/a b.cue:");
}

TEST(ParseMciCommand, MistakesGetTheirCodes) {
    EXPECT_EQ(ErrorOf(""), kCdAudioUnknownCommand);
    EXPECT_EQ(ErrorOf("eject cd"), kCdAudioUnknownCommand);
    EXPECT_EQ(ErrorOf("play"), kCdAudioMissingDevice);
    EXPECT_EQ(ErrorOf("play cd from"), kCdAudioMissingValue);
    EXPECT_EQ(ErrorOf("play cd at 5"), kCdAudioUnknownKeyword);
    EXPECT_EQ(ErrorOf("open /dev/sr0 alias"), kCdAudioMissingValue);
    EXPECT_EQ(ErrorOf("status cd"), kCdAudioMissingValue);
    EXPECT_EQ(ErrorOf("status cd volume"), kCdAudioUnknownKeyword);
    EXPECT_EQ(ErrorOf("status cd length position"), kCdAudioUnknownKeyword);
    EXPECT_EQ(ErrorOf("status cd current"), kCdAudioUnknownKeyword);
    EXPECT_EQ(ErrorOf("status cd position track"), kCdAudioMissingValue);
    EXPECT_EQ(ErrorOf("status cd position track x"), kCdAudioBadNumber);
    EXPECT_EQ(ErrorOf("set cd door"), kCdAudioMissingValue);
    EXPECT_EQ(ErrorOf("set cd door ajar"), kCdAudioUnknownKeyword);
    EXPECT_EQ(ErrorOf("set cd time format tmsf"), kCdAudioBadTimeFormat);
    EXPECT_EQ(ErrorOf("set cd"), kCdAudioMissingValue);
    EXPECT_EQ(ErrorOf("stop cd now"), kCdAudioUnknownKeyword);
}

TEST(Positions, MillisecondsNameTheSameFrameAgain) {
    EXPECT_EQ(FramesToMilliseconds(150), 2000);
    EXPECT_EQ(FramesToMilliseconds(1), 14);  // 13.3 ms, rounded up
    for (int32_t frames : {0, 1, 2, 74, 75, 76, 150, 449999}) {
        EXPECT_EQ(ParsePosition(FormatPosition(frames, MciTimeFormat::Milliseconds),
                                MciTimeFormat::Milliseconds),
                  frames);
        EXPECT_EQ(ParsePosition(FormatPosition(frames, MciTimeFormat::Msf), MciTimeFormat::Msf),
                  frames);
    }
    EXPECT_EQ(ParsePosition("999", MciTimeFormat::Milliseconds), 74);
}

TEST(Positions, MinutesSecondsFrames) {
    EXPECT_EQ(FormatPosition(150, MciTimeFormat::Msf), "00:02:00");
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
