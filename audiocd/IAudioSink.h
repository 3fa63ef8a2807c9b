// Where the CD player's audio goes: the desktop's audio output, or a recording sink in tests.
// The player opens a sink on the caller's thread and then uses it from its worker alone.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <stop_token>
#include <string>

namespace plattmix::audiocd {

// CD audio as READ CD delivers it: 44100 frames a second, two channels, 16-bit little-endian.
inline constexpr int kCdSampleRate = 44100;
inline constexpr int kCdChannels = 2;
inline constexpr int kCdFrameBytes = 4;

class IAudioSink {
  public:
    virtual ~IAudioSink() = default;
    // Prepares the output for CD audio. Empty on success, otherwise why it failed.
    virtual std::string Open() = 0;
    // Plays the bytes (whole frames); returns once the output has taken them, or earlier when
    // a stop is requested through `stop` (nothing more need be taken then). Empty on success,
    // otherwise why it failed.
    virtual std::string Write(std::span<const uint8_t> bytes, std::stop_token stop) = 0;
    // Lets what was written play to its end.
    virtual void Drain() = 0;
    // Throws away what has not been played yet.
    virtual void Drop() = 0;
};

// Makes a new, unopened sink for each playback.
using AudioSinkFactory = std::function<std::unique_ptr<IAudioSink>()>;

}  // namespace plattmix::audiocd
