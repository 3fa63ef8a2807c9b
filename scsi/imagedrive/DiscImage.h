// The disc a drive holds, laid out in logical block addresses as a real drive reports them:
// LBA 0 is the first sector after the two-second lead-in gap, a track starts at its INDEX 01,
// and a later session starts after the previous session's lead-out and the next lead-in.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "imagedrive/CueSheet.h"
#include "imagedrive/ImageResult.h"

namespace plattmix::scsi::imagedrive {

// Sectors between one session's last track and the next session's area: lead-out 6750,
// lead-in 4500. The next session's first track has at least a two-second pregap after that.
inline constexpr int32_t kSessionGap = 6750 + 4500;
inline constexpr int32_t kSessionPregap = 150;

struct DiscTrack {
    int number = 0;
    int session = 1;
    TrackMode mode = TrackMode::Audio;
    uint8_t control = 0;     // Q control nibble: 4 data, 2 copy permitted, 1 pre-emphasis
    int32_t areaStart = 0;   // first sector of the track: its pregap or INDEX 00
    int32_t start = 0;       // INDEX 01
    int32_t end = 0;         // one past the last sector, postgap included
    int fileIndex = -1;      // index into DiscImage::files
    int32_t fileFirst = 0;   // first LBA backed by file bytes
    int32_t fileCount = 0;   // sectors backed by file bytes
    int64_t fileOffset = 0;  // byte offset of the sector at fileFirst
    std::string title, performer, songwriter, isrc;
};

struct DiscSession {
    int number = 1;
    size_t firstTrack = 0;  // indexes into DiscImage::tracks
    size_t lastTrack = 0;
    int32_t leadOut = 0;  // first sector after the session's last track
};

struct DiscImage {
    std::vector<std::string> files;  // paths of the files holding the sectors
    std::vector<DiscTrack> tracks;
    std::vector<DiscSession> sessions;
    std::string title, performer, songwriter, catalog;

    int32_t LeadOut() const { return sessions.back().leadOut; }
    // The track whose area holds lba, or nullptr (beyond the disc or between sessions).
    const DiscTrack* TrackAt(int32_t lba) const;
    const DiscTrack* TrackNumbered(int number) const;
};

// Lays the sheet's tracks out on the disc. fileSizes holds the byte size of each of the sheet's
// files, in sheet order; a file too short for its indexes is an error naming the line.
ImageResult<DiscImage> LayoutDisc(const CueSheet& sheet, std::span<const int64_t> fileSizes,
                                  const std::string& sheetName);

// A plain ISO file: one Mode 1 data track of 2048-byte sectors.
DiscImage IsoDisc(const std::string& path, int32_t sectors);

}  // namespace plattmix::scsi::imagedrive
