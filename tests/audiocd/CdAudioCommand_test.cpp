// The cdaudio device's command strings: the program's own strings parsed as meant, the
// mistakes a caller can make, positions in both time formats, and the reply helpers.
#include <gtest/gtest.h>

#include <set>

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

TEST(ParseMciCommand, StringsTheWindowSends) {
    const MciCommand door = Parsed("Open /dev/sr0: Type CDAudio Alias sr0CDDrive");
    EXPECT_EQ(door.verb, MciVerb::Open);
    EXPECT_EQ(door.device, "/dev/sr0:");
    EXPECT_EQ(door.type, "CDAudio");
    EXPECT_EQ(door.alias, "sr0CDDrive");

    const MciCommand player = Parsed("Open /dev/sr0:/: Alias cd wait shareable Type CDAudio");
    EXPECT_EQ(player.device, "/dev/sr0:/:");
    EXPECT_EQ(player.alias, "cd");
    EXPECT_TRUE(player.wait);
    EXPECT_TRUE(player.shareable);

    EXPECT_EQ(Parsed("Set sr0CDDrive Door Open").set, MciSetItem::DoorOpen);
    EXPECT_EQ(Parsed("Set sr0CDDrive Door Closed").set, MciSetItem::DoorClosed);
    const MciCommand format = Parsed("set cd time format milliseconds");
    EXPECT_EQ(format.set, MciSetItem::TimeFormat);
    EXPECT_EQ(format.timeFormat, MciTimeFormat::Milliseconds);
    EXPECT_EQ(Parsed("set cd time format MSF").timeFormat, MciTimeFormat::Msf);

    const MciCommand play = Parsed("play cd from 2000");
    EXPECT_EQ(play.verb, MciVerb::Play);
    EXPECT_EQ(play.from, "2000");
    EXPECT_FALSE(play.to);
    EXPECT_EQ(Parsed("play cd from 2000 to 9000 notify").to, "9000");

    // "stop " and "close " with the alias, blanks doubled as a careless caller may.
    EXPECT_EQ(Parsed("stop  cd ").verb, MciVerb::Stop);
    EXPECT_EQ(Parsed("CLOSE cd").verb, MciVerb::Close);
}

TEST(ParseMciCommand, StatusItems) {
    EXPECT_EQ(Parsed("status cd length").item, MciStatusItem::Length);
    EXPECT_EQ(Parsed("status cd position").item, MciStatusItem::Position);
    EXPECT_EQ(Parsed("status cd current track").item, MciStatusItem::CurrentTrack);
    EXPECT_EQ(Parsed("status cd mode").item, MciStatusItem::Mode);
    EXPECT_EQ(Parsed("status cd number of tracks").item, MciStatusItem::NumberOfTracks);
    EXPECT_EQ(Parsed("status cd media present").item, MciStatusItem::MediaPresent);
    const MciCommand track = Parsed("status cd position track 3");
    EXPECT_EQ(track.item, MciStatusItem::Position);
    EXPECT_EQ(track.track, 3);
    EXPECT_EQ(Parsed("status cd length track 12").track, 12);
    EXPECT_FALSE(Parsed("status cd length").track);
}

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
    EXPECT_EQ(MciValue("00:02:00"), 0);
    EXPECT_EQ(MciValue("playing"), 0);
    EXPECT_EQ(MciValue(""), 0);
}

TEST(CdAudioErrorText, EveryCodeHasItsOwnText) {
    std::set<std::string> texts;
    for (int code = kCdAudioOk; code <= kCdAudioBadTimeFormat; ++code)
        texts.insert(CdAudioErrorText(code));
    EXPECT_EQ(texts.size(), static_cast<size_t>(kCdAudioBadTimeFormat + 1));
    EXPECT_EQ(CdAudioErrorText(kCdAudioNoOutput), "Keine Audioausgabe verfügbar.");
    EXPECT_EQ(CdAudioErrorText(999), "Unbekannter Fehler 999.");
}
