// One track's encoder while the drive reads it: it takes the WAV stream (header, then the
// blocks) through a bounded queue and writes its file on a thread of its own.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "ByteQueue.h"

namespace plattmix::audiocd {

// The queue between the reading and one encoder: enough for the encoder to work on while the
// next blocks are read, small beside a track.
inline constexpr size_t kStreamQueueBytes = 4 * 1024 * 1024;

class TrackEncode {
  public:
    virtual ~TrackEncode() = default;

    // The next bytes of the stream, waiting at most wait for room; Closed when the encoder has
    // stopped taking them (it failed).
    virtual ByteQueue::PushResult Push(std::span<const uint8_t> bytes,
                                       std::chrono::milliseconds wait) = 0;
    // Bytes the queue takes now without waiting.
    virtual size_t Room() = 0;
    // True once the queue has room for bytes, waiting at most wait.
    virtual bool WaitForRoom(size_t bytes, std::chrono::milliseconds wait) = 0;
    // The stream is complete; the encoder finishes the file.
    virtual void Finish() = 0;
    // Stops the encoder; no file stays.
    virtual void Cancel() = 0;
    // True once the encoder has ended, waiting at most wait for it.
    virtual bool WaitFor(std::chrono::milliseconds wait) = 0;
    // After the end: the row's text ("name.ext -->Fertig" or "XXX Fehler!").
    virtual std::string Result() = 0;
};

// Starts the encoder for one track: basePath + the format's extension is its file, fileName
// names it in the row's text, row is the checked row's position (for the tags).
using EncodeFn = std::function<std::unique_ptr<TrackEncode>(
    const std::string& basePath, const std::string& fileName, size_t row)>;

}  // namespace plattmix::audiocd
