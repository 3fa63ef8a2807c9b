// Rip.cue: the ripped disc as a cue sheet of its track files, one FILE per track. A track's
// pregap (INDEX 00) lies at the end of the previous track's file, as each file runs from its
// track's start to the next one's; a pregap that is in no file becomes a PREGAP line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "CdText.h"

namespace plattmix::audiocd {

inline constexpr const char* kRipCueName = "Rip.cue";

struct RipCueTrack {
    int number = 0;             // on the disc
    std::string fileName;       // "Track01.flac", beside the sheet
    int32_t sectors = 0;        // the file's audio in sectors
    int32_t pregapSectors = 0;  // INDEX 00 to INDEX 01 on the disc before this track
    std::string isrc;           // empty when the drive gives none
};

struct RipCue {
    std::string catalog;  // the media catalog number; empty when the drive gives none
    std::optional<CdText> cdText;
    std::vector<RipCueTrack> tracks;  // in disc order
};

// The sheet's text, UTF-8, "\n" line ends. The file type is MP3 for ".mp3", AIFF for ".aif" and
// ".aiff", else WAVE; a double quote inside a text becomes a single one, a control character (a
// line end, a tab) a blank.
std::string FormatRipCue(const RipCue& cue);

// Writes kRipCueName into folder. Empty when written, else the reason in German.
std::string WriteRipCue(const std::string& folder, const RipCue& cue);

}  // namespace plattmix::audiocd
