// A WAV file as a track's output in the secure mode: the stream (the standard header, then the
// audio) written as it comes, on the caller's thread, into a file emptied first.
#pragma once

#include <cstdint>
#include <string>

#include "RipTrack.h"
#include "TrackEncode.h"
#include "WavFile.h"

namespace plattmix::audiocd {

class WavTrackFile final : public TrackEncode {
  public:
    WavTrackFile(const std::string& path, std::string doneText)
        : file_(path, true), doneText_(std::move(doneText)) {}

    ByteQueue::PushResult Push(std::span<const uint8_t> bytes, std::chrono::milliseconds) override {
        return file_.IsOpen() && file_.Append(bytes) ? ByteQueue::PushResult::Taken
                                                     : ByteQueue::PushResult::Closed;
    }
    size_t Room() override { return SIZE_MAX; }
    bool WaitForRoom(size_t, std::chrono::milliseconds) override { return true; }
    void Finish() override { closed_ = file_.Close(); }
    void Cancel() override { file_.Remove(); }
    bool WaitFor(std::chrono::milliseconds) override { return true; }
    std::string Result() override { return closed_ ? doneText_ : std::string(kTextTrackFailed); }
    // Why the file failed (German), empty when it did not.
    const std::string& Error() const { return file_.Error(); }

  private:
    WavFile file_;
    std::string doneText_;
    bool closed_ = false;
};

}  // namespace plattmix::audiocd
