// One playback of the cdaudio device: a worker reads the disc with READ CD from the first
// sector up to the end and hands the sectors to an open sink, reporting how far it got.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>

#include "IAudioSink.h"
#include "ISCSI.h"

namespace plattmix::audiocd {

inline constexpr int kPlayReadSectors = 27;  // sectors per READ CD
inline constexpr int kPlayWriteSectors = 4;  // sectors per hand-over to the sink

class CdAudioPlayer {
  public:
    // Starts playing [firstLba, endLba) of the drive at once.
    CdAudioPlayer(scsi::ISCSI& transport, std::string handle, int32_t firstLba, int32_t endLba,
                  std::unique_ptr<IAudioSink> sink);
    ~CdAudioPlayer();
    CdAudioPlayer(const CdAudioPlayer&) = delete;
    CdAudioPlayer& operator=(const CdAudioPlayer&) = delete;

    // Ends the playback: what the sink holds is dropped, the worker has ended on return.
    void Stop();
    // Waits until the playback has ended by itself.
    void Wait();
    bool Playing() const { return playing_.load(); }
    // The first sector not yet handed to the sink.
    int32_t PositionLba() const { return position_.load(); }
    // Why the playback ended early, as a CdAudioError and its text; 0 and empty when it did
    // not.
    int ErrorCode() const;
    std::string Error() const;

  private:
    void Run(std::stop_token stop, scsi::ISCSI& transport, std::string handle, int32_t endLba);
    void Fail(int code, std::string text);

    std::unique_ptr<IAudioSink> sink_;
    std::atomic<bool> playing_{true};
    std::atomic<int32_t> position_;
    mutable std::mutex errorLock_;
    int errorCode_ = 0;
    std::string error_;
    std::jthread worker_;
};

}  // namespace plattmix::audiocd
