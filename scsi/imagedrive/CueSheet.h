// A CUE sheet as written: its files, tracks, indexes and gaps, in sheet order. Parsing is pure:
// text in, sheet or one error message out; the files themselves are not touched here.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "imagedrive/ImageResult.h"

namespace plattmix::scsi::imagedrive {

enum class TrackMode { Audio, Mode1_2048, Mode1_2352, Mode2_2352 };

// Bytes one sector of the mode takes in a BIN file.
int32_t StoredSectorSize(TrackMode mode);
bool IsDataMode(TrackMode mode);

struct CueIndex {
    int number = 0;
    int32_t frames = 0;  // position in the file, in sectors
    int line = 0;
};

struct CueTrack {
    int number = 0;
    TrackMode mode = TrackMode::Audio;
    int session = 1;
    int line = 0;
    std::vector<CueIndex> indexes;  // ascending numbers, 00 optional, 01 present
    int32_t pregap = 0;             // sectors of disc time without file bytes
    int32_t postgap = 0;
    std::string title, performer, songwriter, isrc;
    bool preEmphasis = false, copyPermitted = false, fourChannel = false;
};

struct CueFile {
    std::string name;  // as written in the sheet
    std::string path;  // resolved against the sheet's folder
    int line = 0;
    std::vector<CueTrack> tracks;
};

struct CueSheet {
    std::string title, performer, songwriter, catalog;
    std::vector<CueFile> files;
};

// sheetName is the name used in messages ("demo.cue"); baseFolder resolves relative paths.
ImageResult<CueSheet> ParseCueSheet(std::string_view text, const std::string& baseFolder,
                                    const std::string& sheetName);

}  // namespace plattmix::scsi::imagedrive
