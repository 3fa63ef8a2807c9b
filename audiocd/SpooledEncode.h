// Encoding a track that is already a WAV file on disk: a thread of its own feeds the file to the
// track's encoder and removes the file once the encoder is done with it. The secure mode reads
// and proves a track first and encodes it only then, so the drive never waits for an encoder.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "TrackEncode.h"

namespace plattmix::audiocd {

class SpooledEncode {
  public:
    SpooledEncode(std::string wavPath, std::unique_ptr<TrackEncode> encoder);
    ~SpooledEncode();
    SpooledEncode(const SpooledEncode&) = delete;
    SpooledEncode& operator=(const SpooledEncode&) = delete;

    // True once the file is encoded (or the encoder failed), waiting at most wait.
    bool WaitFor(std::chrono::milliseconds wait);
    // After the end: the encoder's row text.
    std::string Result();
    // Stops feeding; the encoder leaves no file.
    void Cancel();

  private:
    void Feed();

    std::string wavPath_;
    std::unique_ptr<TrackEncode> encoder_;
    std::atomic<bool> cancelled_{false};
    std::atomic<bool> fed_{false};
    std::jthread feeder_;  // last: joined first
};

}  // namespace plattmix::audiocd
