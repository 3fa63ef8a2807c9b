// Reading an encoded file back: what the container and the stream say, the tags, and the
// decoded audio. The tests and the benchmark check the converter's files with it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace plattmix::encode {

struct ProbedAudio {
    std::string container;  // demuxer name, "flac"
    std::string codec;      // codec name, "mp3", "aac", "wmav2"
    int sampleRate = 0;
    int channels = 0;
    int bitsPerRawSample = 0;    // what the stream declares; 0 when it declares nothing
    int bitsPerCodedSample = 0;  // what the container's header says (WAVEFORMATEX in ASF)
    int frameSize = 0;           // samples per codec frame, 0 when the codec has none fixed
    int64_t samples = 0;         // decoded sample frames, priming and padding removed by FFmpeg
    std::map<std::string, std::string> tags;  // container and stream tags, keys lower-case
    // The decoded samples interleaved, left-justified in 32 bits (a 16-bit sample s is s << 16,
    // a 24-bit one s << 8); filled only when asked for and the decoder gives integers.
    std::vector<int32_t> pcm;
};

// Nothing when FFmpeg cannot open or decode the file.
std::optional<ProbedAudio> ProbeAudioFile(const std::string& path, bool keepSamples = false);

}  // namespace plattmix::encode
