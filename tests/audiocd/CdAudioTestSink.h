// An audio output for tests: keeps every byte the player hands over, and can hold the player
// back piece by piece so that a test sees the position at a known point.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "IAudioSink.h"

namespace plattmix::test {

// Shared by a test and the sinks its factory makes.
class SinkRecord {
  public:
    std::string openError;   // when set, Open fails with it
    std::string writeError;  // when set, every Write fails with it

    std::vector<uint8_t> Bytes() const {
        std::lock_guard guard(lock_);
        return bytes_;
    }
    int Opens() const { return opens_; }
    int Drains() const { return drains_; }
    int Drops() const { return drops_; }
    int Writes() const { return writes_; }

    // From now on, only this many more writes get through; the next waits (or gives up on a
    // stop).
    void Hold(int writes) {
        std::lock_guard guard(lock_);
        allowed_ = writes_ + writes;
        changed_.notify_all();
    }
    void Release() {
        std::lock_guard guard(lock_);
        allowed_.reset();
        changed_.notify_all();
    }
    // Waits until Write has been called `calls` times (the player then has dealt with all
    // writes before it); false if that does not happen within a generous while.
    bool WaitForCalls(int calls) {
        std::unique_lock guard(lock_);
        return changed_.wait_for(guard, kPatience, [&] { return calls_ >= calls; });
    }

  private:
    friend class TestSink;
    static constexpr auto kPatience = std::chrono::seconds(30);

    std::string Write(std::span<const uint8_t> bytes, std::stop_token stop) {
        std::unique_lock guard(lock_);
        ++calls_;
        changed_.notify_all();
        if (!writeError.empty())
            return writeError;
        if (!changed_.wait(guard, stop, [&] { return !allowed_ || writes_ < *allowed_; }))
            return {};
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        ++writes_;
        changed_.notify_all();
        return {};
    }

    mutable std::mutex lock_;
    std::condition_variable_any changed_;
    std::vector<uint8_t> bytes_;
    std::optional<int> allowed_;
    int calls_ = 0;
    std::atomic<int> writes_ = 0, opens_ = 0, drains_ = 0, drops_ = 0;
};

class TestSink final : public audiocd::IAudioSink {
  public:
    explicit TestSink(std::shared_ptr<SinkRecord> record) : record_(std::move(record)) {}
    std::string Open() override {
        ++record_->opens_;
        return record_->openError;
    }
    std::string Write(std::span<const uint8_t> bytes, std::stop_token stop) override {
        return record_->Write(bytes, stop);
    }
    void Drain() override { ++record_->drains_; }
    void Drop() override { ++record_->drops_; }

  private:
    std::shared_ptr<SinkRecord> record_;
};

inline audiocd::AudioSinkFactory TestSinks(const std::shared_ptr<SinkRecord>& record) {
    return [record] { return std::make_unique<TestSink>(record); };
}

}  // namespace plattmix::test
