// A bounded byte queue between the thread that reads a track and the encoder that consumes it:
// the writer waits while it is full, the reader while it is empty, so memory stays at its
// capacity however long the track is.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace plattmix::audiocd {

class ByteQueue {
  public:
    explicit ByteQueue(size_t capacity) : ring_(capacity) {}

    enum class PushResult { Taken, Full, Closed };

    // Takes all of bytes once there is room for them (more than the capacity never fits), waiting
    // at most wait; Full when the time ran out, Closed when the reader has gone.
    PushResult Push(std::span<const uint8_t> bytes, std::chrono::milliseconds wait);

    // Bytes that fit now; the whole capacity once the reader has gone, as a push then answers at
    // once (Closed) and the writer must not wait for room that never comes.
    size_t Room();
    // True once bytes fit (or the reader has gone), waiting at most wait.
    bool WaitForRoom(size_t bytes, std::chrono::milliseconds wait);

    // The writer is done: the reader gets what is left, then the end.
    void Finish();
    // The writer gives up: the reader's next Pop answers -1.
    void Abort();
    // The reader has gone: pushes answer Closed from now on.
    void Close();

    // Up to size bytes into buffer, waiting for some; 0 at the end, -1 after Abort.
    long Pop(uint8_t* buffer, size_t size);

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<uint8_t> ring_;
    size_t head_ = 0;  // the oldest byte
    size_t size_ = 0;
    bool finished_ = false;
    bool aborted_ = false;
    bool closed_ = false;
};

}  // namespace plattmix::audiocd
