// The output formats of ripping, in the order the format list shows them. Each one's caption,
// file extension, the hint shown beside the file name and the word the command line takes.
// The encoder settings of each format join this table with the transcoding pipeline.
#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace plattmix::encode {

struct OutputFormat {
    std::string_view caption;    // "MP3 Format"
    std::string_view extension;  // ".mp3"
    std::string_view hint;       // "+ .mp3"
    std::string_view cliName;    // "mp3"
};

inline constexpr std::array<OutputFormat, 7> kOutputFormats = {{
    {"MP3 Format", ".mp3", "+ .mp3", "mp3"},
    {"MP4 Format", ".mp4", "+ .mp4", "mp4"},
    {"MP2 Format", ".mp2", "+ .mp2", "mp2"},
    {"Flac Format", ".flac", "+ .flac", "flac"},
    {"AC3 Format", ".ac3", "+ .ac3", "ac3"},
    {"WMA Format", ".wma", "+ .wma", "wma"},
    {"WAV Format", ".wav", "+ .wav", "wav"},
}};

inline constexpr int kWavFormat = 6;

// The format at a list index; any index outside the list is MP3's, as the list has always
// treated it.
const OutputFormat& FormatAt(int index);

// The list index of a command-line name ("flac"), or nothing.
std::optional<int> FormatByCliName(std::string_view name);

}  // namespace plattmix::encode
