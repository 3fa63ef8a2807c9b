// The output formats of ripping, in the order the format list shows them. Each one's caption,
// file extension, the hint shown beside the file name and the word the command line takes, and
// for the six compressed ones the encoder that makes them: FFmpeg's encoder and muxer names, the
// sample rate, channels, bit rate and sample format the encoder is opened with.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace plattmix::encode {

struct OutputFormat {
    std::string_view caption;    // "MP3 Format"
    std::string_view extension;  // ".mp3"
    std::string_view hint;       // "+ .mp3"
    std::string_view cliName;    // "mp3"

    // The encoder; empty codec for WAV, which the ripping writes itself.
    std::string_view codec;         // FFmpeg encoder name, "libmp3lame"
    std::string_view muxer;         // FFmpeg muxer name, "mp3"
    int sampleRate = 0;             // Hz; 48000 means the CD's 44100 are resampled
    int channels = 0;               // always 2 (left and right)
    int64_t bitRate = 0;            // bit/s; 0 for the lossless FLAC
    std::string_view sampleFormat;  // FFmpeg sample format name the encoder takes, "s16p"
    int bitsPerSample = 0;          // bits per sample the stream declares; 0: the codec's own
    int profile = -1;               // codec profile; -1: the codec's default
};

// The AAC profile of the MP4 format: low complexity (profile-level indication 0x29).
inline constexpr int kAacLowComplexity = 1;

// WMA: the designed stream is 55002 bytes/s (440016 bit/s) of WMA 9. The free wmav2 encoder
// takes that rate as it is at 44100 Hz stereo; it packs each 2048-frame block into
// floor(440016 * 2048 / 352800) = 2554 bytes, so the coded rate is 439966 bit/s. The ASF header
// carries the 440016.
inline constexpr std::array<OutputFormat, 7> kOutputFormats = {{
    {"MP3 Format", ".mp3", "+ .mp3", "mp3", "libmp3lame", "mp3", 44100, 2, 256000, "s16p", 0, -1},
    {"MP4 Format", ".mp4", "+ .mp4", "mp4", "aac", "mp4", 44100, 2, 160000, "fltp", 16,
     kAacLowComplexity},
    {"MP2 Format", ".mp2", "+ .mp2", "mp2", "mp2", "mp2", 48000, 2, 224000, "s16", 0, -1},
    {"Flac Format", ".flac", "+ .flac", "flac", "flac", "flac", 44100, 2, 0, "s32", 24, -1},
    {"AC3 Format", ".ac3", "+ .ac3", "ac3", "ac3", "ac3", 48000, 2, 256000, "fltp", 0, -1},
    {"WMA Format", ".wma", "+ .wma", "wma", "wmav2", "asf", 44100, 2, 440016, "fltp", 24, -1},
    {"WAV Format", ".wav", "+ .wav", "wav", "", "", 0, 0, 0, "", 0, -1},
}};

inline constexpr int kWavFormat = 6;

// The format at a list index; any index outside the list is MP3's, as the list has always
// treated it.
const OutputFormat& FormatAt(int index);

// The format the encoder makes for a list index: 1..5 as listed, anything else MP3.
const OutputFormat& EncodedFormatAt(int index);

// The list index of a command-line name ("flac"), or nothing.
std::optional<int> FormatByCliName(std::string_view name);

}  // namespace plattmix::encode
