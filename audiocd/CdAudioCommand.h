// The command strings of the cdaudio device as pure functions: splitting a string into a
// command, the time formats of positions, and the helpers its callers use to build and read
// strings.
//
// Commands (words in any case, blanks between them, a value with blanks in double quotes):
//   open DEVICE [type cdaudio] [alias NAME] [wait] [shareable] [notify]
//   close ALIAS | stop ALIAS
//   play ALIAS [from POS] [to POS]
//   set ALIAS time format milliseconds|ms|msf | set ALIAS door open|closed
//   status ALIAS length|position|current track|mode|number of tracks|media present
//   status ALIAS length track N | position track N
// "wait" and "notify" are taken by every command; play with "wait" returns when it has ended.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace plattmix::audiocd {

enum class MciVerb { Open, Close, Play, Stop, Status, Set };
enum class MciTimeFormat { Milliseconds, Msf };
enum class MciStatusItem { Length, Position, CurrentTrack, Mode, NumberOfTracks, MediaPresent };
enum class MciSetItem { TimeFormat, DoorOpen, DoorClosed };

struct MciCommand {
    MciVerb verb = MciVerb::Stop;
    std::string device;  // open: the drive; every other command: the alias
    std::string type;    // open: the device type as given, empty when not given
    std::string alias;   // open: empty when not given
    bool wait = false;
    bool shareable = false;
    std::optional<std::string> from;  // play: positions as written, read in the time format
    std::optional<std::string> to;
    MciStatusItem item = MciStatusItem::Mode;
    std::optional<int> track;  // status length/position of a track
    MciSetItem set = MciSetItem::TimeFormat;
    MciTimeFormat timeFormat = MciTimeFormat::Msf;
};

struct MciParse {
    std::optional<MciCommand> command;
    int error = 0;  // a CdAudioError when command is empty
};

// Words split at blanks; a double-quoted part is one word without its quotes. Nothing when a
// quote is not closed.
std::optional<std::vector<std::string>> SplitMciWords(std::string_view text);
MciParse ParseMciCommand(std::string_view text);

// Positions are counted in frames of 1/75 s from the disc's address 00:00:00, so the first
// track usually starts at 150 (two seconds). Milliseconds are rounded up, so that they turn
// back into the same frame.
int64_t FramesToMilliseconds(int32_t frames);
int32_t MillisecondsToFrames(int64_t milliseconds);
std::string FormatPosition(int32_t frames, MciTimeFormat format);
// A position as the time format writes it: milliseconds, or "mm", "mm:ss" or "mm:ss:ff".
std::optional<int32_t> ParsePosition(std::string_view text, MciTimeFormat format);

// The numeric value a reply starts with (blanks skipped, an optional sign, then digits); 0
// when it starts with anything else.
int64_t MciValue(std::string_view text);
// A value for a command string: as it is, or in double quotes when it holds a blank.
std::string MciQuote(const std::string& value);

}  // namespace plattmix::audiocd
