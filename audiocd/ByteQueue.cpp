#include "ByteQueue.h"

#include <algorithm>
#include <cstring>

namespace plattmix::audiocd {

ByteQueue::PushResult ByteQueue::Push(std::span<const uint8_t> bytes,
                                      std::chrono::milliseconds wait) {
    std::unique_lock lock(mutex_);
    const bool room = changed_.wait_for(
        lock, wait, [&] { return closed_ || size_ + bytes.size() <= ring_.size(); });
    if (closed_)
        return PushResult::Closed;
    if (!room)
        return PushResult::Full;
    size_t at = (head_ + size_) % ring_.size();
    while (!bytes.empty()) {
        const size_t count = std::min(bytes.size(), ring_.size() - at);
        std::memcpy(ring_.data() + at, bytes.data(), count);
        bytes = bytes.subspan(count);
        size_ += count;
        at = 0;
    }
    changed_.notify_all();
    return PushResult::Taken;
}

size_t ByteQueue::Room() {
    const std::lock_guard lock(mutex_);
    return closed_ ? ring_.size() : ring_.size() - size_;
}

bool ByteQueue::WaitForRoom(size_t bytes, std::chrono::milliseconds wait) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, wait, [&] { return closed_ || size_ + bytes <= ring_.size(); });
}

void ByteQueue::Finish() {
    const std::lock_guard lock(mutex_);
    finished_ = true;
    changed_.notify_all();
}

void ByteQueue::Abort() {
    const std::lock_guard lock(mutex_);
    aborted_ = true;
    changed_.notify_all();
}

void ByteQueue::Close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_all();
}

long ByteQueue::Pop(uint8_t* buffer, size_t size) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return aborted_ || finished_ || size_ > 0; });
    if (aborted_)
        return -1;
    const size_t total = std::min(size, size_);
    size_t left = total;
    while (left > 0) {
        const size_t count = std::min(left, ring_.size() - head_);
        std::memcpy(buffer, ring_.data() + head_, count);
        buffer += count;
        left -= count;
        size_ -= count;
        head_ = (head_ + count) % ring_.size();
    }
    changed_.notify_all();
    return static_cast<long>(total);
}

}  // namespace plattmix::audiocd
