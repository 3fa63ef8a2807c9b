// What a generated disc should hold (DiscSpec) and what was generated (DiscDescription).
// A spec is the recipe a fixture returns; the description carries the addresses and checksums
// a test compares against what a drive reports and reads.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace plattmix::discgen {

inline constexpr int32_t kAudioSectorBytes = 2352;  // raw audio sector, 1/75 s of audio
inline constexpr int32_t kDataSectorBytes = 2048;   // user data of a MODE1 sector
inline constexpr int32_t kSectorsPerSecond = 75;
// Between the end of one session and the first track of the next: lead-out (6750), lead-in of
// the next session (4500) and the first track's pre-gap (150). The image drive places a
// second session's tracks this far behind the first session's lead-out.
inline constexpr int32_t kSessionGapSectors = 6750 + 4500 + 150;

enum class TrackMode {
    Audio,  // CUE "AUDIO": 2352-byte sectors in the file, read as they are
    Mode1,  // CUE "MODE1/2048": 2048 bytes of user data per sector in the file
};

struct TrackSpec {
    TrackMode mode = TrackMode::Audio;
    int32_t sectors = 0;           // from INDEX 01 to the end of the track in its file
    int32_t indexZeroSectors = 0;  // INDEX 00: in the file, right before INDEX 01
    int32_t pregapSectors = 0;     // PREGAP: silence the drive makes up, not in any file
    int file = 0;                  // index into DiscSpec::files
    int session = 1;
    std::string title;      // CD-Text; empty writes no TITLE line
    std::string performer;  // CD-Text; empty writes no PERFORMER line
    std::string isrc;       // 12 characters; empty writes no ISRC line
};

// Sectors the image drive reads wrong now and then (its FLAKY setting).
struct FlakySpec {
    int32_t firstLba = 0;
    int32_t count = 0;
    double probability = 0.0;  // of a wrong read, 0 to 1
    uint32_t seed = 0;         // of the drive's dice: the same seed, the same errors
};

// How the image drive behaves with the disc. Anything but a plain drive is written beside the
// sheet as its sidecar, <name>.cue.drive, which the image drive reads when it loads the sheet.
struct DriveSpec {
    // +N: the drive reads N samples late (returns at sample p what lies at p - N), so the
    // true audio comes back when ripped with the offset +N.
    int32_t readOffsetSamples = 0;
    bool c2Pointers = true;
    std::vector<FlakySpec> flaky;

    bool Plain() const { return readOffsetSamples == 0 && c2Pointers && flaky.empty(); }
};

struct DiscSpec {
    std::string name;  // fixture name, also the CUE file's base name
    std::string title;
    std::string performer;
    std::string catalog;             // 13 digits; empty writes no CATALOG line
    std::vector<std::string> files;  // BIN file names, in disc order
    std::vector<TrackSpec> tracks;   // numbered from 1 in this order
    DriveSpec drive;
};

struct TrackInfo {
    int number = 0;
    TrackMode mode = TrackMode::Audio;
    int session = 1;
    int32_t startLba = 0;  // INDEX 01, as the table of contents reports it
    // Sectors from startLba to the next track's start, or to the lead-out of the session for
    // its last track; so a following track's INDEX 00 or PREGAP belongs to this span.
    int32_t lengthSectors = 0;
    int32_t pregapSectors = 0;     // PREGAP silence right before startLba
    int32_t indexZeroSectors = 0;  // INDEX 00 sectors before startLba (after any PREGAP)
    // CRC-32 of the span's bytes as READ CD returns them: 2352 bytes per audio sector, the
    // 2048 user-data bytes per MODE1 sector, zeros for PREGAP silence.
    uint32_t crc32 = 0;
    std::string title;
    std::string performer;
};

struct SessionInfo {
    int number = 1;
    int firstTrack = 1;
    int lastTrack = 1;
    int32_t leadOutLba = 0;
};

struct FileInfo {
    std::filesystem::path path;
    int64_t bytes = 0;
    uint32_t crc32 = 0;  // of the whole file
};

struct DiscDescription {
    std::string name;
    std::filesystem::path cuePath;
    std::string cueText;              // the sheet's exact content
    std::filesystem::path drivePath;  // the drive's sidecar; empty for a plain drive
    std::string title;                // expected CD-Text TITLE of the disc
    std::string performer;            // expected CD-Text PERFORMER of the disc
    std::vector<TrackInfo> tracks;
    std::vector<SessionInfo> sessions;
    std::vector<FileInfo> files;
    int32_t leadOutLba = 0;  // of the last session
};

}  // namespace plattmix::discgen
